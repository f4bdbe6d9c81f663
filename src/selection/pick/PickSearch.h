#pragma once

#include "selection/SelectableObject.h"
#include "selection/pick/ObjectPlace.h"
#include "selection/pick/PickLens.h"
#include "selection/pick/PickQuery.h"

#include <optional>
#include <vector>

namespace vrk::selection {

class SensitiveFace;

/// One pick: it is made for a query, answers once and is thrown away. See PickQuery for what it promises.
///
/// All that a beam of the radius around the pixel comes near is gathered, and then judged. What hides a place near the
/// pixel is among that too, since the view of the place runs inside the beam.
class PickSearch {
public:
    /// @throws as PickQuery::askAll.
    PickSearch(const VisualSelection& service, const PickQuery& query);

    PickAnswer all();
    std::optional<PickCandidate> best();

private:
    /// A solid or a mesh that the beam comes near.
    struct Surface {
        const SelectableObject* object;
        ObjectPlace place;
    };
    struct Hit {
        double distance;
        const SelectableObject* object;
        const SensitiveFace* face; // null for a mesh
        unsigned triangle;
    };
    /// The place of a thing that is nearest to the pixel.
    struct Nearest {
        double pixels; // device pixels
        rob::Posd place;
    };
    struct CloudPoint {
        double pixels;
        double distance;
        double behind; // the points in front of it
        unsigned index;
        rob::Posd place;
    };

    // What lies in the beam
    std::vector<PickCandidate> gather(PickKinds kinds);
    void gatherSurface(const SelectableObject& object, PickKinds kinds, std::vector<PickCandidate>& found);
    void gatherBorders(const Surface& surface, PickKinds kinds, std::vector<PickCandidate>& found) const;
    void gatherCurve(const SelectableObject& object, std::vector<PickCandidate>& found) const;
    void gatherLine(const SelectableObject& object, std::vector<PickCandidate>& found) const;
    void gatherPoint(const SelectableObject& object, std::vector<PickCandidate>& found) const;
    void gatherCloud(const SelectableObject& object, std::vector<PickCandidate>& found) const;
    std::vector<CloudPoint> pointsInBeam(const SelectableObject& object) const;
    std::optional<Nearest> nearestOfLines(const PrimitiveContainer& lines, const ObjectPlace& place,
                                          const BVHPrimitive** which) const;
    std::optional<Nearest> nearestOf(const ClipPoint& point, const rob::Posd& place) const;
    std::optional<Nearest> nearestOf(const ClipPoint& a, const ClipPoint& b, const rob::Posd& start,
                                     const rob::Posd& end) const;

    // Surfaces under a ray
    template <typename Visit>
    static void forHits(const Surface& surface, const PickRay& along, const double& limit, const Visit& visit);
    std::vector<PickCandidate> nearestSurfaces() const;
    bool hidesOthers(const Hit& hit) const;
    void noteFront(const Hit& hit, const ObjectPlace& place);

    PickCandidate candidateOf(const SelectableObject& object, PickKind kind, std::int64_t subId) const;
    PickCandidate candidateOf(const Hit& hit, PickKind kind) const;
    PickCandidate candidateOf(const SelectableObject& object, PickKind kind, std::int64_t subId,
                              const Nearest& nearest) const;

    // What becomes of it
    void judge(PickCandidate& candidate) const;
    double hiddenBy(const PickCandidate& candidate) const;
    std::optional<double> nearestHiding(const PickRay& towards, double limit) const;
    bool isBefore(const PickCandidate& a, const PickCandidate& b) const;
    std::string textOfWrongKind() const;

    const VisualSelection& service;
    const PickQuery& query;
    PickLens lens;
    PickRay ray;
    double radius; // device pixels
    PickBeam beam; // made by what gathers
    std::vector<Surface> surfaces;
    std::optional<Hit> front; // under the pixel, of what hides others
    rob::Vec3d frontNormal;   // of any length
};

} // namespace vrk::selection
