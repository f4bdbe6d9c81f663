#pragma once

#include "canvas/InputEvent.h"
#include "canvas/ProgramParts.h"
#include "canvas/ViewPick.h"
#include "window/Settings.h"

#include "scene/math/Pose.h"

#include <nlohmann/json.hpp>

#include <QSize>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace vrkview {

/// A recorded session: what a user did in the window, line by line as JSON. The first line tells how the window was; each
/// further one is a step, something that was done, or a pick that the step before it made.
///
/// Places are device pixels of the view, joint values and the camera's place those of the model.
class SessionError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// How the window was when the recording began.
struct SessionHead {
    std::string station; // its title
    QSize view;          // device pixels
    Settings::MouseStyle mouse = Settings::MouseStyle::OrbitWithMiddle;
    double clickRadius = 0; // device pixels
    std::string display;    // the name of a `DrawMode`
    bool grid = false;
    std::vector<std::pair<ProgramPart, bool>> programParts; // those that were told
    vrk::rob::Posef camera;
    std::vector<std::pair<PickGroup, bool>> pickGroups;
    MoveSteps moveSteps;
};

struct SessionLine {
    int number = 0; // in the file, from 1
    nlohmann::ordered_json content;
};

struct Session {
    std::filesystem::path file;
    SessionHead head;
    std::vector<SessionLine> lines;
};

/// Reads and checks all of it, so that nothing is played of a damaged one.
/// @throws SessionError naming the file, the line and what is wrong there.
Session readSession(const std::filesystem::path& file);
nlohmann::ordered_json toJson(const SessionHead& head);

// The parts that steps are made of. The readers throw std::exception where a field is missing or of the wrong type.

/// The step of a mouse event: its kind under "event", and the fields which that kind has.
nlohmann::ordered_json toJson(const InputEvent& event);
/// Whether the step is one of the mouse, for the function below.
bool isInput(const nlohmann::ordered_json& step);
InputEvent inputFrom(const nlohmann::ordered_json& step);
/// The keys that were held, under "modifiers"; nothing for none.
nlohmann::ordered_json toJson(Qt::KeyboardModifiers held);
Qt::KeyboardModifiers modifiersFrom(const nlohmann::ordered_json& step);
nlohmann::ordered_json toJson(const vrk::rob::Posef& pose);
vrk::rob::Posef poseFrom(const nlohmann::ordered_json& numbers);
nlohmann::ordered_json toJson(const MoveSteps& steps);
MoveSteps stepsFrom(const nlohmann::ordered_json& numbers);
nlohmann::ordered_json toJson(const QSize& size);
QSize sizeFrom(const nlohmann::ordered_json& numbers);
const char* nameOf(Settings::MouseStyle style);
Settings::MouseStyle styleFrom(const nlohmann::ordered_json& name);

/// Tells in words where a pick that is made now differs from the recorded one; empty if they agree. Whole numbers and texts
/// must be equal, measures to a thousandth of their size, or of 1 where that is larger.
std::string differenceOf(const nlohmann::ordered_json& recorded, const nlohmann::ordered_json& now);

} // namespace vrkview
