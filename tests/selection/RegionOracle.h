#pragma once

#include "selection/SelectionFixture.h"
#include "selection/region/LassoSelector.h"
#include "selection/region/RegionQuery.h"

#include <Ogre.h>

#include <array>
#include <cmath>
#include <random>
#include <set>

/// What a region of the view holds, by a loop in double precision over all points.
namespace vrk::selection {

/// The two matrices of a view in one.
class DoubleView {
public:
    /// Of the main camera, widened.
    DoubleView()
    {
        const Ogre::Camera& camera = *visual::Camera::Get()->ogreCamera();
        const Ogre::Matrix4 view(camera.getViewMatrix(true));
        const Ogre::Matrix4& projection = camera.getProjectionMatrix();
        take([&](unsigned row, unsigned column) { return static_cast<double>(view[row][column]); },
             [&](unsigned row, unsigned column) { return static_cast<double>(projection[row][column]); });
        width = camera.getViewport()->getActualWidth();
        height = camera.getViewport()->getActualHeight();
    }
    explicit DoubleView(const RegionView& view) : width(view.width), height(view.height)
    {
        take([&](unsigned row, unsigned column) { return view.view[4 * row + column]; },
             [&](unsigned row, unsigned column) { return view.projection[4 * row + column]; });
    }
    /// The pixel of a place in the world; w below 0 behind the camera.
    struct Pixel {
        double x, y, w;
    };
    Pixel pixelOf(const rob::Posd& p) const
    {
        const Pixel even = evenPixelOf(p);
        return {even.x / even.w, even.y / even.w, even.w};
    }
    /// The same before the division by w, which goes evenly along a line.
    Pixel evenPixelOf(const rob::Posd& p) const
    {
        const auto row = [&](unsigned i) {
            return matrix[i][0] * p.x + matrix[i][1] * p.y + matrix[i][2] * p.z + matrix[i][3];
        };
        const double w = row(3);
        return {(row(0) + w) / 2 * width, (w - row(1)) / 2 * height, w};
    }
    /// Along the direction in which the camera looks.
    double depthOf(const rob::Posd& p) const { return depth[0] * p.x + depth[1] * p.y + depth[2] * p.z + depth[3]; }

private:
    template <typename View, typename Projection>
    void take(const View& view, const Projection& projection)
    {
        for (unsigned row = 0; row < 4; ++row)
            for (unsigned column = 0; column < 4; ++column)
                for (unsigned k = 0; k < 4; ++k)
                    matrix[row][column] += projection(row, k) * view(k, column);
        for (unsigned column = 0; column < 4; ++column)
            depth[column] = -view(2, column);
    }

    double matrix[4][4] = {};
    double depth[4] = {};
    double width = 0, height = 0;
};

/// Takes effect with the next change of the camera's pose.
inline void useOrthogonal(bool orthogonal)
{
    Ogre::Camera& camera = *visual::Camera::Get()->ogreCamera();
    camera.setProjectionType(orthogonal ? Ogre::PT_ORTHOGRAPHIC : Ogre::PT_PERSPECTIVE);
    if (orthogonal)
        camera.setOrthoWindowHeight(1500);
}

/// The place of each of a cloud's points in the world by the pose of its visual alone, which is what the rectangle and the lasso
/// of the picking service go by: they know no scale.
inline std::vector<rob::Posd> worldPoints(const visual::PointCloudVisual& cloud)
{
    const rob::Posed pose(cloud.getWorldPose());
    std::vector<rob::Posd> points;
    for (const rob::Posf& p : cloud.getPoints())
        points.push_back(pose * rob::Posd(p));
    return points;
}

/// The place in the world where each of a cloud's points is drawn, with the scale that its parents bring.
inline std::vector<rob::Posd> drawnPoints(const visual::PointCloudVisual& cloud)
{
    const rob::Posed pose(cloud.getWorldPose());
    const Ogre::Vector3& scale = cloud.getSceneNode()->_getDerivedScale();
    std::vector<rob::Posd> points;
    for (const rob::Posf& p : cloud.getPoints())
        points.push_back(pose * rob::Posd(static_cast<double>(p.x) * scale.x, static_cast<double>(p.y) * scale.y,
                                          static_cast<double>(p.z) * scale.z));
    return points;
}

inline double uniform(std::mt19937& random, double from, double to)
{
    return std::uniform_real_distribution<double>(from, to)(random);
}

/// 3000 points about the origin, turned, moved and scaled by a parent of its own.
/// @param addCloud  makes the cloud of these points.
template <typename AddCloud>
visual::PointCloudVisual* addRandomCloud(std::mt19937& random, unsigned parentId, const AddCloud& addCloud)
{
    const auto number = [&random](double from, double to) { return static_cast<float>(uniform(random, from, to)); };
    auto* parent = new visual::Visual(parentId, "Parent", visual::Scene::GetWorldVisual());
    const float x = number(-200, 200), z = number(-200, 200);
    const float a = number(-3, 3), b = number(-1, 1), c = number(-3, 3);
    parent->setPose({{x, 0, z}, rob::Rotationf(a, b, c)});
    const float scale = number(0.5, 2);
    parent->getSceneNode()->setScale(scale, scale * number(0.8, 1.2), scale);
    std::vector<rob::Posf> points;
    for (int i = 0; i < 3000; ++i) {
        const float px = number(-400, 400), py = number(-400, 400), pz = number(-400, 400);
        points.emplace_back(px, py, pz);
    }
    visual::PointCloudVisual* cloud = addCloud(points);
    parent->attachVisual(cloud);
    VisualSelection::Get()->markDirty(cloud);
    return cloud;
}

enum class Inside { No, Yes, Unsure };

/// Unsure nearer than this many pixels to an edge: the planes of a rectangle begin on the near plane, where its edges are so
/// short that single precision leaves their directions a few hundredths of a pixel.
constexpr double edgeDoubt = 0.05;

inline Inside insideRectangle(double x1, double y1, double x2, double y2, const DoubleView::Pixel& p)
{
    const auto [left, right] = std::minmax(x1, x2);
    const auto [top, bottom] = std::minmax(y1, y2);
    const double depth = std::min({p.x - left, right - p.x, p.y - top, bottom - p.y});
    return std::abs(depth) < edgeDoubt ? Inside::Unsure : depth > 0 && p.w > 0 ? Inside::Yes : Inside::No;
}

/// By the sum of the angles under which the edges are seen, modulo two turns: not the way that the code goes.
inline Inside insidePolygon(const std::vector<rob::Posf>& polygon, double x, double y)
{
    double turns = 0;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const rob::Posf& a = polygon[i];
        const rob::Posf& b = polygon[(i + 1) % polygon.size()];
        const double ax = a.x - x, ay = a.y - y, bx = b.x - x, by = b.y - y;
        const double ex = bx - ax, ey = by - ay, length = ex * ex + ey * ey;
        const double t = length > 0 ? std::clamp(-(ax * ex + ay * ey) / length, 0.0, 1.0) : 0.0;
        if (std::hypot(ax + t * ex, ay + t * ey) < edgeDoubt)
            return Inside::Unsure;
        turns += std::atan2(ax * by - ay * bx, ax * bx + ay * by);
    }
    const long winding = std::lround(turns / (2 * std::acos(-1.0)));
    return winding % 2 != 0 ? Inside::Yes : Inside::No;
}

} // namespace vrk::selection
