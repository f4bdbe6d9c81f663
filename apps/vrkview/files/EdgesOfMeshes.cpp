#include "files/EdgesOfMeshes.h"

#include "mesh/Mesh.h"
#include "mesh/MeshManager.h"
#include "platform/geometry/MeshEdges.h"
#include "scene/Scene.h"
#include "visual/MeshVisual.h"

#include <algorithm>

namespace vrkview {
namespace {

using vrk::VisualType;
using vrk::geometry::MeshEdges;
using vrk::visual::Mesh;
using vrk::visual::MeshManager;
using vrk::visual::MeshVisual;
using vrk::visual::Scene;
using vrk::visual::Visual;

using Edges = std::shared_ptr<const MeshEdges>;

EdgesInBackground* background = nullptr;

/// A mesh, and the bodies that want its edges.
struct Wanted {
    Mesh* mesh;
    std::vector<unsigned> bodies;
};

Edges findEdges(const Mesh& mesh)
{
    return std::make_shared<const MeshEdges>(vrk::geometry::edgesOfMesh(mesh.vertices, mesh.indices));
}

/// The edges that bodies of a mesh are drawn with, as long as one is. Such a body keeps the mesh, too: no other one comes to lie
/// at its address.
class KnownEdges {
public:
    Edges get(const Mesh* mesh) const
    {
        const auto found = edges.find(mesh);
        return found == edges.end() ? nullptr : found->second.lock();
    }
    void set(const Mesh* mesh, const Edges& found)
    {
        if (edges.size() >= sizeToSweep) {
            std::erase_if(edges, [](const auto& entry) { return entry.second.expired(); });
            sizeToSweep = std::max(smallestSweep, 2 * edges.size());
        }
        edges[mesh] = found;
    }

private:
    static constexpr std::size_t smallestSweep = 64;

    std::unordered_map<const Mesh*, std::weak_ptr<const MeshEdges>> edges;
    std::size_t sizeToSweep = smallestSweep;
};

KnownEdges known; // render thread

bool hasEdges(const MeshVisual& body)
{
    return std::ranges::any_of(body.getChildren(),
                               [](const Visual* child) { return child->getType() == VisualType::WireFrame; });
}

/// Null for what is no body that is drawn as a mesh, and for a double of one, which has its id.
MeshVisual* meshBody(Visual& visual)
{
    if (visual.getType() != VisualType::Mesh || !Scene::HasVisual(visual.getId()) ||
        Scene::GetVisual(visual.getId()) != &visual)
        return nullptr;
    auto* body = dynamic_cast<MeshVisual*>(&visual);
    return body && body->getEntity() && body->getMesh() ? body : nullptr;
}

class WantedEdges {
public:
    void addBelow(Visual& visual)
    {
        if (const MeshVisual* body = meshBody(visual); body && !hasEdges(*body)) {
            const auto [place, isNew] = places.try_emplace(body->getMesh(), all.size());
            if (isNew)
                all.push_back({body->getMesh(), {}});
            all[place->second].bodies.push_back(body->getId());
        }
        for (Visual* child : visual.getChildren())
            addBelow(*child);
    }
    const std::vector<Wanted>& get() const { return all; }

private:
    std::vector<Wanted> all; // in the order of the tree
    std::unordered_map<const Mesh*, std::size_t> places;
};

/// Of bodies of the mesh, which are there.
void drawNow(const Wanted& wanted)
{
    Edges edges = known.get(wanted.mesh);
    if (!edges) {
        edges = findEdges(*wanted.mesh);
        known.set(wanted.mesh, edges);
    }
    for (const unsigned id : wanted.bodies)
        dynamic_cast<MeshVisual&>(*Scene::GetVisual(id)).setEdges(edges);
}

void drawEdgesBelow(Visual& top)
{
    WantedEdges wanted;
    wanted.addBelow(top);
    std::size_t done = 0;
    for (const Wanted& each : wanted.get()) {
        const bool isKnown = known.get(each.mesh) != nullptr;
        const std::size_t triangles = isKnown ? 0 : each.mesh->indices.size() / 3;
        if (background && (done + triangles > background->getAtOnce() || background->isWaitedFor(each.mesh))) {
            background->start(each.mesh, each.bodies);
            continue;
        }
        done += triangles;
        drawNow(each);
    }
}

} // namespace

void addEdgesOfMeshes(unsigned thing)
{
    Scene::Get()->addRenderTask(
        [thing] {
            if (thing == 0)
                drawEdgesBelow(*Scene::GetWorldVisual());
            else if (Scene::HasVisual(thing))
                drawEdgesBelow(*Scene::GetVisual(thing));
        },
        0);
}

EdgesInBackground::EdgesInBackground(std::size_t atOnce)
    : atOnce(atOnce), worker([this](const std::stop_token& stop) { work(stop); })
{
    background = this;
}

EdgesInBackground::~EdgesInBackground()
{
    background = nullptr;
    worker.request_stop();
    worker.join();
    for (const auto& [mesh, bodies] : waiting)
        MeshManager::releaseMesh(mesh);
}

void EdgesInBackground::start(Mesh* mesh, const std::vector<unsigned>& bodies)
{
    const auto [entry, isNew] = waiting.try_emplace(mesh);
    entry->second.insert(entry->second.end(), bodies.begin(), bodies.end());
    if (!isNew)
        return;
    MeshManager::holdMesh(mesh);
    {
        const std::lock_guard lock(mutex);
        queue.push_back(mesh);
    }
    added.notify_one();
}

void EdgesInBackground::work(const std::stop_token& stop)
{
    for (;;) {
        Mesh* mesh = nullptr;
        {
            std::unique_lock lock(mutex);
            if (!added.wait(lock, stop, [this] { return !queue.empty(); }) || stop.stop_requested())
                return;
            mesh = queue.front();
            queue.pop_front();
        }
        const Edges edges = findEdges(*mesh);
        QMetaObject::invokeMethod(
            this, [this, mesh, edges] { finish(mesh, edges); }, Qt::QueuedConnection);
    }
}

void EdgesInBackground::finish(Mesh* mesh, const Edges& edges)
{
    const auto entry = waiting.extract(mesh);
    known.set(mesh, edges);
    for (const unsigned id : entry.mapped())
        if (Scene::HasVisual(id))
            if (const MeshVisual* body = meshBody(*Scene::GetVisual(id)); body && body->getMesh() == mesh)
                Scene::Get()->addMeshEdges(id, edges);
    MeshManager::releaseMesh(mesh);
    emit came();
}

} // namespace vrkview
