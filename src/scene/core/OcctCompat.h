#pragma once

#include "scene/math/Pose.h"

#include <Standard_Handle.hxx>
#include <gp_Pnt.hxx>
#include <gp_Quaternion.hxx>
#include <gp_Trsf.hxx>

#ifdef No_Exception
#error "Open CASCADE's inline checks must stay: they are what refuses a shape or an index that is wrong."
#endif

class Poly_Triangulation;
class TopoDS_Face;

/// The one place that knows what differs between Open CASCADE and our types, and between one version of it and another.
namespace vrk::rob {

/// The rotation and the translation of a rigid transformation, narrowed.
inline PoseTemplate<float> GP_Trsf2Posef(const gp_Trsf& trsf)
{
    const gp_Quaternion q = trsf.GetRotation();
    const gp_XYZ& t = trsf.TranslationPart();
    const RotationTemplate<float> rotation(static_cast<float>(q.W()), static_cast<float>(q.X()),
                                           static_cast<float>(q.Y()), static_cast<float>(q.Z()));
    return {PosTemplate<float>(static_cast<float>(t.X()), static_cast<float>(t.Y()), static_cast<float>(t.Z())),
            rotation};
}

inline PosTemplate<float> toPosf(const gp_Pnt& p)
{
    return {static_cast<float>(p.X()), static_cast<float>(p.Y()), static_cast<float>(p.Z())};
}

inline gp_Trsf toTrsf(const PoseTemplate<double>& pose)
{
    gp_Trsf trsf;
    trsf.SetTransformation(
        gp_Quaternion(pose.orientation.x, pose.orientation.y, pose.orientation.z, pose.orientation.w),
        gp_Vec(pose.position.x, pose.position.y, pose.position.z));
    return trsf;
}

} // namespace vrk::rob

namespace vrk::visual {

/// Gives the triangulation of `face` normals, taken from its surface; one that has normals keeps them.
void computeNormals(const TopoDS_Face& face, const Handle(Poly_Triangulation) & triangulation);

} // namespace vrk::visual
