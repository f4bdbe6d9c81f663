#include "measure/MeasuredThings.h"

#include "edit/ModelPlaces.h"

#include "platform/layout/Body.h"
#include "platform/layout/PointCloud.h"
#include "platform/sdf/SdfManager.h"
#include "platform/station/Import.h"

#include <TopExp.hxx>
#include <TopTools_IndexedMapOfShape.hxx>

#include <fmt/format.h>

#include <QObject>

#include <shared_mutex>

namespace vrkview {
namespace {

using vrk::layout::Body;
using vrk::layout::Dimension;
using vrk::layout::DimensionEnd;
using vrk::measure::MeasuredPoint;
using vrk::measure::MeasuredShape;
using vrk::measure::MeasuredThing;
using vrk::measure::MeasureError;
using vrk::measure::Measurement;
using vrk::measure::Quantity;
using vrk::measure::Single;
using Kind = DimensionEnd::Kind;

TopoDS_Shape shapeOf(unsigned id)
{
    const auto body = std::dynamic_pointer_cast<Body>(sdf::Share(id));
    if (!body)
        throw MeasureError("What was measured is no longer there");
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    return body->getShape();
}

/// Of a mesh that is drawn straight from its file, the shape is read from that as well: it takes its time.
TopoDS_Shape wholeShapeOf(unsigned id)
{
    const TopoDS_Shape shape = shapeOf(id);
    if (!shape.IsNull())
        return shape;
    std::string uri;
    {
        const auto body = std::dynamic_pointer_cast<Body>(sdf::Share(id));
        const std::shared_lock lock(sdf::SdfManager::inst().mutex());
        uri = body->getGeometryUri();
    }
    return vrk::station::ImportShape(uri);
}

const char* nameOf(TopAbs_ShapeEnum kind)
{
    return kind == TopAbs_VERTEX ? "vertex" : kind == TopAbs_EDGE ? "edge" : "face";
}

vrk::rob::Posd pointOfCloud(const DimensionEnd& end)
{
    const auto cloud = std::dynamic_pointer_cast<vrk::layout::PointCloud>(sdf::Share(end.object));
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    if (!cloud || end.number >= cloud->getPoints().size())
        throw MeasureError(fmt::format("This cloud has no point {}", end.number));
    return vrk::rob::Posd(cloud->getPoints()[end.number]);
}

vrk::rob::Posf inDrawing(const vrk::rob::Posd& place)
{
    return vrk::rob::Posf(place);
}

} // namespace

const TopoDS_Shape& ShapePieces::get(unsigned body, TopAbs_ShapeEnum kind, unsigned number)
{
    TopTools_IndexedMapOfShape& pieces = all[body].at(kind);
    if (pieces.IsEmpty())
        if (const TopoDS_Shape shape = shapeOf(body); !shape.IsNull())
            TopExp::MapShapes(shape, kind, pieces);
    if (number < 1 || static_cast<unsigned>(pieces.Size()) < number)
        throw MeasureError(fmt::format("This body has no {} {}", nameOf(kind), number));
    return pieces(static_cast<int>(number));
}

MeasuredThing measuredThing(const DimensionEnd& end, const PoseOf& poseOf, ShapePieces& pieces)
{
    if (!sdf::Share(end.object))
        throw MeasureError("What was measured is no longer there");
    const vrk::rob::Posed pose = poseOf(end.object);
    switch (end.kind) {
    case Kind::Point:
        return MeasuredPoint{pose * end.place};
    case Kind::MeshVertex:
        return MeasuredPoint{pose * end.place, true};
    case Kind::CloudPoint:
        return MeasuredPoint{pose * pointOfCloud(end), true};
    case Kind::Frame:
        return MeasuredPoint{pose.position};
    case Kind::Vertex:
        return MeasuredShape{pieces.get(end.object, TopAbs_VERTEX, end.number), pose, end.place};
    case Kind::Edge:
        return MeasuredShape{pieces.get(end.object, TopAbs_EDGE, end.number), pose, end.place};
    case Kind::Face:
        return MeasuredShape{pieces.get(end.object, TopAbs_FACE, end.number), pose, end.place};
    case Kind::Body:
        break;
    }
    return MeasuredShape{wholeShapeOf(end.object), pose, end.place};
}

MeasuredThing measuredThing(const DimensionEnd& end)
{
    ShapePieces pieces;
    return measuredThing(end, worldPoseOfThing, pieces);
}

Measurement measure(Dimension::Type type, const std::vector<MeasuredThing>& things)
{
    switch (type) {
    case Dimension::Type::Diameter:
        return vrk::measure::measureOne(things.at(0), Single::Diameter);
    case Dimension::Type::Length:
        return vrk::measure::measureOne(things.at(0), Single::Length);
    case Dimension::Type::Area:
        return vrk::measure::measureOne(things.at(0), Single::Area);
    default:
        // Planes that were parallel may no longer be so: what there is between two things is asked anew.
        return vrk::measure::measureBetween(things.at(0), things.at(1));
    }
}

QString nameOfEnd(const DimensionEnd& end)
{
    const QString name = nameOfThing(end.object);
    switch (end.kind) {
    case Kind::Vertex:
        return QObject::tr("vertex %1 of %2").arg(end.number).arg(name);
    case Kind::Edge:
        return QObject::tr("edge %1 of %2").arg(end.number).arg(name);
    case Kind::Face:
        return QObject::tr("face %1 of %2").arg(end.number).arg(name);
    case Kind::MeshVertex:
        return QObject::tr("mesh vertex %1 of %2").arg(end.number).arg(name);
    case Kind::CloudPoint:
        return QObject::tr("point %1 of %2").arg(end.number).arg(name);
    case Kind::Point:
        return QObject::tr("place of %1").arg(name);
    default:
        return name;
    }
}

std::string nameOfDimension(const std::vector<DimensionEnd>& ends)
{
    QString name = nameOfEnd(ends.front());
    if (ends.size() > 1)
        name = QObject::tr("%1 to %2").arg(name, nameOfEnd(ends[1]));
    return name.toStdString();
}

vrk::visual::DimensionDrawing drawingOf(const Measurement& measured)
{
    vrk::visual::DimensionDrawing drawing;
    for (const std::vector<vrk::rob::Posd>& strip : measured.lines)
        for (std::size_t i = 0; i + 1 < strip.size(); ++i)
            drawing.lines.push_back({inDrawing(strip[i]), inDrawing(strip[i + 1])});
    if (measured.quantity == Quantity::Distance)
        drawing.marks = {inDrawing(measured.lines.front().front()), inDrawing(measured.lines.front().back())};
    drawing.text = labelOf(measured);
    drawing.textPlace = inDrawing(measured.textPlace);
    return drawing;
}

} // namespace vrkview
