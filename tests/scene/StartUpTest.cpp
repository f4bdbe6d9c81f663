#include "platform/broker/SignalBroker.h"
#include "platform/common/ResourcePath.h"
#include "scene/Init.h"
#include "scene/core/UpAxis.h"
#include "selection/ViewPixels.h"
#include "selection/VisualSelection.h"
#include "support/SceneFixture.h"
#include "view/Camera.h"
#include "visual/Visual.h"

#include <Ogre.h>

#include <chrono>
#include <filesystem>
#include <iostream>
#include <thread>

namespace vrk::visual {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::StrEq;

class StartUp : public test::SceneFixture {};

std::string noticeFor(int major, int minor)
{
    testing::internal::CaptureStdout();
    Ogre::DriverVersion version;
    version.major = major;
    version.minor = minor;
    version.release = 0;
    version.build = 0;
    reportDriverVersion(version);
    return testing::internal::GetCapturedStdout();
}

TEST(DriverVersionNotice, FourPointFourIsNoticed)
{
    EXPECT_THAT(noticeFor(4, 4), StrEq("GL_VERSION = 4.4.0.0\n"));
}

TEST(DriverVersionNotice, FourPointFiveIsSilent)
{
    EXPECT_THAT(noticeFor(4, 5), IsEmpty());
}

TEST(DriverVersionNotice, FourPointSixIsSilent)
{
    EXPECT_THAT(noticeFor(4, 6), IsEmpty());
}

TEST(DriverVersionNotice, FivePointZeroIsNoticedSinceBothNumbersAreAskedFor)
{
    EXPECT_THAT(noticeFor(5, 0), StrEq("GL_VERSION = 5.0.0.0\n"));
}

struct LightCase {
    const char* name;
    float diffuse;
    float specular;
    float x, y, z;
};

class StartUpLights : public test::SceneFixture, public testing::WithParamInterface<LightCase> {};

TEST_P(StartUpLights, AreAsTold)
{
    const LightCase& c = GetParam();

    const Ogre::Light* light = sceneManager->getLight(c.name);

    EXPECT_EQ(light->getType(), Ogre::Light::LT_DIRECTIONAL);
    EXPECT_EQ(light->getDiffuseColour(), Ogre::ColourValue(c.diffuse, c.diffuse, c.diffuse, 1));
    EXPECT_EQ(light->getSpecularColour(), Ogre::ColourValue(c.specular, c.specular, c.specular, 1));
    const Ogre::Vector3 expected = Ogre::Vector3(c.x, c.y, c.z).normalisedCopy();
    EXPECT_TRUE(light->getDerivedDirection().positionEquals(expected, 1e-5f)) << light->getDerivedDirection();
}

INSTANTIATE_TEST_SUITE_P(Table, StartUpLights,
                         testing::Values(LightCase{"light1", 0.3f, 0.3f, -1.5f, 0, 0.3f},
                                         LightCase{"light2", 0.4f, 0.3f, 0.5f, -1, 1},
                                         LightCase{"light3", 0.3f, 0.25f, 2, 1, 1.75f},
                                         LightCase{"light4", 0.1f, 0, 0, 0, -1}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(UpAxis, TurnsZToTheAxisThatIsUp)
{
    const rob::Dirf z(0, 0, 1);
    EXPECT_EQ(upAxisTurn(0) * z, rob::Dirf(1, 0, 0));
    EXPECT_EQ(upAxisTurn(1) * z, rob::Dirf(0, 1, 0));
    EXPECT_EQ(upAxisTurn(2) * z, z);
}

TEST(UpAxis, UnknownDirectionLeavesTheLightsUnturned)
{
    EXPECT_EQ(upAxisTurn(3), rob::Rotationf());
    EXPECT_EQ(upAxisTurn(-1), rob::Rotationf());
}

TEST(SceneSettings, StartsWithoutPlacesAndClipDistancesOfTheCamera)
{
    const SceneSettings settings; // its other fields have no value yet

    EXPECT_EQ(settings.cameraTarget, rob::Posf());
    EXPECT_EQ(settings.cameraPosition, rob::Posf());
    EXPECT_EQ(settings.nearClip, 0);
    EXPECT_EQ(settings.farClip, 0);
}

TEST_F(StartUp, AmbientLightIsDim)
{
    EXPECT_EQ(sceneManager->getAmbientLight(), Ogre::ColourValue(0.3f, 0.3f, 0.3f, 1));
}

TEST_F(StartUp, MainCameraIsTheFirstOneThatTheSceneMade)
{
    EXPECT_EQ(Camera::Get()->getName(), "Daltrimo Scene::camera0");
    const Camera* second = scene.createCamera("second");

    EXPECT_EQ(second->getName(), "Daltrimo Scene::second");
    EXPECT_EQ(Camera::Get()->getName(), "Daltrimo Scene::camera0");
}

TEST_F(StartUp, NothingLiesUnderAPixelBeforeTheRenderTarget)
{
    ASSERT_FALSE(Camera::Get()->isRenderTargetValid()) << "no test of this program sets one";
    const selection::VisualSelection& picking = *selection::VisualSelection::Get();
    selection::VisualSelection::Get()->update();

    for (const selection::Result& result : {picking.select(10, 10), picking.selectPointInCloud(10, 10)}) {
        EXPECT_TRUE(result.valid);
        EXPECT_FALSE(result.hit);
        EXPECT_EQ(result.position, rob::Posf());
    }
    EXPECT_FALSE(selection::worldUnitsPerPixel(1000).has_value());
}

using Milliseconds = std::chrono::duration<double, std::milli>;

TEST_F(StartUp, EachFrameTicksOnce)
{
    std::vector<double> ticks;
    const boost::signals2::scoped_connection connection =
        broker::SignalBroker::onFrameTicked([&ticks](double milliseconds) { ticks.push_back(milliseconds); });

    const auto before = std::chrono::steady_clock::now();
    EXPECT_TRUE(Ogre::Root::getSingleton().renderOneFrame()) << "the timer lets the frames go on";
    const double whole = Milliseconds(std::chrono::steady_clock::now() - before).count();

    ASSERT_EQ(ticks.size(), 1u);
    EXPECT_GT(ticks.front(), 0.0);
    EXPECT_LE(ticks.front(), whole);
}

/// Makes each frame long.
class SlowFrames : public Ogre::FrameListener {
public:
    SlowFrames() { Ogre::Root::getSingleton().addFrameListener(this); }
    ~SlowFrames() override { Ogre::Root::getSingleton().removeFrameListener(this); }
    bool frameRenderingQueued(const Ogre::FrameEvent&) override
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        return true;
    }
};

TEST_F(StartUp, TickTellsTheMillisecondsOfTheFrameThatEnded)
{
    double tick = 0;
    const boost::signals2::scoped_connection connection =
        broker::SignalBroker::onFrameTicked([&tick](double milliseconds) { tick = milliseconds; });
    const SlowFrames slow;
    std::this_thread::sleep_for(std::chrono::milliseconds(40)); // what passes between two frames does not count

    const auto before = std::chrono::steady_clock::now();
    Ogre::Root::getSingleton().renderOneFrame();
    const double whole = Milliseconds(std::chrono::steady_clock::now() - before).count();

    EXPECT_GE(tick, 30.0);
    EXPECT_LE(tick, whole);
}

TEST_F(StartUp, OgreStandsAsItWasToldTo)
{
    Ogre::Root& root = Ogre::Root::getSingleton();
    EXPECT_EQ(root.getRenderSystem()->getName(), "OpenGL 3+ Rendering Subsystem");
    EXPECT_EQ(Ogre::LogManager::getSingleton().getDefaultLog()->getName(),
              (std::filesystem::temp_directory_path() / "Ogre.log").string());
    EXPECT_EQ(Ogre::TextureManager::getSingleton().getDefaultNumMipmaps(), 5u);
    EXPECT_EQ(root.getSceneManager("VRK_SceneManager"), sceneManager);

    const auto* window = dynamic_cast<Ogre::RenderWindow*>(root.getRenderTarget("ogrewindow"));
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(window->getWidth(), 64u);
    EXPECT_EQ(window->getHeight(), 64u);
    EXPECT_FALSE(window->isFullScreen());
}

TEST_F(StartUp, ResourcesAreTwoLocationsInTheGeneralGroup)
{
    const auto& groups = Ogre::ResourceGroupManager::getSingleton();

    for (const char* location : {"resource://material", "resource://program"}) {
        EXPECT_TRUE(groups.resourceLocationExists(location, "General")) << location;
        const Ogre::Archive* archive = Ogre::ArchiveManager::getSingleton().load(location, "KelvaneResource", true);
        EXPECT_TRUE(archive->isReadOnly()) << location;
        EXPECT_EQ(archive->getType(), "KelvaneResource");
    }
}

TEST_F(StartUp, DefaultMaterialsAreDrawable)
{
    for (const char* name : {"BaseWhite", "BaseWhiteNoLighting"}) {
        const Ogre::MaterialPtr material = Ogre::MaterialManager::getSingleton().getByName(name);
        EXPECT_FALSE(material->getTechnique(0)->getPass(0)->getVertexProgramName().empty()) << name;
        EXPECT_NE(material->getBestTechnique(), nullptr) << name;
    }
}

TEST(ReleaseResourcesTest, WithNothingToReleaseNothingHappens)
{
    EXPECT_NO_THROW(ReleaseResources());
}

TEST_F(StartUp, RendererOfAnotherNameIsNotTaken)
{
    Ogre::Root& root = Ogre::Root::getSingleton();
    Ogre::RenderSystem* before = root.getRenderSystem();

    testing::internal::CaptureStdout();
    selectRenderer(root, "OpenGL 3+ Rendering");

    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Unable to find OpenGL rendering system.\n");
    EXPECT_EQ(root.getRenderSystem(), before);
}

TEST(StartUpDeathTest, OgreDoesNotStartWithoutARenderer)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(
        {
            Ogre::Root root("", "", "");
            selectRenderer(root, "no renderer at all");
            try {
                root.initialise(false, "no window");
            } catch (const Ogre::Exception&) {
                std::abort(); // as the start does with every failure of OGRE
            }
            std::exit(0);
        },
        testing::KilledBySignal(SIGABRT), "");
}

TEST(StartUpDeathTest, ARendererThatIsMissingEndsTheProcess)
{
    // A display that does not exist: the start must say so and end, never go on without a picture.
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(
        {
            setenv("DISPLAY", ":98765", 1);
            Init(64, 64, test::testSettings());
        },
        testing::KilledBySignal(SIGABRT), "display");
}

TEST(StartUpDeathTest, AMissingTemporaryFolderFailsAheadOfOgreAndIsTheCallersMatter)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(
        {
            setenv("TMPDIR", "/no such folder", 1);
            try {
                Init(64, 64, test::testSettings());
            } catch (const std::filesystem::filesystem_error& failure) {
                std::cerr << failure.what();
                std::exit(0);
            }
        },
        testing::ExitedWithCode(0), "filesystem error: temp_directory_path: ");
}

