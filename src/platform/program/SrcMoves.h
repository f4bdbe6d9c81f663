#pragma once

#include "platform/program/SrcState.h"

namespace vrk::program {

/// What an instruction of motion is: its way, and how it is drawn.
struct SrcMove {
    task::Motion motion = task::Motion::Linear;
    task::MoveLine drawn = task::MoveLine::Solid;
};

/// Empty where the token is no instruction of motion.
std::optional<SrcMove> srcMoveOf(const Token& token);

/// Reads what stands behind the word of a move: targets with their offsets, the zone, and what the move sets for itself.
class SrcMoves {
public:
    /// All three must outlive the moves. Targets that stand in the move itself enter the program.
    SrcMoves(Program& program, SrcNames& names, SrcState& state) : program(program), names(names), state(state) {}

    /// @param first  the word of the move, which is taken already.
    /// @throws ProgramFault
    void read(Tokens& at, Step& step, const SrcMove& move, const Token& first);

private:
    /// The speed and the zone of a move, and what "WITH" sets for it alone. @return whether the base is known.
    bool readTail(Tokens& at, Step& step);
    /// Braces, or a name, with offsets behind colons.
    Place takeTarget(Tokens& at);
    /// A name that nothing tells of is one of another file, unless the program or the controller gives it its value.
    Place takeNamed(Tokens& at);
    /// The place that an offset in the coordinates of the target leads to.
    Place moved(const Place& from, const SrcAggregate& by, std::string_view name, unsigned line);

    Program& program;
    SrcNames& names;
    SrcState& state;
};

} // namespace vrk::program
