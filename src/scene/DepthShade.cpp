#include "scene/DepthShade.h"

#include "platform/common/Logger.h"
#include "scene/SchemeTechnique.h"

#include <fmt/format.h>

#include <Ogre.h>

namespace vrk::visual {
namespace {

// Of the compositors, and of the schemes by which another one draws what they have measured
constexpr const char* shadeName = "DepthShade"; // and of the scheme of depths
constexpr const char* outlinesName = "BodyOutlines";
constexpr const char* border = "BorderHighlight";

constexpr int rowsOfALargePicture = 1600;
constexpr const char* large = "Large"; // the scheme of the shade's compositor that is for those

void suitSize(Ogre::CompositorInstance& compositor, const Ogre::Viewport& viewport)
{
    const bool isLarge = viewport.getActualHeight() >= rowsOfALargePicture;
    if (compositor.getCompositor()->getName() == shadeName)
        compositor.setScheme(isLarge ? large : Ogre::BLANKSTRING);
}

} // namespace

DepthShade::DepthShade()
{
    Ogre::MaterialManager::getSingleton().addListener(this, shadeName);
}

DepthShade::~DepthShade()
{
    Ogre::MaterialManager::getSingleton().removeListener(this, shadeName);
}

void DepthShade::setEnabled(bool on)
{
    if (on == enabled)
        return;
    enabled = on;
    for (Ogre::Viewport* viewport : served)
        suit(*viewport);
}

void DepthShade::setOutlines(bool on)
{
    if (on == outlines)
        return;
    outlines = on;
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

/// It comes ahead of what takes its texture.
Ogre::CompositorInstance* DepthShade::add(Ogre::Viewport& viewport, const char* name)
{
    Ogre::CompositorInstance* added = Ogre::CompositorManager::getSingleton().addCompositor(&viewport, name, 0);
    if (!added) {
        FileLogger::inst()->error(fmt::format("no compositor {} in the resources", name));
        return nullptr;
    }
    suitSize(*added, viewport);
    added->setAlive(true); // it is switched while the view moves: its textures stay
    added->addListener(this);
    return added;
}

void DepthShade::notifyMaterialRender(Ogre::uint32, Ogre::MaterialPtr& material)
{
    const Ogre::Pass& pass = *material->getBestTechnique()->getPass(0);
    const Ogre::GpuProgramParametersSharedPtr& parameters = pass.getVertexProgramParameters();
    if (parameters->_findNamedConstantDefinition("part"))
        parameters->setNamedConstant("part", part.rectangle());
}

/// The name of the compositor; null for none.
const char* DepthShade::wanted() const
{
    if (outlines)
        return outlinesName;
    return enabled ? shadeName : nullptr;
}

void DepthShade::suit(Ogre::Viewport& viewport)
{
    Ogre::CompositorManager& compositors = Ogre::CompositorManager::getSingleton();
    const char* name = wanted();
    if (!name && !compositors.hasCompositorChain(&viewport))
        return;
    Ogre::CompositorChain& chain = *compositors.getCompositorChain(&viewport);
    if (name && !chain.getCompositor(name) && !add(viewport, name))
        name = nullptr;
    for (const char* each : {shadeName, outlinesName})
        if (Ogre::CompositorInstance* present = chain.getCompositor(each)) {
            suitSize(*present, viewport);
            present->setEnabled(name == each);
        }
    if (Ogre::CompositorInstance* outline = chain.getCompositor(border))
        outline->setScheme(name ? name : Ogre::BLANKSTRING);
    // A compositor clears the picture itself; twice is a tenth of a large one's time on a software driver.
    viewport.setClearEveryFrame(!name, viewport.getClearBuffers());
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
