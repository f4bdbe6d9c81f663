#pragma once

#include "platform/program/ProgramText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

/// Programs of the tests, and how they are looked at.
namespace vrk::test {

using Rows = std::array<std::array<double, 3>, 3>;

/// Whether a rotation has these rows, within a billionth.
inline void expectRows(const rob::Rotationd& rotation, const Rows& rows)
{
    for (unsigned column = 0; column < 3; ++column) {
        const rob::Dird axis = rotation * rob::Dird(column == 0, column == 1, column == 2);
        for (unsigned row = 0; row < 3; ++row)
            EXPECT_NEAR(axis[row], rows[row][column], 1e-9) << "row " << row << ", column " << column;
    }
}

/// The steps of all routines that are moves.
inline std::vector<program::Step> movesOf(const program::Program& program)
{
    std::vector<program::Step> moves;
    for (const program::Routine& routine : program.routines)
        for (const program::Step& step : routine.steps)
            if (step.isMove)
                moves.push_back(step);
    return moves;
}

/// The target of the move at `index`, which must be placed.
inline const program::Target& targetOf(const program::Program& program, std::size_t index)
{
    const std::vector<program::Step> moves = movesOf(program);
    EXPECT_EQ(moves.at(index).placing, program::Placing::Placed) << moves.at(index).text;
    return program.targets.at(static_cast<std::size_t>(moves.at(index).target));
}

inline std::vector<program::Placing> placingsOf(const program::Program& program)
{
    std::vector<program::Placing> placings;
    for (const program::Step& step : movesOf(program))
        placings.push_back(step.placing);
    return placings;
}

} // namespace vrk::test
