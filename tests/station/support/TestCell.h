#pragma once

#include "station/support/TestStation.h"

#include <vector>

namespace vrk::test {

/// A small robot cell: an arm of three axes with a gripper, and beside it a turn table with a workpiece and a crate.
struct TestCell {
    std::shared_ptr<layout::Manipulator> arm;
    std::shared_ptr<layout::Tool> gripper; ///< attached to the arm's wrist
    std::shared_ptr<layout::Device> table;
    std::shared_ptr<layout::Part> workpiece; ///< attached to the table's plate
    std::shared_ptr<layout::Assembly> crate;
};

/// Enters the cell in the model; nothing is seen of it yet.
TestCell addCell();
/// The bodies of an object and of its pieces.
std::vector<unsigned> bodyIdsOf(const sdf::SdfObject& object);

} // namespace vrk::test
