#include "paint/SprayPaths.h"

#include "edit/ModelPlaces.h"

#include "platform/sdf/SdfManager.h"
#include "platform/task/DataItem.h"
#include "platform/task/EdgeMfgShape.h"
#include "platform/task/Instruction.h"
#include "platform/task/Path.h"
#include "scene/math/Shapes.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <shared_mutex>
#include <unordered_map>

namespace vrkview {
namespace {

using namespace vrk::task;
using vrk::process::SprayPlace;
using vrk::rob::Dird;
using vrk::rob::Posd;
using vrk::rob::Posed;

/// A place of the tool on an owner.
struct Target {
    unsigned owner = 0;
    Posed pose;
};

struct Move {
    Motion motion = Motion::Linear;
    std::optional<Target> to, via;
};

std::optional<Target> targetOf(const DataItem* item)
{
    if (!item || !item->asType(sdf::ModelType::RobTargetData))
        return std::nullopt;
    return Target{item->getOwnerId(), item->getPose()};
}

std::vector<Move> movesOf(unsigned path)
{
    std::vector<Move> moves;
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    const auto* found = dynamic_cast<const Path*>(sdf::SdfManager::inst().find(path));
    if (!found)
        return moves;
    for (const auto& step : found->getInstructions()) {
        const auto* move = dynamic_cast<const MoveInst*>(step.get());
        if (move)
            moves.push_back(
                {move->getMotion(), targetOf(move->getTargetItem().get()), targetOf(move->getCircleItem().get())});
        else if (!step->remark.empty()) // a move whose target nobody knows before it runs
            moves.emplace_back();
    }
    return moves;
}

/// Targets seen from the world, and the gun at them.
class Stand {
public:
    explicit Stand(double distance) : distance(distance) {}

    Posed inWorld(const Target& target)
    {
        const auto [known, isNew] = owners.try_emplace(target.owner);
        if (isNew)
            known->second = worldPoseOfThing(target.owner);
        return known->second * target.pose;
    }
    SprayPlace at(const Posd& place, const Dird& axis) const { return {Posd(place - axis * distance), axis}; }
    SprayPlace at(const Posed& tool) const { return at(tool.position, zOf(tool)); }
    static Dird zOf(const Posed& tool) { return tool * Dird(0, 0, 1); }

private:
    double distance;
    std::unordered_map<unsigned, Posed> owners;
};

Dird between(const Dird& a, const Dird& b, double part)
{
    const auto mixed = a * (1 - part) + b * part;
    return mixed.length() > 1e-9 ? normalized(mixed) : a;
}

/// The places behind the first on the arc, so near to each other that straight lines between them serve.
void appendArc(const Stand& stand, const Posed& from, const Posed& via, const Posed& to,
               std::vector<SprayPlace>& places)
{
    constexpr double turn = 0.05; // radians
    using vrk::rob::Posf;
    const vrk::rob::TPCircle arc(Posf(from.position), Posf(via.position), Posf(to.position));
    const double radius = (from.position - arc.getCenter()).length();
    const int count = arc.getLength() > 0 ? static_cast<int>(std::ceil(arc.getLength() / radius / turn)) : 0;
    for (int i = 1; i < count; ++i) {
        const double part = static_cast<double>(i) / count;
        places.push_back(stand.at(Posd(arc.getPoint(part)), between(Stand::zOf(from), Stand::zOf(to), part)));
    }
    places.push_back(stand.at(to));
}

SprayWays alongPath(unsigned id, double distance)
{
    SprayWays ways;
    Stand stand(distance);
    std::optional<Posed> last;
    bool isOpen = false; // the last way goes on
    for (const Move& move : movesOf(id)) {
        const std::optional<Posed> to = move.to ? std::optional(stand.inWorld(*move.to)) : std::nullopt;
        if (!last || !to || move.motion == Motion::Joint) {
            isOpen = false;
            last = to;
            continue;
        }
        if (!isOpen)
            ways.push_back({stand.at(*last)});
        if (move.motion == Motion::Circular && move.via)
            appendArc(stand, *last, stand.inWorld(*move.via), *to, ways.back());
        else
            ways.back().push_back(stand.at(*to));
        isOpen = true;
        last = to;
    }
    return ways;
}

SprayWays alongBand(const EdgeMfgShape& band, double distance)
{
    const unsigned body = band.getMfgVectors().empty() ? 0 : band.getMfgVectors().front().body;
    const Posed pose = body == 0 ? Posed() : worldPoseOfThing(body);
    const Stand stand(distance);
    std::vector<SprayPlace> places;
    for (const EdgeMfgShape::PathPoint point : band.getPathPointsForRender()) {
        const TopoDS_Edge& edge = band.getEdge(point.edge);
        const vrk::geometry::MfgVector vector = band.getMfgVector(point);
        places.push_back(stand.at(pose * vector.getPos(edge), -(pose * vector.getDir(edge))));
    }
    return places.empty() ? SprayWays() : SprayWays{places};
}

std::shared_ptr<const EdgeMfgShape> sharedBand(unsigned id)
{
    return std::dynamic_pointer_cast<const EdgeMfgShape>(sdf::Share(id));
}

} // namespace

bool isSprayPath(unsigned id)
{
    const std::shared_ptr<sdf::SdfObject> object = sdf::Share(id);
    return dynamic_cast<const Path*>(object.get()) || dynamic_cast<const EdgeMfgShape*>(object.get());
}

unsigned bodyOfSprayPath(unsigned id)
{
    const auto band = sharedBand(id);
    return band && !band->getMfgVectors().empty() ? band->getMfgVectors().front().body : 0;
}

SprayWays sprayWaysOf(unsigned id, double distance)
{
    const auto band = sharedBand(id);
    return band ? alongBand(*band, distance) : alongPath(id, distance);
}

} // namespace vrkview
