#include "discio/text.h"

#include <algorithm>
#include <cctype>

namespace discio {

namespace {

char lowerCase(char letter)
{
    return static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
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
