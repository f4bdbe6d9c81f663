#include "view/AxesCross.h"

#include "mesh/MeshManager.h"
#include "scene/core/OgreCompat.h"
#include "view/Camera.h"
#include "visual/RenderGroups.h"

#include <Ogre.h>

namespace vrk::visual {
namespace {

constexpr float headPlace = 10; // on the axis, where the shaft ends
constexpr float letterPlace = 15;
constexpr float letterScale = 3;
// Within its group the cross comes last, so that whatever it blends with is drawn by then.
constexpr Ogre::ushort lastInGroup = 200;
/// Any place will do: the programs look at the parts of the cross relative to this one.
const Ogre::Vector3 rootPosition(0, 0, -800);

struct Axis {
    const char* label;
    Ogre::Vector4 colour;
    Ogre::Quaternion turn; // of an arrow along x
};

const Axis& axisOf(std::size_t index)
{
    static const Axis axes[] = {
        {"X", {0.79f, 0.12f, 0.22f, 0.5f}, Ogre::Quaternion::IDENTITY},
        {"Y", {0.09f, 0.66f, 0.32f, 0.5f}, {Ogre::Radian(Ogre::Math::HALF_PI), Ogre::Vector3::UNIT_Z}},
        {"Z", {0.25f, 0.54f, 0.71f, 0.5f}, {Ogre::Radian(-Ogre::Math::HALF_PI), Ogre::Vector3::UNIT_Y}},
    };
    return axes[index];
}

float middleOfLetter(const char* label)
{
    MeshManager& meshes = *MeshManager::Get();
    if (!meshes.hasMesh(label))
        meshes.addMesh(MeshManager::CreateTextMesh(label, letterScale));
    const Box& bounds = meshes.getMesh(label)->getBounds();
    return (bounds.min.y + bounds.max.y) / 2;
}

void attachPart(Ogre::SceneNode& node, const char* mesh)
{
    Ogre::SceneManager& manager = *node.getCreator();
    Ogre::Entity* entity =
        manager.createEntity(freeObjectName(manager, node.getName(), Ogre::EntityFactory::FACTORY_TYPE_NAME), mesh);
    entity->setMaterialName("GlobalFrame");
    entity->setRenderQueueGroupAndPriority(renderGroup::normal, lastInGroup);
    // Where it stands in the scene says nothing about whether it is in view.
    entity->getMesh()->_setBounds(Ogre::AxisAlignedBox::BOX_INFINITE);
    node.attachObject(entity);
}

template <typename Function>
void forEachEntity(Ogre::SceneNode& node, Function function)
{
    for (Ogre::MovableObject* object : node.getAttachedObjects())
        if (auto* entity = dynamic_cast<Ogre::Entity*>(object))
            function(*entity);
    for (Ogre::Node* child : node.getChildren())
        forEachEntity(static_cast<Ogre::SceneNode&>(*child), function);
}

void setParameter(Ogre::SceneNode& node, std::size_t number, const Ogre::Vector4& value)
{
    forEachEntity(node, [&](Ogre::Entity& entity) {
        for (Ogre::SubEntity* part : entity.getSubEntities())
            part->setCustomParameter(number, value);
    });
}

} // namespace

/// Turns the cross with its camera ahead of each picture, and takes it out of those of other cameras.
class AxesCross::FrameListener : public Ogre::Camera::Listener {
public:
    explicit FrameListener(AxesCross& cross) : cross(cross) {}
    void cameraPreRenderScene(Ogre::Camera*) override { cross.follow(); }
    void cameraPostRenderScene(Ogre::Camera*) override { cross.hide(); }

private:
    AxesCross& cross;
};

AxesCross::AxesCross(Camera& camera) : camera(camera), frameListener(std::make_unique<FrameListener>(*this))
{
    Ogre::SceneNode& sceneRoot = *camera.getSceneNode()->getCreator()->getRootSceneNode();
    if (sceneRoot.getCreator()->hasSceneNode("GlobalFrame"))
        nameEnd = " " + camera.getName();
    root = createChildNode(sceneRoot, "GlobalFrame" + nameEnd);
    for (std::size_t index = 0; index < axes.size(); ++index)
        createAxis(index);
    sendParameters();
    hide();
    camera.ogreCamera()->addListener(frameListener.get());
}

AxesCross::~AxesCross()
{
    camera.ogreCamera()->removeListener(frameListener.get());
    Ogre::SceneManager& manager = *root->getCreator();
    std::vector<Ogre::Entity*> entities;
    forEachEntity(*root, [&](Ogre::Entity& entity) { entities.push_back(&entity); });
    for (Ogre::Entity* entity : entities)
        manager.destroyEntity(entity);
    root->removeAndDestroyAllChildren();
    manager.destroySceneNode(root);
}

void AxesCross::createAxis(std::size_t index)
{
    const Axis& axis = axisOf(index);
    const auto nodeName = [&](const char* part) { return std::string(axis.label) + part + nameEnd; };
    axes[index] = createChildNode(*root, nodeName("Axis"));
    axes[index]->setOrientation(axis.turn);

    // The meshes stand along z.
    const Ogre::Quaternion alongX(Ogre::Radian(Ogre::Math::HALF_PI), Ogre::Vector3::UNIT_Y);
    Ogre::SceneNode* shaft = createChildNode(*axes[index], nodeName("Shaft"));
    shaft->setOrientation(alongX);
    attachPart(*shaft, "frame_axis_x_shaft");
    Ogre::SceneNode* head = createChildNode(*axes[index], nodeName("Head"));
    head->setPosition(headPlace, 0, 0);
    head->setOrientation(alongX);
    attachPart(*head, "frame_axis_head");

    // The offset is that of the letter at its own size, not at the size that it has here.
    letters[index] = createChildNode(*axes[index], nodeName("Letter"));
    letters[index]->setPosition(letterPlace, -middleOfLetter(axis.label), 0);
    letters[index]->setScale(Ogre::Vector3(letterScale));
    attachPart(*letters[index], axis.label);
}

void AxesCross::sendParameters()
{
    for (std::size_t index = 0; index < axes.size(); ++index)
        setParameter(*axes[index], 0, axisOf(index).colour);
    setParameter(*root, 1, Ogre::Vector4(width, height, 0, 0));
}

void AxesCross::follow()
{
    root->setVisible(shown);
    root->setPosition(rootPosition);
    root->setOrientation(camera.ogreCamera()->getRealOrientation().Inverse());
    root->_update(true, false); // the axes, against which the letters are turned back, have moved with it
    for (Ogre::SceneNode* letter : letters)
        letter->_setDerivedOrientation(Ogre::Quaternion::IDENTITY);
    sendParameters();
}

void AxesCross::hide()
{
    root->setVisible(false);
}

void AxesCross::setScale(float factor)
{
    width = static_cast<std::int16_t>(static_cast<float>(width) * factor);
    height = static_cast<std::int16_t>(static_cast<float>(height) * factor);
    scale *= factor;
    sendParameters();
    root->setScale(Ogre::Vector3(factor));
}

void AxesCross::enlarge(float factor)
{
    setScale(factor);
    root->setScale(Ogre::Vector3(scale));
}

} // namespace vrk::visual
