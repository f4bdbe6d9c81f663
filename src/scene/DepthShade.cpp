#include "scene/DepthShade.h"

#include "platform/common/Logger.h"
#include "scene/SchemeTechnique.h"

#include <fmt/format.h>

#include <Ogre.h>

namespace vrk::visual {
namespace {

constexpr const char* name = "DepthShade"; // of the compositor, and of the schemes
constexpr const char* outline = "BorderHighlight";

/// The shade comes ahead of what takes its texture.
Ogre::CompositorInstance* add(Ogre::Viewport& viewport)
{
    Ogre::CompositorInstance* added = Ogre::CompositorManager::getSingleton().addCompositor(&viewport, name, 0);
    if (!added)
        FileLogger::inst()->error(fmt::format("no compositor {} in the resources", name));
    else
        added->setAlive(true); // it is switched while the view moves: its textures stay
    return added;
}

} // namespace

DepthShade::DepthShade()
{
    Ogre::MaterialManager::getSingleton().addListener(this, name);
}

DepthShade::~DepthShade()
{
    Ogre::MaterialManager::getSingleton().removeListener(this, name);
}

void DepthShade::setEnabled(bool on)
{
    if (on == enabled)
        return;
    enabled = on;
    for (Ogre::Viewport* viewport : served)
        suit(*viewport);
}

void DepthShade::serve(Ogre::Viewport& viewport, bool)
{
    served.insert(&viewport);
    suit(viewport);
}

void DepthShade::forget(Ogre::Viewport& viewport)
{
    served.erase(&viewport);
}

void DepthShade::suit(Ogre::Viewport& viewport)
{
    Ogre::CompositorManager& compositors = Ogre::CompositorManager::getSingleton();
    if (!enabled && !compositors.hasCompositorChain(&viewport))
        return;
    Ogre::CompositorChain& chain = *compositors.getCompositorChain(&viewport);
    Ogre::CompositorInstance* shade = chain.getCompositor(name);
    if (enabled && !shade)
        shade = add(viewport);
    if (shade)
        shade->setEnabled(enabled);
    if (Ogre::CompositorInstance* border = chain.getCompositor(outline))
        border->setScheme(enabled && shade ? name : Ogre::BLANKSTRING);
}

Ogre::Technique* DepthShade::handleSchemeNotFound(unsigned short, const Ogre::String&, Ogre::Material* material,
                                                  unsigned short, const Ogre::Renderable* renderable)
{
    if (material->getSupportedTechniques().empty() || isSeenThrough(*material->getSupportedTechniques().front()))
        return techniqueOf("DepthShade/Nothing");
    Ogre::RenderOperation operation;
    const_cast<Ogre::Renderable*>(renderable)->getRenderOperation(operation); // OGRE asks for it so itself
    const bool isCloud = operation.operationType == Ogre::RenderOperation::OT_POINT_LIST;
    return techniqueOf(isCloud ? "DepthShade/Points" : "DepthShade/Body");
}

} // namespace vrk::visual
