#include "PickRules.h"

#include "IdPicture.h"
#include "files/ObjectNames.h"

#include "scene/math/Pose.h"
#include "selection/SelectableObject.h"
#include "selection/ViewPixels.h"
#include "selection/VisualSelection.h"
#include "view/Camera.h"
#include "visual/DynamicLines.h"
#include "visual/EdgeVisual.h"
#include "visual/LineVisual.h"
#include "visual/PointVisual.h"

#include <Ogre.h>

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace vrkview::test {
namespace {

using vrk::VisualType;
using vrk::rob::Posf;
using vrk::selection::Result;
using vrk::selection::SelectableObject;
using vrk::selection::VisualSelection;
using vrk::visual::Camera;
using vrk::visual::DynamicLines;
using vrk::visual::RenderOpType;
using vrk::visual::Visual;
using Kind = SelectableObject::ObjectKind;

constexpr double linePixels = 5; // a line is picked within them
constexpr double lineWins = linePixels / 2;
constexpr double widestLine = 2;   // pixels, of the lines of the id picture
constexpr double lineSlope = 2.2;  // of the lift, as the program of lines has it
constexpr double markPixels = 9;   // as the material of points has it
constexpr double markSlope = 2;    // of its lift
constexpr double pointUnits = 2;   // a point is picked within them
constexpr double offMiddle = 1.12; // lengths across the ray are that much longer in the picture's corner
constexpr double floatNoise = 1e-5;

struct Place {
    double x, y;
};

/// What is asked about: a pixel, and both answers there.
struct Pixel {
    const IdPicture& picture;
    int x, y;
    Visual* drawn;
    Result picked;
    vrk::visual::Ray ray;
};

Kind kindOf(Visual* visual)
{
    return VisualSelection::Get()->getObject(visual)->kind;
}

bool isLine(Visual* visual)
{
    return visual && (kindOf(visual) == Kind::Line || kindOf(visual) == Kind::Curve);
}

bool isPoint(Visual* visual)
{
    return visual && kindOf(visual) == Kind::Point;
}

bool isSurface(Visual* visual)
{
    return visual && !isLine(visual) && !isPoint(visual);
}

/// Where the object by itself is hit; none beyond everything.
double distanceOf(Visual* visual, const vrk::visual::Ray& ray)
{
    if (!visual)
        return std::numeric_limits<double>::infinity();
    Result result;
    VisualSelection::Get()->getObject(visual)->intersectRay(result, ray);
    return result.hit ? result.distance : std::numeric_limits<double>::infinity();
}

/// The size of a pixel in the world; rays start at the near plane, and sizes count from the eye.
double pixelAt(double distance)
{
    const double near = Camera::Get()->ogreCamera()->getNearClipDistance();
    return *vrk::selection::worldUnitsPerPixel(static_cast<float>(distance + near * offMiddle));
}

Place placeOf(const Posf& point)
{
    const Ogre::Camera& camera = *Camera::Get()->ogreCamera();
    const Ogre::Vector4 clip = camera.getProjectionMatrix() *
                               (Ogre::Matrix4(camera.getViewMatrix()) * Ogre::Vector4(point.x, point.y, point.z, 1));
    return {(clip.x / clip.w * 0.5 + 0.5) * Camera::Get()->viewportWidth(),
            (0.5 - clip.y / clip.w * 0.5) * Camera::Get()->viewportHeight()};
}

double distanceToSegment(const Place& p, const Place& a, const Place& b)
{
    const double dx = b.x - a.x, dy = b.y - a.y, square = dx * dx + dy * dy;
    const double t = square > 0 ? std::clamp(((p.x - a.x) * dx + (p.y - a.y) * dy) / square, 0.0, 1.0) : 0.0;
    return std::hypot(p.x - a.x - t * dx, p.y - a.y - t * dy);
}

double distanceToLines(const Place& p, const DynamicLines& lines, const vrk::rob::Posef& pose)
{
    double nearest = std::numeric_limits<double>::infinity();
    const std::vector<Posf>& points = lines.getPoints();
    const std::size_t step = lines.getRenderOpType() == RenderOpType::Lines ? 2 : 1;
    for (std::size_t i = 0; i + 1 < points.size(); i += step)
        nearest = std::min(nearest, distanceToSegment(p, placeOf(pose * points[i]), placeOf(pose * points[i + 1])));
    return nearest;
}

/// How many pixels the middle of this one is from a curve or a frame in the picture, whatever hides it.
double pixelsToLine(const Pixel& pixel, const Visual& line)
{
    const Place middle{pixel.x + 0.5, pixel.y + 0.5};
    double nearest = std::numeric_limits<double>::infinity();
    if (const auto* lines = dynamic_cast<const vrk::visual::LineVisual*>(&line))
        for (const auto& section : lines->getLines())
            nearest = std::min(nearest, distanceToLines(middle, *section, line.getWorldPose()));
    else
        for (const Visual* child : line.getChildren())
            if (const auto* edge = dynamic_cast<const vrk::visual::EdgeVisual*>(child))
                nearest = std::min(nearest, distanceToLines(middle, edge->getLines(), edge->getWorldPose()));
    return nearest;
}

Posf placeOfPoint(const Visual& visual)
{
    return visual.getWorldPose() * dynamic_cast<const vrk::visual::PointVisual&>(visual).getPntPos();
}

/// Whether the same pick, moved by this part of a pixel in some direction, answers what is drawn.
bool isDrawnBeside(const Pixel& pixel, float part)
{
    const float x = static_cast<float>(pixel.x) + 0.5f, y = static_cast<float>(pixel.y) + 0.5f;
    // No two of them lie along one of the borders that are frequent: upright, level and at 45 degrees.
    constexpr std::array<std::array<float, 2>, 8> directions{
        {{1, 0.3f}, {0.3f, 1}, {-0.3f, 1}, {-1, 0.3f}, {-1, -0.3f}, {-0.3f, -1}, {0.3f, -1}, {1, -0.3f}}};
    return std::ranges::any_of(directions, [&](const std::array<float, 2>& d) {
        return VisualSelection::Get()->select(x + part * d[0], y + part * d[1]).visual == pixel.drawn;
    });
}

bool isSilhouette(const Pixel& pixel)
{
    return pixel.picture.isNear(pixel.x, pixel.y, pixel.picked.visual, 1) && isDrawnBeside(pixel, 1.0f / 8);
}

bool isTriangleBorder(const Pixel& pixel)
{
    return isSurface(pixel.drawn) && isDrawnBeside(pixel, 1.0f / 64);
}

/// The part of a box test that a ray with a small component along an axis leaves out goes with the distance to the box. Of
/// a ray that starts anew every so often it is less than the unit by which boxes of triangles are larger.
bool isNearlyParallel(const Pixel& pixel)
{
    if (!isSurface(pixel.drawn))
        return false;
    const SelectableObject& object = *VisualSelection::Get()->getObject(pixel.drawn);
    const auto isFlat = [](const vrk::rob::DirTemplate<float>& d) {
        constexpr float parallel = 0.001f;
        return std::min({std::abs(d.x), std::abs(d.y), std::abs(d.z)}) < parallel;
    };
    if (!isFlat(pixel.ray.direction) && !isFlat(pixel.ray.transformed(object.inverseWorldPose).direction))
        return false;
    constexpr float stretch = 500;
    const float end = std::min(pixel.picked.distance, Camera::Get()->ogreCamera()->getFarClipDistance());
    for (float begin = 0; begin < end; begin += stretch) {
        vrk::visual::Ray ray = pixel.ray;
        ray.origin = ray.origin + vrk::rob::Vec3f(ray.direction) * begin;
        if (begin + distanceOf(pixel.drawn, ray) < end)
            return true;
    }
    return false;
}

bool isDepthStep(const Pixel& pixel)
{
    if (!isSurface(pixel.drawn) || !isSurface(pixel.picked.visual))
        return false;
    constexpr double steps = 1 << 24;
    const double near = Camera::Get()->ogreCamera()->getNearClipDistance();
    const double eye = pixel.picked.distance + near * offMiddle;
    // Both are rounded to a step, and the corners of both to floats before.
    const double tellable = 2 * eye * eye / (near * steps) + 2 * floatNoise * eye;
    return std::abs(distanceOf(pixel.drawn, pixel.ray) - pixel.picked.distance) < tellable;
}

bool isLineReach(const Pixel& pixel)
{
    if (!isLine(pixel.picked.visual) || pixelsToLine(pixel, *pixel.picked.visual) > linePixels * offMiddle)
        return false;
    // Told 2.5 pixels nearer than it lies, it wins over what hides it by no more than that.
    return pixel.picked.distance <= distanceOf(pixel.drawn, pixel.ray);
}

bool isLineLift(const Pixel& pixel)
{
    if (!isLine(pixel.drawn) || pixelsToLine(pixel, *pixel.drawn) > widestLine / 2 + 1)
        return false;
    const double unit = pixelAt(pixel.picked.distance) * offMiddle;
    const double line = distanceOf(pixel.drawn, pixel.ray) + lineWins * unit;
    return line - pixel.picked.distance <= lineSlope * (widestLine / 2 + 0.5) * unit;
}

bool isPointReach(const Pixel& pixel)
{
    if (!isPoint(pixel.picked.visual))
        return false;
    const vrk::rob::Vec3f to = placeOfPoint(*pixel.picked.visual) - pixel.ray.origin;
    const double along = to.dot(vrk::rob::Vec3f(pixel.ray.direction));
    const double across = std::sqrt(std::max(0.0, static_cast<double>(to.squaredLength()) - along * along));
    return across <= pointUnits + floatNoise * to.length() && along <= distanceOf(pixel.drawn, pixel.ray);
}

bool isPointMark(const Pixel& pixel)
{
    if (!isPoint(pixel.drawn))
        return false;
    const Posf point = placeOfPoint(*pixel.drawn);
    const Place middle = placeOf(point);
    const double reach = markPixels / 2 + 0.5;
    if (std::abs(middle.x - pixel.x - 0.5) > reach || std::abs(middle.y - pixel.y - 0.5) > reach)
        return false;
    const double along = (point - pixel.ray.origin).dot(vrk::rob::Vec3f(pixel.ray.direction));
    return along - pixel.picked.distance <= markSlope * markPixels * pixelAt(along) * offMiddle;
}

} // namespace

const char* nameOf(Verdict verdict)
{
    switch (verdict) {
    case Verdict::Same:
        return "same";
    case Verdict::Silhouette:
        return "silhouette";
    case Verdict::TriangleBorder:
        return "triangle border";
    case Verdict::NearlyParallel:
        return "nearly parallel";
    case Verdict::DepthStep:
        return "depth step";
    case Verdict::LineReach:
        return "line reach";
    case Verdict::LineLift:
        return "line lift";
    case Verdict::PointReach:
        return "point reach";
    case Verdict::PointMark:
        return "point mark";
    case Verdict::Unexplained:
        break;
    }
    return "unexplained";
}

Verdict compareAt(const IdPicture& picture, int x, int y)
{
    const float middleX = static_cast<float>(x) + 0.5f, middleY = static_cast<float>(y) + 0.5f;
    const Pixel pixel{picture,
                      x,
                      y,
                      picture.at(x, y),
                      VisualSelection::Get()->select(middleX, middleY),
                      Camera::Get()->getViewportRay(middleX, middleY)};
    if (pixel.drawn == pixel.picked.visual)
        return Verdict::Same;
    // What says most comes first: a line that reaches over a contour is told as a line.
    using Rule = std::pair<Verdict, bool (*)(const Pixel&)>;
    constexpr std::array rules = {
        Rule{Verdict::LineReach, isLineReach},           Rule{Verdict::LineLift, isLineLift},
        Rule{Verdict::PointReach, isPointReach},         Rule{Verdict::PointMark, isPointMark},
        Rule{Verdict::DepthStep, isDepthStep},           Rule{Verdict::Silhouette, isSilhouette},
        Rule{Verdict::TriangleBorder, isTriangleBorder}, Rule{Verdict::NearlyParallel, isNearlyParallel},
    };
    const auto found = std::ranges::find_if(rules, [&](const Rule& rule) { return rule.second(pixel); });
    return found == rules.end() ? Verdict::Unexplained : found->first;
}

int Comparison::compared() const
{
    int sum = 0;
    for (const auto& [verdict, count] : counts)
        sum += count;
    return sum;
}

int Comparison::count(Verdict verdict) const
{
    const auto found = counts.find(verdict);
    return found == counts.end() ? 0 : found->second;
}

std::string Comparison::summary() const
{
    std::string text = fmt::format("{} pixels", compared());
    for (const auto& [verdict, count] : counts)
        text += fmt::format(", {} {}", nameOf(verdict), count);
    return text;
}

Comparison compareAll(const IdPicture& picture, int step)
{
    VisualSelection::Get()->update(); // each picture scales the handles of start-up, which makes it dirty
    const auto told = [](const Visual* visual) { return visual ? vrkview::nameOf(*visual) : "nothing"; };
    Comparison result;
    for (int y = step / 2; y < picture.height(); y += step)
        for (int x = step / 2; x < picture.width(); x += step) {
            const Verdict verdict = compareAt(picture, x, y);
            ++result.counts[verdict];
            if (verdict == Verdict::Unexplained)
                result.unexplained.push_back(
                    fmt::format("({}, {}): drawn {}, picked {}", x, y, told(picture.at(x, y)),
                                told(VisualSelection::Get()
                                         ->select(static_cast<float>(x) + 0.5f, static_cast<float>(y) + 0.5f)
                                         .visual)));
        }
    return result;
}

} // namespace vrkview::test
