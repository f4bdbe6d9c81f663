#pragma once

#include "platform/layout/Dimension.h"
#include "platform/station/file/StationIds.h"

#include <memory>

namespace vrk::station {

/// Both directions of a dimension in a station file. Not installed.
/// @throws StationFileError
std::shared_ptr<const layout::Dimension> readDimension(const JsonPlace& at, const StationIds& ids);
Json jsonOf(const layout::Dimension& dimension);

} // namespace vrk::station
