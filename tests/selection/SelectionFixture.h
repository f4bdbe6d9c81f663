#pragma once

#include "mesh/MeshManager.h"
#include "selection/SelectableObject.h"
#include "selection/VisualSelection.h"
#include "support/SceneFixture.h"
#include "view/Camera.h"
#include "visual/CurveVisual.h"
#include "visual/DynamicLines.h"
#include "visual/Edges.h"
#include "visual/LineVisual.h"
#include "visual/MeshVisual.h"
#include "visual/PointCloudVisual.h"
#include "visual/PointVisual.h"
#include "visual/ScanClouds.h"
#include "visual/SolidVisual.h"

#include <string>
#include <vector>

namespace vrk::selection {

/// A view of 400 x 300 pixels and a service that knows nothing yet. The builders make visuals under the world, enter them,
/// and leave the service dirty.
class SelectionFixture : public test::RenderTest {
protected:
    SelectionFixture() : service(*VisualSelection::Get())
    {
        service.update();
        look({{0, -1000, 0}, {0, 0, 0}});
    }

    void look(const test::View& view)
    {
        const rob::Dirf z = rob::normalized(view.eye - view.target);
        const rob::Dirf x = rob::normalized(view.up.cross(z));
        const rob::Dirf y(z.cross(x));
        visual::Camera::Get()->setWorldPose({view.eye, rob::Rotationf::FromAxes(x, y, z)});
    }

    /// Without the parts of the handles that start-up makes.
    std::vector<visual::Visual*> entered() const
    {
        std::vector<visual::Visual*> visuals = service.registeredVisuals();
        std::erase_if(visuals, test::isPartOfHandle);
        return visuals;
    }
    visual::SolidVisual* addSolid(const TopoDS_Shape& shape, const rob::Posf& at = {}, bool detectable = true)
    {
        visual::SolidVisual* visual = visual::SolidVisual::Build(world, shape, "Body");
        visual->setPosition(at);
        service.addShape(shape, visual, detectable);
        return visual;
    }
    /// A box about a point.
    visual::SolidVisual* addBox(float size, const rob::Posf& middle, bool detectable = true)
    {
        const rob::Vec3f half(size / 2, size / 2, size / 2);
        return addSolid(test::meshedBox(size, size, size), middle - half, detectable);
    }
    /// Draws these triangles, and is not entered.
    visual::MeshVisual* makeMesh(const std::vector<rob::Trianglef>& triangles, visual::Visual* parent = nullptr)
    {
        static unsigned number = 0;
        auto mesh = std::make_unique<visual::Mesh>("selection_mesh_" + std::to_string(++number));
        for (const rob::Trianglef& t : triangles)
            for (const rob::Posf& corner : {t.a, t.b, t.c}) {
                mesh->indices.push_back(static_cast<unsigned>(mesh->vertices.size()));
                mesh->vertices.push_back(corner);
                mesh->normals.emplace_back(0.0f, 0.0f, 1.0f);
            }
        const std::string name = mesh->name;
        visual::MeshManager::Get()->addMesh(mesh.release());
        auto* visual = new visual::MeshVisual("mesh", parent ? parent : world);
        visual->setType(VisualType::Mesh);
        visual->attachMesh(name);
        return visual;
    }
    visual::MeshVisual* addMesh(const std::vector<rob::Trianglef>& triangles, bool detectable = true,
                                bool priority = false)
    {
        visual::MeshVisual* visual = makeMesh(triangles);
        service.addMeshVisual(visual, detectable, priority);
        return visual;
    }
    visual::CurveVisual* addCurve(const TopoDS_Shape& edge)
    {
        visual::CurveVisual::Build(world, edge); // enters it itself
        visual::CurveVisual* made = nullptr;
        for (visual::Visual* child : world->getChildren())
            if (child->getType() == VisualType::Curve && child->getId() > (made ? made->getId() : 0))
                made = static_cast<visual::CurveVisual*>(child);
        return made;
    }
    visual::CurveVisual* addCurve(const gp_Pnt& from, const gp_Pnt& to)
    {
        return addCurve(test::straightEdge(from, to));
    }
    visual::LineVisual* addLine(const std::vector<rob::Posf>& points,
                                visual::RenderOpType type = visual::RenderOpType::LineStrip)
    {
        auto* visual = new visual::LineVisual(world);
        visual::DynamicLines* line = visual->createDynamicLine(type);
        for (const rob::Posf& p : points)
            line->addPoint(p.x, p.y, p.z);
        service.addLineVisual(visual);
        return visual;
    }
    visual::PointVisual* addPoint(const rob::Posf& position)
    {
        auto* visual = static_cast<visual::PointVisual*>(visual::PointVisual::Build(world, position));
        service.addPointVisual(visual, true);
        return visual;
    }
    visual::PointCloudVisual* addCloud(layout::PointCloud::Points points)
    {
        // Enters itself.
        const auto node = test::addModelCloud(std::move(points));
        return static_cast<visual::PointCloudVisual*>(visual::PointCloudVisual::Build(world, node.get()));
    }

    SelectableObject& object(visual::Visual* visual) { return *service.getObject(visual); }
    /// Along y through a point of the plane y = 0, from `eye`.
    Result along(float x, float z, float eye = -1000) const { return service.select(Ray({x, eye, z}, {0, 1, 0})); }

    VisualSelection& service;
};

/// A square in the plane y = `y`, from -half to half, in two triangles that meet off its middle.
inline std::vector<rob::Trianglef> wall(float half, float y = 0)
{
    const rob::Posf a(-half, y, -half), b(half, y, -half), c(half, y, half), d(-half, y, half);
    const rob::Posf off(half * 0.9f, y, half * 0.8f);
    return {{a, b, off}, {b, c, off}, {c, d, off}, {d, a, off}};
}

} // namespace vrk::selection
