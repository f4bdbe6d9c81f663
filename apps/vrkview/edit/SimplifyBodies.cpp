#include "edit/SimplifyBodies.h"

#include "edit/ModelPlaces.h"
#include "files/EdgesOfMeshes.h"

#include "platform/layout/Body.h"
#include "platform/sdf/SdfManager.h"
#include "platform/station/FileKinds.h"
#include "scene/Scene.h"
#include "visual/Visual.h"

#include <QObject>

#include <algorithm>
#include <mutex>
#include <shared_mutex>

namespace vrkview {
namespace {

using vrk::layout::Body;
using vrk::visual::Scene;
using vrk::visual::Visual;

/// Under the model's lock.
Body* findBody(unsigned id)
{
    return dynamic_cast<Body*>(sdf::SdfManager::inst().find(id));
}

std::vector<unsigned> idsOf(const std::vector<ExchangedMesh>& meshes)
{
    std::vector<unsigned> ids;
    for (const ExchangedMesh& mesh : meshes)
        ids.push_back(mesh.body);
    return ids;
}

/// The body's visual made anew; what is attached to it waits on what the body belongs to.
void drawAnew(const std::shared_ptr<sdf::SdfObject>& object)
{
    Scene* scene = Scene::Get();
    auto* body = dynamic_cast<Body*>(object.get());
    const auto owner = std::dynamic_pointer_cast<sdf::SdfNode>(sdf::Share(body->getParentId()));
    if (!scene || !owner || !Scene::HasVisual(body->getId()))
        return;
    std::vector<unsigned> carried;
    for (const Visual* child : Scene::GetVisual(body->getId())->getChildren())
        if (child->isAttached())
            carried.push_back(child->getId());
    for (const unsigned each : carried)
        scene->reparentVisual(each, owner->getId());
    scene->removeVisual(body->getId());
    scene->addBody(owner.get(), body);
    addEdgesOfMeshes(body->getId());
    for (const unsigned each : carried)
        scene->reparentVisual(each, body->getId());
    scene->processMsgs();
}

void give(const ExchangedMesh& mesh, const std::string& file)
{
    const char* type = vrk::station::fileKindOf(file) == vrk::station::FileKind::Ply ? "mesh" : "stl";
    const std::shared_ptr<sdf::SdfObject> object = sdf::Share(mesh.body);
    if (!dynamic_cast<Body*>(object.get()))
        return;
    {
        const std::unique_lock lock(sdf::SdfManager::inst().mutex());
        auto& body = dynamic_cast<Body&>(*object);
        body.setGeometry(file, type);
        if (file == mesh.before)
            body.setSource(mesh.source, mesh.unit);
    }
    drawAnew(object);
}

/// What is selected, or lies in what is, has lost its look with its visual.
void lookSelected()
{
    Scene* scene = Scene::Get();
    if (!scene || scene->getSelectedVisuals().empty())
        return;
    scene->setVisualsSelected(std::vector<unsigned>(scene->getSelectedVisuals()));
    scene->processMsgs();
}

template <typename IsWanted>
std::vector<ExchangedMesh> bodiesIn(const std::vector<unsigned>& things, const IsWanted& isWanted)
{
    std::vector<ExchangedMesh> found;
    const std::vector<unsigned> bodies = bodyIdsIn(things);
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    for (const unsigned id : bodies)
        if (const Body* body = findBody(id); body && isWanted(*body)) {
            const std::string file = body->getGeometryUri();
            found.push_back({id, file, file, body->getSourceFile(), body->getSourceUnit()});
        }
    return found;
}

} // namespace

SimplifyBodies::SimplifyBodies(std::vector<ExchangedMesh> wanted, const QString& text)
    : Change(text.arg(nameOfThings(idsOf(wanted))), Touched::Things), meshes(std::move(wanted))
{
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    std::erase_if(meshes, [](const ExchangedMesh& mesh) {
        const Body* body = findBody(mesh.body);
        return mesh.after == mesh.before || !body || body->getGeometryUri() != mesh.before;
    });
}

void SimplifyBodies::apply()
{
    for (std::size_t done = 0; done < meshes.size(); ++done)
        try {
            give(meshes[done], meshes[done].after);
        } catch (...) {
            for (std::size_t back = done + 1; back-- > 0;)
                give(meshes[back], meshes[back].before);
            throw;
        }
    lookSelected();
}

void SimplifyBodies::revert()
{
    for (const ExchangedMesh& mesh : meshes)
        give(mesh, mesh.before);
    lookSelected();
}

std::vector<ExchangedMesh> stlMeshesIn(const std::vector<unsigned>& things)
{
    return bodiesIn(things, [](const Body& body) { return body.getFileType() == "stl"; });
}

std::vector<ExchangedMesh> meshesIn(const std::vector<unsigned>& things)
{
    return bodiesIn(things, [](const Body& body) { return body.isMesh(); });
}

} // namespace vrkview
