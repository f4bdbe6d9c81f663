#include "platform/program/ProgramText.h"

#include <fmt/format.h>

#include <array>
#include <cmath>
#include <optional>
#include <unordered_map>

namespace vrk::program {
namespace {

using task::Motion;
using task::MoveLine;

constexpr int deepestNesting = 20; // of braces

/// The numbers and words between braces, by the small letters of their names.
struct Aggregate {
    std::unordered_map<std::string, double> numbers;
    bool isKnown = true; ///< whether every value is a number, a text or a word

    bool has(const char* name) const { return numbers.contains(name); }
    double at(const char* name) const { return numbers.at(name); }
};

/// The lines of a text, one after the other. A "&" line and what stands behind a semicolon say nothing of the program.
class Lines {
public:
    explicit Lines(std::string_view text) : text(text) {}

    /// The next line with something in it; false at the end.
    bool next(std::string_view& line)
    {
        while (at < text.size()) {
            const std::size_t end = std::min(text.find('\n', at), text.size());
            line = withoutComment(text.substr(at, end - at));
            at = end + 1;
            ++count;
            const std::size_t first = line.find_first_not_of(" \t\r\f\v");
            if (first == std::string_view::npos || line[first] == '&')
                continue;
            line.remove_prefix(first);
            return true;
        }
        return false;
    }
    unsigned number() const { return count; }

private:
    static std::string_view withoutComment(std::string_view line)
    {
        bool isText = false;
        for (std::size_t i = 0; i < line.size(); ++i) {
            if (line[i] == '"')
                isText = !isText;
            else if (line[i] == ';' && !isText)
                return line.substr(0, i);
        }
        return line;
    }

