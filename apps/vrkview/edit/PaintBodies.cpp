#include "edit/PaintBodies.h"

#include "edit/ModelPlaces.h"

#include "platform/layout/Body.h"
#include "platform/layout/Layout.h"
#include "platform/sdf/SdfManager.h"
#include "scene/Scene.h"

#include <QObject>

#include <algorithm>
#include <mutex>
#include <set>
#include <shared_mutex>
#include <unordered_set>

namespace vrkview {
namespace {

using vrk::layout::Body;
using vrk::visual::Scene;

// Below: under the model's lock.

/// Curves and points have the colours of their kind.
bool takesColor(const Body& body)
{
    return body.isMesh() || (!body.getShape().IsNull() && body.getShape().ShapeType() <= TopAbs_FACE);
}

void collectBodies(const sdf::SdfObject& object, std::vector<const Body*>& found)
{
    if (const auto* body = dynamic_cast<const Body*>(&object); body && takesColor(*body))
        found.push_back(body);
    for (const std::shared_ptr<sdf::SdfObject>& piece : object.getPieces())
        collectBodies(*piece, found);
}

std::vector<const Body*> bodiesIn(const std::vector<unsigned>& things)
{
    std::vector<const Body*> found;
    for (const unsigned id : things)
        if (const sdf::SdfObject* object = sdf::SdfManager::inst().find(id))
            collectBodies(*object, found);
    return found;
}

/// In model order: the bodies, and those that share a mesh with one of them.
std::vector<unsigned> withThoseOfOneMesh(const std::vector<const Body*>& bodies)
{
    std::unordered_set<unsigned> ids;
    std::set<std::string> uris; // meshes of STL files have no colours: each body that shows one has its own
    for (const Body* body : bodies) {
        ids.insert(body->getId());
        if (!body->isMesh() && !body->getGeometryUri().empty())
            uris.insert(body->getGeometryUri());
    }
    std::vector<unsigned> found;
    for (const std::shared_ptr<sdf::SdfObject>& object : vrk::layout::Layout::inst().objects())
        if (const auto* body = dynamic_cast<const Body*>(object.get());
            body && (ids.contains(body->getId()) || (takesColor(*body) && uris.contains(body->getGeometryUri()))))
            found.push_back(body->getId());
    return found;
}

void removeChild(sdf::Element& element, const char* name)
{
    if (const std::shared_ptr<sdf::Element> child = element.get(name))
        element.remove(child);
}

} // namespace

PaintBodies::PaintBodies(const std::vector<unsigned>& things, const std::string& color)
    : Change(QObject::tr("Colour %1").arg(nameOfThings(things)), Touched::Colors), color(color)
{
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    for (const unsigned id : withThoseOfOneMesh(bodiesIn(things)))
        bodies.push_back(read(id));
}

std::string PaintBodies::ColorOf(const std::vector<unsigned>& things)
{
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    const std::vector<const Body*> bodies = bodiesIn(things);
    return bodies.empty() ? std::string() : sdf::textAt(*bodies.front()->getElement(), "visual/color");
}

PaintBodies::Colors PaintBodies::read(unsigned id)
{
    Colors colors{id, std::nullopt, {}};
    const sdf::Element& element = *dynamic_cast<const Body&>(*sdf::SdfManager::inst().find(id)).getElement();
    if (const auto color = element.get("visual/color"))
        colors.color = color->asString();
    if (const auto faces = element.get("visual/face_colors"))
        for (const auto& face : faces->getChildren())
            colors.faces.emplace_back(face->getName(), face->getValue());
    return colors;
}

void PaintBodies::put(const Colors& colors)
{
    auto* body = dynamic_cast<Body*>(sdf::SdfManager::inst().find(colors.body));
    if (!body)
        return;
    const std::shared_ptr<sdf::Element> visual = body->getElement()->touch("visual");
    removeChild(*visual, "color");
    removeChild(*visual, "face_colors");
    if (colors.color)
        body->setColor(*colors.color);
    for (const auto& [name, value] : colors.faces)
        visual->touch("face_colors")->append(name)->set(value);
}

void PaintBodies::apply()
{
    {
        const std::unique_lock lock(sdf::SdfManager::inst().mutex());
        for (const Colors& before : bodies)
            put({before.body, color, {}});
    }
    show();
}

void PaintBodies::revert()
{
    {
        const std::unique_lock lock(sdf::SdfManager::inst().mutex());
        for (const Colors& before : bodies)
            put(before);
    }
    show();
}

void PaintBodies::show() const
{
    Scene* scene = Scene::Get();
    if (!scene)
        return;
    for (const Colors& body : bodies)
        if (Scene::HasVisual(body.body))
            scene->resetColor(body.body);
}

} // namespace vrkview
