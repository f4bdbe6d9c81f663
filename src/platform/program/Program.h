#pragma once

#include "platform/task/Instruction.h"

#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

/// Robot programs as their text tells them, before they enter the model. Lengths are millimetres, angles radians.
namespace vrk::program {

inline constexpr int none = -1; ///< an index that refers to nothing

/// Whether a move, or a target, has a place.
enum class Placing {
    Placed,
    RunTime, ///< computed while the program runs
    Missing, ///< its name, or the numbers behind it, stand in none of the files
    Faulty,  ///< its numbers are no place: not finite, or a rotation of length 0
    NoRobot, ///< a posture, and no robot of as many joints to take it
};

/// The words for who reads: "not known before it runs".
VRK_EXPORT std::string_view textOf(Placing placing);

/// A frame that targets are told in: a user frame in the robot's own frame, or on its wrist, and an object frame on it.
struct WorkObject {
    std::string name;
    rob::Posed user;
    rob::Posed object;
    bool isHeld = false; ///< by the robot
    bool isTold = true;  ///< whether the files hold its numbers; else it is taken for the robot's own frame
};

struct Tool {
    std::string name;
    rob::Posed pose;      ///< on the wrist, or of a tool that stands still in the robot's own frame
    bool isStill = false; ///< the robot holds the work then
    bool isTold = true;
};

/// A place whose numbers stand in the text. In which work object it lies says the move.
struct Target {
    std::string name;
    unsigned line = 0;
    rob::Posed pose;            ///< in an object frame
    std::vector<double> joints; ///< of a posture: radians; empty for a place
};

/// One step of a routine. Indices are into the lists of the program.
struct Step {
    std::string text; ///< on one line
    unsigned line = 0;
    bool isMove = false;
    Placing placing = Placing::Placed; ///< of a move; what follows is meant only where it is placed
    task::Motion motion = task::Motion::Linear;
    task::MoveLine drawn = task::MoveLine::Solid;
    int target = none;
    int via = none; ///< of a circular move
    int workObject = 0;
    int tool = none;
    std::string speed; ///< as told
    std::string zone;  ///< as told
};

struct Routine {
    std::string name;
    unsigned line = 0;
    std::vector<Step> steps;
};

/// Something that the user should know of a line.
struct Note {
    unsigned line = 0;
    std::string text;
};

struct Program {
    std::string name;
    std::vector<WorkObject> workObjects; ///< the first is the robot's own frame
    std::vector<Tool> tools;
    std::vector<Target> targets;
    std::vector<Routine> routines;
    std::vector<Note> notes;
    std::size_t declaredWithoutPlace = 0; ///< targets that are declared without numbers, or with faulty ones
};

/// What is wrong with the text of a program: "line 12: <cause>".
class VRK_EXPORT ProgramFault : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The readers of the three languages, from texts in memory. Any thread. @throws ProgramFault

/// A ".mod" program: one module, or several one after the other.
VRK_EXPORT Program readMod(std::string_view text);
/// A ".src" program. @param data  the text of the ".dat" file that belongs to it, or empty.
/// @throws ProgramFault  "line 3 of the .dat file: ..." for a fault in the data.
VRK_EXPORT Program readSrc(std::string_view text, std::string_view data);
/// A ".ls" program.
VRK_EXPORT Program readLs(std::string_view text);

} // namespace vrk::program