    std::string_view text;
    std::size_t at = 0;
    unsigned count = 0;
};

std::optional<Aggregate> readAggregate(Tokens& at, int depth = 0);

/// One value of an aggregate: a number, a word, a text, or braces within.
bool readField(Tokens& at, std::optional<double>& number, Aggregate& inner, int depth)
{
    bool isNegative = false;
    while (at.peek().isSymbol("-") || at.peek().isSymbol("+"))
        isNegative = at.next().isSymbol("-") != isNegative;
    if (at.peek().kind == Token::Kind::Number) {
        double value = 0;
        if (!parseNumber(at.next().text, value))
            return false;
        number = isNegative ? -value : value;
        return true;
    }
    if (at.peek().isSymbol("{")) {
        const std::optional<Aggregate> found = readAggregate(at, depth + 1);
        if (found)
            inner = *found;
        return found.has_value();
    }
    if (at.peek().isSymbol("#"))
        at.next();
    if (at.peek().kind != Token::Kind::Word && at.peek().kind != Token::Kind::Text)
        return false;
    const bool isText = at.next().kind == Token::Kind::Text;
    if (!isText && at.peek().isSymbol("[")) { // an element of an array, whose value is not looked for here
        while (!at.peek().isEnd() && !at.peek().isSymbol("]"))
            at.next();
        at.next();
    }
    return true;
}

/// Empty where the braces are damaged.
std::optional<Aggregate> readAggregate(Tokens& at, int depth)
{
    if (depth > deepestNesting || !at.next().isSymbol("{"))
        return std::nullopt;
    Aggregate found;
    while (!at.peek().isSymbol("}")) {
        const Token name = at.next();
        if (name.kind != Token::Kind::Word)
            return std::nullopt;
        if (at.peek().isSymbol(":")) { // the name of a type: "{POS: X 1, ...}"
            at.next();
            continue;
        }
        if (at.peek().isSymbol("[")) { // "POINT2[]"
            while (!at.peek().isEnd() && !at.peek().isSymbol("]"))
                at.next();
            at.next();
        }
        std::optional<double> number;
        Aggregate inner;
        const bool isWord = at.peek().kind == Token::Kind::Word;
        if (!readField(at, number, inner, depth))
            return std::nullopt;
        if (number)
            found.numbers[lowerCase(name.text)] = *number;
        else if (isWord)
            found.isKnown = false; // a variable
        if (at.peek().isSymbol(","))
            at.next();
        else if (!at.peek().isSymbol("}"))
            return std::nullopt;
    }
    at.next();
    return found;
}

bool isPosture(const Aggregate& aggregate)
{
    return aggregate.has("a1") || aggregate.has("a2") || aggregate.has("a6");
}

/// What a name stands for.
struct Named {
    Placing placing = Placing::RunTime;
    int target = none;
    Aggregate aggregate;
};

/// A frame of a move: an index into the program's list, or one that is known only when the program runs.
struct Frame {
    int index = 0;
    bool isKnown = true;
};

std::optional<std::pair<Motion, MoveLine>> moveWordOf(const Token& token)
{
    static const std::unordered_map<std::string, std::pair<Motion, MoveLine>> words{
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

class SrcReader {
public:
    SrcReader()
    {
        program.workObjects.push_back({"$NULLFRAME", {}, {}, false, true});
        program.tools.push_back({"$NULLFRAME", {}, false, true});
    }

    Program read(std::string_view text, std::string_view data)
    {
        countAssignments(text);
        if (!data.empty())
            readData(data);
        Lines lines(text);
        std::string_view line;
        while (lines.next(line)) {
            Tokens at(line, 0, lines.number());
            if (at.peek().isWord("GLOBAL"))
                at.next();
            const Token word = at.next();
            if (!word.isWord("DEF") && !word.isWord("DEFFCT"))
                failAtLine(lines.number(), "expected DEF");
            if (word.isWord("DEFFCT"))
                at.next(); // the type of its value
            if (at.peek().kind != Token::Kind::Word)
                failAtLine(lines.number(), "expected the name of a routine");
            program.routines.push_back({std::string(at.next().text), lines.number(), {}});
            readRoutine(lines, word.isWord("DEF") ? "END" : "ENDFCT");
        }
        if (program.routines.empty())
            failAtLine(lines.number() + 1, "expected DEF");
        program.name = program.routines.front().name;
        return std::move(program);
    }

private:
    /// A name, with the index that stands behind it: "xp1", "p[3]". An index that is no number is "?".
    static std::string takeName(Tokens& at)
    {
        std::string name = lowerCase(at.next().text);
        if (!at.peek().isSymbol("["))
            return name;
        at.next();
        const Token index = at.next();
        const bool isPlain = index.kind == Token::Kind::Number && at.peek().isSymbol("]");
        name += "[" + (isPlain ? std::string(index.text) : std::string("?")) + "]";
        while (!at.peek().isEnd() && !at.peek().isSymbol("]"))
            at.next();
        at.next();
        return name;
    }

    /// What the program gives a value more often than once, or a piece of it, is known only when it runs.
    void countAssignments(std::string_view text)
    {
        Lines lines(text);
        std::string_view line;
        while (lines.next(line)) {
            if (line.find('=') == std::string_view::npos)
                continue;
            Tokens at(line, 0, lines.number());
            if (at.peek().kind != Token::Kind::Word)
                continue;
            const std::string name = takeName(at);
            if (at.peek().isSymbol("="))
                ++assignments[name];
            else if (at.peek().isSymbol("."))
                assignments[name] += 2;
        }
    }

    int assignmentsOf(const std::string& name) const
    {
        const std::size_t bracket = name.find('[');
        const auto count = [this](const std::string& key) {
            const auto found = assignments.find(key);
            return found == assignments.end() ? 0 : found->second;
        };
        const int anyElement = bracket == std::string::npos ? 0 : 2 * count(name.substr(0, bracket) + "[?]");
        return count(name) + anyElement;
    }

    // Data

    void readData(std::string_view data)
    {
        try {
            Lines lines(data);
            std::string_view line;
            if (!lines.next(line) || !Tokens(line, 0, lines.number()).peek().isWord("DEFDAT"))
                failAtLine(std::max(1U, lines.number()), "expected DEFDAT");
            for (;;) {
                if (!lines.next(line))
                    failAtLine(lines.number(), "the file ends before ENDDAT");
                Tokens at(line, 0, lines.number());
                if (at.peek().isWord("ENDDAT"))
                    return;
                readAssignment(at, true);
            }
        } catch (const ProgramFault& fault) {
            const std::string text = fault.what(); // "line 3: ..."
            const std::size_t colon = text.find(':');
            throw ProgramFault(text.substr(0, colon) + " of the .dat file" + text.substr(colon));
        }
    }

    /// "DECL E6POS XP1={X 1, ...}" and "P[2]={...}". Anything else is passed over.
    /// @return whether the line gave a name its value.
    bool readAssignment(Tokens& at, bool isData)
    {
        const unsigned line = at.peek().line;
        while (at.peek().isWord("DECL") || at.peek().isWord("GLOBAL") || at.peek().isWord("CONST"))
            at.next();
        if (at.peek().kind != Token::Kind::Word)
            return false;
        std::string name = takeName(at);
        std::string shown = name;
        if (at.peek().kind == Token::Kind::Word) { // the first one was a type
            shown = at.peek().text;
            name = takeName(at);
            if (name.find('[') != std::string::npos)
                shown = name;
        }
        if (!at.peek().isSymbol("="))
            return false;
        at.next();
        if (!at.peek().isSymbol("{"))
            return false;
        const std::optional<Aggregate> aggregate = readAggregate(at);
        if (!aggregate || !at.peek().isEnd())
            failAtLine(line, inQuotes(shown) + ": braces that do not hold names and numbers");
        give(name, shown, *aggregate, line, isData);
        return true;
    }

    void give(const std::string& name, const std::string& shown, const Aggregate& aggregate, unsigned line, bool isData)
    {
        const bool isPlace = isPosture(aggregate) || aggregate.has("x") || aggregate.has("y") || aggregate.has("z");
        Named named{Placing::RunTime, none, aggregate};
        const bool isFixed = assignmentsOf(name) <= (isData ? 0 : 1);
        if (name.starts_with("$")) {
            names[name] = named; // a frame of the controller's own
            return;
        }
        if (isPlace) {
            const Named found = addTarget(shown, line, aggregate);
            named.placing = isFixed ? found.placing : Placing::RunTime;
            named.target = isFixed ? found.target : none;
            program.declaredWithoutPlace += found.placing == Placing::Placed ? 0 : 1;
        }
        names[name] = named;
    }

    Named addTarget(const std::string& name, unsigned line, const Aggregate& from)
    {
        Target target{onOneLine(name), line, {}, {}};
        bool isPlace = true;
        if (isPosture(from)) {
            for (const char* axis : {"a1", "a2", "a3", "a4", "a5", "a6"}) {
                if (!from.has(axis))
                    return {Placing::RunTime, none, {}}; // the others stay as they are
                isPlace = isPlace && std::isfinite(from.at(axis));
                target.joints.push_back(toRadians(from.at(axis)));
            }
        } else {
            const std::optional<rob::Posed> pose = poseOf(from);
            if (!pose)
                return {Placing::RunTime, none, {}};
            target.pose = *pose;
            isPlace = makePlace(target.pose);
        }
        if (!isPlace) {
            program.notes.push_back({line, fmt::format("{}: {}", inQuotes(name), faultyPlace)});
            return {Placing::Faulty, none, {}};
        }
        program.targets.push_back(std::move(target));
        return {Placing::Placed, static_cast<int>(program.targets.size()) - 1, {}};
    }

    /// Empty where one of the six numbers is missing.
    static std::optional<rob::Posed> poseOf(const Aggregate& from)
    {
        for (const char* name : {"x", "y", "z", "a", "b", "c"})
            if (!from.has(name))
                return std::nullopt;
        return rob::Posed(rob::Posd(from.at("x"), from.at("y"), from.at("z")),
                          fromZyx(from.at("a"), from.at("b"), from.at("c")));
    }

    // Routines

    Step& addStep(std::string_view text, unsigned line)
    {
        std::vector<Step>& steps = program.routines.back().steps;
        steps.emplace_back();
        steps.back().text = onOneLine(text);
        steps.back().line = line;
        return steps.back();
    }

    void readRoutine(Lines& lines, std::string_view end)
    {
        const Routine& routine = program.routines.back();
        const std::string name = routine.name;
        const unsigned begin = routine.line;
        base = Frame();
        tool = {none, true};
        speedOfPtp.clear();
        speedOfCp.clear();
        std::string_view line;
        while (lines.next(line)) {
            Tokens at(line, 0, lines.number());
            const Token first = at.peek();
            if (first.isWord(end))
                return;
            if (first.isWord("DEF") || first.isWord("DEFFCT"))
                break;
            if (const auto move = moveWordOf(first)) {
                at.next();
                readMove(at, addStep(line, lines.number()), *move, first);
            } else if (isDeclaration(first)) {
                readAssignment(at, false);
            } else {
                readState(line, lines.number());
                readAssignment(at, false);
                addStep(line, lines.number());
            }
        }
        failAtLine(lines.number(), fmt::format("{} of line {} has no {}", inQuotes(name), begin, end));
    }

    static bool isDeclaration(const Token& first)
    {
        for (const char* word :
             {"DECL", "INT", "REAL", "BOOL", "CHAR", "POS", "E6POS", "FRAME", "AXIS", "E6AXIS", "EXT", "SIGNAL"})
            if (first.isWord(word))
                return true;
        return false;
    }

    /// Statements that set the frames and speeds of the moves behind them.
    void readState(std::string_view line, unsigned number)
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
            base = frameOf(at, false);
        else if (name == "$tool")
            tool = frameOf(at, true);
        else if (name == "fdat_act")
            setFrames(at);
        else if (name == "$vel.cp" || name == "$vel")
            speedOfCp = onOneLine(line);
        else if (name == "pdat_act" || name == "ldat_act")
            setSpeed(at, name == "pdat_act");
    }

    /// "BAS(#VEL_PTP, 100)", "BAS(#TOOL, 1)"
    void readBas(Tokens& at)
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
            tool = isNumber ? numbered("TOOL_DATA", value.text, true) : Frame{none, true};
        else if (what == "base")
            base = isNumber ? numbered("BASE_DATA", value.text, false) : Frame{0, false};
    }

    /// What stands behind "$BASE=" or "$TOOL=": braces, an element of the controller's list, or a name.
    Frame frameOf(Tokens& at, bool isTool)
    {
        const unsigned line = at.peek().line;
        if (at.peek().isSymbol("{")) {
            const std::optional<Aggregate> aggregate = readAggregate(at);
            if (!aggregate)
                failAtLine(line, "braces that do not hold names and numbers");
            std::optional<rob::Posed> pose = poseOf(*aggregate);
            if (!pose || !makePlace(*pose))
                return {isTool ? none : 0, isTool};
            return {enter(fmt::format("line {}", line), *pose, true, isTool), true};
        }
        if (at.peek().kind != Token::Kind::Word)
            return {isTool ? none : 0, isTool};
        const std::string name = takeName(at);
        if (name == "$nullframe")
            return {0, true};
        if (name == "base_data[?]" || name == "tool_data[?]" || at.peek().isSymbol(":"))
            return {isTool ? none : 0, isTool};
        if (name == "sbase" || name == "stool2" || name == "stool")
            return ofMoveData(at, isTool);
        return framed(name, isTool);
    }

    /// "SBASE(FP1.BASE_NO)", "STOOL2(FP1)"
    Frame ofMoveData(Tokens& at, bool isTool)
    {
        if (at.peek().isSymbol("("))
            at.next();
        if (at.peek().kind != Token::Kind::Word)
            return {isTool ? none : 0, isTool};
        const auto found = names.find(lowerCase(at.next().text));
        const char* const key = isTool ? "tool_no" : "base_no";
        if (found == names.end() || !found->second.aggregate.has(key))
            return {isTool ? none : 0, isTool};
        return numbered(isTool ? "TOOL_DATA" : "BASE_DATA", fmt::format("{}", found->second.aggregate.at(key)), isTool);
    }

    void setFrames(Tokens& at)
    {
        Tokens again = at;
        tool = ofMoveData(at, true);
        base = ofMoveData(again, false);
    }

    void setSpeed(Tokens& at, bool isPtp)
    {
        if (at.peek().kind != Token::Kind::Word)
            return;
        const auto found = names.find(lowerCase(at.next().text));
        if (found == names.end() || !found->second.aggregate.has("vel"))
            return;
        const double speed = found->second.aggregate.at("vel");
        (isPtp ? speedOfPtp : speedOfCp) = isPtp ? fmt::format("{} %", speed) : fmt::format("{} m/s", speed);
    }

    /// Number 0 is the robot's own frame.
    Frame numbered(const char* list, std::string_view number, bool isTool)
    {
        if (number == "0")
            return {0, true};
        return framed(lowerCase(fmt::format("{}[{}]", list, number)), isTool);
    }

    /// A frame by its name, whose numbers may stand in the files.
    Frame framed(const std::string& name, bool isTool)
    {
        const auto found = names.find(name);
        std::optional<rob::Posed> pose = found == names.end() ? std::nullopt : poseOf(found->second.aggregate);
        if (assignmentsOf(name) > 1)
            pose.reset();
        const bool isTold = pose && makePlace(*pose);
        std::string shown = name;
        for (char& c : shown)
            c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
        return {enter(shown, isTold ? *pose : rob::Posed(), isTold, isTool), true};
    }

    int enter(const std::string& name, const rob::Posed& pose, bool isTold, bool isTool)
    {
        const auto [known, isNew] = entered.try_emplace((isTool ? "t" : "b") + name, 0);
        if (!isNew)
            return known->second;
        if (isTool) {
            program.tools.push_back({name, pose, false, isTold});
            return known->second = static_cast<int>(program.tools.size()) - 1;
        }
        program.workObjects.push_back({name, pose, {}, false, isTold});
        return known->second = static_cast<int>(program.workObjects.size()) - 1;
    }

    // Moves

    void readMove(Tokens& at, Step& step, const std::pair<Motion, MoveLine>& word, const Token& first)
    {
        step.isMove = true;
        step.motion = word.first;
        step.drawn = word.second;
        step.tool = tool.index;
        step.workObject = base.index;
        const bool isRelative = lowerCase(first.text).ends_with("_rel");
        const bool isCircular = word.first == Motion::Circular;
        Named via;
        if (isCircular) {
            via = findTarget(at);
            if (!at.next().isSymbol(","))
                failAtLine(first.line, inQuotes(first.text) + " needs a via point and a target");
        }
        const Named target = findTarget(at);
        step.placing = isRelative ? Placing::RunTime : target.placing;
        step.target = target.target;
        step.via = via.target;
        if (isCircular && step.placing == Placing::Placed)
            step.placing = via.placing;
        const bool isBaseKnown = readTail(at, step);
        const bool isToPosture =
            step.placing == Placing::Placed && !program.targets[static_cast<std::size_t>(step.target)].joints.empty();
        if (isToPosture)
            step.drawn = MoveLine::Solid;
        if (!isBaseKnown && step.placing == Placing::Placed && !isToPosture)
            step.placing = Placing::RunTime;
        if (isToPosture && word.first != Motion::Joint)
            step.placing = Placing::Faulty; // no line leads to a posture
    }

    /// The speed and the zone of a move, and what "WITH" sets for it alone. @return whether the base is known.
    bool readTail(Tokens& at, Step& step)
    {
        step.speed = step.motion == Motion::Joint ? speedOfPtp : speedOfCp;
        bool isBaseKnown = base.isKnown;
        while (!at.peek().isEnd()) {
            const Token token = at.next();
            if (token.kind != Token::Kind::Word)
                continue;
            const std::string word = lowerCase(token.text);
            if (word.starts_with("c_")) {
                step.zone += (step.zone.empty() ? "" : " ") + std::string(token.text);
            } else if (word == "$base" && at.peek().isSymbol("=")) {
                at.next();
                const Frame own = frameOf(at, false);
                step.workObject = own.index;
                isBaseKnown = own.isKnown;
            } else if (word == "$tool" && at.peek().isSymbol("=")) {
                at.next();
                step.tool = frameOf(at, true).index;
            } else if (word.starts_with("$vel")) {
                readSpeed(at, step);
            }
        }
        return isBaseKnown;
    }

    /// "$VEL.CP=0.5", "$VEL_AXIS[1]=SVEL_JOINT(100.0)": what stands behind the sign, up to a comma.
    static void readSpeed(Tokens& at, Step& step)
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

    /// Braces, or a name, with offsets behind colons.
    Named findTarget(Tokens& at)
    {
        const std::size_t begin = at.peek().at;
        const unsigned line = at.peek().line;
        Named found;
        if (at.peek().isSymbol("{")) {
            const std::optional<Aggregate> aggregate = readAggregate(at);
            if (!aggregate)
                failAtLine(line, "braces that do not hold names and numbers");
            found = aggregate->isKnown && !at.peek().isSymbol(":")
                        ? addTarget(std::string(at.between(begin, at.behind())), line, *aggregate)
                        : Named{};
        } else if (at.peek().kind == Token::Kind::Word) {
            const std::string name = takeName(at);
            const auto known = names.find(name);
            const bool isElement = name.ends_with("[?]") || name.starts_with("$"); // or of the controller
            found = known != names.end() ? known->second
                                         : Named{isElement || assignmentsOf(name) > 0 || at.peek().isSymbol("(") ||
                                                         at.peek().isSymbol(".")
                                                     ? Placing::RunTime
                                                     : Placing::Missing,
                                                 none,
                                                 {}};
            skipBrackets(at);
        } else {
            failAtLine(line, "a move without a target");
        }
        while (at.peek().isSymbol(":")) {
            at.next();
            const bool isLiteral = at.peek().isSymbol("{");
            std::optional<Aggregate> offset;
            if (isLiteral)
                offset = readAggregate(at);
            else if (at.peek().kind == Token::Kind::Word)
                takeName(at);
            if (isLiteral && !offset)
                failAtLine(line, "braces that do not hold names and numbers");
            found = offset ? moved(found, *offset, std::string(at.between(begin, at.behind())), line) : Named{};
        }
        return found;
    }

    static void skipBrackets(Tokens& at)
    {
        if (!at.peek().isSymbol("("))
            return;
        int depth = 0;
        do {
            depth += at.peek().isSymbol("(") ? 1 : at.peek().isSymbol(")") ? -1 : 0;
            at.next();
        } while (depth > 0 && !at.peek().isEnd());
    }

    /// The place that an offset in the coordinates of the target leads to.
    Named moved(const Named& from, const Aggregate& by, const std::string& name, unsigned line)
    {
        const std::optional<rob::Posed> offset = poseOf(by);
        if (from.placing != Placing::Placed || !offset || !by.isKnown)
            return {from.placing == Placing::Placed ? Placing::RunTime : from.placing, none, {}};
        const Target& start = program.targets[static_cast<std::size_t>(from.target)];
        if (!start.joints.empty())
            return {};
        Target target{onOneLine(name), line, start.pose * *offset, {}};
        if (!makePlace(target.pose))
            return {Placing::Faulty, none, {}};
        program.targets.push_back(std::move(target));
        return {Placing::Placed, static_cast<int>(program.targets.size()) - 1, {}};
    }

    Program program;
    std::unordered_map<std::string, Named> names; // by small letters, with their index
    std::unordered_map<std::string, int> assignments;
    std::unordered_map<std::string, int> entered; // frames and tools
    Frame base;                                   // of the moves that follow, in the order of the text
    Frame tool;
    std::string speedOfPtp;
    std::string speedOfCp;
};

} // namespace

Program readSrc(std::string_view text, std::string_view data)
{
    const std::string plain = asUtf8(text);
    std::string plainData;
    try {
        plainData = asUtf8(data);
    } catch (const ProgramFault&) {
        throw ProgramFault("the .dat file is not a text");
    }
    return SrcReader().read(plain, plainData);
}

} // namespace vrk::program
