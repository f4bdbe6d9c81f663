#include "visual/DynamicLines.h"

#include "support/SceneFixture.h"
#include "visual/Edges.h"
#include "visual/RenderGroups.h"

#include <cmath>
#include <limits>

namespace vrk::visual {
namespace {

using test::uploaded;
using test::vertexDataOf;
using testing::ElementsAre;

const float nan = std::numeric_limits<float>::quiet_NaN();
const float infinity = std::numeric_limits<float>::infinity();

class DynamicLinesTest : public test::SceneFixture {
protected:
    DynamicLines line{RenderOpType::LineStrip};

    /// Gives the line so many points along x in place of those it has.
    void draw(unsigned count)
    {
        line.clear();
        for (unsigned i = 0; i < count; ++i)
            line.addPoint(static_cast<float>(i), 0, 0);
        line.update();
    }
    Ogre::HardwareVertexBuffer* buffer() const { return vertexDataOf(line).vertexBufferBinding->getBuffer(0).get(); }
};

TEST_F(DynamicLinesTest, NewLineHasNoBuffer)
{
    EXPECT_TRUE(line.isDirty());
    EXPECT_EQ(line.getVertexBufferCapacity(), 0u);
    EXPECT_EQ(line.getRenderQueueGroup(), renderGroup::lines);
    EXPECT_FALSE(line.getBounds().isValid());
    EXPECT_TRUE(line.getBoundingBox().isNull());
}

TEST_F(DynamicLinesTest, VertexIsAPositionAndNothingElse)
{
    const auto& elements = vertexDataOf(line).vertexDeclaration->getElements();

    ASSERT_EQ(elements.size(), 1u);
    EXPECT_EQ(elements.front().getSource(), 0);
    EXPECT_EQ(elements.front().getOffset(), 0u);
    EXPECT_EQ(elements.front().getType(), Ogre::VET_FLOAT3);
    EXPECT_EQ(elements.front().getSemantic(), Ogre::VES_POSITION);
    EXPECT_EQ(elements.front().getIndex(), 0);
}

struct TypeCase {
    const char* name;
    RenderOpType type;
    Ogre::RenderOperation::OperationType drawn;
};
class DynamicLinesType : public test::SceneFixture, public testing::WithParamInterface<TypeCase> {};

TEST_P(DynamicLinesType, IsMappedToOgres)
{
    DynamicLines line(GetParam().type);

    Ogre::RenderOperation operation;
    line.getRenderOperation(operation);
    EXPECT_EQ(operation.operationType, GetParam().drawn);
    EXPECT_EQ(line.getRenderOpType(), GetParam().type);
    EXPECT_FALSE(operation.useIndexes);
    EXPECT_EQ(operation.indexData, nullptr);
}

// A type outside the table changes nothing, and a line is made all the same.
INSTANTIATE_TEST_SUITE_P(
    Table, DynamicLinesType,
    testing::Values(TypeCase{"Points", RenderOpType::Points, Ogre::RenderOperation::OT_POINT_LIST},
                    TypeCase{"Lines", RenderOpType::Lines, Ogre::RenderOperation::OT_LINE_LIST},
                    TypeCase{"Strip", RenderOpType::LineStrip, Ogre::RenderOperation::OT_LINE_STRIP},
                    TypeCase{"Unknown", static_cast<RenderOpType>(7), Ogre::RenderOperation().operationType}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(DynamicLinesTest, FewerThanTwoPointsChangeNoBufferAndStayDirty)
{
    line.update();
    EXPECT_EQ(line.getVertexBufferCapacity(), 0u);
    EXPECT_TRUE(line.isDirty());

    line.addPoint(1, 2, 3);
    line.update();
    EXPECT_EQ(line.getVertexBufferCapacity(), 0u);
    EXPECT_TRUE(line.isDirty());
}

TEST_F(DynamicLinesTest, TwoPointsFillABufferOfTwo)
{
    line.addPoint(1, 2, 3);
    line.addPoint(4, 5, 6);

    line.update();

    EXPECT_EQ(line.getVertexBufferCapacity(), 2u);
    EXPECT_FALSE(line.isDirty());
    EXPECT_THAT(uploaded(line), ElementsAre(rob::Posf(1, 2, 3), rob::Posf(4, 5, 6)));
    EXPECT_EQ(buffer()->getUsage(), Ogre::HardwareBuffer::HBU_DYNAMIC_WRITE_ONLY);
    EXPECT_EQ(buffer()->getNumVertices(), 2u);
    EXPECT_FALSE(buffer()->hasShadowBuffer());
}

TEST_F(DynamicLinesTest, GrowingDoublesTheCapacity)
{
    draw(5);
    EXPECT_EQ(line.getVertexBufferCapacity(), 8u);

    draw(9);

    EXPECT_EQ(line.getVertexBufferCapacity(), 16u);
    EXPECT_EQ(vertexDataOf(line).vertexCount, 9u);
}

struct ShrinkCase {
    const char* name;
    unsigned points;
    std::uint64_t capacity;
};
class DynamicLinesShrink : public DynamicLinesTest, public testing::WithParamInterface<ShrinkCase> {};

TEST_P(DynamicLinesShrink, FromSixteen)
{
    draw(16);
    const Ogre::HardwareVertexBuffer* before = buffer();

    draw(GetParam().points);

    EXPECT_EQ(line.getVertexBufferCapacity(), GetParam().capacity);
    EXPECT_EQ(vertexDataOf(line).vertexCount, GetParam().points);
    EXPECT_EQ(uploaded(line), line.getPoints());
    EXPECT_EQ(buffer() == before, GetParam().capacity == 16);
}

INSTANTIATE_TEST_SUITE_P(Table, DynamicLinesShrink,
                         testing::Values(ShrinkCase{"HalfIsKept", 8, 16}, ShrinkCase{"LessThanHalfIsHalved", 7, 8},
                                         ShrinkCase{"MuchLessIsHalvedTwice", 3, 4}, ShrinkCase{"ToTwo", 2, 4}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(DynamicLinesTest, EditingOnePointOfALongLineKeepsItsBuffer)
{
    draw(100'000);
    const Ogre::HardwareVertexBuffer* before = buffer();
    const rob::Posf* stored = line.getPoints().data();

    for (unsigned frame = 0; frame < 20; ++frame) {
        line.setPoint(5000 * frame, {0, 1, static_cast<float>(frame)});
        line.update();
    }

    EXPECT_EQ(buffer(), before);
    EXPECT_EQ(line.getPoints().data(), stored);
    EXPECT_EQ(line.getVertexBufferCapacity(), 131'072u);
    EXPECT_EQ(uploaded(line), line.getPoints());
    EXPECT_EQ(uploaded(line)[95'000], rob::Posf(0, 1, 19));
}

TEST_F(DynamicLinesTest, NothingIsUploadedUntilAPointChanges)
{
    draw(2);
    EXPECT_FALSE(line.isDirty());

    line.setPoint(1, {7, 8, 9});
    EXPECT_TRUE(line.isDirty());
    EXPECT_EQ(uploaded(line)[1], rob::Posf(1, 0, 0));

    line.update();
    EXPECT_EQ(uploaded(line)[1], rob::Posf(7, 8, 9));
}

TEST_F(DynamicLinesTest, BoundsAreOneUnitWiderThanThePoints)
{
    line.addPoint(-1, 2, 30);
    line.addPoint(4, -5, 6);
    line.update();

    EXPECT_EQ(line.getBounds().min, rob::Posf(-2, -6, 5));
    EXPECT_EQ(line.getBounds().max, rob::Posf(5, 3, 31));
}

TEST_F(DynamicLinesTest, ShrunkLineHasTightBoundsAndIsCulledByItsLargestExtent)
{
    draw(101);

    draw(11);

    EXPECT_EQ(line.getBounds().max, rob::Posf(11, 1, 1));
    EXPECT_EQ(line.getBoundingBox().getMaximum(), Ogre::Vector3(100, 0, 0));
}

TEST_F(DynamicLinesTest, RadiusReachesTheFartherCorner)
{
    line.addPoint(-3, 0, -4);
    line.addPoint(1, 1, 1);
    line.update();

    EXPECT_FLOAT_EQ(line.getBoundingRadius(), 5);
}

TEST_F(DynamicLinesTest, ViewDepthIsThatOfTheMiddle)
{
    Ogre::Camera* camera = sceneManager->createCamera("depth");
    sceneManager->getRootSceneNode()->createChildSceneNode(Ogre::Vector3(0, 0, 10))->attachObject(camera);
    line.addPoint(-2, 0, 4);
    line.addPoint(2, 0, 8);
    line.update();

    EXPECT_FLOAT_EQ(line.getSquaredViewDepth(camera), 16);

    sceneManager->destroySceneNode(camera->getParentSceneNode());
    sceneManager->destroyCamera(camera);
}

TEST_F(DynamicLinesTest, CoordinatesThatAreNoNumberAreDrawnButDoNotReachTheBoxes)
{
    line.addPoint(nan, 0, 0);
    line.addPoint(1, 2, 3);
    line.addPoint(4, nan, 6);
    line.addPoint(infinity, 0, 0);
    line.addPoint(std::numeric_limits<float>::max(), 0, 0);
    line.addPoint(5, 6, 7);

    line.update();

    EXPECT_EQ(vertexDataOf(line).vertexCount, 6u);
    EXPECT_EQ(line.getBoundingBox(), Ogre::AxisAlignedBox(1, 2, 3, 5, 6, 7));
}

TEST_F(DynamicLinesTest, LineOfNoNumbersAtAllHasNoBox)
{
    line.addPoint(nan, nan, nan);
    line.addPoint(nan, nan, nan);

    line.update();

    EXPECT_TRUE(line.getBoundingBox().isNull());
    EXPECT_FALSE(line.getBounds().isValid());
}

// Lists and buffers in common

class SharedLines : public DynamicLinesTest {
protected:
    static std::shared_ptr<const DynamicLines> modelOf(unsigned count)
    {
        auto made = std::make_shared<DynamicLines>(RenderOpType::LineStrip);
        for (unsigned i = 0; i < count; ++i)
            made->addPoint(static_cast<float>(i), 1, 2);
        made->update();
        return made;
    }
};

TEST_F(SharedLines, WhatIsDrawnAsAnotherHasItsPointsItsBufferAndItsBoxes)
{
    const auto model = modelOf(5);
    line.addPoint(-7, 0, 0);

    line.drawAs(model);

    EXPECT_EQ(&line.getPoints(), &model->getPoints());
    EXPECT_EQ(&vertexDataOf(line), &vertexDataOf(*model));
    EXPECT_EQ(line.getVertexBufferCapacity(), 8u);
    EXPECT_FALSE(line.isDirty());
    EXPECT_EQ(line.getBoundingBox(), model->getBoundingBox());
    EXPECT_EQ(line.getBounds().max, model->getBounds().max);
}

TEST_F(SharedLines, EditLeavesModelAndOthersAsTheyAre)
{
    const auto model = modelOf(5);
    DynamicLines other(RenderOpType::LineStrip);
    line.drawAs(model);
    other.drawAs(model);
    const std::vector<rob::Posf> before = model->getPoints();

    line.setPoint(4, {9, 9, 9});
    EXPECT_EQ(uploaded(line), before) << "until the update";
    line.update();

    EXPECT_EQ(uploaded(line).back(), rob::Posf(9, 9, 9));
    EXPECT_EQ(line.getVertexBufferCapacity(), 8u);
    EXPECT_EQ(line.getBounds().max, rob::Posf(10, 10, 10));
    EXPECT_EQ(uploaded(other), before);
    EXPECT_EQ(uploaded(*model), before);
    EXPECT_EQ(other.getPoints(), before);
    EXPECT_NE(buffer(), vertexDataOf(other).vertexBufferBinding->getBuffer(0).get());
}

TEST_F(SharedLines, CapacityGoesOnFromThatOfTheModel)
{
    line.drawAs(modelOf(16));

    draw(8);

    EXPECT_EQ(line.getVertexBufferCapacity(), 16u) << "half of it is in use";
    draw(7);
    EXPECT_EQ(line.getVertexBufferCapacity(), 8u);
}

TEST_F(SharedLines, ModelOutlivesItsOwner)
{
    auto model = modelOf(3);
    const std::weak_ptr<const DynamicLines> known = model;
    line.drawAs(std::move(model));

    EXPECT_FALSE(known.expired());
    EXPECT_EQ(uploaded(line).size(), 3u);

    line.clear();
    EXPECT_TRUE(known.expired()) << "the points were the last that was wanted of it";
    EXPECT_EQ(vertexDataOf(line).vertexCount, 3u) << "what is drawn stays";
}

TEST_F(SharedLines, ModelWithoutPointsIsDrawnAsNothing)
{
    line.drawAs(modelOf(0));

    EXPECT_TRUE(line.isDirty());
    EXPECT_EQ(line.getVertexBufferCapacity(), 0u);
    draw(2);
    EXPECT_EQ(uploaded(line).size(), 2u);
}

} // namespace
} // namespace vrk::visual
