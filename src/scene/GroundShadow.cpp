#include "scene/GroundShadow.h"

#include "scene/HoverOutline.h"
#include "scene/Scene.h"
#include "scene/SchemeTechnique.h"
#include "scene/ShadowBlur.h"
#include "scene/core/SceneCore.h"
#include "visual/FacetVisual.h"

#include <Ogre.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <utility>

namespace vrk::visual {
namespace {

constexpr const char* scheme = "GroundShadow"; // and the material of the ground
constexpr const char* heightsName = "GroundShadow/Heights";
constexpr const char* shadowName = "GroundShadow/Shadow";
constexpr Ogre::uint8 group = Ogre::RENDER_QUEUE_BACKGROUND + 1;
constexpr unsigned longerSide = 512; // texels
constexpr float margin = 0.35f;      // of the longer side of the bodies' box, on each side: blurs end within it

void collect(const Visual& visual, std::vector<Ogre::Entity*>& bodies)
{
    if (const auto* facets = dynamic_cast<const FacetVisual*>(&visual); facets && facets->isVisible())
        if (Ogre::Entity* entity = facets->getEntity())
            bodies.push_back(entity);
    for (const Visual* child : visual.getChildren())
        collect(*child, bodies);
}

/// FNV-1a, word by word.
class Digest {
public:
    void add(std::uint64_t word) { value = (value ^ word) * 0x100000001b3u; }
    std::uint64_t get() const { return value | 1; } // never 0

private:
    std::uint64_t value = 0xcbf29ce484222325u;
};

std::uint64_t digestOf(const std::vector<Ogre::Entity*>& bodies)
{
    Digest digest;
    for (const Ogre::Entity* body : bodies) {
        digest.add(std::bit_cast<std::uintptr_t>(body));
        digest.add(body->getMesh()->getHandle());
        digest.add(body->getNumSubEntities() > 0 && body->getSubEntity(0)->getMaterial()->isTransparent() ? 1 : 0);
        const Ogre::Affine3& place = body->_getParentNodeFullTransform();
        for (int row = 0; row < 3; ++row)
            for (int column = 0; column < 4; ++column)
                digest.add(std::bit_cast<std::uint32_t>(static_cast<float>(place[row][column])));
    }
    return digest.get();
}

Ogre::AxisAlignedBox boxOf(const std::vector<Ogre::Entity*>& bodies)
{
    Ogre::AxisAlignedBox box;
    for (const Ogre::Entity* body : bodies)
        box.merge(body->getWorldBoundingBox(true));
    return box;
}

/// Whether there is a ground that it can be above.
bool isSizeOfBodies(const Ogre::AxisAlignedBox& box)
{
    if (!box.isFinite())
        return false;
    const Ogre::Vector3 size = box.getSize();
    return std::isfinite(size.length()) && std::max(size.x, size.y) > 0;
}

} // namespace

/// The camera below the ground, and the texture that it draws heights into.
struct GroundShadow::Eye {
    explicit Eye(Ogre::SceneManager& scenes) : scenes(scenes)
    {
        camera = scenes.createCamera(heightsName);
        camera->setProjectionType(Ogre::PT_ORTHOGRAPHIC);
        node = scenes.getRootSceneNode()->createChildSceneNode();
        node->setOrientation(Ogre::Quaternion(0, 1, 0, 0)); // it looks along z, and sees y downwards
        node->attachObject(camera);
    }
    ~Eye()
    {
        drop();
        scenes.destroyCamera(camera);
        scenes.destroySceneNode(node);
    }
    void fit(unsigned width, unsigned height)
    {
        if (texture && texture->getWidth() == width && texture->getHeight() == height)
            return;
        drop();
        texture = Ogre::TextureManager::getSingleton().createManual(
            heightsName, Ogre::ResourceGroupManager::INTERNAL_RESOURCE_GROUP_NAME, Ogre::TEX_TYPE_2D, width, height, 0,
            Ogre::PF_FLOAT32_R, Ogre::TU_RENDERTARGET);
        Ogre::RenderTarget* target = texture->getBuffer()->getRenderTarget();
        target->setAutoUpdated(false);
        Ogre::Viewport* viewport = target->addViewport(camera);
        viewport->setBackgroundColour(Ogre::ColourValue(1, 1, 1, 1)); // as far as it sees
        viewport->setVisibilityMask(HoverOutline::maskFlag);
        viewport->setMaterialScheme(scheme);
        viewport->setOverlaysEnabled(false);
        viewport->setShadowsEnabled(false);
    }
    /// Draws these bodies and nothing else.
    std::vector<float> draw(const std::vector<Ogre::Entity*>& bodies)
    {
        for (Ogre::Entity* body : bodies)
            body->addVisibilityFlags(HoverOutline::maskFlag);
        texture->getBuffer()->getRenderTarget()->update();
        for (Ogre::Entity* body : bodies)
            body->removeVisibilityFlags(HoverOutline::maskFlag);
        std::vector<float> heights(std::size_t{texture->getWidth()} * texture->getHeight());
        texture->getBuffer()->blitToMemory(
            Ogre::PixelBox(texture->getWidth(), texture->getHeight(), 1, Ogre::PF_FLOAT32_R, heights.data()));
        return heights;
    }
    void drop()
    {
        if (!texture)
            return;
        texture->getBuffer()->getRenderTarget()->removeAllViewports();
        Ogre::TextureManager::getSingleton().remove(texture);
        texture.reset();
    }

