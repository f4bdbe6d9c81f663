#pragma once

#include "scene/math/Pose.h"

#include <array>
#include <cmath>

namespace vrk::test {

/// Poses as 4 x 4 matrices: another way of computing what the model computes with quaternions.
struct Matrix {
    std::array<std::array<double, 4>, 4> m{{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}};

    static Matrix Move(double x, double y, double z)
    {
        Matrix r;
        r.m[0][3] = x;
        r.m[1][3] = y;
        r.m[2][3] = z;
        return r;
    }
    /// A turn about an axis of any length, by the formula of Rodrigues.
    static Matrix Turn(double angle, std::array<double, 3> axis)
    {
        const double length = std::sqrt(axis[0] * axis[0] + axis[1] * axis[1] + axis[2] * axis[2]);
        for (double& c : axis)
            c /= length;
        const double s = std::sin(angle), c = std::cos(angle);
        const auto [x, y, z] = axis;
        const double k[3][3] = {{0, -z, y}, {z, 0, -x}, {-y, x, 0}};
        Matrix r;
        for (int i = 0; i < 3; ++i)
            for (int j = 0; j < 3; ++j) {
                r.m[i][j] = i == j ? 1 : 0;
                r.m[i][j] += s * k[i][j];
                for (int n = 0; n < 3; ++n)
                    r.m[i][j] += (1 - c) * k[i][n] * k[n][j];
            }
        return r;
    }
    /// About the fixed axes x, y and z in turn.
    static Matrix Rpy(double roll, double pitch, double yaw)
    {
        return Turn(yaw, {0, 0, 1}) * Turn(pitch, {0, 1, 0}) * Turn(roll, {1, 0, 0});
    }

    Matrix operator*(const Matrix& o) const
    {
        Matrix r;
        for (int i = 0; i < 4; ++i)
            for (int j = 0; j < 4; ++j) {
                r.m[i][j] = 0;
                for (int n = 0; n < 4; ++n)
                    r.m[i][j] += m[i][n] * o.m[n][j];
            }
        return r;
    }

    /// The largest difference of where both take the origin and three points around it.
    double distance(const rob::Posed& pose) const
    {
        double worst = 0;
        for (const rob::Posd& p :
             {rob::Posd(0, 0, 0), rob::Posd(100, 0, 0), rob::Posd(0, 100, 0), rob::Posd(0, 0, 100)}) {
            const rob::Posd got = pose * p;
            for (int i = 0; i < 3; ++i) {
                const double here = m[i][0] * p.x + m[i][1] * p.y + m[i][2] * p.z + m[i][3];
                worst = std::max(worst, std::abs(here - got[static_cast<unsigned>(i)]));
            }
        }
        return worst;
    }
};

} // namespace vrk::test
