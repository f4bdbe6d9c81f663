#include "platform/program/SrcMoves.h"

namespace vrk::program {

using task::Motion;
using task::MoveLine;

namespace {

/// "$VEL.CP=0.5", "$VEL_AXIS[1]=SVEL_JOINT(100.0)": what stands behind the sign, up to a comma.
void readSpeed(Tokens& at, Step& step)
{
    while (!at.peek().isEnd() && !at.peek().isSymbol("=") && !at.peek().isSymbol(","))
        at.next();
    if (!at.peek().isSymbol("="))
        return;
    at.next();
    const std::size_t begin = at.peek().at;
    int depth = 0;
    while (!at.peek().isEnd() && !(depth == 0 && at.peek().isSymbol(","))) {
        depth += at.peek().isSymbol("(") ? 1 : at.peek().isSymbol(")") ? -1 : 0;
        at.next();
    }
    step.speed = onOneLine(at.between(begin, at.behind()));
}

void skipBrackets(Tokens& at)
{
    if (!at.peek().isSymbol("("))
        return;
    int depth = 0;
    do {
        depth += at.peek().isSymbol("(") ? 1 : at.peek().isSymbol(")") ? -1 : 0;
        at.next();
    } while (depth > 0 && !at.peek().isEnd());
}

} // namespace

std::optional<SrcMove> srcMoveOf(const Token& token)
{
    static const std::unordered_map<std::string, SrcMove> words{
        {"ptp", {Motion::Joint, MoveLine::Dashed}},        {"sptp", {Motion::Joint, MoveLine::Dashed}},
        {"ptp_rel", {Motion::Joint, MoveLine::Dashed}},    {"sptp_rel", {Motion::Joint, MoveLine::Dashed}},
        {"lin", {Motion::Linear, MoveLine::Solid}},        {"slin", {Motion::Linear, MoveLine::Solid}},
        {"lin_rel", {Motion::Linear, MoveLine::Solid}},    {"slin_rel", {Motion::Linear, MoveLine::Solid}},
        {"circ", {Motion::Circular, MoveLine::Solid}},     {"scirc", {Motion::Circular, MoveLine::Solid}},
        {"circ_rel", {Motion::Circular, MoveLine::Solid}}, {"scirc_rel", {Motion::Circular, MoveLine::Solid}},
        {"spl", {Motion::Linear, MoveLine::Dashed}}}; // on a spline, which is no line
    if (token.kind != Token::Kind::Word)
        return std::nullopt;
    const auto found = words.find(lowerCase(token.text));
    return found == words.end() ? std::nullopt : std::optional(found->second);
}

void SrcMoves::read(Tokens& at, Step& step, const SrcMove& move, const Token& first)
{
    step.isMove = true;
    step.motion = move.motion;
    step.drawn = move.drawn;
    step.tool = state.getTool().index;
    step.workObject = state.getBase().index;
    std::optional<Place> via;
    if (move.motion == Motion::Circular) {
        via = takeTarget(at);
        if (!at.next().isSymbol(","))
            failAtLine(first.line, inQuotes(first.text) + " needs a via point and a target");
    }
    setPlace(step, takeTarget(at), via);
    if (lowerCase(first.text).ends_with("_rel"))
        step.placing = Placing::RunTime;
    const bool isBaseKnown = readTail(at, step);
    const bool isToPosture = step.placing == Placing::Placed && isPosture(program, step.target);
    if (isToPosture)
        step.drawn = MoveLine::Solid;
    if (!isBaseKnown && step.placing == Placing::Placed && !isToPosture)
        step.placing = Placing::RunTime;
    if (isToPosture && move.motion != Motion::Joint)
        step.placing = Placing::Faulty; // no line leads to a posture
}

bool SrcMoves::readTail(Tokens& at, Step& step)
{
    step.speed = state.speedOf(step.motion);
    bool isBaseKnown = state.getBase().isKnown;
    while (!at.peek().isEnd()) {
        const Token token = at.next();
        if (token.kind != Token::Kind::Word)
            continue;
        const std::string word = lowerCase(token.text);
        if (word.starts_with("c_")) {
            step.zone += (step.zone.empty() ? "" : " ") + std::string(token.text);
        } else if (word == "$base" && at.peek().isSymbol("=")) {
            at.next();
            const SrcFrame own = state.takeFrame(at, SrcFrame::Kind::Base);
            step.workObject = own.index;
            isBaseKnown = own.isKnown;
        } else if (word == "$tool" && at.peek().isSymbol("=")) {
            at.next();
            step.tool = state.takeFrame(at, SrcFrame::Kind::Tool).index;
        } else if (word.starts_with("$vel")) {
            readSpeed(at, step);
        }
    }
    return isBaseKnown;
}

Place SrcMoves::takeTarget(Tokens& at)
{
    const std::size_t begin = at.peek().at;
    const unsigned line = at.peek().line;
    Place found;
    if (at.peek().isSymbol("{")) {
        const SrcAggregate aggregate = expectAggregate(at);
        if (aggregate.isKnown && !at.peek().isSymbol(":"))
            found = names.addTarget(std::string(at.between(begin, at.behind())), line, aggregate);
    } else if (at.peek().kind == Token::Kind::Word) {
        found = takeNamed(at);
    } else {
        failAtLine(line, "a move without a target");
    }
    while (at.peek().isSymbol(":")) {
        at.next();
        if (at.peek().isSymbol("{")) {
            const SrcAggregate offset = expectAggregate(at);
            found = moved(found, offset, at.between(begin, at.behind()), line);
            continue;
        }
        if (at.peek().kind == Token::Kind::Word)
            takeName(at);
        found = {};
    }
    return found;
}

Place SrcMoves::takeNamed(Tokens& at)
{
    const std::string name = takeName(at);
    const SrcName* const known = names.find(name);
    const bool isComputed = name.ends_with("[?]") || name.starts_with("$") || names.assignmentsOf(name) > 0 ||
                            at.peek().isSymbol("(") || at.peek().isSymbol(".");
    skipBrackets(at);
    if (known)
        return known->place;
    return {isComputed ? Placing::RunTime : Placing::Missing, none};
}

Place SrcMoves::moved(const Place& from, const SrcAggregate& by, std::string_view name, unsigned line)
{
    const std::optional<rob::Posed> offset = poseOf(by);
    if (from.placing != Placing::Placed || !offset || !by.isKnown)
        return {from.placing == Placing::Placed ? Placing::RunTime : from.placing, none};
    if (isPosture(program, from.target))
        return {};
    const rob::Posed& start = program.targets[static_cast<std::size_t>(from.target)].pose;
    Target target{onOneLine(name), line, start * *offset, {}};
    if (!makePlace(target.pose))
        return {Placing::Faulty, none};
    return enterTarget(program, std::move(target));
}

} // namespace vrk::program
