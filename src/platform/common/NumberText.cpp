#include "platform/common/NumberText.h"

#include <locale>
#include <sstream>
#include <string>

namespace vrk::common {
namespace {

/// Whether a number that is out of range is too small. from_chars does not tell, a stream does, and rounds it.
template <typename Number>
bool isTooSmall(const char* begin, const char* end, Number& value)
{
    std::istringstream stream(std::string(begin, end));
    stream.imbue(std::locale::classic());
    Number rounded = 0;
    if (!(stream >> rounded))
        return false;
    value = rounded;
    return true;
}

template <typename Number>
std::from_chars_result read(const char* begin, const char* end, Number& value)
{
    const char* first = begin;
    if (first != end && *first == '+') {
        ++first;
        if (first != end && *first == '-')
            return {begin, std::errc::invalid_argument};
    }
    std::from_chars_result result = std::from_chars(first, end, value);
    if (result.ec == std::errc::invalid_argument)
        result.ptr = begin;
    else if (result.ec == std::errc::result_out_of_range && isTooSmall(first, result.ptr, value))
        result.ec = std::errc();
    return result;
}

} // namespace

std::from_chars_result readNumber(const char* begin, const char* end, float& value)
{
    return read(begin, end, value);
}

std::from_chars_result readNumber(const char* begin, const char* end, double& value)
{
    return read(begin, end, value);
}

} // namespace vrk::common
