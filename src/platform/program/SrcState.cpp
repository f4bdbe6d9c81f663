#include "platform/program/SrcState.h"

#include <fmt/format.h>

namespace vrk::program {

void SrcState::beginRoutine()
{
    base = SrcFrame();
    tool = SrcFrame::Unknown(Kind::Tool);
    speedOfPtp.clear();
    speedOfCp.clear();
}

const std::string& SrcState::speedOf(task::Motion motion) const
{
    return motion == task::Motion::Joint ? speedOfPtp : speedOfCp;
}

void SrcState::read(std::string_view line, unsigned number)
{
    Tokens at(line, 0, number);
    const Token first = at.peek();
    if (first.isWord("BAS")) {
        at.next();
        readBas(at);
        return;
    }
    if (first.kind != Token::Kind::Word)
        return;
    std::string name = takeName(at);
    if (at.peek().isSymbol(".")) {
        at.next();
        name += "." + lowerCase(at.next().text);
    }
    if (!at.peek().isSymbol("="))
        return;
    at.next();
    if (name == "$base")
        base = takeFrame(at, Kind::Base);
    else if (name == "$tool")
        tool = takeFrame(at, Kind::Tool);
    else if (name == "fdat_act")
        setFrames(at);
    else if (name == "$vel.cp" || name == "$vel")
        speedOfCp = onOneLine(line);
    else if (name == "pdat_act" || name == "ldat_act")
        setSpeed(at, name == "pdat_act");
}

void SrcState::readBas(Tokens& at)
{
    if (!at.next().isSymbol("(") || !at.next().isSymbol("#"))
        return;
    const std::string what = lowerCase(at.next().text);
    if (!at.next().isSymbol(","))
        return;
    const Token value = at.next();
    const bool isNumber = value.kind == Token::Kind::Number;
    if (what == "vel_ptp" || what == "ptp_params")
        speedOfPtp = std::string(value.text) + (isNumber ? " %" : "");
    else if (what == "vel_cp" || what == "cp_params")
        speedOfCp = std::string(value.text) + (isNumber ? " m/s" : "");
    else if (what == "tool")
        tool = isNumber ? numbered(value.text, Kind::Tool) : SrcFrame::Unknown(Kind::Tool);
    else if (what == "base")
        base = isNumber ? numbered(value.text, Kind::Base) : SrcFrame::Unknown(Kind::Base);
}

SrcFrame SrcState::takeFrame(Tokens& at, Kind kind)
{
    const unsigned line = at.peek().line;
    if (at.peek().isSymbol("{")) {
        std::optional<rob::Posed> pose = poseOf(expectAggregate(at));
        if (!pose || !makePlace(*pose))
            return SrcFrame::Unknown(kind);
        return {enter(fmt::format("line {}", line), *pose, true, kind), true};
    }
    if (at.peek().kind != Token::Kind::Word)
        return SrcFrame::Unknown(kind);
    const std::string name = takeName(at);
    if (name == "$nullframe")
        return {0, true};
    if (name == "base_data[?]" || name == "tool_data[?]" || at.peek().isSymbol(":"))
        return SrcFrame::Unknown(kind);
    if (name == "sbase" || name == "stool2" || name == "stool")
        return ofMoveData(at, kind);
    return framed(name, kind);
}

SrcFrame SrcState::ofMoveData(Tokens& at, Kind kind)
{
    if (at.peek().isSymbol("("))
        at.next();
    if (at.peek().kind != Token::Kind::Word)
        return SrcFrame::Unknown(kind);
    const SrcName* const found = names.find(lowerCase(at.next().text));
    const char* const key = kind == Kind::Tool ? "tool_no" : "base_no";
    if (!found || !found->aggregate.has(key))
        return SrcFrame::Unknown(kind);
    return numbered(fmt::format("{}", found->aggregate.at(key)), kind);
}

void SrcState::setFrames(Tokens& at)
{
    Tokens again = at;
    tool = ofMoveData(at, Kind::Tool);
    base = ofMoveData(again, Kind::Base);
}

void SrcState::setSpeed(Tokens& at, bool isPtp)
{
    if (at.peek().kind != Token::Kind::Word)
        return;
    const SrcName* const found = names.find(lowerCase(at.next().text));
    if (!found || !found->aggregate.has("vel"))
        return;
    const double speed = found->aggregate.at("vel");
    (isPtp ? speedOfPtp : speedOfCp) = isPtp ? fmt::format("{} %", speed) : fmt::format("{} m/s", speed);
}

SrcFrame SrcState::numbered(std::string_view number, Kind kind)
{
    if (number == "0")
        return {0, true};
    return framed(lowerCase(fmt::format("{}_data[{}]", kind == Kind::Tool ? "tool" : "base", number)), kind);
}

SrcFrame SrcState::framed(const std::string& name, Kind kind)
{
    const SrcName* const found = names.find(name);
    std::optional<rob::Posed> pose = found ? poseOf(found->aggregate) : std::nullopt;
    if (names.assignmentsOf(name) > 1)
        pose.reset();
    const bool isTold = pose && makePlace(*pose);
    std::string shown = name;
    for (char& c : shown)
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    return {enter(shown, isTold ? *pose : rob::Posed(), isTold, kind), true};
}

int SrcState::enter(const std::string& name, const rob::Posed& pose, bool isTold, Kind kind)
{
    const auto [known, isNew] = entered.try_emplace((kind == Kind::Tool ? "t" : "b") + name, 0);
    if (!isNew)
        return known->second;
    if (kind == Kind::Tool) {
        program.tools.push_back({name, pose, false, isTold});
        return known->second = static_cast<int>(program.tools.size()) - 1;
    }
    program.workObjects.push_back({name, pose, {}, false, isTold});
    return known->second = static_cast<int>(program.workObjects.size()) - 1;
}

} // namespace vrk::program
