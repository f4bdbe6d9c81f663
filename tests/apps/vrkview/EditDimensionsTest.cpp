#include "edit/EditDimensions.h"

#include "BlockFixture.h"
#include "measure/MeasuredThings.h"

#include "support/ThrowsExactly.h"

#include "platform/layout/Body.h"
#include "platform/layout/Frame.h"
#include "platform/layout/PointCloud.h"

#include <gmock/gmock.h>

namespace vrkview::test {
namespace {

using vrk::layout::Dimension;
using vrk::layout::DimensionEnd;
using vrk::layout::Layout;
using vrk::measure::MeasureError;
using vrk::rob::Posd;
using vrk::rob::Posed;
using Kind = DimensionEnd::Kind;
using vrk::test::throwsExactly;

/// The block, 100 long, that stands at x = 100.
class EditDimensionsTest : public BlockFixture {
protected:
    unsigned body() const { return block->getBodies().front()->getId(); }
    DimensionEnd end(Kind kind, unsigned number = 0, const Posd& place = {}) const
    {
        return {kind, body(), number, place};
    }
    DimensionPointer length(unsigned edge) const
    {
        return std::make_shared<const Dimension>(
            Dimension{"length " + std::to_string(edge), Dimension::Type::Length, {end(Kind::Edge, edge)}});
    }
};

TEST_F(EditDimensionsTest, StepsAddRenameAndRemoveAndGoBackToTheByte)
{
    const std::string before = saved();
    const DimensionPointer first = length(1), second = length(2);

    history.push(addDimension(first));
    history.push(addDimension(second));
    EXPECT_EQ(dimensionsOfStation(), (std::vector{first, second}));
    EXPECT_EQ(history.undoText(), "Measure length 2");
    const std::string both = saved();
    history.push(renameDimension(first, "width"));
    EXPECT_EQ(dimensionsOfStation()[0]->name, "width");
    EXPECT_EQ(dimensionsOfStation()[1], second);
    history.push(removeDimensions({dimensionsOfStation()[0]}));
    EXPECT_EQ(history.undoText(), "Delete width");
    EXPECT_EQ(dimensionsOfStation(), std::vector{second});

    history.undo();
    history.undo();
    EXPECT_EQ(saved(), both);
    history.undo();
    history.undo();
    EXPECT_EQ(saved(), before);
}

TEST_F(EditDimensionsTest, WhatChangesNothingIsNoStep)
{
    const DimensionPointer one = length(1);
    history.push(addDimension(one));

    history.push(renameDimension(one, one->name));
    history.push(removeDimensions({length(2)}));

    EXPECT_EQ(history.count(), 1);
}

TEST_F(EditDimensionsTest, DimensionWithAnotherNumberOfEndsIsRefused)
{
    const auto bad = std::make_shared<const Dimension>(Dimension{"", Dimension::Type::Distance, {end(Kind::Edge, 1)}});

    EXPECT_THAT([&] { addDimension(bad); },
                throwsExactly<std::invalid_argument>("a dimension has as many ends as its type says"));
}

TEST_F(EditDimensionsTest, EndsLieWhereTheirObjectsAre)
{
    const auto placeOf = [](const DimensionEnd& end) {
        return measureOne(measuredThing(end), vrk::measure::Single::Place).textPlace;
    };
    auto frame = std::make_shared<vrk::layout::Frame>(900001u, "corner", Posed(Posd(1, 2, 3)));
    frame->setParentId(block->getId());
    Layout::inst().addFrame(frame);
    auto cloud = std::make_shared<vrk::layout::PointCloud>(900002u, "scan",
                                                           vrk::layout::PointCloud::Points{{0, 0, 0}, {5, 6, 7}});
    cloud->setPose(Posed(Posd(0, 0, 1000)));
    Layout::inst().addPointCloud(cloud);

    EXPECT_EQ(placeOf({Kind::Frame, 900001u, 0, {}}), Posd(101, 2, 3));
    EXPECT_EQ(placeOf({Kind::CloudPoint, 900002u, 1, {}}), Posd(5, 6, 1007));
    EXPECT_EQ(placeOf(end(Kind::Point, 0, {1, 1, 1})), Posd(101, 1, 1));
    EXPECT_EQ(placeOf(end(Kind::MeshVertex, 7, {1, 1, 1})), Posd(101, 1, 1));
    EXPECT_GE(placeOf(end(Kind::Vertex, 1)).x, 100);
    EXPECT_EQ(describe(measuredThing(end(Kind::Face, 1))), "plane");
    EXPECT_EQ(describe(measuredThing(end(Kind::Body))), "body");
}

TEST_F(EditDimensionsTest, PointsOfScansAndMeshesAreToldToBeSo)
{
    const auto measured = measure(Dimension::Type::Distance, {measuredThing(end(Kind::MeshVertex, 7, {1, 1, 1})),
                                                              measuredThing(end(Kind::Point, 0, {1, 1, 3}))});

    EXPECT_EQ(textOf(measured), "2.00 mm (x 0.00, y 0.00, z 2.00), between points");
}

TEST_F(EditDimensionsTest, WhatIsNoLongerThereIsToldInOneLine)
{
    EXPECT_THAT([&] { measuredThing(end(Kind::Edge, 13)); }, throwsExactly<MeasureError>("This body has no edge 13"));
    EXPECT_THAT([&] { measuredThing(end(Kind::Face, 0)); }, throwsExactly<MeasureError>("This body has no face 0"));
    EXPECT_THAT(
        [&] {
            measuredThing({Kind::CloudPoint, body(), 3, {}});
        },
        throwsExactly<MeasureError>("This cloud has no point 3"));
    EXPECT_THAT(
        [&] {
            measuredThing({Kind::Frame, 987654u, 0, {}});
        },
        throwsExactly<MeasureError>("What was measured is no longer there"));
    EXPECT_THAT(
        [&] {
            measuredThing({Kind::Face, block->getId(), 1, {}});
        },
        throwsExactly<MeasureError>("What was measured is no longer there"));
}

TEST_F(EditDimensionsTest, NamesTellWhatIsMeasured)
{
    EXPECT_EQ(nameOfEnd(end(Kind::Edge, 12)), "edge 12 of Block");
    EXPECT_EQ(nameOfDimension({end(Kind::Vertex, 1), end(Kind::Body)}), "vertex 1 of Block to Block");
}

TEST_F(EditDimensionsTest, DrawingIsTheLinesWithMarksAtTheEndsOfADistance)
{
    const auto measured = measure(Dimension::Type::Distance,
                                  {measuredThing(end(Kind::Point)), measuredThing(end(Kind::Point, 0, {0, 30, 40}))});

    const vrk::visual::DimensionDrawing drawing = drawingOf(measured);

    ASSERT_EQ(drawing.lines.size(), 1u);
    EXPECT_EQ(drawing.lines[0][0], vrk::rob::Posf(100, 0, 0));
    EXPECT_EQ(drawing.lines[0][1], vrk::rob::Posf(100, 30, 40));
    EXPECT_EQ(drawing.marks.size(), 2u);
    EXPECT_EQ(drawing.text, "50.00 mm");
    EXPECT_EQ(drawing.textPlace, vrk::rob::Posf(100, 15, 20));
}

} // namespace
} // namespace vrkview::test
