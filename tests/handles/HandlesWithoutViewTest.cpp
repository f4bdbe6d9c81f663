#include "handles/GuiVisual.h"
#include "platform/common/Logger.h"
#include "view/Camera.h"

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

} // namespace
} // namespace vrk::visual
