#pragma once

#include "platform/station/file/StationIds.h"

#include <memory>

namespace vrk::task {
class DataItem;
class Task;
} // namespace vrk::task

namespace vrk::station {

/// Reads robot programs and the frames and tools that they are written in. Not installed.
class TaskReader {
public:
    explicit TaskReader(StationIds& ids) : ids(ids) {}

    std::shared_ptr<task::Task> readTask(const JsonPlace& at);

private:
    std::shared_ptr<task::DataItem> readDataItem(const JsonPlace& at);
    std::shared_ptr<task::DataItem> readWObj(const JsonPlace& at);

    StationIds& ids;
};

} // namespace vrk::station