    Ogre::SceneManager& scenes;
    Ogre::Camera* camera;
    Ogre::SceneNode* node;
    Ogre::TexturePtr texture; // null until it is fitted
};

GroundShadow::GroundShadow(SceneCore& core) : core(core)
{
    Ogre::MaterialManager::getSingleton().addListener(this, scheme);
}

GroundShadow::~GroundShadow()
{
    remove();
    Ogre::MaterialManager::getSingleton().removeListener(this, scheme);
}

void GroundShadow::take()
{
    const Visual& world = *Scene::GetWorldVisual();
    world.getSceneNode()->_update(true, false); // the places are else those of the last frame
    std::vector<Ogre::Entity*> bodies;
    collect(world, bodies);
    const Ogre::AxisAlignedBox box = boxOf(bodies);
    if (!isSizeOfBodies(box)) {
        remove();
        return;
    }
    const std::uint64_t digest = digestOf(bodies);
    if (digest == taken)
        return;
    make(bodies, box);
    taken = digest;
}

void GroundShadow::remove()
{
    if (ground && ground->isAttached())
        ground->detachFromParent();
    taken = 0;
}

void GroundShadow::make(const std::vector<Ogre::Entity*>& bodies, const Ogre::AxisAlignedBox& box)
{
    const float longest = std::max(box.getSize().x, box.getSize().y);
    const Ogre::Vector3 middle = box.getCenter();
    HeightMap map;
    map.texel = longest * (1 + 2 * margin) / longerSide;
    map.reach = longest;
    const auto texels = [&](float side) {
        return std::clamp(static_cast<unsigned>(std::ceil((side + 2 * margin * longest) / map.texel)), 1u, longerSide);
    };
    map.width = texels(box.getSize().x);
    map.height = texels(box.getSize().y);
    const float width = static_cast<float>(map.width * map.texel), height = static_cast<float>(map.height * map.texel);

    const float slack = 0.01f * std::max(longest, box.getSize().z);
    map.span = box.getSize().z + 2 * slack;
    if (!eye)
        eye = std::make_unique<Eye>(*core.sceneManager);
    eye->fit(map.width, map.height);
    eye->node->setPosition(middle.x, middle.y, box.getMinimum().z - 2 * slack);
    eye->camera->setOrthoWindow(width, height);
    eye->camera->setNearClipDistance(slack);
    eye->camera->setFarClipDistance(slack + static_cast<float>(map.span));
    map.heights = eye->draw(bodies);

    const float lowest = std::ranges::min(map.heights);
    if (lowest >= 1) { // whatever there is, is seen through
        remove();
        return;
    }
    for (float& above : map.heights)
        above = above < 1 ? above - lowest : 1;
    const float level = box.getMinimum().z - slack + lowest * static_cast<float>(map.span);
    show(map, {middle.x - width / 2, middle.y - height / 2, level},
         {middle.x + width / 2, middle.y + height / 2, level});
}

void GroundShadow::show(const HeightMap& map, const Ogre::Vector3& low, const Ogre::Vector3& high)
{
    if (texture && (texture->getWidth() != map.width || texture->getHeight() != map.height)) {
        Ogre::TextureManager::getSingleton().remove(texture);
        texture.reset();
    }
    if (!texture)
        texture = Ogre::TextureManager::getSingleton().createManual(
            shadowName, Ogre::ResourceGroupManager::INTERNAL_RESOURCE_GROUP_NAME, Ogre::TEX_TYPE_2D, map.width,
            map.height, 0, Ogre::PF_L8, Ogre::TU_DYNAMIC_WRITE_ONLY);
    std::vector<std::uint8_t> shadow = softShadow(map);
    texture->getBuffer()->blitFromMemory(Ogre::PixelBox(map.width, map.height, 1, Ogre::PF_L8, shadow.data()));
    const Ogre::MaterialPtr material = Ogre::MaterialManager::getSingleton().getByName(scheme);
    material->load();
    material->getTechnique(0)->getPass(0)->getTextureUnitState(0)->setTexture(texture);

    if (!ground) {
        ground = std::make_unique<Ogre::ManualObject>(scheme);
        ground->setDynamic(true);
        ground->setRenderQueueGroup(group);
        ground->setCastShadows(false);
        ground->begin(scheme, Ogre::RenderOperation::OT_TRIANGLE_STRIP);
    } else {
        ground->beginUpdate(0);
    }
    for (const auto& [x, y] : {std::pair{0, 0}, {1, 0}, {0, 1}, {1, 1}}) {
        ground->position(x == 0 ? low.x : high.x, y == 0 ? low.y : high.y, low.z);
        ground->textureCoord(static_cast<float>(x), static_cast<float>(y));
    }
    ground->end();
    if (!ground->isAttached())
        core.sceneManager->getRootSceneNode()->attachObject(ground.get());
}

Ogre::Technique* GroundShadow::handleSchemeNotFound(unsigned short, const Ogre::String&, Ogre::Material* material,
                                                    unsigned short, const Ogre::Renderable*)
{
    const auto& techniques = material->getSupportedTechniques();
    const bool throws = !techniques.empty() && !isSeenThrough(*techniques.front());
    return techniqueOf(throws ? "GroundShadow/Body" : "DepthShade/Nothing");
}

} // namespace vrk::visual
