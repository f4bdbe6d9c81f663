#include "platform/task/Seam.h"

#include <BRep_Tool.hxx>
#include <Geom2d_Curve.hxx>
#include <Geom_Surface.hxx>
#include <TopExp.hxx>
#include <TopExp_Explorer.hxx>
#include <TopTools_IndexedDataMapOfShapeListOfShape.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>
#include <TopoDS_Vertex.hxx>

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <stdexcept>

namespace vrk::task {
namespace {

using geometry::MfgVector;
using geometry::MfgVectors;

constexpr double sameDirection = 1e-6; // length of what is left of two unit vectors
constexpr double turning = 0.02;       // radians by which a direction between two vectors may be wrong
constexpr int mostHalvings = 8;        // of the way between two vectors
constexpr double beside = 1e-4;        // of the length of an edge, from a place without normal to one that has it

[[noreturn]] void refuse(const std::string& text)
{
    throw std::invalid_argument(text);
}

/// A body's shape, asked for its edges by number.
class Edges {
public:
    explicit Edges(const TopoDS_Shape& shape)
    {
        if (shape.IsNull())
            refuse("a body without a shape has no edges");
        TopExp::MapShapes(shape, TopAbs_EDGE, all);
        TopExp::MapShapesAndUniqueAncestors(shape, TopAbs_EDGE, TopAbs_FACE, faces);
    }

    unsigned count() const { return static_cast<unsigned>(all.Size()); }

    /// By rising parameters. @throws std::invalid_argument for a number of none, and for an edge without length.
    TopoDS_Edge get(unsigned number) const
    {
        if (number == 0 || number > count())
            refuse(fmt::format("there is no edge {}: the body has {}", number, count()));
        const TopoDS_Edge edge = TopoDS::Edge(all(static_cast<int>(number)).Oriented(TopAbs_FORWARD));
        if (!isDrawn(edge))
            refuse(fmt::format("edge {} has no length", number));
        return edge;
    }

    /// Whether an edge has a curve of its own: the tip of a cone has none.
    static bool isDrawn(const TopoDS_Edge& edge)
    {
        return !BRep_Tool::Degenerated(edge) && BRep_Tool::IsGeometric(edge);
    }

    std::vector<TopoDS_Face> facesOf(unsigned number) const
    {
        std::vector<TopoDS_Face> found;
        for (const TopoDS_Shape& face : faces.FindFromKey(all(static_cast<int>(number))))
            found.push_back(TopoDS::Face(face));
        return found;
    }

    unsigned sharedFaces(unsigned a, unsigned b) const
    {
        unsigned shared = 0;
        for (const TopoDS_Face& of : facesOf(a))
            for (const TopoDS_Face& other : facesOf(b))
                shared += of.IsSame(other) ? 1 : 0;
        return shared;
    }

    bool isDrawn(unsigned number) const { return isDrawn(TopoDS::Edge(all(static_cast<int>(number)))); }

private:
    TopTools_IndexedMapOfShape all;
    TopTools_IndexedDataMapOfShapeListOfShape faces;
};

/// An edge in the direction of travel.
struct Leg {
    unsigned number = 0;
    TopoDS_Edge edge;

