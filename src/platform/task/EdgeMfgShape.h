#pragma once

#include "platform/geometry/MfgVector.h"
#include "platform/sdf/SdfObject.h"

#include <optional>

namespace vrk::task {

/// A run of a process along edges of a part, with the direction of the tool at points of each edge.
///
/// The edges follow each other in the direction of travel. The run begins at `getStart` and ends at `getEnd`, which may lie
/// within edges. Owner: its task. Thread: as every object of the model.
class VRK_EXPORT EdgeMfgShape : public sdf::SdfObject {
public:
    /// A place on the run.
    struct PathPoint {
        int edge = 0;         ///< index into `getMfgVectors`
        double parameter = 0; ///< of the edge's curve

        bool operator==(const PathPoint&) const = default;
    };

    EdgeMfgShape(unsigned id, std::string name);
    ~EdgeMfgShape() override;

    /// Appends an edge with at least one vector. The run ends at the end of the last edge until told otherwise.
    /// @throws std::invalid_argument "an edge of a run needs a vector", "a vector of a run needs numbers that are finite";
    ///         the run is as before then.
    void addEdge(geometry::MfgVectors vectors);
    /// Narrows the run. @throws std::out_of_range "invalid vector subscript" for an edge that is not there.
    void setStart(PathPoint point);
    void setEnd(PathPoint point);
    /// Turns one of the vectors.
    /// @param index  among those of the edge.
    /// @throws std::out_of_range "invalid vector subscript"; std::invalid_argument as `addEdge`. The run is as before then.
    void setDirection(int edge, std::size_t index, const rob::Dird& direction);

    /// One entry for each edge, in order.
    const std::vector<geometry::MfgVectors>& getMfgVectors() const { return edges; }
    /// The same, with the vectors between start and end; edges without any are left out.
    std::vector<geometry::MfgVectors> getUsedMfgVectors() const;
    /// The vector at a place. Between two of the edge the direction is interpolated on their arc (slerp, Shoemake 1985).
    /// @throws std::out_of_range "invalid vector subscript" for an edge that is not there.
    geometry::MfgVector getMfgVector(PathPoint point) const;
    /// The index of an edge of the run, in the same orientation if it is there in both; empty for any other.
    std::optional<int> getMfgVectorsIndex(const TopoDS_Edge& edge) const;
    /// @throws std::out_of_range "invalid vector subscript"
    const TopoDS_Edge& getEdge(int index) const;
    PathPoint getStart() const { return start; }
    PathPoint getEnd() const { return end; }

    /// The points through which the run is drawn, in order: straight lines between them stay within `chordTolerance` of the
    /// edges, and every vector is one of them. None where there is no edge.
    std::vector<PathPoint> getPathPointsForRender() const { return getPathPointsForRender(start, end); }
    /// The same for a piece of the run. Of a closed run it goes on over the end to a place that lies before; of an open one
    /// the two places are taken in the order of the run.
    std::vector<PathPoint> getPathPointsForRender(PathPoint from, PathPoint to) const;

    bool closed = false;         ///< whether the end is where the run begins
    double chordTolerance = 0.1; ///< model units

private:
    bool isBefore(PathPoint a, PathPoint b) const;
    void appendPoints(PathPoint from, PathPoint to, std::vector<PathPoint>& points) const;

    std::vector<geometry::MfgVectors> edges;
    PathPoint start;
    PathPoint end;
};

} // namespace vrk::task
