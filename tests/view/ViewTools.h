#pragma once

#include "platform/layout/PointCloud.h"
#include "platform/sdf/SdfManager.h"
#include "scene/Scene.h"
#include "selection/VisualSelection.h"
#include "support/SceneFixture.h"
#include "view/Camera.h"
#include "visual/PointCloudVisual.h"
#include "visual/ScanClouds.h"
#include "visual/SolidVisual.h"

#include <Ogre.h>

#include <cmath>

namespace vrk::test {

/// Puts the camera at `eye`, looking along a direction of any length, with z, or else y, upwards in the picture.
inline void lookAlong(visual::Camera& camera, const rob::Posf& eye, const rob::Dirf& along)
{
    const rob::Dirf z = rob::normalized(-along);
    const rob::Dirf up = std::abs(z.z) > 0.999f ? rob::Dirf(0, 1, 0) : rob::Dirf(0, 0, 1);
    const rob::Dirf x = rob::normalized(up.cross(z));
    camera.setWorldPose({eye, rob::Rotationf::FromAxes(x, rob::Dirf(z.cross(x)), z)});
}

/// Where a point of the world lies in the picture, in pixels from the top left corner.
inline rob::Vec2f pixelOf(const visual::Camera& camera, const rob::Posf& point)
{
    const Ogre::Camera& lens = *camera.ogreCamera();
    const Ogre::Vector4 clip = lens.getProjectionMatrix() *
                               (Ogre::Matrix4(lens.getViewMatrix()) * Ogre::Vector4(point.x, point.y, point.z, 1));
    return {(clip.x / clip.w * 0.5f + 0.5f) * static_cast<float>(camera.viewportWidth()),
            (0.5f - clip.y / clip.w * 0.5f) * static_cast<float>(camera.viewportHeight())};
}

inline testing::AssertionResult isNearPoint(const rob::Posf& actual, const rob::Posf& expected, float tolerance)
{
    if ((actual - expected).length() <= tolerance)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << actual.x << ", " << actual.y << ", " << actual.z << " is not " << expected.x
                                       << ", " << expected.y << ", " << expected.z;
}

/// A body of this shape that picking finds.
inline visual::SolidVisual* addPickedSolid(visual::Visual* parent, const TopoDS_Shape& shape, const std::string& name)
{
    const auto body = addModelBody(shape, name);
    visual::SolidVisual::Build(parent, body.get(), shape);
    selection::VisualSelection::Get()->update();
    return static_cast<visual::SolidVisual*>(visual::Scene::GetVisual(body->getId()));
}

/// Look beside the diagonals of its faces: a ray through an edge that two triangles share may miss both.
inline visual::SolidVisual* addPickedBox(visual::Visual* parent, const rob::Posf& corner, const rob::Vec3f& size)
{
    visual::SolidVisual* box = addPickedSolid(parent, meshedBox(size.x, size.y, size.z), "view box");
    box->setPosition(corner);
    selection::VisualSelection::Get()->update();
    return box;
}

inline visual::PointCloudVisual* addPickedCloud(visual::Visual* parent, layout::PointCloud::Points points)
{
    const auto node = addModelCloud(std::move(points));
    auto* cloud = static_cast<visual::PointCloudVisual*>(visual::PointCloudVisual::Build(parent, node.get()));
    selection::VisualSelection::Get()->update();
    return cloud;
}

} // namespace vrk::test
