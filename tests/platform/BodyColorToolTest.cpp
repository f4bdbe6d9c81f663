#include "platform/geometry/BodyColorTool.h"

#include "platform/layout/Body.h"
#include "platform/layout/Layout.h"
#include "platform/layout/Part.h"
#include "platform/sdf/SdfManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace vrk::geometry {
namespace {

using testing::IsEmpty;
using testing::Pair;
using testing::UnorderedElementsAre;

class BodyColorToolTest : public testing::Test {
protected:
    BodyColorToolTest() { layout::Layout::inst().addPart(part); }
    ~BodyColorToolTest() override { layout::Layout::inst().clear(); }

    static std::shared_ptr<layout::Part> newPart()
    {
        return std::make_shared<layout::Part>(sdf::SdfManager::inst().generateId(), "part");
    }

    std::shared_ptr<layout::Part> part = newPart();
    std::shared_ptr<layout::Body> body = part->addBody("body"); // made before the part enters the station
};

TEST_F(BodyColorToolTest, ColoursOfABodyAreThoseOfItsElement)
{
    body->setColor("#112233");
    body->setFaceColor(1, "#445566");
    body->setFaceColor(12, "#778899");

    const ColorInfo info = BodyColorTool::GetColorInfo(body->getId());

    EXPECT_EQ(info.bodyColor, "#112233");
    EXPECT_THAT(info.faceColors, UnorderedElementsAre(Pair(1u, "#445566"), Pair(12u, "#778899")));
    EXPECT_EQ(BodyColorTool::GetBodyColor(body->getId()), "#112233");
    EXPECT_EQ(BodyColorTool::GetBodyColor(body->getElement()), "#112233");
}

TEST_F(BodyColorToolTest, FaceWithoutAColourHasTheBodys)
{
    body->setColor("#112233");
    body->setFaceColor(2, "#445566");

    EXPECT_EQ(BodyColorTool::GetFaceColor(body->getId(), 1), "#112233");
    EXPECT_EQ(BodyColorTool::GetFaceColor(body->getId(), 2), "#445566");
}

TEST_F(BodyColorToolTest, BodyWithoutAColourHasTheDefault)
{
    EXPECT_EQ(BodyColorTool::GetBodyColor(body->getId()), "#B4B9BE");
    EXPECT_THAT(BodyColorTool::GetColorInfo(body->getId()).faceColors, IsEmpty());
}

TEST_F(BodyColorToolTest, UnknownIdHasTheDefault)
{
    EXPECT_EQ(BodyColorTool::GetBodyColor(4711u), "#B4B9BE");
    EXPECT_EQ(BodyColorTool::GetFaceColor(4711, 1), "#B4B9BE");
    EXPECT_EQ(BodyColorTool::GetBodyColor(std::shared_ptr<sdf::Element>()), "#B4B9BE");
}

TEST_F(BodyColorToolTest, ElementsThatNameNoFaceArePassedOver)
{
    for (const char* name : {"f", "f0", "fx", "f1x", "7", "f99999999999"})
        body->getElement()->touch(std::string("visual/face_colors/") + name)->set(std::string("#445566"));
    body->getElement()->touch("visual/face_colors/f4")->set(true);

    EXPECT_THAT(BodyColorTool::GetColorInfo(body->getId()).faceColors, IsEmpty());
}

TEST_F(BodyColorToolTest, ThreadsAskWhilePartsComeAndGo)
{
    body->setColor("#112233");
    std::vector<std::jthread> threads;
    for (int t = 0; t < 3; ++t) {
        threads.emplace_back([id = body->getId()] {
            for (int i = 0; i < 300; ++i)
                EXPECT_EQ(BodyColorTool::GetBodyColor(id), "#112233");
        });
    }
    threads.emplace_back([] {
        for (int i = 0; i < 100; ++i) {
            const std::shared_ptr<layout::Part> passing = newPart();
            passing->addBody("passing");
            layout::Layout::inst().addPart(passing);
            layout::Layout::inst().removePart(passing->getId());
        }
    });
    threads.clear();

    EXPECT_EQ(layout::Layout::inst().parts.size(), 1u);
}

} // namespace
} // namespace vrk::geometry
