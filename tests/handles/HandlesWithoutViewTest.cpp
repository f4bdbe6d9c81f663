#include "handles/FixedSizeHandle.h"
#include "platform/common/Logger.h"
#include "scene/core/SceneCore.h"
#include "selection/VisualSelection.h"
#include "view/Camera.h"

#include <Ogre.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vrk::visual {
namespace {

TEST(MouseDisplacementWithoutCamera, MovesNothingAndSaysWhy)
{
    ASSERT_EQ(Camera::Get(), nullptr);
    std::vector<std::string> lines;
    AppLogger::inst()->setListener([&](LogLevel, const std::string& line) { lines.push_back(line); });

    const rob::Vec3f moved = GuiVisual::MouseDisplacement({1, 2}, {30, 40}, {}, {1, 0, 0});

    AppLogger::inst()->setListener({});
    EXPECT_EQ(moved, rob::Vec3f());
    EXPECT_THAT(lines, testing::ElementsAre("nothing was moved by the mouse: there is no view with pixels"));
}

/// A tree of visuals, and nothing that could draw it.
class HandleBeforeTheCamera : public testing::Test {
protected:
    Ogre::Root root{"", "", ""};
    SceneCore core{"test", root.createSceneManager(Ogre::DefaultSceneManagerFactory::FACTORY_TYPE_NAME), nullptr};
};

TEST_F(HandleBeforeTheCamera, IsNeverScaled)
{
    ASSERT_EQ(Camera::Get(), nullptr);
    FixedSizeHandle handle("handle", nullptr);

    handle.updateScale();

    EXPECT_EQ(handle.getSceneNode()->getScale(), Ogre::Vector3::UNIT_SCALE);
}

TEST_F(HandleBeforeTheCamera, MayBeRegisteredAndDie)
{
    selection::Init();
    {
        FixedSizeHandle handle("handle", nullptr);
        handle.registerToSelection(true);
        EXPECT_TRUE(handle.isRegisteredInSelection());
    }

    core.queue.run();

    EXPECT_FALSE(selection::VisualSelection::Get()->isDirty());
}

} // namespace
} // namespace vrk::visual
