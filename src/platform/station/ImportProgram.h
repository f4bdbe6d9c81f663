#pragma once

#include "platform/program/Program.h"
#include "platform/station/Import.h"

namespace vrk::layout {
class Manipulator;
}
namespace vrk::task {
class Task;
}

namespace vrk::station {

/// Where joint values, one for each joint that moves, bring the wrist of a robot: in the robot's own coordinates. Takes no
/// lock. The robot may stand in the station or not yet.
VRK_EXPORT rob::Posed WristPoseAt(const layout::Manipulator& robot, const std::vector<double>& values);

/// Whether the file's ending is that of a robot program: .mod, .src or .ls, in any case.
VRK_EXPORT bool isProgramFile(const std::filesystem::path& file);

/// Reads a program; a .src file with the .dat file that lies beside it under the same name. Nothing is run. Any thread.
/// @throws ImportError  naming the line.
VRK_EXPORT program::Program ImportProgram(const std::filesystem::path& file, const Progress& progress = {});

/// What became of a program's targets and moves.
struct VRK_EXPORT ProgramSummary {
    std::size_t routines = 0;
    std::size_t instructions = 0; ///< all, moves included
    std::size_t moves = 0;
    std::size_t placed = 0;  ///< of the moves; the others are listed and draw nothing
    std::size_t runTime = 0; ///< not known before the program runs
    std::size_t missing = 0;
    std::size_t faulty = 0;
    std::size_t noRobot = 0;
    std::size_t targets = 0;        ///< whose numbers stand in the text; all of them are in the model
    std::size_t targetsWithout = 0; ///< declared without numbers, or with faulty ones
    std::vector<program::Note> notes;

    /// "7 moves, 2 placed, 5 not known before they run; 1 target"
    std::string text() const;
};

/// Makes a task of a program, complete but not yet in the station. Each routine becomes a path.
///
/// Work objects lie on the robot at its controller's task frame, or on its wrist; without a robot in the world. Targets that
/// no move uses lie in the robot's own frame. Tools lie on the wrist; without a robot, and where the files do not tell where
/// the tool is, there are none. A posture stands where it brings the wrist. Takes the manager's lock, shared.
///
/// @param robot  in the station or not yet; null for none.
VRK_EXPORT std::shared_ptr<task::Task> MakeTask(const program::Program& program, const layout::Manipulator* robot,
                                                ProgramSummary& summary);

/// The same, entered into the station with its first manipulator as the robot. Where a task has the program's name already,
/// a number is added to it.
VRK_EXPORT std::shared_ptr<task::Task> AddProgram(const program::Program& program, ProgramSummary& summary);

} // namespace vrk::station
