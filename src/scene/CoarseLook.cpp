#include "scene/CoarseLook.h"

#include "platform/common/Logger.h"
#include "scene/BodyLooks.h"
#include "scene/HoverOutline.h"
#include "scene/Scene.h"
#include "scene/core/SceneCore.h"
#include "visual/DynamicLines.h"
#include "visual/RenderGroups.h"
#include "visual/Visual.h"

#include <fmt/format.h>

#include <Ogre.h>

#include <algorithm>
#include <cmath>
#include <typeinfo>

namespace vrk::visual {
namespace {

constexpr const char* compositor = "FewerSamples";
constexpr const char* overOthers = "OverOthers"; // its scheme where another compositor draws the picture
constexpr float smallSize = 12;                  // pixels of a body's box, from corner to corner
constexpr unsigned oneIn = 4;                    // of small bodies is drawn: a hall full of them must not be empty

void collect(const Visual& visual, std::unordered_set<const Ogre::MovableObject*>& objects)
{
    for (const Ogre::MovableObject* object : visual.getSceneNode()->getAttachedObjects())
        objects.insert(object);
    for (const Visual* child : visual.getChildren())
        collect(*child, objects);
}

/// The colours of states are to be seen as long as they hold.
bool tellsState(const std::string& material)
{
    return material.ends_with("Selected") || material.ends_with("Highlighted") || material.starts_with("Collision") ||
           material.starts_with("EmphasizeCollision");
}

/// The same bodies in each frame, and no pattern among ids that follow each other: the last step of MurmurHash3, which is in the
/// public domain.
bool isOfTheFew(unsigned id)
{
    id = (id ^ id >> 16) * 0x85ebca6bu;
    id = (id ^ id >> 13) * 0xc2b2ae35u;
    return (id ^ id >> 16) % oneIn == 0;
}

bool isAnyOtherEnabled(const Ogre::CompositorChain& chain)
{
    return std::ranges::any_of(chain.getCompositorInstances(), [](Ogre::CompositorInstance* each) {
        return each->getEnabled() && each->getCompositor()->getName() != compositor;
    });
}

} // namespace

CoarseLook::CoarseLook(SceneCore& core) : core(core) {}

void CoarseLook::set(Coarseness wanted)
{
    level = wanted;
    suit();
}

void CoarseLook::serve(Ogre::Viewport& viewport, bool isMain)
{
    if (!isMain || !dynamic_cast<Ogre::RenderWindow*>(viewport.getTarget()))
        return;
    served = &viewport;
    suit();
}

void CoarseLook::forget(Ogre::Viewport& viewport)
{
    if (served == &viewport)
        served = nullptr;
}

void CoarseLook::suit()
{
    if (!served)
        return;
    auto& compositors = Ogre::CompositorManager::getSingleton();
    const bool isWanted = level >= Coarseness::FewerSamples && served->getTarget()->getFSAA() > 1;
    if (!isWanted) {
        if (compositors.hasCompositorChain(served))
            compositors.setCompositorEnabled(served, compositor, false);
        return;
    }
    Ogre::CompositorChain& chain = *compositors.getCompositorChain(served);
    if (Ogre::CompositorInstance* last = lastInChain(chain)) {
        last->setScheme(isAnyOtherEnabled(chain) ? overOthers : Ogre::BLANKSTRING);
        last->setEnabled(true);
    }
}

/// What comes later would draw anew, with all samples. Null where the resources have none.
Ogre::CompositorInstance* CoarseLook::lastInChain(Ogre::CompositorChain& chain)
{
    auto& compositors = Ogre::CompositorManager::getSingleton();
    if (Ogre::CompositorInstance* present = chain.getCompositor(compositor)) {
        if (chain.getCompositorInstances().back() == present)
            return present;
        compositors.removeCompositor(served, compositor);
    }
    Ogre::CompositorInstance* added = compositors.addCompositor(served, compositor, -1);
    if (added)
        added->addListener(this);
    else
        FileLogger::inst()->error(fmt::format("no compositor {} in the resources", compositor));
    return added;
}

/// The texture takes the colour behind all else from a viewport of its own.
void CoarseLook::notifyResourcesCreated(bool)
{
    Ogre::CompositorChain& chain = *Ogre::CompositorManager::getSingleton().getCompositorChain(served);
    Ogre::RenderTarget* texture = chain.getCompositor(compositor)->getRenderTarget("plain");
    texture->getViewport(0)->setBackgroundColour(served->getBackgroundColour());
}

bool CoarseLook::use(const Ogre::Viewport& viewport)
{
    if (!served || level == Coarseness::Whole)
        return false;
    const Ogre::Camera& camera = *viewport.getCamera();
    const auto rows = static_cast<float>(viewport.getActualHeight());
    view = camera.getViewMatrix();
    isPerspective = camera.getProjectionType() == Ogre::PT_PERSPECTIVE;
    pixelsOfUnit = std::abs(camera.getProjectionMatrix()[1][1]) * rows / std::max(1.0f, rows / 1080.0f);
    const bool areLines = core.record<BodyLooks>().getLines() != LineLook::None;
    edges = areLines ? nullptr : Ogre::MaterialManager::getSingleton().getByName("WireFrame").get();
    findKept();
    return true;
}

/// What lies under the mouse.
void CoarseLook::findKept()
{
    kept.clear();
    for (const unsigned id : core.record<HoverOutline>().getAround())
        if (Scene::HasVisual(id))
            collect(*Scene::GetVisual(id), kept);
}

bool CoarseLook::leavesOut(const Ogre::Renderable& renderable, std::uint8_t group) const
{
    // Asked for each of all that is drawn: casts would take ten times as long.
    if (group == renderGroup::lines)
        return edges && typeid(renderable) == typeid(DynamicLines) && renderable.getMaterial().get() == edges &&
               isEdgeOfSeenFaces(static_cast<const DynamicLines&>(renderable));
    if (level < Coarseness::FewerBodies || group != renderGroup::normal ||
        typeid(renderable) != typeid(Ogre::SubEntity))
        return false;
    const Ogre::Entity& body = *static_cast<const Ogre::SubEntity&>(renderable).getParent();
    if (!isSmall(body) || isKept(body) || renderable.getMaterial()->isTransparent())
        return false;
    const Ogre::SceneNode* node = body.getParentSceneNode();
    const Visual* visual = node ? visualOf(*node) : nullptr;
    return visual && !isOfTheFew(visual->getId());
}

/// False for edges that are all that is drawn of a body.
bool CoarseLook::isEdgeOfSeenFaces(const DynamicLines& lines) const
{
    const Ogre::SceneNode* node = lines.getParentSceneNode();
    const Ogre::SceneNode* ofBody = node ? node->getParentSceneNode() : nullptr;
    if (!ofBody)
        return false;
    for (const Ogre::MovableObject* object : ofBody->getAttachedObjects())
        if (typeid(*object) == typeid(Ogre::Entity) && object->getVisible())
            return !isKept(static_cast<const Ogre::Entity&>(*object));
    return false;
}

bool CoarseLook::isKept(const Ogre::Entity& body) const
{
    if (body.getRenderQueueGroup() == renderGroup::selected || kept.contains(&body))
        return true;
    return body.getNumSubEntities() > 0 && tellsState(body.getSubEntity(0)->getMaterialName());
}

bool CoarseLook::isSmall(const Ogre::Entity& body) const
{
    const Ogre::AxisAlignedBox& box = body.getWorldBoundingBox();
    if (!box.isFinite())
        return false;
    const float radius = box.getHalfSize().length();
    const float distance = isPerspective ? -(view * box.getCenter()).z : 1.0f;
    return distance > radius && radius * pixelsOfUnit < smallSize * distance;
}

} // namespace vrk::visual