/// Where the lights look after a start with this axis up: `d` of each light as its permutation.
struct UpCase {
    const char* name;
    int gridNormalDir;
    Ogre::Vector3 (*turned)(const Ogre::Vector3& d);
    Ogre::Quaternion gridTurn;
};

class StartUpWithAxisDeathTest : public testing::TestWithParam<UpCase> {
protected:
    /// Starts the library in this process, which must be one of the test's own, and ends it.
    [[noreturn]] static void start(const UpCase& c)
    {
        SceneSettings settings = test::testSettings();
        settings.gridNormalDir = c.gridNormalDir;
        EXPECT_EQ(Scene::Get(), nullptr);
        Init(64, 64, settings);

        const Ogre::SceneManager& manager = *Scene::GetSceneManager();
        const Ogre::Vector3 told[] = {{-1.5f, 0, 0.3f}, {0.5f, -1, 1}, {2, 1, 1.75f}, {0, 0, -1}};
        for (int i = 0; i < 4; ++i) {
            const Ogre::Vector3 expected = c.turned(told[i]).normalisedCopy();
            const Ogre::Vector3 direction = manager.getLight("light" + std::to_string(i + 1))->getDerivedDirection();
            EXPECT_TRUE(direction.positionEquals(expected, 1e-5f)) << i << ": " << direction;
        }
        const auto* lines = manager.getManualObject("Grid");
        EXPECT_EQ(lines->getParentSceneNode()->getOrientation(), c.gridTurn);
        std::_Exit(HasFailure() ? 1 : 0); // OGRE is never shut down
    }
};

