#include "platform/program/ProgramParts.h"
#include "platform/program/ProgramText.h"

#include <fmt/format.h>

#include <cmath>
#include <optional>
#include <unordered_map>

namespace vrk::program {
namespace {

using task::Motion;
using task::MoveLine;

constexpr double highestPosition = 1e6; // its number; no controller has as many

std::string_view trimmed(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(" \t\r\f\v");
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(" \t\r\f\v") - first + 1);
}

/// A line of the program's own lines: "  9:C P[4]    " and those that go on with it.
struct Statement {
    std::string text;
    unsigned line = 0;
};

/// A position at the end of the file.
struct Position {
    Place place{Placing::Missing, none};
    std::optional<int> frame; ///< the number of its user frame; empty for the one that is in force
    std::optional<int> tool;
};

class LsReader {
public:
    explicit LsReader(std::string_view text) : text(text)
    {
        program.workObjects.push_back({"UFRAME 0", {}, {}, false, true});
        program.tools.push_back({"UTOOL 0", {}, false, true});
    }

    Program read()
    {
        std::string_view line;
        if (!nextFilled(line))
            failAtLine(1, "expected /PROG");
        Tokens head(line, 0, number);
        if (!head.next().isSymbol("/") || !head.next().isWord("PROG") || head.peek().kind != Token::Kind::Word)
            failAtLine(number, "expected /PROG");
        program.name = nameOf(line);
        program.routines.push_back({program.name, number, {}});
        std::vector<Statement> statements;
        enum class Section { Head, Lines, Positions } section = Section::Head;
        bool isEnded = false;
        while (!isEnded && nextFilled(line)) {
            if (line[0] == '/' && !line.starts_with("//")) {
                section = sameWord(line, "/MN")    ? Section::Lines
                          : sameWord(line, "/POS") ? Section::Positions
                                                   : Section::Head;
                isEnded = sameWord(line, "/END");
            } else if (section == Section::Lines) {
                takeLine(line, statements);
            } else if (section == Section::Positions) {
                readPosition(line);
            }
        }
        if (!isEnded)
            failAtLine(std::max(1U, number), "the file ends before /END");
        for (const Statement& statement : statements)
            readStatement(statement);
        return std::move(program);
    }

private:
    bool nextFilled(std::string_view& line)
    {
        while (at < text.size()) {
            const std::size_t end = std::min(text.find('\n', at), text.size());
            line = trimmed(text.substr(at, end - at));
            at = end + 1;
            ++number;
            if (!line.empty())
                return true;
        }
        return false;
    }

    /// What stands behind "/PROG", up to a blank. Names may begin with a digit or hold a stroke.
    static std::string nameOf(std::string_view line)
    {
        const std::string_view rest = trimmed(line.substr(std::min<std::size_t>(5, line.size())));
        return onOneLine(rest.substr(0, rest.find_first_of(" \t")));
    }

    /// "   6:J P[1] 100% CNT100    ;", "    :  P[5] 100mm/sec CNT100    ;"
    void takeLine(std::string_view line, std::vector<Statement>& statements)
    {
        const std::size_t colon = line.find(':');
        const bool isNumbered = colon != std::string_view::npos &&
                                line.substr(0, colon).find_first_not_of("0123456789 \t") == std::string_view::npos;
        if (!isNumbered)
            failAtLine(number, "expected the number of a line and a colon");
        std::string_view rest = trimmed(line.substr(colon + 1));
        if (rest.ends_with(';'))
            rest = trimmed(rest.substr(0, rest.size() - 1));
        const bool goesOn = trimmed(line.substr(0, colon)).empty();
        if (!goesOn)
            statements.push_back({std::string(rest), number});
        else if (statements.empty())
            failAtLine(number, "a line that goes on with no other");
        else
            statements.back().text += ' ' + std::string(rest);
    }

    // Positions

    /// A block from "P[1]{" to "};", whose first line is given.
    void readPosition(std::string_view line)
    {
        const unsigned begin = number;
        const std::size_t open = line.find('[');
        if ((line[0] != 'P' && line[0] != 'p') || open == std::string_view::npos)
            failAtLine(number, inQuotes(line) + " where a position is expected");
        Tokens head(line.substr(open + 1), 0, number);
        double index = 0;
        if (!parseNumber(head.next().text, index) || index > highestPosition)
            failAtLine(number, "a position without its number");
        std::string block(line.substr(open + 1));
        while (block.find('}') == std::string::npos) {
            if (!nextFilled(line) || line[0] == '/')
                failAtLine(begin, fmt::format("the block of P[{}] is not closed", index));
            block += '\n' + std::string(line);
        }
        const std::size_t brace = block.find('{');
        if (brace == std::string::npos)
            failAtLine(begin, fmt::format("the block of P[{}] is not opened", index));
        positions[static_cast<int>(index)] = placed(fmt::format("P[{}]", index), block.substr(brace + 1), begin);
    }

