#include "scene/Init.h"
#include "scene/Scene.h"
#include "scene/StartUp.h"
#include "selection/VisualSelection.h"

#include "support/TempFolder.h"

#include "platform/common/ResourcePath.h"

#include <Ogre.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <limits>
#include <regex>

namespace vrk::visual {
namespace {

/// Each start in a process of its own: one that succeeds lasts to the end.
class TryInitDeathTest : public testing::Test {
protected:
    void SetUp() override { testing::FLAGS_gtest_death_test_style = "threadsafe"; }

    /// Ends the process by 0 where the start fails by a cause with this text, and then succeeds after `mend`.
    [[noreturn]] static void expectCause(const std::string& text, const SceneSettings& settings, int side,
                                         const std::function<void()>& mend = {})
    {
        std::string why;
        if (TryInit(side, side, settings, why)) {
            std::cerr << "it started\n";
            std::_Exit(1);
        }
        std::cerr << why << '\n';
        if (!std::regex_search(why, std::regex(text)) || why.find('\n') != std::string::npos || Scene::Get())
            std::_Exit(2);
        if (mend)
            mend();
        why = "untouched";
        if (!TryInit(64, 64, DefaultSettings(), why)) {
            std::cerr << "second start: " << why << '\n';
            std::_Exit(3);
        }
        Scene::Get()->processMsgs();
        Ogre::Root::getSingleton().renderOneFrame();
        std::_Exit(why == "untouched" ? 0 : 4);
    }
};

TEST_F(TryInitDeathTest, StartsWithDefaultSettingsAndItsWindowIsHidden)
{
    EXPECT_EXIT(
        {
            std::string why = "untouched";
            if (!TryInit(1, 1, DefaultSettings(), why))
                std::_Exit(1);
            auto* window = static_cast<Ogre::RenderWindow*>(Ogre::Root::getSingleton().getRenderTarget("ogrewindow"));
            Scene::Get()->processMsgs();
            Ogre::Root::getSingleton().renderOneFrame();
            const bool isGood = why == "untouched" && selection::VisualSelection::Get() && window->isHidden() &&
                                !window->isAutoUpdated();
            std::_Exit(isGood ? 0 : 2);
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(TryInitDeathTest, SecondStartIsRefusedAndTheFirstGoesOn)
{
    EXPECT_EXIT(
        {
            std::string why;
            if (!TryInit(16, 16, DefaultSettings(), why))
                std::_Exit(1);
            Scene* scene = Scene::Get();
            if (TryInit(16, 16, DefaultSettings(), why) || why != "the view was started before")
                std::_Exit(2);
            scene->processMsgs();
            std::_Exit(Scene::Get() == scene ? 0 : 3);
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(TryInitDeathTest, SizeOfNothingIsToldAndAnotherStartSucceeds)
{
    EXPECT_EXIT(expectCause("a window of 0 x 0 pixels; each must be from 1 to 16384", DefaultSettings(), 0),
                testing::ExitedWithCode(0), "");
    EXPECT_EXIT(expectCause("a window of -5 x -5 pixels", DefaultSettings(), -5), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(expectCause("a window of 20000 x 20000 pixels", DefaultSettings(), 20000), testing::ExitedWithCode(0),
                "");
}

TEST_F(TryInitDeathTest, DisplayThatDoesNotAnswerIsToldAndOneThatDoesIsTakenNext)
{
    const char* present = std::getenv("DISPLAY");
    ASSERT_NE(present, nullptr);
    const std::string display = present;
    EXPECT_EXIT(
        {
            setenv("DISPLAY", ":98765", 1);
            expectCause("the graphics cannot start.*: .*display :98765", DefaultSettings(), 64,
                        [&] { setenv("DISPLAY", display.c_str(), 1); });
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(TryInitDeathTest, DriverThatIsTooOldIsTold)
{
    EXPECT_EXIT(
        {
            setenv("MESA_GL_VERSION_OVERRIDE", "2.1", 1);
            std::string why;
            const bool isStarted = TryInit(64, 64, DefaultSettings(), why);
            std::cerr << why << '\n';
            std::_Exit(!isStarted &&
                               why.starts_with(
                                   "the graphics cannot start, for which an X display with OpenGL 3.3 is needed: ") &&
                               !Scene::Get()
                           ? 0
                           : 1);
        },
        testing::ExitedWithCode(0), "OpenGL 3.3 is needed: .*GLXContext");
}

TEST_F(TryInitDeathTest, MissingResourcesAreToldWithTheirPath)
{
    const std::filesystem::path good = common::GetResourcePath();
    EXPECT_EXIT(
        {
            common::SetResourcePath("/no/such/resources.zip");
            expectCause("^/no/such/resources.zip: no such file", DefaultSettings(), 64,
                        [&] { common::SetResourcePath(good); });
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(TryInitDeathTest, DamagedResourcesAreToldWithTheirPath)
{
    const test::TempFolder folder;
    const std::filesystem::path good = common::GetResourcePath(), copy = folder / "resources.zip";
    std::filesystem::copy_file(good, copy);
    {
        std::fstream file(copy, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(4000);
        file << std::string(2000, 'x');
    }
    EXPECT_EXIT(
        {
            common::SetResourcePath(copy);
            expectCause("resources.zip", DefaultSettings(), 64, [&] { common::SetResourcePath(good); });
        },
        testing::ExitedWithCode(0), "");
    std::filesystem::resize_file(copy, 3000);
    EXPECT_EXIT(
        {
            common::SetResourcePath(copy);
            expectCause("resources.zip", DefaultSettings(), 64, [&] { common::SetResourcePath(good); });
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(TryInitDeathTest, SettingsThatShowNothingAreTold)
{
    SceneSettings zero = DefaultSettings();
    zero.nearClip = zero.farClip = 0;
    EXPECT_EXIT(expectCause("clip distances of 0 and 0; the near one must be above 0", zero, 64),
                testing::ExitedWithCode(0), "");
    SceneSettings lost = DefaultSettings();
    lost.cameraPosition.x = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EXIT(expectCause("a camera at a place that is not finite", lost, 64), testing::ExitedWithCode(0), "");
    SceneSettings flat = DefaultSettings();
    flat.handleScale = 0;
    EXPECT_EXIT(expectCause("handles need a scale above 0", flat, 64), testing::ExitedWithCode(0), "");
}

} // namespace
} // namespace vrk::visual