TEST_P(StartUpWithAxisDeathTest, TurnsLightsAndGrid)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(start(GetParam()), testing::ExitedWithCode(0), "");
}

INSTANTIATE_TEST_SUITE_P(
    Table, StartUpWithAxisDeathTest,
    testing::Values(
        UpCase{"X", 0, [](const Ogre::Vector3& d) { return Ogre::Vector3(d.z, d.x, d.y); }, {0.5f, 0.5f, 0.5f, 0.5f}},
        UpCase{"Y", 1, [](const Ogre::Vector3& d) { return Ogre::Vector3(d.y, d.z, d.x); }, {-0.5f, 0.5f, 0.5f, 0.5f}},
        UpCase{"Three", 3, [](const Ogre::Vector3& d) { return d; }, Ogre::Quaternion::IDENTITY},
        UpCase{"MinusOne", -1, [](const Ogre::Vector3& d) { return d; }, Ogre::Quaternion::IDENTITY}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(StartUpDeathTest, AsksForAFrameWhenTheAmbientLightIsSetAndTheWorldHasItsFrame)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(
        {
            int frames = 0;
            broker::SignalBroker::onUpdateScene([&frames] {
                const Ogre::SceneManager& manager = *Scene::GetSceneManager();
                if (manager.hasLight("light1"))
                    return; // the handles post their registration after that
                EXPECT_EQ(manager.getAmbientLight(), Ogre::ColourValue(0.3f, 0.3f, 0.3f, 1));
                EXPECT_TRUE(Scene::HasVisual((*Scene::GetWorldVisual()->getChildren().begin())->getId()));
                ++frames;
            });
            Init(64, 64, test::testSettings());
            EXPECT_EQ(frames, 1);
            std::_Exit(testing::Test::HasFailure() ? 1 : 0); // OGRE is never shut down
        },
        testing::ExitedWithCode(0), "");
}

TEST(StartUpDeathTest, MissingResourcesAreTheCallersMatter)
{
    // There is a renderer and a window then, but nothing to draw with.
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(
        {
            common::SetResourcePath("/no such folder/resources.zip");
            try {
                Init(64, 64, test::testSettings());
            } catch (const Ogre::Exception& failure) {
                std::cerr << failure.what() << std::endl;
                std::_Exit(0); // OGRE is never shut down
            }
        },
        testing::ExitedWithCode(0), "DefaultVertex");
}

TEST(StartUpDeathTest, SceneThatIsDestroyedLeavesTheVisualsAlone)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(
        {
            Init(64, 64, test::testSettings());
            auto* visual = new Visual(88, "left alone", Scene::GetWorldVisual());
            const Ogre::SceneManager& manager = *Scene::GetSceneManager();

            delete Scene::Get();

            EXPECT_EQ(Scene::Get(), nullptr);
            EXPECT_EQ(visual->getName(), "left alone");
            EXPECT_TRUE(manager.hasSceneNode("left alone"));
            EXPECT_FALSE(manager.hasManualObject("Grid"));
            std::_Exit(testing::Test::HasFailure() ? 1 : 0); // OGRE is never shut down
        },
        testing::ExitedWithCode(0), "");
}

TEST(StartUpDeathTest, OgreWritesNothingOnStandardOutput)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(
        {
            testing::internal::CaptureStdout();
            Init(64, 64, test::testSettings());
            Ogre::Root::getSingleton().renderOneFrame();
            std::string written = testing::internal::GetCapturedStdout();
            if (written.starts_with("GL_VERSION = ")) // our own notice of an old driver
                written.erase(0, written.find('\n') + 1);
            std::cerr << "written: '" << written << "'" << std::endl;
            std::_Exit(0); // OGRE is never shut down
        },
        testing::ExitedWithCode(0), "written: ''");
}

} // namespace
} // namespace vrk::visual
