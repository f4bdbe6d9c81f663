#pragma once

#include "scene/ShadedPart.h"
#include "scene/core/ViewportUsers.h"

#include <OgreCompositorInstance.h>
#include <OgreMaterialManager.h>

#include <set>

namespace vrk::visual {

/// What the depths of bodies and clouds add to the pictures of all cameras, by a compositor of each viewport: the shade in
/// pockets and gaps, and behind the edges of what is nearer, or instead the outlines of bodies. What is seen through, lines and
/// texts have neither.
///
/// Owner: the scene's records. Thread: render thread.
class DepthShade : public Ogre::MaterialManager::Listener,
                   public Ogre::CompositorInstance::Listener,
                   public ViewportUser {
public:
    DepthShade();
    ~DepthShade() override;
    DepthShade(const DepthShade&) = delete;
    DepthShade& operator=(const DepthShade&) = delete;

    void setEnabled(bool on);
    bool isEnabled() const { return enabled; }
    /// Outlines of bodies instead of the shade, whether that is enabled or not.
    void setOutlines(bool on);

    void serve(Ogre::Viewport& viewport, bool isMain) override;
    void forget(Ogre::Viewport& viewport) override;
    /// Brings the viewport's compositors into line: the outline of what is selected draws the whole picture where it is on.
    void suit(Ogre::Viewport& viewport);

    /// Where the shade of the picture is whose depths are drawn; to be told what these are of.
    ShadedPart& shadedPart() { return part; }
    /// Ahead of a rectangle that measures or draws the shade.
    void notifyMaterialRender(Ogre::uint32 pass, Ogre::MaterialPtr& material) override;

    /// The technique by which something lends its depth.
    Ogre::Technique* handleSchemeNotFound(unsigned short schemeIndex, const Ogre::String& schemeName,
                                          Ogre::Material* material, unsigned short lodIndex,
                                          const Ogre::Renderable* renderable) override;

private:
    const char* wanted() const;
    Ogre::CompositorInstance* add(Ogre::Viewport& viewport, const char* name);

    bool enabled = false;
    bool outlines = false;
    std::set<Ogre::Viewport*> served;
    ShadedPart part;
};

} // namespace vrk::visual
