#pragma once

#include "platform/station/file/PartReader.h"

#include <memory>
#include <unordered_map>

namespace vrk::geometry {
struct MfgVectors;
}
namespace vrk::task {
class DataItem;
class EdgeMfgShape;
class Instruction;
class Path;
class Task;
} // namespace vrk::task

namespace vrk::station {

/// Reads robot programs and the frames and tools that they are written in. Not installed.
class TaskReader {
public:
    TaskReader(StationIds& ids, const PartReader& parts) : ids(ids), parts(parts) {}

    std::shared_ptr<task::Task> readTask(const JsonPlace& at);

    bool withPrograms = true; ///< whether the file's version has paths, robot targets and manufacturing shapes

private:
    using Items = std::unordered_map<unsigned, std::shared_ptr<task::DataItem>>; // of one task, by id

    std::shared_ptr<task::DataItem> readDataItem(const JsonPlace& at);
    std::shared_ptr<task::DataItem> readWObj(const JsonPlace& at);

    std::shared_ptr<task::DataItem> readRobTarget(const JsonPlace& at);
    std::shared_ptr<task::Path> readPath(const JsonPlace& at, unsigned task, const Items& items);
    std::shared_ptr<task::Instruction> readInstruction(const JsonPlace& at, unsigned path, const Items& items);
    std::shared_ptr<task::Instruction> readMove(const JsonPlace& at, unsigned path, const Items& items);
    std::shared_ptr<task::EdgeMfgShape> readMfgShape(const JsonPlace& at, unsigned task);
    geometry::MfgVectors readMfgVectors(const JsonPlace& at) const;

    StationIds& ids;
    const PartReader& parts;
};

} // namespace vrk::station
