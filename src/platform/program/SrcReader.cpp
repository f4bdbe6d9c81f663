#include "platform/program/SrcMoves.h"

#include <fmt/format.h>

namespace vrk::program {
namespace {

class SrcReader {
public:
    SrcReader()
    {
        program.workObjects.push_back({"$NULLFRAME", {}, {}, false, true});
        program.tools.push_back({"$NULLFRAME", {}, false, true});
    }

    Program read(std::string_view text, std::string_view data)
    {
        names.countAssignments(text);
        if (!data.empty())
            names.readData(data);
        SrcLines lines(text);
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
    void readRoutine(SrcLines& lines, std::string_view end)
    {
        const Routine& routine = program.routines.back();
        const std::string name = routine.name;
        const unsigned begin = routine.line;
        state.beginRoutine();
        std::string_view line;
        while (lines.next(line)) {
            Tokens at(line, 0, lines.number());
            const Token first = at.peek();
            if (first.isWord(end))
                return;
            if (first.isWord("DEF") || first.isWord("DEFFCT"))
                break;
            if (const auto move = srcMoveOf(first)) {
                at.next();
                moves.read(at, addStep(program, line, lines.number()), *move, first);
            } else if (isDeclaration(first)) {
                names.readAssignment(at, false);
            } else {
                state.read(line, lines.number());
                names.readAssignment(at, false);
                addStep(program, line, lines.number());
            }
        }
        failAtLine(lines.number(), fmt::format("{} of line {} has no {}", inQuotes(name), begin, end));
    }

    static bool isDeclaration(const Token& first)
    {
        return isOneOf(
            first, {"DECL", "INT", "REAL", "BOOL", "CHAR", "POS", "E6POS", "FRAME", "AXIS", "E6AXIS", "EXT", "SIGNAL"});
    }

    Program program;
    SrcNames names{program};
    SrcState state{program, names};
    SrcMoves moves{program, names, state};
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
