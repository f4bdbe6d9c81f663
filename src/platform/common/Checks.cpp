#include "platform/common/Checks.h"

#include <cstdlib>
#include <string>

namespace vrk::common {

int hexByte(std::string_view text, std::size_t position)
{
    const std::string digits = std::string(text).substr(position, 2);
    char* end = nullptr;
    const long value = std::strtol(digits.c_str(), &end, 16);
    if (end == digits.c_str())
        throw std::invalid_argument("invalid stoi argument");
    return static_cast<int>(value); // two characters never leave the range of int
}

} // namespace vrk::common