    TopoDS_Vertex begin() const { return TopExp::FirstVertex(edge, Standard_True); }
    TopoDS_Vertex end() const { return TopExp::LastVertex(edge, Standard_True); }
    Leg reversed() const { return {number, TopoDS::Edge(edge.Reversed())}; }
};

bool meet(const TopoDS_Vertex& a, const TopoDS_Vertex& b)
{
    if (a.IsNull() || b.IsNull())
        return false;
    // Faces that were not sewn have vertices of their own at one place.
    return a.IsSame(b) ||
           BRep_Tool::Pnt(a).Distance(BRep_Tool::Pnt(b)) <= BRep_Tool::Tolerance(a) + BRep_Tool::Tolerance(b);
}

/// The unit tangent at one end, in the direction of travel.
/// @throws std::invalid_argument where the edge has none.
rob::Dird tangentAt(const Leg& leg, double parameter)
{
    try {
        return geometry::GetEdgePointInfoAtParam(leg.edge, parameter).second;
    } catch (const std::overflow_error&) {
        refuse(fmt::format("edge {} has no direction at one place", leg.number));
    }
}

double angleBetween(const rob::Dird& a, const rob::Dird& b)
{
    return std::atan2(a.cross(b).length(), a.dot(b));
}

/// Whether a chain that goes on with this leg would run into itself, other than back to where it began.
bool runsIntoItself(const std::vector<Leg>& chain, const Leg& next)
{
    const TopoDS_Vertex end = next.end();
    const auto beginsThere = [&end](const Leg& leg) { return meet(leg.begin(), end); };
    return !beginsThere(chain.front()) && (beginsThere(next) || std::ranges::any_of(chain, beginsThere));
}

/// What goes on best behind the last leg; empty where nothing does.
std::optional<Leg> nextOf(const std::vector<Leg>& chain, const Edges& edges, const std::vector<unsigned>& taken,
                          double tolerance)
{
    const Leg& leg = chain.back();
    const rob::Dird along = tangentAt(leg, geometry::GetEdgeParameters(leg.edge).second);
    std::optional<Leg> best;
    unsigned bestShared = 0;
    double bestAngle = 0;
    for (unsigned number = 1; number <= edges.count(); ++number) {
        if (std::ranges::find(taken, number) != taken.end() || !edges.isDrawn(number))
            continue;
        const Leg forward{number, edges.get(number)};
        for (const Leg& other : {forward, forward.reversed()}) {
            if (!meet(leg.end(), other.begin()) || runsIntoItself(chain, other))
                continue;
            const double angle = angleBetween(along, tangentAt(other, geometry::GetEdgeParameters(other.edge).first));
            const unsigned shared = edges.sharedFaces(leg.number, number);
            if (angle > tolerance || (best && (shared < bestShared || (shared == bestShared && angle >= bestAngle))))
                continue;
            best = other;
            bestShared = shared;
            bestAngle = angle;
        }
    }
    return best;
}

/// Appends to `chain`, from its last leg on, until it comes to an end or back to where it began.
void follow(std::vector<Leg>& chain, const Edges& edges, std::vector<unsigned>& taken, double tolerance)
{
    while (!meet(chain.back().end(), chain.front().begin())) {
        const std::optional<Leg> next = nextOf(chain, edges, taken, tolerance);
        if (!next)
            return;
        taken.push_back(next->number);
        chain.push_back(*next);
    }
}

/// The place of an edge in a list.
std::size_t placeOf(unsigned number, const std::vector<unsigned>& list)
{
    return static_cast<std::size_t>(std::ranges::find(list, number) - list.begin());
}

/// Takes what follows the last leg out of `left`; false where nothing does.
/// @throws std::invalid_argument where two do.
bool appendNext(std::vector<Leg>& run, std::vector<Leg>& left)
{
    std::optional<std::size_t> next;
    for (std::size_t i = 0; i < left.size(); ++i) {
        const bool follows = meet(run.back().end(), left[i].begin()) || meet(run.back().end(), left[i].end());
        if (follows && next)
            refuse(fmt::format("edges {}, {} and {} meet at one place: a run has no branches", run.back().number,
                               left[*next].number, left[i].number));
        if (follows)
            next = i;
    }
    if (!next)
        return false;
    const Leg leg = left[*next];
    left.erase(left.begin() + static_cast<std::ptrdiff_t>(*next));
    run.push_back(meet(run.back().end(), leg.begin()) ? leg : leg.reversed());
    return true;
}

std::vector<Leg> turnedRound(std::vector<Leg> run)
{
    std::ranges::reverse(run);
    for (Leg& leg : run)
        leg = leg.reversed();
    return run;
}

bool isClosed(const std::vector<Leg>& run)
{
    return meet(run.back().end(), run.front().begin());
}

/// The edges in the order in which they follow each other.
std::vector<Leg> runOf(const Edges& edges, const std::vector<unsigned>& numbers)
{
    if (numbers.empty())
        refuse("a run needs an edge");
    std::vector<Leg> left;
    for (const unsigned number : numbers) {
        if (std::ranges::find(left, number, &Leg::number) != left.end())
            refuse(fmt::format("edge {} is given twice", number));
        left.push_back({number, edges.get(number)});
    }
    std::vector<Leg> run{left.front()};
    left.erase(left.begin());
    const bool isRing = isClosed(run);
    while (!left.empty() && !isRing && appendNext(run, left))
        if (isClosed(run))
            break;
    if (!left.empty() && !isRing && !isClosed(run)) { // what lies before the first one
        run = turnedRound(std::move(run));
        while (!left.empty() && appendNext(run, left)) {
        }
        run = turnedRound(std::move(run));
    }
    if (!left.empty())
        refuse(fmt::format("edge {} does not follow the others in one chain", left.front().number));

    const bool turn = !isClosed(run)
                          ? placeOf(run.front().number, numbers) > placeOf(run.back().number, numbers)
                          : run.size() > 2 && placeOf(run[1].number, numbers) > placeOf(run.back().number, numbers);
    if (!turn)
        return run;
    run = turnedRound(std::move(run));
    if (isClosed(run)) // the first stays the first
        std::ranges::rotate(run, run.end() - 1);
    return run;
}

/// The outward normal of a face at a place of its edge; empty where the surface has none.
std::optional<rob::Dird> normalAt(const TopoDS_Face& face, const TopoDS_Edge& edge, double parameter)
{
    double first = 0, last = 0;
    const Handle(Geom2d_Curve) onSurface = BRep_Tool::CurveOnSurface(edge, face, first, last);
    const Handle(Geom_Surface) surface = BRep_Tool::Surface(face);
    if (onSurface.IsNull() || surface.IsNull())
        return std::nullopt;
    const gp_Pnt2d uv = onSurface->Value(parameter);
    gp_Pnt point;
    gp_Vec alongU, alongV;
    surface->D1(uv.X(), uv.Y(), point, alongU, alongV);
    const gp_Vec across = alongU.Crossed(alongV);
    if (across.Magnitude() <= sameDirection * (alongU.Magnitude() + alongV.Magnitude()))
        return std::nullopt;
    const rob::Dird normal = rob::normalized(
        rob::Vec3d(across.X() / across.Magnitude(), across.Y() / across.Magnitude(), across.Z() / across.Magnitude()));
    return face.Orientation() == TopAbs_REVERSED ? -normal : normal;
}

/// Whether the face lies to the left of the leg, seen from outside: its border runs so.
bool isLeft(const TopoDS_Face& face, const Leg& leg)
{
    for (TopExp_Explorer edge(face, TopAbs_EDGE); edge.More(); edge.Next())
        if (edge.Current().IsSame(leg.edge))
            return edge.Current().Orientation() == leg.edge.Orientation();
    return false;
}

/// Tool directions along one leg.
class ToolDirections {
public:
    ToolDirections(const Leg& leg, const Edges& edges, ToolSide side) : leg(leg), faces(edges.facesOf(leg.number))
    {
        std::tie(first, last) = geometry::GetEdgeParameters(leg.edge);
        if (faces.empty())
            refuse(fmt::format("edge {} bounds no face, so that nothing tells where the tool points", leg.number));
        if (faces.size() > 2)
            refuse(fmt::format("edge {} bounds {} faces: between which of them the tool points is not told", leg.number,
                               faces.size()));
        if (side == ToolSide::Between) {
            if (faces.size() == 1 && !BRep_Tool::IsClosed(leg.edge, faces.front()))
                refuse(fmt::format(
                    "edge {} bounds one face only: there is no direction between two. Take that of the face",
                    leg.number));
        } else if (faces.size() == 2) {
            const bool isFirst = isLeft(faces.front(), leg) == (side == ToolSide::Left);
            faces = {faces[isFirst ? 0 : 1]};
        }
    }

