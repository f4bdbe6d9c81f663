#pragma once

#include <optional>
#include <string>
#include <vector>

namespace vrkview {

/// A value that the command line wants a joint to have.
struct JointWish {
    std::optional<std::string>
        joint;        ///< its name; empty for the next one in the order of the first mechanism that moves
    double value = 0; ///< degrees, or millimetres of one that slides

    bool operator==(const JointWish&) const = default;
};

/// Moves the joints; joints that nothing is wished for stay.
/// @return what is not as it was wished, a line each: values are held to the limits.
/// @throws std::runtime_error where no mechanism has joints that move, there are more values than joints, or no joint has
///         that name.
std::vector<std::string> moveJoints(const std::vector<JointWish>& wishes);

} // namespace vrkview
