#include "platform/program/ModNames.h"

#include <fmt/format.h>

#include <cmath>

namespace vrk::program {
namespace {

constexpr double unusedAxis = 9e8; // external axes that are not there are 9E9

/// The shape of a posture: a list whose first element holds the angles, in degrees.
Shape takeAngles(const ModValue& value, std::vector<double>& angles)
{
    if (value.kind == ModValue::Kind::Unknown)
        return Shape::IsUnknown;
    return value.isList(1) ? takeNumbers(value.list[0], angles) : Shape::IsWrong;
}

} // namespace

ModNames::ModNames(std::string_view text, Program& program) : program(program)
{
    collectAssigned(text);
}

void ModNames::collectAssigned(std::string_view text)
{
    Tokens all(text, '!');
    bool isDeclaration = false;
    std::vector<std::string_view> roots{{}};
    Token last;
    while (!all.peek().isEnd()) {
        const Token token = all.next();
        if (isOneOf(token, {"CONST", "VAR", "PERS"}))
            isDeclaration = true;
        else if (token.isSymbol(";"))
            isDeclaration = false;
        else if (token.isSymbol("{"))
            roots.emplace_back();
        else if (token.isSymbol("}") && roots.size() > 1)
            roots.pop_back();
        else if (token.kind == Token::Kind::Word && !last.isSymbol("."))
            roots.back() = last.isSymbol("\\") ? std::string_view() : token.text;
        else if (token.isSymbol(":=") && !isDeclaration && !roots.back().empty())
            assigned.insert(lowerCase(roots.back()));
        last = token;
    }
}

void ModNames::declare(ModDeclaration declaration, bool isLocal)
{
    const std::string key = lowerCase(declaration.name.text);
    ModName declared;
    declared.isChanging = !declaration.kind.isWord("CONST") && assigned.contains(key);
    const bool isPosture = declaration.type.isWord("jointtarget");
    if (isPosture || declaration.type.isWord("robtarget")) {
        declareTargets(declared, declaration, isPosture);
    } else if (declaration.type.isWord("tooldata") && !declaration.isArray) {
        declared.kind = ModName::Kind::Tool;
        declared.index = addTool(declaration.name, declaration.value);
    } else if (declaration.type.isWord("wobjdata") && !declaration.isArray) {
        declared.kind = ModName::Kind::WorkObject;
        declared.index = addWorkObject(declaration.name, declaration.value);
    } else {
        declared.value = std::move(declaration.value);
    }
    (isLocal ? local : global)[key] = std::move(declared);
}

void ModNames::declareTargets(ModName& declared, const ModDeclaration& declaration, bool isPosture)
{
    const Token& name = declaration.name;
    const ModValue& value = declaration.value;
    declared.kind = ModName::Kind::Targets;
    const bool isList = declaration.isArray && value.kind == ModValue::Kind::List;
    const std::size_t count = isList ? value.list.size() : 1;
    for (std::size_t i = 0; i < count; ++i) {
        const std::string called = isList ? fmt::format("{}{{{}}}", name.text, i + 1) : std::string(name.text);
        declared.targets.push_back(addTarget(called, name.line, isList ? value.list[i] : value, isPosture));
        program.declaredWithoutPlace += declared.targets.back().placing == Placing::Placed ? 0 : 1;
    }
}

void ModNames::declareParameter(std::string_view name)
{
    local[lowerCase(name)].isChanging = true;
}

void ModNames::leaveRoutine()
{
    local.clear();
}

const ModName* ModNames::find(std::string_view name) const
{
    const std::string key = lowerCase(name);
    for (const Names* names : {&local, &global}) {
        const auto found = names->find(key);
        if (found != names->end())
            return &found->second;
    }
    return nullptr;
}

ModValue ModNames::valueOf(const ModName& name, const std::optional<ModValue>& index) const
{
    if (name.kind == ModName::Kind::Targets) {
        const Place found = placeOf(name, index);
        const bool isPlace = found.placing == Placing::Placed && !isPosture(program, found.target);
        return isPlace ? poseValue(program.targets[static_cast<std::size_t>(found.target)].pose) : ModValue();
    }
    if (!index)
        return name.value;
    const double i = index->isNumber() ? index->number : 0;
    const bool isThere =
        i >= 1 && i == std::floor(i) && name.value.isList(1) && i <= static_cast<double>(name.value.list.size());
    return isThere ? name.value.list[static_cast<std::size_t>(i) - 1] : ModValue();
}

Place ModNames::placeOf(const ModName& name, const std::optional<ModValue>& index)
{
    if (name.isChanging)
        return {Placing::RunTime, none};
    if (name.targets.empty())
        return {Placing::Missing, none}; // an array whose brackets hold nothing
    if (!index)
        return name.targets[0];
    const double i = index->isNumber() ? index->number : 0;
    if (!(i >= 1) || i != std::floor(i))
        return {Placing::RunTime, none};
    const bool isFilled = name.targets[0].placing != Placing::RunTime || name.targets.size() > 1;
    if (i > static_cast<double>(name.targets.size()))
        return {isFilled ? Placing::Missing : Placing::RunTime, none};
    return name.targets[static_cast<std::size_t>(i) - 1];
}

Place ModNames::addTarget(const std::string& name, unsigned line, const ModValue& value, bool isPosture)
{
    Target target{name, line, {}, {}};
    Shape shape = Shape::IsWrong;
    bool isFaulty = false;
    if (isPosture) {
        std::vector<double> axes(6);
        shape = takeAngles(value, axes);
        for (const double axis : axes) {
            isFaulty = isFaulty || !std::isfinite(axis) || std::abs(axis) >= unusedAxis;
            target.joints.push_back(toRadians(axis));
        }
    } else {
        shape = takePose(value, target.pose);
        isFaulty = shape == Shape::Fits && !makePlace(target.pose);
    }
    if (shape == Shape::IsUnknown)
        return {Placing::RunTime, none};
    if (shape == Shape::IsWrong)
        failAtLine(line, fmt::format("{}: expected {}", inQuotes(name),
                                     isPosture ? "[[six angles], ...]" : "[[x, y, z], [q1, q2, q3, q4], ...]"));
    return isFaulty ? enterFault(program, name, line) : enterTarget(program, std::move(target));
}

int ModNames::addTool(const Token& name, const ModValue& value)
{
    Tool tool{std::string(name.text), {}, false, false};
    if (value.isList(2)) {
        tool.isTold = takePose(value.list[1], tool.pose) == Shape::Fits && makePlace(tool.pose);
        tool.isStill = value.list[0].isNumber() && value.list[0].number == 0;
    }
    if (!tool.isTold)
        tool.pose = {};
    program.tools.push_back(std::move(tool));
    return static_cast<int>(program.tools.size()) - 1;
}

int ModNames::addWorkObject(const Token& name, const ModValue& value)
{
    WorkObject frame{std::string(name.text), {}, {}, false, false};
    if (value.isList(5)) {
        frame.isHeld = value.list[0].isNumber() && value.list[0].number != 0;
        frame.isTold = takePose(value.list[3], frame.user) == Shape::Fits && makePlace(frame.user) &&
                       takePose(value.list[4], frame.object) == Shape::Fits && makePlace(frame.object);
    }
    if (!frame.isTold)
        frame.user = frame.object = {};
    program.workObjects.push_back(std::move(frame));
    return static_cast<int>(program.workObjects.size()) - 1;
}

} // namespace vrk::program
