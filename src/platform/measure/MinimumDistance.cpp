#include "platform/measure/Measure.h"

#include "platform/measure/MeasuredGeometry.h"
#include "platform/measure/TriangleTree.h"

#include "platform/geometry/EdgePolygons.h"
#include "platform/station/Import.h"

#include <BRepBndLib.hxx>
#include <BRepBuilderAPI_Copy.hxx>
#include <BRepExtrema_DistShapeShape.hxx>
#include <BRep_Tool.hxx>
#include <Bnd_Box.hxx>
#include <Message_ProgressIndicator.hxx>
#include <Poly_Triangulation.hxx>
#include <Standard_Failure.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Edge.hxx>
#include <TopoDS_Vertex.hxx>

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <exception>
#include <utility>

namespace vrk::measure {
namespace {

using rob::Posd;

/// Ends the kernel's work when it is asked to stop, and hands its progress on.
class StopProgress : public Message_ProgressIndicator {
    DEFINE_STANDARD_RTTI_INLINE(StopProgress, Message_ProgressIndicator)

public:
    StopProgress(const std::stop_token& stop, const std::function<void(double)>& progress)
        : stop(stop), progress(progress)
    {
    }

protected:
    Standard_Boolean UserBreak() override { return stop.stop_requested(); }
    void Show(const Message_ProgressScope&, Standard_Boolean) override
    {
        if (progress)
            progress(GetPosition());
    }

private:
    const std::stop_token& stop;
    const std::function<void(double)>& progress;
};

Measurement distanceOf(const NearestPlaces& nearest, std::string note)
{
    Measurement measured;
    measured.value = nearest.distance;
    measured.way = nearest.second - nearest.first;
    measured.lines = {{nearest.first, nearest.second}};
    measured.textPlace = nearest.first + *measured.way * 0.5;
    measured.note = std::move(note);
    return measured;
}

// CAD

void refuseUnmeasurable(const TopoDS_Shape& shape)
{
    for (TopExp_Explorer edge(shape, TopAbs_EDGE, TopAbs_FACE); edge.More(); edge.Next())
        if (const TopoDS_Edge& each = TopoDS::Edge(edge.Current());
            BRep_Tool::Degenerated(each) || !BRep_Tool::IsGeometric(each))
            throw MeasureError("This edge has no curve to measure");
    Bnd_Box box;
    BRepBndLib::Add(shape, box, false);
    if (box.IsVoid())
        throw MeasureError("There is no shape to measure");
    if (box.IsOpen())
        throw MeasureError("What has no end has no minimum distance");
}

std::optional<NearestPlaces> nearestOfShapes(const TopoDS_Shape& first, const TopoDS_Shape& second,
                                             const std::stop_token& stop, const std::function<void(double)>& progress)
{
    const Handle(StopProgress) indicator = new StopProgress(stop, progress);
    BRepExtrema_DistShapeShape distance;
    distance.LoadS1(first);
    distance.LoadS2(second);
    distance.Perform(indicator->Start());
    if (stop.stop_requested())
        return std::nullopt;
    if (!distance.IsDone() || distance.NbSolution() < 1)
        throw MeasureError("No nearest places of these two were found");
    return NearestPlaces{distance.Value(), placeOf(distance.PointOnShape1(1)), placeOf(distance.PointOnShape2(1))};
}

// Meshes

struct Triangles {
    std::vector<Triangle> all;
    double deflection = 0; // from the surfaces; 0 of a mesh, and where every face is plane
};

void addTriangles(Triangles& triangles, const TopoDS_Face& face)
{
    TopLoc_Location location;
    const Handle(Poly_Triangulation) mesh = BRep_Tool::Triangulation(face, location);
    if (mesh.IsNull())
        throw MeasureError("A face has neither a surface nor triangles to measure");
    const gp_Trsf place = location.Transformation();
    const bool isReversed = face.Orientation() == TopAbs_REVERSED;
    for (int i = 1; i <= mesh->NbTriangles(); ++i) {
        int a = 0, b = 0, c = 0;
        mesh->Triangle(i).Get(a, b, c);
        if (isReversed)
            std::swap(b, c);
        const auto corner = [&](int node) { return placeOf(mesh->Node(node).Transformed(place)); };
        triangles.all.push_back({corner(a), corner(b), corner(c)});
    }
    const bool isSurface = !BRep_Tool::Surface(face, location).IsNull();
    if (isSurface)
        triangles.deflection = std::max(triangles.deflection, mesh->Deflection());
}

bool lacksTriangles(const TopoDS_Shape& shape)
{
    TopLoc_Location location;
    for (TopExp_Explorer face(shape, TopAbs_FACE); face.More(); face.Next())
        if (BRep_Tool::Triangulation(TopoDS::Face(face.Current()), location).IsNull())
            return true;
    return false;
}

/// Of faces their triangles; edges and points by themselves count as such without area.
Triangles trianglesOf(const TopoDS_Shape& given)
{
    TopoDS_Shape shape = given;
    if (!isMesh(shape) && lacksTriangles(shape)) {
        shape = BRepBuilderAPI_Copy(shape, true, false).Shape(); // the shape itself may be read by others
        station::meshShape(shape);
    }
    Triangles triangles;
    for (TopExp_Explorer face(shape, TopAbs_FACE); face.More(); face.Next())
        addTriangles(triangles, TopoDS::Face(face.Current()));
    for (TopExp_Explorer edge(shape, TopAbs_EDGE, TopAbs_FACE); edge.More(); edge.Next()) {
        std::optional<Posd> last;
        geometry::forEachNode(TopoDS::Edge(edge.Current()), [&](const gp_Pnt& node) {
            if (last)
                triangles.all.push_back({*last, placeOf(node), placeOf(node)});
            last = placeOf(node);
        });
    }
    for (TopExp_Explorer vertex(shape, TopAbs_VERTEX, TopAbs_EDGE); vertex.More(); vertex.Next()) {
        const Posd place = placeOf(BRep_Tool::Pnt(TopoDS::Vertex(vertex.Current())));
        triangles.all.push_back({place, place, place});
    }
    if (triangles.all.empty())
        throw MeasureError("There is no shape to measure");
    return triangles;
}

/// A place of the one that lies inside of what the other encloses, where nothing of the two touches.
std::optional<Posd> placeInside(const TriangleTree& inner, const TriangleTree& outer)
{
    const std::vector<Posd> places = connectedOf(inner.getTriangles()).places;
    const auto isHeld = [&outer](const Posd& place) { return outer.holds(place); };
    if (std::ranges::none_of(places, isHeld) || !connectedOf(outer.getTriangles()).areClosed)
        return std::nullopt;
    const auto found = std::ranges::find_if(
        places, [&](const Posd& place) { return outer.holds(place) && isInside(outer.getTriangles(), place); });
    return found == places.end() ? std::nullopt : std::optional(*found);
}

std::optional<Measurement> distanceOfMeshes(const TopoDS_Shape& first, const TopoDS_Shape& second,
                                            const std::stop_token& stop)
{
    Triangles ofFirst = trianglesOf(first), ofSecond = trianglesOf(second);
    const double deflection = ofFirst.deflection + ofSecond.deflection;
    const TriangleTree a(std::move(ofFirst.all), stop), b(std::move(ofSecond.all), stop);
    std::optional<NearestPlaces> nearest = TriangleTree::Nearest(a, b, stop);
    if (!nearest)
        return std::nullopt;
    if (nearest->distance > 0) {
        std::optional<Posd> inside = placeInside(a, b);
        if (!inside)
            inside = placeInside(b, a);
        if (inside)
            nearest = NearestPlaces{0, *inside, *inside};
    }
    std::string note = "nearest places of the triangles";
    if (deflection > 0)
        note += fmt::format(", which lie within {} mm of the surfaces", fixedText(std::ceil(deflection * 100) / 100));
    return distanceOf(*nearest, note);
}

} // namespace

std::optional<Measurement> minimumDistance(const MeasuredThing& first, const MeasuredThing& second,
                                           const std::stop_token& stop, const std::function<void(double)>& progress)
{
    const TopoDS_Shape a = shapeInWorld(first), b = shapeInWorld(second);
    if (isMesh(a) || isMesh(b))
        return distanceOfMeshes(a, b, stop);
    refuseUnmeasurable(a);
    refuseUnmeasurable(b);
    try {
        const std::optional<NearestPlaces> nearest = nearestOfShapes(a, b, stop, progress);
        if (!nearest)
            return std::nullopt;
        const std::string samples = samplesNote(first, second);
        return distanceOf(*nearest, samples.empty() ? "nearest places" : samples);
    } catch (const Standard_Failure& failure) {
        throw MeasureError(fmt::format("These two cannot be measured: {}", failure.GetMessageString()));
    }
}

} // namespace vrk::measure
