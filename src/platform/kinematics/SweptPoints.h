#pragma once

#include "platform/kinematics/ArmChain.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <stop_token>
#include <vector>

namespace vrk::kinematics {

/// Points that a joint moves, and where it takes them.
///
/// They are kept in cells of their coordinates about the axis of the joint: how far from it and how far along it for a joint
/// that turns, and the two across it for one that slides. Along its way a cell holds pieces, so that many points cost as much
/// as a few.
class SweptPoints {
public:
    /// @param cell  edge of the cells.
    /// @param reach  no point lies farther from the origin of what the joint moves.
    SweptPoints(const ChainJoint& joint, double cell, double reach);

    void add(const rob::Posd& p); // in what the joint moves
    /// Calls `take` with points, in what the joint before moves. Each place to which one that was added can be taken lies
    /// within cell / sqrt(2) + step / 2 of one of them; and each of them within cell / sqrt(2) of such a place.
    /// @return false if it was stopped.
    template <typename Take>
    bool sweep(double step, const std::stop_token& stop, const Take& take) const
    {
        for (const Cell& cell : cells) {
            if (stop.stop_requested())
                return false;
            for (const Piece& piece : cell.pieces) {
                const double way = span + piece.to - piece.from;
                if (joint.turns() && way >= fullTurn) {
                    sweepPiece(cell, {-std::numbers::pi, std::numbers::pi}, step, take);
                    break; // which was all of them
                }
                sweepPiece(cell, {piece.from + first, piece.from + first + way}, step, take);
            }
        }
        return true;
    }

private:
    static constexpr double fullTurn = 2 * std::numbers::pi;

    struct Piece { // of the way; radians, or model units
        double from;
        double to;
    };
    struct Cell {
        double u = 0; // of its points; of its middle where they differ
        double v = 0;
        std::vector<Piece> pieces; // ascending; no gap between two is as short as the span of the joint
    };

    Cell& cellAt(double u, double v);
    void insert(std::vector<Piece>& pieces, double at) const;
    template <typename Take>
    void sweepPiece(const Cell& cell, const Piece& piece, double step, const Take& take) const
    {
        const double length = (piece.to - piece.from) * (joint.turns() ? cell.u : 1.0);
        const auto count = static_cast<int>(std::ceil(length / step));
        const rob::Posd& origin = joint.origin.position;
        if (!joint.turns()) {
            const rob::Posd foot = origin + x * cell.u + y * cell.v;
            for (int i = 0; i <= count; ++i)
                take(foot + z * (piece.from + (piece.to - piece.from) * i / std::max(count, 1)));
            return;
        }
        const rob::Posd foot = origin + z * cell.v;
        const double turn = (piece.to - piece.from) / std::max(count, 1);
        const double c = std::cos(turn);
        const double s = std::sin(turn);
        rob::Vec3d arm = x * (cell.u * std::cos(piece.from)) + y * (cell.u * std::sin(piece.from));
        rob::Vec3d side = y * (cell.u * std::cos(piece.from)) - x * (cell.u * std::sin(piece.from));
        for (int i = 0; i <= count; ++i) {
            take(foot + arm);
            const rob::Vec3d next = arm * c + side * s;
            side = side * c - arm * s;
            arm = next;
        }
    }

    const ChainJoint joint;
    const double cellSize;
    const double reach;
    const double span;
    const double first; // of the values of the joint
    rob::Dird ex;       // across the axis, in what the joint moves
    rob::Dird ey;
    rob::Vec3d x; // the same and the axis, in what the joint before moves
    rob::Vec3d y;
    rob::Vec3d z;
    std::size_t columns;
    // Of the cells, by row and column; 0 for none, else one more than its index. A row without cells is empty.
    std::vector<std::vector<std::uint32_t>> indexOf;
    std::vector<Cell> cells;
};

} // namespace vrk::kinematics
