#include "selection/MeshObject.h"

#include "mesh/MeshManager.h"
#include "mesh/paint/PaintMesh.h"
#include "platform/common/SharedThings.h"
#include "selection/SensitiveMesh.h"
#include "selection/geometry/BVHBuilder.h"
#include "visual/MeshVisual.h"
#include "visual/PaintVisual.h"
#include "visual/VisualCast.h"

namespace vrk::selection {

/// A mesh as the one part of all objects of it, in the mesh's own coordinates. It keeps the mesh, so that no other one gets
/// its address. Thread: render thread; the queries as those of the part.
class MeshParts : public PrimitiveContainer {
public:
    static std::shared_ptr<const MeshParts> Of(visual::Mesh* mesh)
    {
        static auto* const all = new common::SharedThings<visual::Mesh*, MeshParts>; // as long as the process
        return all->get(
            mesh, [](const MeshParts&) { return true; }, [mesh] { return std::make_shared<const MeshParts>(mesh); });
    }

    explicit MeshParts(visual::Mesh* mesh) : mesh(mesh)
    {
        primitives.push_back(new SensitiveMesh(mesh, nullptr, {}));
        bvh = BVHBuilder(this).build();
        visual::MeshManager::holdMesh(mesh);
    }
    ~MeshParts() override { visual::MeshManager::releaseMesh(mesh); }

private:
    visual::Mesh* mesh;
};

namespace {

rob::Vec3Template<float> times(const rob::Vec3Template<float>& v, const rob::Vec3Template<float>& scale)
{
    return {v.x * scale.x, v.y * scale.y, v.z * scale.z};
}

rob::Vec3Template<float> divided(const rob::Vec3Template<float>& v, const rob::Vec3Template<float>& scale)
{
    return {v.x / scale.x, v.y / scale.y, v.z / scale.z};
}

/// Null for a visual that draws none.
visual::Mesh* meshOf(visual::Visual* visual)
{
    if (visual::PaintVisual* paint = visual::visualCast<visual::PaintVisual>(visual, VisualType::Paint))
        return paint->getMesh();
    auto* drawn = dynamic_cast<visual::MeshVisual*>(visual);
    return drawn ? drawn->getMesh() : nullptr;
}

} // namespace

MeshObject::MeshObject(visual::Visual* visual) : SelectableObject(ObjectKind::Mesh, visual) {}

MeshObject::~MeshObject() = default;

void MeshObject::buildPrimitives()
{
    visual::Mesh* mesh = meshOf(visual);
    if (!mesh)
        return;
    parts = MeshParts::Of(mesh);
    borrowParts(*parts);
}

void MeshObject::update()
{
    if (!beginUpdate())
        return;
    takePose(visual->getWorldPose());
    box = Box();
    if (bvh.root != nullptr) {
        for (unsigned i = 0; i < 8; ++i)
            box.addPoint(toWorld(bvh.root->box.getCorner(i)));
        box.updateCenter();
    }
    worldDirty = false;
}

rob::PosTemplate<float> MeshObject::toMesh(const rob::PosTemplate<float>& p) const
{
    return rob::PosTemplate<float>(divided(rob::Vec3Template<float>(inverseWorldPose * p), worldScale));
}

rob::PosTemplate<float> MeshObject::toWorld(const rob::PosTemplate<float>& p) const
{
    return worldPose * rob::PosTemplate<float>(times(rob::Vec3Template<float>(p), worldScale));
}

void MeshObject::intersectLine(Result& result, const rob::LineTemplate<float>& line) const
{
    closestHitLine(result, {toMesh(line.start), toMesh(line.end)});
    if (!result.hit)
        return;
    result.visual = visual;
    result.position = toWorld(result.position);
}

void MeshObject::intersectTriangle(Result& result, const rob::TriangleTemplate<float>& triangle) const
{
    firstHitTriangle(result, {toMesh(triangle.a), toMesh(triangle.b), toMesh(triangle.c)});
    if (!result.hit)
        return;
    result.visual = visual;
    result.position = toWorld(result.position); // a touch has no place of its own: this is where the mesh stands
}

void MeshObject::intersectRay(Result& result, const visual::Ray& ray) const
{
    const visual::Ray moved = ray.transformed(inverseWorldPose);
    const rob::Vec3Template<float> direction = divided(rob::Vec3Template<float>(moved.direction), worldScale);
    const rob::PosTemplate<float> origin(divided(rob::Vec3Template<float>(moved.origin), worldScale));
    closestHitRay(result, visual::Ray(origin, rob::normalized(direction)));
    if (!result.hit)
        return;
    result.visual = visual;
    result.position = toWorld(result.position);
}

void MeshObject::forEachInBox(const visual::Box& question, std::function<void(unsigned)> callback) const
{
    Box local;
    for (unsigned i = 0; i < 8; ++i)
        local.addPoint(toMesh(question.getCorner(i)));
    local.updateCenter();
    PrimitiveContainer::forEachInBox(local, std::move(callback));
}

bool isPaint(const SelectableObject& object)
{
    return object.visual->getType() == VisualType::Paint;
}

} // namespace vrk::selection
