#include "platform/broker/SignalBroker.h"
#include "scene/Init.h"
#include "scene/core/UpAxis.h"
#include "selection/ViewPixels.h"
#include "selection/VisualSelection.h"
#include "support/SceneFixture.h"
#include "view/Camera.h"

#include <Ogre.h>

#include <filesystem>
#include <iostream>

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

TEST_F(StartUp, EachFrameTicksOnce)
{
    std::vector<double> ticks;
    const boost::signals2::scoped_connection connection =
        broker::SignalBroker::onFrameTicked([&ticks](double milliseconds) { ticks.push_back(milliseconds); });

    Ogre::Root::getSingleton().renderOneFrame();

    ASSERT_EQ(ticks.size(), 1u);
    EXPECT_GT(ticks.front(), 0.0);
    EXPECT_LT(ticks.front(), 10'000.0);
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