    /// Reads the first group of a block; other groups move other machines.
    Position placed(const std::string& name, const std::string& block, unsigned line)
    {
        std::unordered_map<std::string, double> numbers;
        Position position;
        bool isWhole = true;
        Tokens at(block, 0, line);
        bool isFirstGroup = false;
        while (!at.peek().isEnd() && !at.peek().isSymbol("}")) {
            const Token word = at.next();
            if (word.kind != Token::Kind::Word)
                continue;
            if (sameWord(word.text.substr(0, 2), "GP") && at.peek().isSymbol(":")) {
                if (isFirstGroup)
                    break;
                isFirstGroup = true;
            } else if (word.isWord("UF") || word.isWord("UT")) {
                at.next();
                double value = 0;
                const bool isNumber = parseNumber(at.peek().text, value) && std::abs(value) < 1000;
                (word.isWord("UF") ? position.frame : position.tool) =
                    isNumber ? std::optional(static_cast<int>(value)) : std::nullopt;
                at.next();
            } else if (at.peek().isSymbol("=")) {
                at.next();
                isWhole = takeValue(at, numbers[lowerCase(word.text)]) && isWhole;
            }
        }
        position.place = enter(name, line, numbers, isWhole);
        program.declaredWithoutPlace += position.place.placing == Placing::Placed ? 0 : 1;
        return position;
    }

    /// "=  1349.372 mm". Stars stand for a value that was never taught.
    static bool takeValue(Tokens& at, double& value)
    {
        const bool isNegative = takeSigns(at);
        if (at.peek().kind != Token::Kind::Number || !parseNumber(at.peek().text, value))
            return false;
        at.next();
        value = isNegative ? -value : value;
        return true;
    }

    Place enter(const std::string& name, unsigned line, const std::unordered_map<std::string, double>& numbers,
                bool isWhole)
    {
        Target target{name, line, {}, {}};
        const auto number = [&](const char* key) {
            const auto found = numbers.find(key);
            isWhole = isWhole && found != numbers.end();
            return found == numbers.end() ? 0.0 : found->second;
        };
        if (numbers.contains("j1")) {
            for (const char* joint : {"j1", "j2", "j3", "j4", "j5", "j6"})
                if (numbers.contains(joint))
                    target.joints.push_back(toRadians(number(joint)));
            for (const double joint : target.joints)
                isWhole = isWhole && std::isfinite(joint);
        } else {
            target.pose = {rob::Posd(number("x"), number("y"), number("z")),
                           fromZyx(number("r"), number("p"), number("w"))};
            isWhole = isWhole && makePlace(target.pose);
        }
        return isWhole ? enterTarget(program, std::move(target)) : enterFault(program, name, line);
    }

    // Statements

    void readStatement(const Statement& statement)
    {
        if (statement.text.empty() || statement.text[0] == '!')
            return; // a remark
        Step& step = addStep(program, statement.text, statement.line);
        Tokens at(statement.text, 0, statement.line);
        const Token first = at.next();
        const bool isMove = (first.isWord("J") || first.isWord("L") || first.isWord("C") || first.isWord("A")) &&
                            (at.peek().isWord("P") || at.peek().isWord("PR"));
        if (isMove)
            readMove(at, step, first);
        else
            readState(statement);
    }

    /// "UFRAME_NUM=1", "UTOOL_NUM=R[2]"
    void readState(const Statement& statement)
    {
        Tokens at(statement.text, 0, statement.line);
        const Token word = at.next();
        if (!(word.isWord("UFRAME_NUM") || word.isWord("UTOOL_NUM")) || !at.next().isSymbol("="))
            return;
        double value = 0;
        const bool isNumber = parseNumber(at.peek().text, value) && std::abs(value) < 1000;
        (word.isWord("UFRAME_NUM") ? frameInForce : toolInForce) =
            isNumber ? std::optional(static_cast<int>(value)) : std::nullopt;
    }

