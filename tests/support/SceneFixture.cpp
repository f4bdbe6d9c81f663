#include "support/SceneFixture.h"

#include "platform/layout/Body.h"
#include "platform/layout/Layout.h"
#include "platform/layout/Part.h"
#include "platform/sdf/SdfManager.h"
#include "scene/Init.h"
#include "scene/StartUp.h"
#include "scene/core/SceneCore.h"
#include "selection/VisualSelection.h"
#include "view/AxesCross.h"
#include "view/Camera.h"
#include "view/OffscreenTarget.h"
#include "visual/FrameVisual.h"

#include <BRepMesh_IncrementalMesh.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <Ogre.h>

#include <mutex>
#include <thread>
#include <unordered_set>

namespace vrk::test {
namespace {

/// What hangs on the world from the start on, and through all tests.
std::unordered_set<const visual::Visual*> startedVisuals;

visual::Scene& startedScene()
{
    if (!visual::Scene::Get()) {
        selection::Init();
        visual::Init(64, 64, testSettings());
        const visual::VisualChildren started = visual::Scene::GetWorldVisual()->getChildren();
        startedVisuals.insert(started.begin(), started.end());
        // Another visual may come to stand at the address of one that died.
        visual::SceneCore::Get()->visuals.whenDeleted([](const visual::Visual* dying) { startedVisuals.erase(dying); });
    }
    return *visual::Scene::Get();
}

/// The frame of the world, which the scene makes at its start and keeps through all tests.
visual::FrameVisual* startedWorldFrame()
{
    for (visual::Visual* child : visual::Scene::GetWorldVisual()->getChildren())
        if (child->getType() == VisualType::Frame)
            return dynamic_cast<visual::FrameVisual*>(child);
    return nullptr;
}

} // namespace

visual::SceneSettings testSettings()
{
    // Sizes of their own, so that a test sees which of them is taken.
    visual::SceneSettings settings = visual::DefaultSettings();
    settings.jointTargetFrameSize = 60;
    settings.tcpFrameSize = 70;
    return settings;
}

SceneFixture::SceneFixture()
    : scene(startedScene()), sceneManager(visual::Scene::GetSceneManager()), world(visual::Scene::GetWorldVisual()),
      worldFrame(startedWorldFrame())
{
    showGrid(false);
    showCornerAxes(false);
    worldFrame->setVisible(false, false);
}

SceneFixture::~SceneFixture()
{
    // What a test left in the queue belongs to it; a task that fails there is the test's own matter.
    try {
        drain();
    } catch (const std::exception& failure) {
        ADD_FAILURE() << "a task left in the queue failed: " << failure.what();
    }
    scene.clearHighlightedVisual();
    scene.clearSelections();
    drain();
    // Read afresh each time: one may take others along that hang beside it.
    for (std::vector<visual::Visual*> added = addedToWorld(); !added.empty(); added = addedToWorld())
        scene.deleteVisual(added.front());
    worldFrame->setVisible(true, false); // a hidden frame would keep the size that it shows
    scene.setFrameSize(static_cast<unsigned>(testSettings().worldFrameSize), VisualType::Frame);
    drain();
    worldFrame->resetAppearance();
    layout::Layout::inst().clear();
    sdf::SdfManager::inst().clear();
}

visual::Visual* SceneFixture::gridVisual() const
{
    for (visual::Visual* child : world->getChildren())
        if (child->getName().starts_with("Grid"))
            return child;
    return nullptr;
}

std::vector<visual::Visual*> SceneFixture::addedToWorld() const
{
    std::vector<visual::Visual*> added;
    for (visual::Visual* child : world->getChildren())
        if (!startedVisuals.contains(child))
            added.push_back(child);
    return added;
}

void SceneFixture::showGrid(bool show)
{
    gridVisual()->setVisible(show, false);
}

void SceneFixture::showCornerAxes(bool show)
{
    visual::Camera::Get()->axesCross().setShown(show);
}

View lookingAtOrigin(float distance)
{
    const rob::DirTemplate<float> from = rob::normalized(rob::Vec3f(0.8f, -1.0f, 0.7f));
    return {rob::PosTemplate<float>(from * distance), {0, 0, 0}, {0, 0, 1}};
}

class OffscreenHolder {
public:
    OffscreenHolder(unsigned width, unsigned height, unsigned samples) : target(width, height, samples) {}
    visual::OffscreenTarget target;
};

RenderTest::RenderTest()
{
    setSize(400, 300);
}

RenderTest::~RenderTest()
{
    visual::Camera::Get()->setRenderTarget(Ogre::Root::getSingleton().getRenderTarget("ogrewindow"));
}

void RenderTest::setSize(unsigned width, unsigned height, unsigned samples)
{
    auto next = std::make_unique<OffscreenHolder>(width, height, samples);
    visual::Camera::Get()->setRenderTarget(next->target.renderTarget());
    holder = std::move(next);
}

Picture RenderTest::render(const View& view)
{
    drain();
    const rob::DirTemplate<float> z = rob::normalized(view.eye - view.target);
    const rob::DirTemplate<float> x = rob::normalized(view.up.cross(z));
    const rob::DirTemplate<float> y(z.cross(x));
    visual::Camera::Get()->setWorldPose({view.eye, rob::RotationTemplate<float>::FromAxes(x, y, z)});
    Ogre::Root::getSingleton().renderOneFrame();
    return {holder->target.getWidth(), holder->target.getHeight(), holder->target.read()};
}

Pixel RenderTest::pixelAt(const Picture& picture, const rob::PosTemplate<float>& point) const
{
    const Ogre::Camera& camera = *visual::Camera::Get()->ogreCamera();
    const Ogre::Vector4 clip = camera.getProjectionMatrix() *
                               (Ogre::Matrix4(camera.getViewMatrix()) * Ogre::Vector4(point.x, point.y, point.z, 1));
    const float x = (clip.x / clip.w * 0.5f + 0.5f) * static_cast<float>(picture.width);
    const float y = (0.5f - clip.y / clip.w * 0.5f) * static_cast<float>(picture.height);
    return picture.at(static_cast<unsigned>(x), static_cast<unsigned>(y));
}

bool isPartOfHandle(const visual::Visual* visual)
{
    while (const visual::Visual* parent = visual->getParent())
        visual = parent;
    return visual->getType() == VisualType::Gui;
}

bool isModelFree()
{
    bool isFree = false;
    std::jthread([&isFree] {
        const std::unique_lock lock(sdf::SdfManager::inst().mutex(), std::try_to_lock);
        isFree = lock.owns_lock();
    }).join();
    return isFree;
}

TopoDS_Shape meshed(const TopoDS_Shape& shape)
{
    const BRepMesh_IncrementalMesh mesher(shape, 0.5, false, 0.35, false);
    return mesher.Shape();
}

TopoDS_Shape meshedBox(double dx, double dy, double dz)
{
    return meshed(BRepPrimAPI_MakeBox(dx, dy, dz).Shape());
}

std::shared_ptr<layout::Body> addModelBody(const TopoDS_Shape& shape, const std::string& uri, const std::string& color)
{
    auto part = std::make_shared<layout::Part>(sdf::SdfManager::inst().generateId(), "part");
    const std::shared_ptr<layout::Body> body = part->addBody("body");
    body->setGeometry(uri, "brep");
    body->setShape(shape);
    body->setColor(color);
    layout::Layout::inst().addPart(part);
    return body;
}

} // namespace vrk::test
