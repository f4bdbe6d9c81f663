#pragma once

#include "../SelectionFixture.h"

#include "selection/pick/PickQuery.h"

#include <cmath>
#include <string>
#include <vector>

namespace vrk::selection {

/// A view as a value, made in double precision without the scene: 400 x 300 pixels.
struct PickView {
    rob::Posd eye{0, -1000, 0};
    rob::Posd target{0, 0, 0};
    rob::Vec3d up{0, 0, 1};
    double near = 1;
    double far = 1e6;
    double angle = 2 * (3.14159265358979 / 6); ///< from the bottom to the top
    double parallelHeight = 0;                 ///< of the picture in the world; 0 for perspective

    PickCamera camera() const
    {
        const rob::Vec3d z = unit(eye - target), x = unit(up.cross(z)), y = z.cross(x);
        PickCamera camera;
        camera.width = 400;
        camera.height = 300;
        const rob::Vec3d axes[3] = {x, y, z};
        for (unsigned row = 0; row < 3; ++row) {
            for (unsigned column = 0; column < 3; ++column)
                camera.view[4 * row + column] = axes[row][column];
            camera.view[4 * row + 3] = -axes[row].dot(eye);
        }
        camera.view[15] = 1;
        PickCamera::Matrix& p = camera.projection;
        const double depth = far - near;
        const double height = parallelHeight > 0 ? 2 / parallelHeight : 1 / std::tan(angle / 2);
        p[5] = height;
        p[0] = height * 300 / 400;
        if (parallelHeight > 0) {
            p[10] = -2 / depth;
            p[11] = -(far + near) / depth;
            p[15] = 1;
        } else {
            p[10] = -(far + near) / depth;
            p[11] = -2 * far * near / depth;
            p[14] = -1;
        }
        return camera;
    }
    static rob::Vec3d unit(const rob::Vec3d& v) { return v / v.length(); }
};

/// Where a place is seen, and how far beyond the near plane: by the two matrices one after the other.
struct SeenAt {
    double x, y, beyondNear;
};

inline SeenAt seenAt(const PickCamera& camera, const rob::Posd& p)
{
    double in[4] = {p.x, p.y, p.z, 1}, out[4];
    for (const PickCamera::Matrix* m : {&camera.view, &camera.projection}) {
        for (unsigned row = 0; row < 4; ++row) {
            out[row] = 0;
            for (unsigned k = 0; k < 4; ++k)
                out[row] += (*m)[4 * row + k] * in[k];
        }
        std::copy(out, out + 4, in);
    }
    return {(in[0] / in[3] + 1) / 2 * camera.width, (1 - in[1] / in[3]) / 2 * camera.height, in[2] + in[3]};
}

class PickFixture : public SelectionFixture {
protected:
    /// At the pixel where a place is seen.
    static PickQuery queryAt(const PickView& view, const rob::Posd& place)
    {
        PickQuery query;
        query.camera = view.camera();
        const SeenAt seen = seenAt(query.camera, place);
        query.x = seen.x;
        query.y = seen.y;
        return query;
    }
    /// As many pixels to the right of it.
    static PickQuery queryBeside(const PickView& view, const rob::Posd& place, double pixels)
    {
        PickQuery query = queryAt(view, place);
        query.x += pixels;
        return query;
    }
    PickAnswer all(const PickQuery& query)
    {
        service.update();
        return query.askAll(service);
    }
    std::optional<PickCandidate> best(const PickQuery& query)
    {
        service.update();
        return query.askBest(service);
    }
    /// "edge 3: chosen", in their order.
    static std::vector<std::string> told(const PickAnswer& answer)
    {
        std::vector<std::string> lines;
        for (const PickCandidate& c : answer.candidates)
            lines.push_back(std::string(nameOf(c.kind)) + (c.subId >= 0 ? " " + std::to_string(c.subId) : "") + ": " +
                            c.reason);
        return lines;
    }
    static const PickCandidate* find(const PickAnswer& answer, PickKind kind, const visual::Visual* visual = nullptr)
    {
        for (const PickCandidate& c : answer.candidates)
            if (c.kind == kind && (!visual || c.visual == visual))
                return &c;
        return nullptr;
    }
};

inline void expectNear(const rob::Posd& a, const rob::Posd& b, double tolerance)
{
    EXPECT_NEAR(a.x, b.x, tolerance);
    EXPECT_NEAR(a.y, b.y, tolerance);
    EXPECT_NEAR(a.z, b.z, tolerance);
}

} // namespace vrk::selection
