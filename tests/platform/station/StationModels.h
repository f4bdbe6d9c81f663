#pragma once

#include "platform/layout/Layout.h"

#include <memory>

namespace vrk::test {

/// A small station with an object of each kind and every relation between them, put into the layout of the process.
struct WholeStation {
    /// @param geometry  an STL file for the parts; empty for parts without bodies.
    explicit WholeStation(const std::string& geometry = {});

    std::shared_ptr<layout::Manipulator> arm;
    std::shared_ptr<layout::Tool> gripper;
    std::shared_ptr<layout::Device> table;
    std::shared_ptr<layout::Assembly> fixture;
    std::shared_ptr<layout::Part> part;
    std::shared_ptr<layout::Frame> frame;
    std::shared_ptr<task::Task> program;
};

} // namespace vrk::test
