#pragma once

#include "selection/SelectionFixture.h"
#include "selection/region/LassoSelector.h"

#include <Ogre.h>

#include <array>
#include <cmath>
#include <random>
#include <set>

/// What a region of the view holds, by a loop in double precision over all points.
namespace vrk::selection {

/// The main camera's matrices, widened.
class DoubleView {
public:
    DoubleView()
    {
        const Ogre::Camera& camera = *visual::Camera::Get()->ogreCamera();
        const Ogre::Matrix4 view(camera.getViewMatrix(true));
        const Ogre::Matrix4& projection = camera.getProjectionMatrix();
        for (unsigned row = 0; row < 4; ++row)
            for (unsigned column = 0; column < 4; ++column)
                for (unsigned k = 0; k < 4; ++k)
                    matrix[row][column] +=
                        static_cast<double>(projection[row][k]) * static_cast<double>(view[k][column]);
        width = camera.getViewport()->getActualWidth();
        height = camera.getViewport()->getActualHeight();
    }
    /// The pixel of a place in the world; w below 0 behind the camera.
    struct Pixel {
        double x, y, w;
    };
    Pixel pixelOf(const rob::Posd& p) const
    {
        const auto row = [&](unsigned i) {
            return matrix[i][0] * p.x + matrix[i][1] * p.y + matrix[i][2] * p.z + matrix[i][3];
        };
        const double w = row(3);
        return {(row(0) / w + 1) / 2 * width, (1 - row(1) / w) / 2 * height, w};
    }

private:
    double matrix[4][4] = {};
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

/// The place of each of a cloud's points in the world.
inline std::vector<rob::Posd> worldPoints(const visual::PointCloudVisual& cloud)
{
    const rob::Posed pose(cloud.getWorldPose());
    std::vector<rob::Posd> points;
    for (const rob::Posf& p : cloud.getPoints())
        points.push_back(pose * rob::Posd(p));
    return points;
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
