#include "discio/text.h"

#include <algorithm>

namespace discio {

namespace {

// Independent of the locale, unlike std::tolower(): in a Turkish locale the lower case of "I" is not "i".
constexpr char lowerCase(char letter)
{
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

}  // namespace

std::string fixedFieldText(std::span<const std::uint8_t> field)
{
    std::string text(field.begin(), std::find(field.begin(), field.end(), std::uint8_t{0}));
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

std::string caseFolded(std::string_view name)
{
    std::string folded(name);
    std::ranges::transform(folded, folded.begin(), lowerCase);
    return folded;
}

bool equalIgnoringCase(std::string_view left, std::string_view right)
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return lowerCase(a) == lowerCase(b); });
}

}  // namespace discio
