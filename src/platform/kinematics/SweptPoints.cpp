#include "platform/kinematics/SweptPoints.h"

#include <algorithm>

namespace vrk::kinematics {
namespace {

rob::Dird across(const rob::Dird& axis)
{
    const rob::Vec3d helper = std::abs(axis.x) < 0.6 ? rob::Vec3d(1, 0, 0) : rob::Vec3d(0, 1, 0);
    return rob::normalized(axis.cross(helper));
}

} // namespace

SweptPoints::SweptPoints(const ChainJoint& joint, double cell, double reach)
    : joint(joint), cellSize(cell), reach(reach), span(joint.span()),
      first(joint.type == layout::JointType::Continuous ? -std::numbers::pi : joint.lower), ex(across(joint.axis)),
      ey(rob::normalized(joint.axis.cross(ex))), x(joint.origin.rotation() * rob::Vec3d(ex)),
      y(joint.origin.rotation() * rob::Vec3d(ey)), z(joint.origin.rotation() * rob::Vec3d(joint.axis)),
      columns(static_cast<std::size_t>(2 * reach / cell) + 3), indexOf(columns)
{
}

SweptPoints::Cell& SweptPoints::cellAt(double u, double v)
{
    const auto column = static_cast<std::size_t>((u + reach) / cellSize) + 1;
    const auto row = static_cast<std::size_t>((v + reach) / cellSize) + 1;
    std::vector<std::uint32_t>& indices = indexOf[row];
    if (indices.empty())
        indices.resize(columns);
    std::uint32_t& index = indices[column];
    if (index == 0) {
        cells.push_back({u, v, {}});
        index = static_cast<std::uint32_t>(cells.size());
        return cells.back();
    }
    Cell& cell = cells[index - 1];
    if (cell.u != u)
        cell.u = (static_cast<double>(column) - 0.5) * cellSize - reach;
    if (cell.v != v)
        cell.v = (static_cast<double>(row) - 0.5) * cellSize - reach;
    return cell;
}

void SweptPoints::add(const rob::Posd& p)
{
    const rob::Vec3d at(p);
    if (!joint.turns()) {
        insert(cellAt(at.dot(ex), at.dot(ey)).pieces, at.dot(joint.axis));
        return;
    }
    const double cx = at.dot(ex);
    const double cy = at.dot(ey);
    insert(cellAt(std::sqrt(cx * cx + cy * cy), at.dot(joint.axis)).pieces, std::atan2(cy, cx));
}

void SweptPoints::insert(std::vector<Piece>& pieces, double at) const
{
    // Places that the joint takes to one place between them make one piece.
    const auto next = std::ranges::find_if(pieces, [&](const Piece& piece) { return piece.to + span >= at; });
    if (next == pieces.end() || next->from - span > at) {
        pieces.insert(next, {at, at});
        return;
    }
    next->from = std::min(next->from, at);
    next->to = std::max(next->to, at);
    const auto after = std::next(next);
    if (after != pieces.end() && after->from - span <= next->to) {
        next->to = after->to;
        pieces.erase(after);
    }
}

} // namespace vrk::kinematics