    void readMove(Tokens& at, Step& step, const Token& way)
    {
        step.isMove = true;
        step.motion = way.isWord("J") ? Motion::Joint : way.isWord("C") ? Motion::Circular : Motion::Linear;
        Position target = takePosition(at);
        std::optional<Place> via;
        if (way.isWord("C")) {
            via = target.place;
            if (!(at.peek().isWord("P") || at.peek().isWord("PR")))
                failAtLine(step.line, "a circular move without its second position");
            target = takePosition(at);
        }
        setPlace(step, target.place, via);
        readTail(at, step);
        const bool isToPosture = step.placing == Placing::Placed && isPosture(program, step.target);
        // One of a row of points of an arc is drawn as the piece of a line that it is not.
        const bool isDashed = (way.isWord("J") && !isToPosture) || way.isWord("A");
        step.drawn = isDashed ? MoveLine::Dashed : MoveLine::Solid;
        const std::optional<int> frame = target.frame ? target.frame : frameInForce;
        const std::optional<int> tool = target.tool ? target.tool : toolInForce;
        if (!frame && step.placing == Placing::Placed && !isToPosture)
            step.placing = Placing::RunTime;
        if (frame && step.placing == Placing::Placed && !isToPosture)
            step.workObject = frameNumbered(*frame, step.line);
        if (tool)
            step.tool = toolNumbered(*tool);
    }

    /// "P[3]", "P[3:above]", "PR[1]", "P[R[1]]"
    Position takePosition(Tokens& at)
    {
        const Token word = at.next();
        if (!at.peek().isSymbol("["))
            return {{Placing::RunTime, none}, {}, {}};
        at.next();
        const Token index = at.peek();
        int depth = 1;
        while (depth > 0 && !at.peek().isEnd()) {
            depth += at.peek().isSymbol("[") ? 1 : at.peek().isSymbol("]") ? -1 : 0;
            at.next();
        }
        double value = 0;
        if (!word.isWord("P") || index.kind != Token::Kind::Number || !parseNumber(index.text, value) ||
            value > highestPosition)
            return {{Placing::RunTime, none}, {}, {}};
        const auto found = positions.find(static_cast<int>(value));
        return found == positions.end() ? Position() : found->second;
    }

    /// The speed, the zone, and what else shifts the target.
    static void readTail(Tokens& at, Step& step)
    {
        const std::size_t begin = at.peek().at;
        std::optional<std::size_t> endOfSpeed;
        while (!at.peek().isEnd()) {
            const Token token = at.next();
            if (token.kind != Token::Kind::Word)
                continue;
            const std::string word = lowerCase(token.text);
            const bool isZone = word == "fine" || word.starts_with("cnt") || word.starts_with("cr");
            if (isZone && !endOfSpeed) {
                endOfSpeed = token.at;
                step.zone = token.text;
            }
            // What is added to the position stands in a register, or the position counts from where the robot is.
            if ((word == "offset" || word == "tool_offset" || word == "inc" || word == "vt_ofs" || word == "voffset") &&
                step.placing == Placing::Placed)
                step.placing = Placing::RunTime;
        }
        step.speed = onOneLine(at.between(begin, endOfSpeed.value_or(at.behind())));
    }

    int frameNumbered(int frame, unsigned line)
    {
        if (frame == 0)
            return 0;
        const auto [known, isNew] = frames.try_emplace(frame, static_cast<int>(program.workObjects.size()));
        if (isNew) {
            program.workObjects.push_back({fmt::format("UFRAME {}", frame), {}, {}, false, false});
            program.notes.push_back({line, fmt::format("user frame {} is not in the file; its targets stand in the "
                                                       "robot's own frame",
                                                       frame)});
        }
        return known->second;
    }

    int toolNumbered(int tool)
    {
        if (tool == 0)
            return 0;
        const auto [known, isNew] = tools.try_emplace(tool, static_cast<int>(program.tools.size()));
        if (isNew)
            program.tools.push_back({fmt::format("UTOOL {}", tool), {}, false, false});
        return known->second;
    }

    std::string_view text;
    std::size_t at = 0;
    unsigned number = 0; ///< of the line last given
    Program program;
    std::unordered_map<int, Position> positions;
    std::unordered_map<int, int> frames; // by number
    std::unordered_map<int, int> tools;
    std::optional<int> frameInForce = 0; // empty while a register tells it
    std::optional<int> toolInForce;
};

} // namespace

Program readLs(std::string_view text)
{
    const std::string plain = asUtf8(text);
    return LsReader(plain).read();
}

} // namespace vrk::program
