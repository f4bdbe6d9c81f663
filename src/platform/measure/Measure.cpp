#include "platform/measure/Measure.h"

#include "platform/measure/MeasuredGeometry.h"

#include <BRepAdaptor_Curve.hxx>
#include <BRepClass_FaceClassifier.hxx>
#include <BRep_Tool.hxx>
#include <ElCLib.hxx>
#include <Precision.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Edge.hxx>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace vrk::measure {
namespace {

constexpr double degrees = 180 / std::numbers::pi;
constexpr double parallelSine = 1e-6; // what it moves within ten metres is a hundredth of a millimetre
constexpr double samePlace = 1e-6;    // model units
constexpr double shortestLeg = 0.25;  // of an angle, as a share of the other one
constexpr double legOfNothing = 10;   // model units: where both things were picked where they meet
constexpr int arcSteps = 20;
constexpr int outlineSteps = 32; // of a curved edge

std::vector<rob::Posd> strip(const gp_Pnt& from, const gp_Pnt& to)
{
    return {placeOf(from), placeOf(to)};
}

void addNote(Measurement& measured, const std::string& note)
{
    if (!note.empty())
        measured.note += (measured.note.empty() ? "" : ", ") + note;
}

// Distances

Measurement distanceBetween(const gp_Pnt& from, const gp_Pnt& to)
{
    Measurement measured;
    measured.value = from.Distance(to);
    measured.way = placeOf(to) - placeOf(from);
    measured.lines = {strip(from, to)};
    measured.textPlace = placeOf(from) + *measured.way * 0.5;
    return measured;
}

/// Draws on to the thing itself from a place that lies beyond it.
void extend(Measurement& measured, const gp_Pnt& from, const gp_Pnt& to)
{
    if (from.Distance(to) > samePlace)
        measured.lines.push_back(strip(from, to));
}

gp_Pnt footOn(const Line& line, const gp_Pnt& point)
{
    return ElCLib::Value(ElCLib::Parameter(line.line, point), line.line);
}

gp_Pnt footOn(const Flat& flat, const gp_Pnt& point)
{
    const gp_Vec normal(flat.plane.Axis().Direction());
    return point.Translated(normal * normal.Dot(gp_Vec(point, flat.plane.Location())));
}

/// The place of the thing itself that is nearest to one on its endless line.
gp_Pnt heldTo(const Line& line, const gp_Pnt& onLine)
{
    return ElCLib::Value(std::clamp(ElCLib::Parameter(line.line, onLine), line.first, line.last), line.line);
}

bool isOn(const Flat& flat, const gp_Pnt& onPlane)
{
    const TopAbs_State state = BRepClass_FaceClassifier(flat.face, onPlane, Precision::Confusion()).State();
    return state == TopAbs_IN || state == TopAbs_ON;
}

Measurement between(const Geometry&, const gp_Pnt& point, const Geometry&, const gp_Pnt& other)
{
    return distanceBetween(point, other);
}

Measurement between(const Geometry&, const gp_Pnt& point, const Geometry&, const Line& line)
{
    const gp_Pnt foot = footOn(line, point), end = heldTo(line, foot);
    Measurement measured = distanceBetween(point, foot);
    extend(measured, foot, end);
    if (line.isAxis)
        measured.note = "to the axis";
    else if (measured.lines.size() > 1)
        measured.note = "beyond the end of the edge";
    return measured;
}

Measurement between(const Geometry&, const gp_Pnt& point, const Geometry& of, const Flat& flat)
{
    const gp_Pnt foot = footOn(flat, point);
    Measurement measured = distanceBetween(point, foot);
    if (!isOn(flat, foot)) {
        extend(measured, foot, of.place);
        measured.note = "beyond the border of the face";
    }
    return measured;
}

// Angles

/// Two legs from where things meet, and an arc from the shorter one to the other.
///
/// @param u, v  unit vectors along the legs, not parallel.
Measurement angleAt(const gp_Pnt& apex, const gp_Vec& u, const gp_Pnt& placeOfFirst, const gp_Vec& v,
                    const gp_Pnt& placeOfSecond)
{
    double first = std::abs(gp_Vec(apex, placeOfFirst).Dot(u)), second = std::abs(gp_Vec(apex, placeOfSecond).Dot(v));
    first = std::max(first, shortestLeg * second);
    second = std::max(second, shortestLeg * first);
    if (first <= samePlace)
        first = second = legOfNothing;
    const double angle = std::atan2(u.Crossed(v).Magnitude(), u.Dot(v));
    const gp_Vec normal = u.Crossed(v).Normalized();
    const gp_Vec along = (first <= second ? u : v) * std::min(first, second);
    const gp_Vec across = (first <= second ? normal : -normal).Crossed(along);
    const auto onArc = [&](double turn) {
        return placeOf(apex.Translated(along * std::cos(turn) + across * std::sin(turn)));
    };
    Measurement measured;
    measured.quantity = Quantity::Angle;
    measured.value = angle * degrees;
    measured.lines = {strip(apex, apex.Translated(u * first)), strip(apex, apex.Translated(v * second)), {}};
    for (int i = 0; i <= arcSteps; ++i)
        measured.lines.back().push_back(onArc(i * angle / arcSteps));
    measured.textPlace = onArc(angle / 2);
    return measured;
}

/// 1 or -1 where all of the line lies to one side of a place on it, 0 otherwise. An axis has no ends of its own.
int sideOf(const Line& line, const gp_Pnt& place)
{
    const double at = ElCLib::Parameter(line.line, place);
    if (line.isAxis)
        return 0;
    return line.first >= at - samePlace ? 1 : line.last <= at + samePlace ? -1 : 0;
}

/// The same of a face, along a direction in its plane.
int sideOf(const Flat& flat, const gp_Pnt& place, const gp_Vec& direction)
{
    bool hasBefore = false, hasBehind = false;
    for (TopExp_Explorer each(flat.face, TopAbs_EDGE); each.More(); each.Next()) {
        const TopoDS_Edge& edge = TopoDS::Edge(each.Current());
        if (BRep_Tool::Degenerated(edge))
            continue;
        const BRepAdaptor_Curve curve(edge);
        const double first = curve.FirstParameter(), last = curve.LastParameter();
        if (Precision::IsInfinite(first) || Precision::IsInfinite(last))
            return 0;
        const int steps = curve.GetType() == GeomAbs_Line ? 1 : outlineSteps;
        for (int i = 0; i <= steps; ++i) {
            const double along = gp_Vec(place, curve.Value(first + i * (last - first) / steps)).Dot(direction);
            hasBefore |= along < -samePlace;
            hasBehind |= along > samePlace;
        }
    }
    return hasBefore == hasBehind ? 0 : hasBehind ? 1 : -1;
}

/// Unit vectors along two legs: towards the things where each lies to one side, else so that the angle is at most 90 degrees
/// and the first leg points to where its thing was picked.
///
/// @param u, v  both senses are tried.
std::pair<gp_Vec, gp_Vec> legsOf(const gp_Vec& u, int sideOfFirst, const gp_Vec& toFirst, const gp_Vec& v,
                                 int sideOfSecond)
{
    if (sideOfFirst != 0 && sideOfSecond != 0)
        return {u * sideOfFirst, v * sideOfSecond};
    const gp_Vec leg = toFirst.Dot(u) < 0 ? -u : u;
    return {leg, leg.Dot(v) < 0 ? -v : v};
}

// Lines and planes

Measurement betweenParallels(const Geometry& ofFirst, const Line& first, const Geometry& ofSecond, const Line& second)
{
    const gp_Pnt foot = footOn(second, ofFirst.place);
    Measurement measured = distanceBetween(ofFirst.place, foot);
    extend(measured, ofFirst.place, heldTo(first, ofFirst.place));
    extend(measured, foot, second.isAxis ? ofSecond.place : heldTo(second, foot));
    measured.note = first.isAxis && second.isAxis   ? "between parallel axes"
                    : first.isAxis || second.isAxis ? "parallel to the axis"
                                                    : "parallel lines";
    return measured;
}

Measurement between(const Geometry& ofFirst, const Line& first, const Geometry& ofSecond, const Line& second)
{
    const gp_Vec u(first.line.Direction()), v(second.line.Direction());
    const gp_Vec normal = u.Crossed(v);
    const double square = normal.SquareMagnitude();
    if (normal.Magnitude() <= parallelSine)
        return betweenParallels(ofFirst, first, ofSecond, second);
    const gp_Vec apart(ofFirst.place, ofSecond.place);
    const gp_Pnt onFirst = ofFirst.place.Translated(u * (apart.Crossed(v).Dot(normal) / square));
    const gp_Pnt onSecond = ofSecond.place.Translated(v * (apart.Crossed(u).Dot(normal) / square));
    const auto [legOfFirst, legOfSecond] =
        legsOf(u, sideOf(first, onFirst), gp_Vec(onFirst, ofFirst.place), v, sideOf(second, onSecond));
    const double distance = std::abs(apart.Dot(normal)) / normal.Magnitude();
    if (distance <= samePlace)
        return angleAt(onFirst, legOfFirst, ofFirst.place, legOfSecond, ofSecond.place);
    Measurement measured = distanceBetween(onFirst, onSecond);
    measured.value = distance; // the places lose digits where the lines are nearly parallel
    measured.angle = legOfFirst.Angle(legOfSecond) * degrees;
    extend(measured, onFirst, heldTo(first, onFirst));
    extend(measured, onSecond, heldTo(second, onSecond));
    measured.note = "shortest distance of the lines";
    return measured;
}

Measurement between(const Geometry& ofLine, const Line& line, const Geometry& ofFlat, const Flat& flat)
{
    const gp_Vec along(line.line.Direction()), normal(flat.plane.Axis().Direction());
    const double sine = along.Dot(normal);
    if (std::abs(sine) <= parallelSine) {
        const gp_Pnt foot = footOn(flat, ofLine.place);
        Measurement measured = distanceBetween(ofLine.place, foot);
        if (!isOn(flat, foot))
            extend(measured, foot, ofFlat.place);
        extend(measured, ofLine.place, heldTo(line, ofLine.place));
        measured.note = line.isAxis ? "the axis is parallel to the plane" : "parallel";
        return measured;
    }
    const double reach = gp_Vec(ofLine.place, flat.plane.Location()).Dot(normal) / sine;
    const gp_Pnt apex = ofLine.place.Translated(along * reach);
    const gp_Vec shadow = along - normal * sine;
    // A line that stands upright on the plane has no shadow there: any direction is at a right angle to it.
    const gp_Vec inPlane =
        shadow.Magnitude() > parallelSine ? shadow.Normalized() : gp_Vec(flat.plane.XAxis().Direction());
    const auto [legOfLine, legOfFlat] =
        legsOf(along, sideOf(line, apex), gp_Vec(apex, ofLine.place), inPlane, sideOf(flat, apex, inPlane));
    return angleAt(apex, legOfLine, ofLine.place, legOfFlat, ofFlat.place);
}

/// The place on the line that two planes share that is nearest to a point.
gp_Pnt sharedPlace(const gp_Pln& first, const gp_Pln& second, const gp_Pnt& point)
{
    const gp_Vec n(first.Axis().Direction()), m(second.Axis().Direction());
    const double cosine = n.Dot(m), square = n.Crossed(m).SquareMagnitude();
    const double toFirst = n.Dot(gp_Vec(point, first.Location())), toSecond = m.Dot(gp_Vec(point, second.Location()));
    return point.Translated(n * ((toFirst - cosine * toSecond) / square) +
                            m * ((toSecond - cosine * toFirst) / square));
}

Measurement between(const Geometry& ofFirst, const Flat& first, const Geometry& ofSecond, const Flat& second)
{
    const gp_Vec n(first.plane.Axis().Direction()), m(second.plane.Axis().Direction());
    const gp_Vec shared = n.Crossed(m);
    if (shared.Magnitude() <= parallelSine) {
        const gp_Pnt foot = footOn(second, ofFirst.place);
        Measurement measured = distanceBetween(ofFirst.place, foot);
        if (!isOn(second, foot))
            extend(measured, foot, ofSecond.place);
        measured.note = "parallel planes";
        return measured;
    }
    const gp_Pnt middle((ofFirst.place.XYZ() + ofSecond.place.XYZ()) / 2);
    const gp_Pnt apex = sharedPlace(first.plane, second.plane, middle);
    const gp_Vec u = n.Crossed(shared).Normalized(), v = m.Crossed(shared).Normalized();
    const auto [legOfFirst, legOfSecond] =
        legsOf(u, sideOf(first, apex, u), gp_Vec(apex, ofFirst.place), v, sideOf(second, apex, v));
    return angleAt(apex, legOfFirst, ofFirst.place, legOfSecond, ofSecond.place);
}

Measurement inOrder(const MeasuredThing& first, const Geometry& ofFirst, const MeasuredThing& second,
                    const Geometry& ofSecond)
{
    if (const auto* other = std::get_if<Other>(&ofSecond.what)) {
        const auto* one = std::get_if<Other>(&ofFirst.what);
        if (one && one->circle && other->circle) {
            Measurement measured = distanceBetween(one->circle->Location(), other->circle->Location());
            measured.note = "between the centres";
            return measured;
        }
        return *minimumDistance(first, second);
    }
    Measurement measured = std::visit(
        [&](const auto& a, const auto& b) -> Measurement {
            if constexpr (requires { between(ofFirst, a, ofSecond, b); })
                return between(ofFirst, a, ofSecond, b);
            else
                return {};
        },
        ofFirst.what, ofSecond.what);
    addNote(measured, samplesNote(first, second));
    return measured;
}

} // namespace

Measurement measureBetween(const MeasuredThing& first, const MeasuredThing& second)
{
    const Geometry ofFirst = geometryOf(first), ofSecond = geometryOf(second);
    // Each pair is reckoned in one order: points, lines, planes, others.
    if (ofFirst.what.index() <= ofSecond.what.index())
        return inOrder(first, ofFirst, second, ofSecond);
    Measurement measured = inOrder(second, ofSecond, first, ofFirst);
    if (measured.way)
        measured.way = -*measured.way;
    return measured;
}

} // namespace vrk::measure
