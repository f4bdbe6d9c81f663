#pragma once

#include "scene/math/Vec.h"

namespace vrk::cam {

/// The sum of squared distances from weighted planes, as a form of the place (Garland, Heckbert 1997). Not installed.
struct Quadric {
    // Of p in p' A p + 2 b' p + c, with A symmetric
    double xx = 0, xy = 0, xz = 0, yy = 0, yz = 0, zz = 0;
    double x = 0, y = 0, z = 0;
    double c = 0;

    /// @param normal  of unit length.
    void addPlane(const rob::Vec3d& normal, const rob::Vec3d& through, double weight)
    {
        const double d = -normal.dot(through);
        xx += weight * normal.x * normal.x;
        xy += weight * normal.x * normal.y;
        xz += weight * normal.x * normal.z;
        yy += weight * normal.y * normal.y;
        yz += weight * normal.y * normal.z;
        zz += weight * normal.z * normal.z;
        x += weight * normal.x * d;
        y += weight * normal.y * d;
        z += weight * normal.z * d;
        c += weight * d * d;
    }
    Quadric operator+(const Quadric& o) const
    {
        return {xx + o.xx, xy + o.xy, xz + o.xz, yy + o.yy, yz + o.yz, zz + o.zz, x + o.x, y + o.y, z + o.z, c + o.c};
    }
    Quadric operator*(double s) const
    {
        return {xx * s, xy * s, xz * s, yy * s, yz * s, zz * s, x * s, y * s, z * s, c * s};
    }
    double at(const rob::Vec3d& p) const
    {
        return p.x * (xx * p.x + 2 * (xy * p.y + xz * p.z + x)) + p.y * (yy * p.y + 2 * (yz * p.z + y)) +
               p.z * (zz * p.z + 2 * z) + c;
    }
    /// Where it is least; along what it does not tell, as near as may be to `wanted`.
    rob::Vec3d least(const rob::Vec3d& wanted) const
    {
        const double pull = 1e-6 * (xx + yy + zz);
        const double a = xx + pull, d = yy + pull, f = zz + pull;
        const rob::Vec3d r(-(x + xx * wanted.x + xy * wanted.y + xz * wanted.z),
                           -(y + xy * wanted.x + yy * wanted.y + yz * wanted.z),
                           -(z + xz * wanted.x + yz * wanted.y + zz * wanted.z));
        // By the adjugate: it is positive definite by the pull.
        const double m00 = d * f - yz * yz, m01 = xz * yz - xy * f, m02 = xy * yz - xz * d;
        const double m11 = a * f - xz * xz, m12 = xy * xz - a * yz, m22 = a * d - xy * xy;
        const double det = a * m00 + xy * m01 + xz * m02;
        if (!(det > 0))
            return wanted;
        return {wanted.x + (m00 * r.x + m01 * r.y + m02 * r.z) / det,
                wanted.y + (m01 * r.x + m11 * r.y + m12 * r.z) / det,
                wanted.z + (m02 * r.x + m12 * r.y + m22 * r.z) / det};
    }
};

} // namespace vrk::cam
