#pragma once

#include "platform/common/Export.h"
#include "selection/pick/PickCamera.h"
#include "selection/pick/PickKind.h"

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vrk::visual {
class Visual;
}

namespace vrk::selection {

class VisualSelection;
struct Result;

/// What became of a candidate.
enum class PickVerdict {
    Chosen,   ///< the answer
    Possible, ///< nothing speaks against it, but another one comes first
    Hidden,   ///< its visual is not shown
    WrongKind,
    Rejected, ///< by the filter of the query
    Behind,   ///< a surface lies in front of it
};

/// One of the things that a pick could mean.
struct VRK_EXPORT PickCandidate {
    PickKind kind = PickKind::Body;
    visual::Visual* visual = nullptr; ///< not owned; good as long as the visual lives
    unsigned visualId = 0;
    /// Of faces, edges and vertices the number, from 1, in the map of the solid's shape; of a curve that of the edge in
    /// the curve's shape; of mesh triangles, cloud points, and sections of lines and frames the number from 0. -1 for a
    /// whole body and a point.
    std::int64_t subId = -1;
    rob::Posd place;      ///< in the world: on the ray, or the point of the thing that is nearest in pixels
    double distance = 0;  ///< model units along the ray, from the near plane to the depth of the place
    double pixels = 0;    ///< from the pixel that was asked for; 0 where the ray hits; in the user's pixels
    bool isOnTop = false; ///< registered with priority, as handles are: nothing lies in front of it
    PickVerdict verdict = PickVerdict::Possible;
    double behindBy = 0; ///< model units, with the verdict Behind
    std::string reason;  ///< the verdict for the user: "chosen", "possible", "hidden", "not a face", what the
                         ///< filter said, "behind by 12 mm"

    /// The same as what `VisualSelection::select` would fill in: for code that works with its results. The shapes are
    /// looked up; render thread.
    Result toResult() const;
};

/// What a pick found, best first: the chosen one, what is possible in the order in which it would have been chosen, then
/// the rest by distance.
struct VRK_EXPORT PickAnswer {
    std::vector<PickCandidate> candidates;

    /// The answer; null if nothing may be taken.
    const PickCandidate* chosen() const;
};

/// A question of what lies under a pixel, which explains its answer. It stands beside `VisualSelection::select` and differs
/// from it in what users notice:
///
/// - Rays leak neither between triangles nor through vertices, at any angle to the axes (Woop, Benthin, Wald,
///   "Watertight Ray/Triangle Intersection", 2013, in double precision).
/// - Distances are lengths in the world, also of meshes that are drawn in another size.
/// - Points, lines, edges, vertices and cloud points count within a radius in pixels, whatever their distance and whatever
///   the unit of the station. Nothing that lies before the near plane or behind the eye is found.
/// - All is reckoned in double precision, from the coordinates as they are stored.
///
/// How one is chosen: what is on top first; then the kind with the lowest priority number; of equal ones the nearest in
/// pixels, then the nearest to the eye. What is hidden, of another kind, rejected, or behind a surface is not chosen. A
/// surface hides what lies behind it, whether or not its own kind is wanted, unless the filter rejects it. A thing that
/// lies on a surface, or behind it by less than half the radius at that distance, is not behind.
///
/// The paint on a body is passed over: what lies there is the body.
///
/// It asks the hierarchies of the picking service. The edges and vertices of a solid are gathered by the first question
/// that comes near it.
///
/// Thread: any, while the service is clean and the render thread is neither in `update` nor in `Scene::processMsgs`; the
/// filter is called on the thread that asks.
struct VRK_EXPORT PickQuery {
    /// Looks at a candidate whose place and distances are known. An empty answer lets it pass; any other is the reason for
    /// its rejection, in words for the user ("locked").
    using Filter = std::function<std::string(const PickCandidate&)>;

    PickCamera camera;
    double x = 0; ///< device pixels from the top left corner of the viewport
    double y = 0;
    double radius = 5; ///< pixels as the user sees them, which the camera's ratio scales; above 0
    PickKinds kinds = PickKinds::All();
    /// By kind; a lower one comes first.
    std::array<int, pickKindCount> priorities = DefaultPriorities();
    bool seesThroughSurfaces = false; ///< whether what lies behind a surface may be chosen
    unsigned pointsPerCloud = 32;     ///< as many candidates of one cloud at most: those that would be chosen first
    std::string unit = "mm";          ///< of the model, for the reasons
    Filter filter;                    ///< may be empty; JSON leaves it out

    /// Vertices and points 0, edges, curves and lines 1, frames and targets 2, cloud points 3, faces and mesh triangles 4,
    /// bodies 5.
    static std::array<int, pickKindCount> DefaultPriorities();

    /// All candidates, with their verdicts.
    /// @throws std::invalid_argument "The camera of a pick has no pixels",
    ///         "The matrices of the camera of a pick cannot be inverted", "The pixel of a pick is not finite",
    ///         "The radius of a pick must be above 0 and finite", "The pixel ratio of a pick must be above 0 and finite"
    /// @throws std::logic_error "The picking service is not up to date"
    PickAnswer askAll(const VisualSelection& service) const;
    /// The one that `askAll` would have chosen, found with less work.
    /// @throws as askAll.
    std::optional<PickCandidate> askBest(const VisualSelection& service) const;
    /// Both of the one service of the process.
    PickAnswer askAll() const;
    std::optional<PickCandidate> askBest() const;
};

/// The query as JSON, its filter left out, every number so that it reads back exactly.
VRK_EXPORT std::string toJson(const PickQuery& query);
/// The candidates as JSON, in their order; visuals by their ids.
VRK_EXPORT std::string toJson(const PickAnswer& answer);
/// @throws std::runtime_error "Bad pick query: " and what is wrong: no JSON, a key that is missing or unknown, a value of
///         another type or out of range.
VRK_EXPORT PickQuery pickQueryFromJson(const std::string& text);

} // namespace vrk::selection
