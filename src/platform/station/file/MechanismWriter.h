#pragma once

#include "platform/station/file/PartWriter.h"

namespace vrk::layout {
class Device;
class Manipulator;
class Mechanism;
class Tool;
} // namespace vrk::layout

namespace vrk::station {

/// Writes what has links and joints: manipulators, tools and devices. Not installed.
class MechanismWriter {
public:
    explicit MechanismWriter(PartWriter& parts) : parts(parts) {}

    Json jsonOf(const layout::Manipulator& manipulator);
    Json jsonOf(const layout::Tool& tool);
    Json jsonOf(const layout::Device& device);

private:
    /// What all mechanisms have.
    void addMechanism(Json& json, const layout::Mechanism& mechanism);

    PartWriter& parts;
};

} // namespace vrk::station
