#include "scene/Init.h"

#include "handles/AttachedGuis.h"
#include "handles/DragHandle.h"
#include "handles/PathEndsHandle.h"
#include "handles/VectorHandle.h"
#include "mesh/MeshManager.h"
#include "platform/common/Logger.h"
#include "preview/marks/PreviewVisualsHelper.h"
#include "scene/DriverPacer.h"
#include "scene/FrameTimer.h"
#include "scene/InitSteps.h"
#include "scene/PassOrder.h"
#include "scene/Scene.h"
#include "scene/core/OgreCompat.h"
#include "scene/core/ResourceArchive.h"
#include "scene/core/SceneCore.h"

#include <fmt/format.h>

#include <Ogre.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <utility>

namespace vrk::visual {
namespace {

constexpr const char* rendererName = "OpenGL 3+ Rendering Subsystem";
constexpr const char* startWindow = "ogrewindow";

/// What must live as long as OGRE does. Made by `Init`, kept until the process ends.
struct RootOwner {
    bool initialised = false;
    Ogre::LogManager* logs = nullptr;
    Ogre::Root* root = nullptr;
    int shaderLevel = 0; // 2 where the driver runs our programs; read by nobody
    std::unique_ptr<KelvaneResourceArchiveFactory> archiveFactory;
    std::unique_ptr<FrameTimer> frameTimer;
    PassOrder passOrder;
};

RootOwner* owner = nullptr;
PreviewVisualsHelper* previewVisuals = nullptr; // from `Init` to `ReleaseResources`

void createRoot(RootOwner& owned)
{
    const std::string logPath = (std::filesystem::temp_directory_path() / "Ogre.log").string();
    // Made ahead of the root, which would else repeat every line of its log on standard output.
    owned.logs = new Ogre::LogManager;
    owned.logs->createLog(logPath, true, false);
    owned.root = new Ogre::Root("", "", logPath);
    Ogre::Pass::setHashFunction(&owned.passOrder);
    owned.root->createSceneManager(Ogre::DefaultSceneManagerFactory::FACTORY_TYPE_NAME, "VRK_SceneManager");
    installGL3Plus(*owned.root);
    selectRenderer(*owned.root, rendererName);
    owned.root->initialise(false, "OGRE Render Window");
    owned.archiveFactory = std::make_unique<KelvaneResourceArchiveFactory>();
    Ogre::ArchiveManager::getSingleton().addArchiveFactory(owned.archiveFactory.get());
    for (const char* location : {"resource://material", "resource://program"})
        Ogre::ResourceGroupManager::getSingleton().addResourceLocation(location, "KelvaneResource", "General", false,
                                                                       true);
}

void testCapabilities(RootOwner& owned)
{
    const Ogre::RenderSystemCapabilities& can = *owned.root->getRenderSystem()->getCapabilities();
    if (can.hasCapability(Ogre::RSC_HWRENDER_TO_TEXTURE) && can.hasCapability(Ogre::RSC_VERTEX_PROGRAM) &&
        can.isShaderProfileSupported("glsl"))
        owned.shaderLevel = 2;
    reportDriverVersion(can.getDriverVersion());
}

/// OGRE's own default materials have no programs, and this render system draws nothing without one: an object whose
/// material is unknown would end every frame.
void giveDefaultMaterialsPrograms()
{
    for (const char* name : {"BaseWhite", "BaseWhiteNoLighting"}) {
        const Ogre::MaterialPtr material = Ogre::MaterialManager::getSingleton().getByName(name);
        Ogre::Pass* pass = material->getTechnique(0)->getPass(0);
        pass->setVertexProgram("DefaultVertex");
        pass->setFragmentProgram("DefaultFragment");
        material->load();
    }
}

void loadResources(RootOwner& owned)
{
    Ogre::TextureManager::getSingleton().setDefaultNumMipmaps(5);
    Ogre::ResourceGroupManager::getSingleton().initialiseAllResourceGroups();
    testCapabilities(owned);
    owned.initialised = true;
    owned.frameTimer = std::make_unique<FrameTimer>();
    owned.root->addFrameListener(owned.frameTimer.get());
}

} // namespace

void selectRenderer(Ogre::Root& root, const std::string& name)
{
    for (Ogre::RenderSystem* system : root.getAvailableRenderers())
        if (system->getName() == name) {
            root.setRenderSystem(system);
            return;
        }
    std::cout << "Unable to find OpenGL rendering system.\n";
}

void reportDriverVersion(const Ogre::DriverVersion& version)
{
    if (version.major >= 4 && version.minor >= 5)
        return;
    std::cout << "GL_VERSION = " << version.toString() << std::endl;
}

void startOgre(int width, int height)
{
    owner = new RootOwner;
    createRoot(*owner);
    owner->root->createRenderWindow(startWindow, static_cast<unsigned>(width), static_cast<unsigned>(height), false,
                                    nullptr);
    loadResources(*owner);
}

void abandonOgre()
{
    if (!owner)
        return;
    delete owner->root; // ahead of what it holds on to
    delete owner->logs;
    delete std::exchange(owner, nullptr);
}

void hideStartWindow()
{
    Ogre::RenderTarget* target = owner->root->getRenderTarget(startWindow);
    static_cast<Ogre::RenderWindow*>(target)->setHidden(true);
    target->setAutoUpdated(false);
}

void Init(int width, int height, const SceneSettings& settings)
{
    try {
        startOgre(width, height);
    } catch (const Ogre::Exception& failure) {
        AppLogger::inst()->error(fmt::format("{}", failure.getFullDescription()));
        std::abort();
    }
    // From here on a failure is the caller's: resources that are missing, for one.
    buildScene(settings);
}

void buildScene(const SceneSettings& settings)
{
    giveDefaultMaterialsPrograms();
    // The scene draws with meshes that must stand before it.
    MeshManager::Init();
    Scene::Init(settings);
    SceneCore::Get()->record<DriverPacer>();
    previewVisuals = new PreviewVisualsHelper;
    Scene::Get()->setGrid(true);
    DragHandle::Build();
    new VectorHandle; // which keeps itself
    PathEndsHandle::Init();
    SceneCore::Get()->record<AttachedGuis>(); // from here on the handles outlive what they hang on
}

void ReleaseResources()
{
    delete std::exchange(previewVisuals, nullptr);
}

} // namespace vrk::visual
