#include "platform/task/SeamPath.h"

#include "platform/task/Instruction.h"
#include "platform/task/Path.h"
#include "platform/task/Seam.h"

#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

namespace vrk::task {
namespace {

using geometry::MfgVectors;
using rob::Dird;
using rob::Posd;
using testing::SizeIs;
using testing::StrEq;
using testing::ThrowsMessage;

const TopoDS_Shape box = BRepPrimAPI_MakeBox(100, 60, 40).Shape();

TEST(SeamPath, ToolStandsInThePartWithXAlongTheWay)
{
    for (unsigned number = 1; number <= 12; ++number) {
        const auto seam = MakeSeam(1, "seam", box, 2, {number});
        const MfgVectors& of = seam->getMfgVectors()[0];

        const SeamPath made = MakeSeamPath(*seam, "weld");

        ASSERT_THAT(made.targets, SizeIs(2));
        for (std::size_t i = 0; i < 2; ++i) {
            const rob::Posed pose = made.targets[i]->getPose();
            EXPECT_NEAR((pose.position - of.vectors[i].getPos(of.edge)).length(), 0, 1e-9);
            EXPECT_NEAR((pose * Dird(0, 0, 1)).dot(of.vectors[i].direction), -1, 1e-9) << "into the part";
            EXPECT_NEAR((pose * Dird(1, 0, 0)).dot(of.vectors[i].getEdgeTangent(of.edge)), 1, 1e-9);
            const rob::Vec3d y = (pose * Dird(0, 0, 1)).cross(pose * Dird(1, 0, 0));
            EXPECT_NEAR((pose * Dird(0, 1, 0)).dot(y), 1, 1e-9) << "right-handed";
        }
    }
}

TEST(SeamPath, IsOneLinearMoveForEachTarget)
{
    const auto seam = MakeSeam(1, "seam", BRepPrimAPI_MakeCylinder(40, 10).Shape(), 2, {1});
    SeamPathOptions options;
    options.speed = "v20";
    options.zone = "z5";

    const SeamPath made = MakeSeamPath(*seam, "weld", options);

    EXPECT_EQ(made.path->getName(), "weld");
    const auto& moves = made.path->getMoveInstructions();
    ASSERT_GT(moves.size(), 10u);
    ASSERT_EQ(moves.size(), made.targets.size());
    for (std::size_t i = 0; i < moves.size(); ++i) {
        EXPECT_EQ(moves[i]->getMotion(), Motion::Linear);
        EXPECT_EQ(moves[i]->getTargetItem(), made.targets[i]);
        EXPECT_EQ(made.targets[i]->getName(), "seam_" + std::to_string(10 * (i + 1)));
        EXPECT_EQ(moves[i]->getName(), "MoveL " + made.targets[i]->getName());
        EXPECT_EQ(moves[i]->speed, "v20");
        EXPECT_EQ(moves[i]->zone, i == 0 || i + 1 == moves.size() ? "fine" : "z5");
        EXPECT_EQ(moves[i]->getWObjItemId(), 0u);
        EXPECT_EQ(made.targets[i]->getOwnerId(), 0u);
    }
    EXPECT_NEAR((made.targets.front()->getPose().position - made.targets.back()->getPose().position).length(), 0, 1e-9)
        << "a closed run comes back";
}

TEST(SeamPath, LiesInTheFrameOfItsWorkObject)
{
    const auto seam = MakeSeam(1, "seam", box, 2, {3});
    SeamPathOptions options;
    options.wobj = std::make_shared<WObjDataItem>(77, "table");
    options.tool = std::make_shared<ToolDataItem>(78, "torch");
    options.seamInFrame = {Posd(10, 20, 30), rob::Rotationd(0.3, Dird(0, 0, 1))};

    const SeamPath plain = MakeSeamPath(*seam, "weld");
    const SeamPath placed = MakeSeamPath(*seam, "weld", options);

    for (std::size_t i = 0; i < plain.targets.size(); ++i) {
        EXPECT_EQ(placed.targets[i]->getOwnerId(), 77u);
        EXPECT_EQ(placed.path->getMoveInstructions()[i]->getWObjItemId(), 77u);
        EXPECT_EQ(placed.path->getMoveInstructions()[i]->getToolItemId(), 78u);
        const rob::Posed told = options.seamInFrame * plain.targets[i]->getPose();
        EXPECT_NEAR((placed.targets[i]->getPose().position - told.position).length(), 0, 1e-9);
        EXPECT_TRUE(placed.targets[i]->getPose().rotation().isApprox(told.rotation()));
    }
}

TEST(SeamPath, CornerHasTwoTargetsBetweenWhichTheToolTurns)
{
    // Two edges of the box that meet; whichever they are.
    std::shared_ptr<EdgeMfgShape> corner;
    for (unsigned other = 2; other <= 12 && !corner; ++other)
        try {
            corner = MakeSeam(1, "seam", box, 2, {1, other});
        } catch (const std::invalid_argument&) { // they do not meet
        }
    ASSERT_TRUE(corner);

    const SeamPath made = MakeSeamPath(*corner, "weld");

    ASSERT_THAT(made.targets, SizeIs(4));
    const rob::Posed before = made.targets[1]->getPose(), behind = made.targets[2]->getPose();
    EXPECT_NEAR((before.position - behind.position).length(), 0, 1e-9);
    EXPECT_FALSE(before.rotation().isApprox(behind.rotation()));
}

TEST(SeamPath, RunFromStartToEndOnly)
{
    const auto seam = MakeSeam(1, "seam", box, 2, {1});
    const auto [first, last] = geometry::GetEdgeParameters(seam->getEdge(0));
    seam->setStart({0, first + 0.25 * (last - first)});
    seam->setEnd({0, first + 0.75 * (last - first)});

    const SeamPath made = MakeSeamPath(*seam, "weld");

    ASSERT_THAT(made.targets, SizeIs(2));
    EXPECT_NEAR((made.targets[0]->getPose().position - made.targets[1]->getPose().position).length(),
                std::abs(last - first) / 2, 1e-9);
}

TEST(SeamPath, RunWithoutEdgesMakesNone)
{
    EXPECT_THAT([] { MakeSeamPath(EdgeMfgShape(1, "seam"), "weld"); },
                ThrowsMessage<std::invalid_argument>(StrEq("a run without edges makes no path")));
}

TEST(SeamPath, ToolDirectionAlongTheEdgeIsRefused)
{
    const auto good = MakeSeam(1, "seam", box, 2, {1});
    MfgVectors along = good->getMfgVectors()[0];
    along.vectors[0].direction = along.vectors[0].getEdgeTangent(along.edge);
    EdgeMfgShape bad(3, "seam");
    bad.addEdge(along);

    EXPECT_THAT([&] { MakeSeamPath(bad, "weld"); },
                ThrowsMessage<std::overflow_error>(StrEq("0-length vector cannot be normalized.")));
}

} // namespace
} // namespace vrk::task
