#pragma once

#include "platform/station/file/PartReader.h"

namespace vrk::layout {
class Device;
class Manipulator;
class Mechanism;
class Tool;
} // namespace vrk::layout

namespace vrk::station {

/// Reads what has links and joints: manipulators, tools and devices. Not installed.
class MechanismReader {
public:
    MechanismReader(StationIds& ids, PartReader& parts) : ids(ids), parts(parts) {}

    std::shared_ptr<layout::Manipulator> readManipulator(const JsonPlace& at);
    std::shared_ptr<layout::Tool> readTool(const JsonPlace& at);
    std::shared_ptr<layout::Device> readDevice(const JsonPlace& at);

private:
    /// What all mechanisms have.
    void readMechanism(const JsonPlace& at, layout::Mechanism& mechanism);

    StationIds& ids;
    PartReader& parts;
};

} // namespace vrk::station
