#include "platform/common/Hash.h"

#include <fmt/format.h>

namespace vrk::common {

std::string Hash::text() const
{
    return fmt::format("{:016x}", state);
}

} // namespace vrk::common
