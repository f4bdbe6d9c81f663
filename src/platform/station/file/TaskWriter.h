#pragma once

#include "platform/station/file/StationJson.h"

namespace vrk::task {
class Task;
}

namespace vrk::station {

/// Whether the task holds what only the version with programs can tell.
bool needsPrograms(const task::Task& task);

/// A robot program and the frames and tools that it is written in. Not installed.
Json taskJson(const task::Task& task);

} // namespace vrk::station
