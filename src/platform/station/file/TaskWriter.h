#pragma once

#include "platform/station/file/StationJson.h"

namespace vrk::task {
class Task;
}

namespace vrk::station {

/// A robot program and the frames and tools that it is written in. Not installed.
Json taskJson(const task::Task& task);

} // namespace vrk::station
