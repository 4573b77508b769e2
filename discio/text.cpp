#include "discio/text.h"

#include <algorithm>
#include <cctype>

namespace discio {

std::string fixedFieldText(std::span<const std::uint8_t> field)
{
    std::string text(field.begin(), std::find(field.begin(), field.end(), std::uint8_t{0}));
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

bool equalIgnoringCase(std::string_view left, std::string_view right)
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(), [](char a, char b) {
        return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
    });
}

}  // namespace discio
