#include "recording/Session.h"

#include "canvas/DrawMode.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <string_view>
#include <utility>

namespace vrkview {
namespace {

using Json = nlohmann::ordered_json;
using Kind = InputEvent::Kind;

constexpr const char* magic = "recording";
constexpr int version = 1;

constexpr std::array<std::pair<const char*, Kind>, 6> kinds = {{{"press", Kind::Press},
                                                                {"release", Kind::Release},
                                                                {"double-click", Kind::DoubleClick},
                                                                {"move", Kind::Move},
                                                                {"leave", Kind::Leave},
                                                                {"wheel", Kind::Wheel}}};
constexpr std::array<std::pair<const char*, Qt::MouseButton>, 3> buttons = {
    {{"left", Qt::LeftButton}, {"middle", Qt::MiddleButton}, {"right", Qt::RightButton}}};
constexpr std::array<std::pair<const char*, Qt::KeyboardModifier>, 3> modifiers = {
    {{"Shift", Qt::ShiftModifier}, {"Ctrl", Qt::ControlModifier}, {"Alt", Qt::AltModifier}}};

template <typename Table, typename Value>
const char* nameIn(const Table& table, Value value)
{
    const auto found = std::ranges::find(table, value, [](const auto& entry) { return entry.second; });
    return found == table.end() ? "other" : found->first;
}

template <typename Table>
auto valueIn(const Table& table, const std::string& name)
{
    const auto found = std::ranges::find(table, std::string_view(name), [](const auto& entry) { return entry.first; });
    if (found == table.end())
        throw SessionError(fmt::format("'{}' is not known", name));
    return found->second;
}

template <typename Flags, typename Table>
Json namesIn(const Table& table, Flags flags)
{
    Json names = Json::array();
    for (const auto& [name, flag] : table)
        if (flags.testFlag(flag))
            names.push_back(name);
    return names;
}

template <typename Flags, typename Table>
Flags flagsIn(const Table& table, const Json& names)
{
    Flags flags;
    for (const Json& name : names)
        flags |= valueIn(table, name.get<std::string>());
    return flags;
}

void expectNumbers(const Json& numbers, std::size_t count)
{
    if (!numbers.is_array() || numbers.size() != count || !std::ranges::all_of(numbers, &Json::is_number))
        throw SessionError(fmt::format("{} is not a list of {} numbers", numbers.dump(), count));
}

SessionHead headFrom(const Json& line)
{
    if (!line.is_object() || line.value("vrkview", "") != magic)
        throw SessionError("this is no recording of vrkview");
    if (line.at("version") != version)
        throw SessionError(fmt::format("version {} is not known", line.at("version").dump()));
    SessionHead head;
    head.station = line.at("station").get<std::string>();
    head.view = sizeFrom(line.at("view"));
    head.mouse = styleFrom(line.at("mouse"));
    head.clickRadius = line.at("clickRadius").get<double>();
    head.display = line.at("display").get<std::string>();
    if (!findDrawMode(head.display))
        throw SessionError(fmt::format("display '{}' is none of {}", head.display, drawModeNames()));
    head.grid = line.at("grid").get<bool>();
    // Older recordings tell nothing of programs: their stations showed none.
    const Json programs = line.value("programs", Json::object());
    for (const ProgramPartName& each : allProgramParts())
        if (programs.contains(each.name))
            head.programParts.emplace_back(each.part, programs.at(each.name).get<bool>());
    // Older recordings leave nothing out.
    const Json picks = line.value("picks", Json::object());
    for (const PickGroupName& each : allPickGroups())
        head.pickGroups.emplace_back(each.group, picks.value(each.name, true));
    if (line.contains("moveSteps")) // older recordings moved nothing by hand
        head.moveSteps = stepsFrom(line.at("moveSteps"));
    head.camera = poseFrom(line.at("camera"));
    return head;
}

/// What may be read of a step is, so that it can be played.
void checkStep(const Json& step)
{
    if (step.contains("pick"))
        return;
    const std::string event = step.at("event").get<std::string>();
    if (isInput(step))
        inputFrom(step);
    else if (event == "key" || event == "type")
        step.at("key").get<std::string>();
    else if (event == "camera")
        poseFrom(step.at("pose"));
    else if (event == "resize")
        sizeFrom(step.at("view"));
    else if (event == "mouse")
        styleFrom(step.at("style"));
    else if (event == "snap")
        step.at("on").get<bool>();
    else if (event == "steps")
        stepsFrom(step.at("steps"));
    else if (event == "select" || event == "hide")
        step.at("ids").get<std::vector<unsigned>>();
    else if (event == "candidate") {
        step.at("row").get<int>();
        modifiersFrom(step);
    } else if (event == "open")
        step.at("files").get<std::vector<std::string>>();
    else if (event == "joints") {
        step.at("id").get<unsigned>();
        step.at("values").get<std::vector<double>>();
        step.value("gesture", 0);
    } else
        throw SessionError(fmt::format("event '{}' is not known", event));
}

bool areClose(double a, double b)
{
    constexpr double part = 1e-3;
    return std::abs(a - b) <= part * std::max({1.0, std::abs(a), std::abs(b)});
}

bool agree(const Json& a, const Json& b)
{
    if (a.is_number_float() || b.is_number_float())
        return a.is_number() && b.is_number() && areClose(a.get<double>(), b.get<double>());
    if (a.is_array() && b.is_array())
        return std::ranges::equal(a, b, agree);
    if (!a.is_object() || !b.is_object())
        return a == b;
    return a.size() == b.size() && std::ranges::all_of(a.items(), [&b](const auto& item) {
               return b.contains(item.key()) && agree(item.value(), b.at(item.key()));
           });
}

/// Without the package's own "[json.exception.type_error.302] " in front.
std::string causeOf(const Json::exception& failure)
{
    const std::string text = failure.what();
    const std::size_t end = text.find("] ");
    return end == std::string::npos ? text : text.substr(end + 2);
}

} // namespace

Session readSession(const std::filesystem::path& file)
{
    std::ifstream stream(file);
    if (!stream)
        throw SessionError(fmt::format("{}: the recording cannot be read", file.string()));
    Session session{file, {}, {}};
    int number = 0;
    for (std::string text; std::getline(stream, text);) {
        ++number;
        try {
            Json line = Json::parse(text);
            if (number == 1) {
                session.head = headFrom(line);
            } else {
                checkStep(line);
                session.lines.push_back({number, std::move(line)});
            }
        } catch (const Json::parse_error&) {
            // Its text counts lines and columns in this one line.
            throw SessionError(fmt::format("{}: line {}: this is no JSON, or it is cut short", file.string(), number));
        } catch (const Json::exception& failure) {
            throw SessionError(fmt::format("{}: line {}: {}", file.string(), number, causeOf(failure)));
        } catch (const std::exception& failure) {
            throw SessionError(fmt::format("{}: line {}: {}", file.string(), number, failure.what()));
        }
    }
    if (number == 0)
        throw SessionError(fmt::format("{}: the recording is empty", file.string()));
    return session;
}

Json toJson(const SessionHead& head)
{
    Json programs = Json::object();
    for (const auto& [part, drawn] : head.programParts)
        programs[std::ranges::find(allProgramParts(), part, &ProgramPartName::part)->name] = drawn;
    Json picks = Json::object();
    for (const auto& [group, isTaken] : head.pickGroups)
        picks[std::ranges::find(allPickGroups(), group, &PickGroupName::group)->name] = isTaken;
    return {{"vrkview", magic},
            {"version", version},
            {"station", head.station},
            {"view", toJson(head.view)},
            {"mouse", nameOf(head.mouse)},
            {"clickRadius", head.clickRadius},
            {"display", head.display},
            {"grid", head.grid},
            {"programs", programs},
            {"picks", picks},
            {"moveSteps", toJson(head.moveSteps)},
            {"camera", toJson(head.camera)}};
}

Json toJson(const InputEvent& event)
{
    Json step = {{"event", nameIn(kinds, event.kind)}};
    if (event.kind == Kind::Leave)
        return step;
    step["at"] = {event.place.x(), event.place.y()};
    if (event.kind == Kind::Wheel)
        step["notches"] = event.notches;
    else if (event.kind != Kind::Move)
        step["button"] = nameIn(buttons, event.button);
    else if (event.held != Qt::NoButton)
        step["held"] = namesIn(buttons, event.held);
    step.update(toJson(event.modifiers));
    return step;
}

Json toJson(Qt::KeyboardModifiers held)
{
    Json step = Json::object();
    if (Json names = namesIn(modifiers, held); !names.empty())
        step["modifiers"] = std::move(names);
    return step;
}

Qt::KeyboardModifiers modifiersFrom(const Json& step)
{
    return flagsIn<Qt::KeyboardModifiers>(modifiers, step.value("modifiers", Json::array()));
}

bool isInput(const Json& step)
{
    return std::ranges::any_of(kinds, [&](const auto& kind) { return step.value("event", "") == kind.first; });
}

InputEvent inputFrom(const Json& step)
{
    InputEvent event;
    event.kind = valueIn(kinds, step.at("event").get<std::string>());
    if (event.kind == Kind::Leave)
        return event;
    const Json& place = step.at("at");
    expectNumbers(place, 2);
    event.place = {place[0].get<double>(), place[1].get<double>()};
    if (event.kind == Kind::Wheel)
        event.notches = step.at("notches").get<double>();
    else if (event.kind != Kind::Move)
        event.button = valueIn(buttons, step.at("button").get<std::string>());
    event.held = flagsIn<Qt::MouseButtons>(buttons, step.value("held", Json::array()));
    event.modifiers = modifiersFrom(step);
    return event;
}

Json toJson(const vrk::rob::Posef& pose)
{
    const auto& p = pose.position;
    const auto& q = pose.orientation;
    return {p.x, p.y, p.z, q.w, q.x, q.y, q.z};
}

vrk::rob::Posef poseFrom(const Json& numbers)
{
    expectNumbers(numbers, 7);
    const auto at = [&numbers](std::size_t i) { return numbers[i].get<float>(); };
    vrk::rob::Posef pose;
    pose.position = {at(0), at(1), at(2)};
    pose.orientation.w = at(3);
    pose.orientation.x = at(4);
    pose.orientation.y = at(5);
    pose.orientation.z = at(6);
    return pose;
}

Json toJson(const QSize& size)
{
    return {size.width(), size.height()};
}

QSize sizeFrom(const Json& numbers)
{
    constexpr int largest = 16384;
    expectNumbers(numbers, 2);
    const QSize size(numbers[0].get<int>(), numbers[1].get<int>());
    if (size.width() < 1 || size.height() < 1 || size.width() > largest || size.height() > largest)
        throw SessionError(fmt::format("{} is no size of a view", numbers.dump()));
    return size;
}

Json toJson(const MoveSteps& steps)
{
    return {steps.length, steps.angle};
}

MoveSteps stepsFrom(const Json& numbers)
{
    expectNumbers(numbers, 2);
    return {numbers[0].get<double>(), numbers[1].get<double>()};
}

const char* nameOf(Settings::MouseStyle style)
{
    return style == Settings::MouseStyle::OrbitWithLeft ? "left" : "middle";
}

Settings::MouseStyle styleFrom(const Json& name)
{
    for (const auto style : {Settings::MouseStyle::OrbitWithLeft, Settings::MouseStyle::OrbitWithMiddle})
        if (name == nameOf(style))
            return style;
    throw SessionError(fmt::format("{} is no style of the mouse", name.dump()));
}

std::string differenceOf(const Json& recorded, const Json& now)
{
    for (const auto& [key, value] : recorded.items())
        if (!now.contains(key) || !agree(value, now.at(key)))
            return fmt::format("\"{}\" was {}, and is {} now", key, value.dump(),
                               now.contains(key) ? now.at(key).dump() : "not there");
    for (const auto& [key, value] : now.items())
        if (!recorded.contains(key))
            return fmt::format("\"{}\" was not there, and is {} now", key, value.dump());
    return {};
}

} // namespace vrkview
