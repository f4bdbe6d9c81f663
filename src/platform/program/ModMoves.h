#pragma once

#include "platform/program/ModExpression.h"

namespace vrk::program {

/// What an instruction of motion is: its way, and where its arguments stand.
struct ModMove {
    task::Motion motion = task::Motion::Linear;
    bool isPosture = false;   ///< it leads to joint angles
    bool hasToolLast = false; ///< what lies between speed and zone differs
};

/// Empty where the word is no instruction of motion.
std::optional<ModMove> modMoveOf(std::string_view word);

/// Reads the arguments of moves: target, via point, speed, zone, tool and work object.
class ModMoves {
public:
    /// All three must outlive the moves. What moves name and no file tells enters the program: tools, work objects, and
    /// targets that stand in the move itself.
    ModMoves(Program& program, ModNames& names, const ModExpression& expression);

    /// @param text   the instruction without its semicolon.
    /// @param first  its first word.
    /// @throws ProgramFault
    void read(Step& step, const ModMove& move, std::string_view text, const Token& first);

private:
    /// One argument of an instruction.
    struct Argument {
        std::string_view text;
        unsigned line = 0;
    };
    struct Option {
        std::string_view name;
        std::string_view value;
    };

    /// The arguments of an instruction, and its options by name.
    static void split(std::string_view text, const Token& first, std::vector<Argument>& arguments,
                      std::vector<Option>& options);
    int toolOf(const Argument& argument);
    int toolNamed(std::string_view name);
    void setWorkObject(Step& step, std::string_view name, unsigned line);
    /// A target as an argument tells it: a name, an element of an array, brackets with numbers, or an offset from one of
    /// these.
    Place findTarget(const Argument& argument, bool isToPosture);

    Program& program;
    ModNames& names;
    const ModExpression& expression;
    std::unordered_map<std::string, std::size_t> untoldFrames; // by small letters: work objects that no file tells
};

} // namespace vrk::program