    rob::Dird at(double parameter) const
    {
        rob::Vec3d sum;
        for (const TopoDS_Face& face : faces)
            sum += rob::Vec3d(normalNear(face, parameter));
        if (sum.length() <= sameDirection)
            refuse(fmt::format("the faces at edge {} look away from each other: no direction lies between them",
                               leg.number));
        const rob::Dird direction = rob::normalized(sum);
        if (tangentAt(leg, parameter).cross(direction).length() <= sameDirection)
            refuse(fmt::format("the tool direction lies along edge {}", leg.number));
        return direction;
    }

private:
    rob::Dird normalNear(const TopoDS_Face& face, double parameter) const
    {
        if (const auto normal = normalAt(face, leg.edge, parameter))
            return *normal;
        const double middle = (first + last) / 2;
        const double step = std::copysign(beside * std::abs(last - first), middle - parameter);
        if (const auto normal = normalAt(face, leg.edge, parameter + step))
            return *normal;
        refuse(fmt::format("a face at edge {} has no normal there", leg.number));
    }

    const Leg& leg;
    std::vector<TopoDS_Face> faces;
    double first = 0;
    double last = 0;
};

/// Appends vectors between two, both excluded, until what lies between each pair is halfway in direction, too.
void appendBetween(const ToolDirections& directions, const MfgVector& a, const MfgVector& b, int halvings,
                   std::vector<MfgVector>& vectors)
{
    const double middle = (a.parameter + b.parameter) / 2;
    const MfgVector between{middle, directions.at(middle)};
    const rob::Vec3d halfway = a.direction + b.direction;
    const bool isTold =
        halfway.length() > sameDirection && angleBetween(rob::normalized(halfway), between.direction) <= turning;
    if (isTold || halvings == 0)
        return;
    appendBetween(directions, a, between, halvings - 1, vectors);
    vectors.push_back(between);
    appendBetween(directions, between, b, halvings - 1, vectors);
}

std::vector<MfgVector> vectorsOf(const Leg& leg, const ToolDirections& directions, double chord)
{
    const auto [first, last] = geometry::GetEdgeParameters(leg.edge);
    std::vector<MfgVector> vectors;
    for (const double parameter : geometry::SampleEdge(leg.edge, first, last, chord)) {
        const MfgVector next{parameter, directions.at(parameter)};
        if (!vectors.empty())
            appendBetween(directions, MfgVector(vectors.back()), next, mostHalvings, vectors);
        vectors.push_back(next);
    }
    return vectors;
}

} // namespace

std::vector<unsigned> TangentChain(const TopoDS_Shape& shape, unsigned edge, double angleTolerance)
{
    if (!(angleTolerance >= 0))
        refuse("an angle tolerance is 0 or more");
    const Edges edges(shape);
    std::vector<Leg> chain{{edge, edges.get(edge)}};
    std::vector<unsigned> taken{edge};
    follow(chain, edges, taken, angleTolerance);
    if (!isClosed(chain)) {
        chain = turnedRound(std::move(chain));
        follow(chain, edges, taken, angleTolerance);
        chain = turnedRound(std::move(chain));
    }
    std::vector<unsigned> numbers;
    for (const Leg& leg : chain)
        numbers.push_back(leg.number);
    return numbers;
}

std::shared_ptr<EdgeMfgShape> MakeSeam(unsigned id, const std::string& name, const TopoDS_Shape& shape, unsigned body,
                                       const std::vector<unsigned>& edges, const SeamOptions& options)
{
    if (!(options.chordTolerance > 0) || !std::isfinite(options.chordTolerance))
        refuse("a chord tolerance is a length above 0");
    const Edges ofShape(shape);
    const std::vector<Leg> run = runOf(ofShape, edges);
    auto seam = std::make_shared<EdgeMfgShape>(id, name);
    seam->chordTolerance = options.chordTolerance;
    seam->closed = isClosed(run);
    for (const Leg& leg : run) {
        const ToolDirections directions(leg, ofShape, options.side);
        seam->addEdge({leg.edge, vectorsOf(leg, directions, options.chordTolerance), body, leg.number});
    }
    return seam;
}

} // namespace vrk::task
