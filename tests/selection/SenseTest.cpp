#include "SelectionFixture.h"

#include <gmock/gmock.h>

/// Whether a segment or a triangle touches something.
namespace vrk::selection {
namespace {

using rob::Linef;
using rob::Posf;
using rob::Trianglef;
using testing::StrEq;
using testing::ThrowsMessage;

class Sense : public SelectionFixture {};

const Linef throughMiddle({5, -100, 10}, {5, 100, 10});
const Trianglef acrossMiddle({5, -100, 10}, {6, 100, 10}, {5, 100, 12});

TEST_F(Sense, LineFindsASolidWithThePlaceAndTheFraction)
{
    visual::SolidVisual* box = addBox(100, {0, 0, 0});
    service.update();

    const Result result = service.sense(throughMiddle);

    ASSERT_TRUE(result.valid && result.hit);
    EXPECT_EQ(result.visual, box);
    EXPECT_NEAR(result.distance, 0.25, 1e-5);
    EXPECT_NEAR((result.position - Posf(5, -50, 10)).length(), 0, 1e-3);
    EXPECT_FALSE(result.face.IsNull());
}

TEST_F(Sense, TriangleFindsASolidAndTellsNoPlace)
{
    visual::SolidVisual* box = addBox(100, {0, 0, 0});
    service.update();

    const Result result = service.sense(acrossMiddle);

    ASSERT_TRUE(result.valid && result.hit);
    EXPECT_EQ(result.visual, box);
    EXPECT_EQ(result.position, Posf());
    EXPECT_EQ(result.distance, Result().distance);
}

TEST_F(Sense, MovedMeshIsFoundByBoth)
{
    visual::MeshVisual* mesh = addMesh(wall(40));
    mesh->setPosition(1000, 0, 0);
    service.update();

    const Result byLine = service.sense(Linef({1005, -100, 10}, {1005, 300, 10}));
    EXPECT_EQ(byLine.visual, mesh);
    EXPECT_NEAR(byLine.distance, 0.25, 1e-5);
    EXPECT_NEAR((byLine.position - Posf(1005, 0, 10)).length(), 0, 1e-2);
    EXPECT_EQ(service.sense(Trianglef({1005, -100, 10}, {1006, 100, 10}, {1005, 100, 12})).visual, mesh);
    EXPECT_FALSE(service.sense(throughMiddle).hit);
    EXPECT_FALSE(service.sense(acrossMiddle).hit);
}

TEST_F(Sense, TriangleOnAMeshTellsTheOriginOfTheMeshForAPlace)
{
    visual::MeshVisual* mesh = addMesh(wall(40));
    mesh->setPosition(0, 20, 0);
    service.update();

    const Result result = service.sense(acrossMiddle);

    ASSERT_TRUE(result.hit);
    EXPECT_EQ(result.visual, mesh);
    EXPECT_EQ(result.position, Posf(0, 20, 0));
    EXPECT_EQ(result.localPosition, Posf());
    EXPECT_EQ(result.distance, Result().distance);
}

TEST_F(Sense, WithinABodyNothingIsTouched)
{
    addBox(100, {0, 0, 0});
    service.update();

    EXPECT_FALSE(service.sense(Linef({5, -10, 10}, {5, 10, 10})).hit);
    EXPECT_FALSE(service.sense(Trianglef({5, -10, 10}, {5, 10, 10}, {6, 10, 10})).hit);
}

TEST_F(Sense, CurvesLinesPointsAndCloudsAreNeverFound)
{
    addCurve({-40, 0, 10}, {40, 0, 10});
    addLine({{-40, 0, 10}, {40, 0, 10}});
    addPoint({5, 0, 10});
    addCloud({{5, 0, 10}});
    service.update();

    EXPECT_FALSE(service.sense(throughMiddle).hit);
    EXPECT_FALSE(service.sense(acrossMiddle).hit);
}

TEST_F(Sense, WhatIsNotDetectableIsPassedOverAtOnce)
{
    visual::SolidVisual* box = addBox(100, {0, 0, 0});
    service.update();

    service.setDetectable(box, false);
    EXPECT_FALSE(service.isDirty());
    EXPECT_FALSE(service.sense(throughMiddle).hit);
    EXPECT_FALSE(service.sense(acrossMiddle).hit);
    EXPECT_TRUE(along(5, 10).hit);
    service.setDetectable(box, true);
    EXPECT_TRUE(service.sense(throughMiddle).hit);
}

TEST_F(Sense, DisabledOneIsNotFound)
{
    visual::SolidVisual* box = addBox(100, {0, 0, 0});
    service.disableObject(box);
    service.update();

    EXPECT_FALSE(service.sense(throughMiddle).hit);
    EXPECT_FALSE(service.sense(acrossMiddle).hit);
}

TEST_F(Sense, FirstThatIsFoundEndsTheSearchThoughAnotherIsNearer)
{
    visual::SolidVisual* far = addBox(20, {5, 60, 10});
    visual::SolidVisual* near = addBox(20, {5, -60, 10});
    service.update();

    const Result found = service.sense(throughMiddle);
    EXPECT_EQ(found.visual, far); // few objects are asked in the order of their entry
    EXPECT_NEAR(found.distance, 0.75, 1e-4);
    service.setDetectable(far, false);
    EXPECT_EQ(service.sense(throughMiddle).visual, near);
}

TEST_F(Sense, AnswerOfADirtyServiceIsNotValid)
{
    addBox(100, {0, 0, 0});

    for (const Result& result : {service.sense(throughMiddle), service.sense(acrossMiddle)}) {
        EXPECT_FALSE(result.valid);
        EXPECT_FALSE(result.hit);
        EXPECT_EQ(result.visual, nullptr);
    }
    service.update();
    EXPECT_TRUE(service.sense(throughMiddle).valid);
}

TEST_F(Sense, HierarchyOfAServiceThatBecameDirtyIsNotAsked)
{
    visual::SolidVisual* box = addBox(100, {0, 0, 0});
    service.update();
    ASSERT_TRUE(service.sense(throughMiddle).hit && service.sense(acrossMiddle).hit);

    service.markDirty(box);

    for (const Result& result : {service.sense(throughMiddle), service.sense(acrossMiddle)}) {
        EXPECT_FALSE(result.valid);
        EXPECT_FALSE(result.hit);
        EXPECT_EQ(result.visual, nullptr);
    }
}

TEST_F(Sense, EmptySceneAnswersAValidNothing)
{
    service.update();

    EXPECT_TRUE(service.sense(throughMiddle).valid);
    EXPECT_FALSE(service.sense(throughMiddle).hit);
    EXPECT_FALSE(service.sense(Linef({1, 1, 1}, {1, 1, 1})).hit); // asked of nothing
}

TEST_F(Sense, LineOfNoLengthIsRefused)
{
    addBox(100, {0, 0, 0});
    service.update();

    EXPECT_THAT(
        [&] {
            service.sense(Linef({1, 1, 1}, {1, 1, 1}));
        },
        ThrowsMessage<std::overflow_error>(StrEq("0-length vector cannot be normalized.")));
}

TEST_F(Sense, DegenerateTriangleIsNoFailure)
{
    addBox(100, {0, 0, 0});
    addMesh({{{5, 0, 10}, {5, 0, 10}, {5, 0, 10}}, {{0, 0, 0}, {5, 0, 0}, {10, 0, 0}}});
    service.update();

    EXPECT_NO_THROW(service.sense(Trianglef({5, 0, 10}, {5, 0, 10}, {5, 0, 10})));
    EXPECT_NO_THROW(service.sense(Trianglef({5, -100, 10}, {5, 0, 10}, {5, 100, 10})));
    EXPECT_NO_THROW(service.sense(throughMiddle));
}

TEST_F(Sense, MeshWithCoordinatesThatAreNoNumbersIsFoundByItsOtherTriangles)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    visual::MeshVisual* mesh = makeMesh(wall(40));
    mesh->getMesh()->vertices.insert(mesh->getMesh()->vertices.end(), {{nan, 0, 0}, {1, 0, 0}, {0, 0, 1}});
    for (unsigned i = 12; i < 15; ++i)
        mesh->getMesh()->indices.push_back(i);
    service.addMeshVisual(mesh, true, false);
    service.update();

    EXPECT_EQ(service.sense(throughMiddle).visual, mesh);
    EXPECT_EQ(service.sense(acrossMiddle).visual, mesh);
    EXPECT_EQ(along(5, 10).visual, mesh);
}

} // namespace
} // namespace vrk::selection
