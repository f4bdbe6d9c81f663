#include "SelectionFixture.h"

#include "platform/layout/Body.h"
#include "selection/SensitiveFace.h"
#include "selection/ShapeBorders.h"
#include "selection/ShapeObject.h"
#include "selection/ShapeParts.h"

#include <BRepMesh_IncrementalMesh.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepTools.hxx>
#include <TopAbs.hxx>
#include <TopoDS.hxx>

#include <atomic>
#include <thread>

/// What objects of one geometry have in common, and what each of them has for itself.
namespace vrk::selection {
namespace {

using rob::Posf;

class SharedParts : public SelectionFixture {
protected:
    SharedParts() : shape(test::meshedBox(100, 100, 100)) {}

    /// A body of the model, shown and pickable.
    visual::SolidVisual* addBody(const TopoDS_Shape& ofShape, const std::string& uri)
    {
        bodies.push_back(test::addModelBody(ofShape, uri));
        visual::SolidVisual::Build(world, bodies.back().get(), ofShape);
        return dynamic_cast<visual::SolidVisual*>(visual::Scene::GetVisual(bodies.back()->getId()));
    }
    bool haveAllInCommon(visual::Visual* a, visual::Visual* b)
    {
        const SelectableObject &first = object(a), &second = object(b);
        return !first.primitives.empty() && first.primitives == second.primitives &&
               first.bvh.root == second.bvh.root && first.bvh.root;
    }

    TopoDS_Shape shape;
    std::vector<std::shared_ptr<layout::Body>> bodies;
};

TEST_F(SharedParts, SolidsOfOneShapeHaveTheirPartsInCommonAndAnswerEachForItself)
{
    visual::SolidVisual* left = addSolid(shape, {-300, 0, 0});
    visual::SolidVisual* right = addSolid(shape, {300, 50, 0});
    visual::SolidVisual* other = addSolid(test::meshedBox(100, 100, 100), {0, 0, 0});

    service.update();

    EXPECT_TRUE(haveAllInCommon(left, right));
    EXPECT_FALSE(haveAllInCommon(left, other)) << "of another shape, alike as it is";
    const Result onLeft = along(-260, 30), onRight = along(340, 30);
    EXPECT_EQ(onLeft.visual, left);
    EXPECT_NEAR((onLeft.position - Posf(-260, 0, 30)).length(), 0, 1e-3);
    EXPECT_EQ(onRight.visual, right);
    EXPECT_NEAR((onRight.position - Posf(340, 50, 30)).length(), 0, 1e-3);
    EXPECT_EQ(onLeft.localPosition, onRight.localPosition);
    EXPECT_TRUE(onLeft.shape.IsEqual(shape));
    EXPECT_EQ(static_cast<const ShapeObject&>(object(left)).getBorders().getRoot(),
              static_cast<const ShapeObject&>(object(right)).getBorders().getRoot());
}

TEST_F(SharedParts, ShapeInAnotherPlaceOrTurnedInsideOutIsAnother)
{
    visual::SolidVisual* plain = addSolid(shape);
    gp_Trsf up;
    up.SetTranslation(gp_Vec(0, 0, 300));
    visual::SolidVisual* moved = addSolid(shape.Moved(TopLoc_Location(up)));
    visual::SolidVisual* reversed = addSolid(shape.Reversed(), {0, 0, 600});

    service.update();

    EXPECT_FALSE(haveAllInCommon(plain, moved));
    EXPECT_FALSE(haveAllInCommon(plain, reversed));
    EXPECT_EQ(along(40, 330).visual, moved);
    EXPECT_EQ(along(40, 330).localPosition, Posf(40, 0, 330));
    EXPECT_EQ(along(40, 630).face.Orientation(), TopAbs::Reverse(along(40, 30).face.Orientation()));
}

TEST_F(SharedParts, DeletionOfTheFirstBodyLeavesTheOthersPickable)
{
    visual::SolidVisual* first = addBody(shape, "shared");
    visual::SolidVisual* second = addBody(shape, "shared");
    second->setPosition(300, 0, 0);
    service.update();
    ASSERT_TRUE(haveAllInCommon(first, second));

    scene.deleteVisual(first);
    service.update();

    const Result hit = along(340, 30);
    EXPECT_EQ(hit.visual, second);
    EXPECT_FALSE(hit.face.IsNull());
    EXPECT_FALSE(along(40, 30).hit);
}

TEST_F(SharedParts, NothingOfAShapeIsKeptBehindItsLastBody)
{
    std::weak_ptr<const ShapeParts> known;
    const int before = shape.TShape()->GetRefCount();
    visual::SolidVisual* first = addSolid(shape);
    visual::SolidVisual* second = addSolid(shape, {300, 0, 0});
    service.update();
    known = ShapeParts::Of(shape, first->getFaceMap());
    EXPECT_FALSE(known.expired());

    scene.deleteVisual(first);
    EXPECT_FALSE(known.expired());
    scene.deleteVisual(second);

    EXPECT_TRUE(known.expired());
    EXPECT_EQ(shape.TShape()->GetRefCount(), before);
}

TEST_F(SharedParts, FaceHiddenOnOneBodyIsPickedOnTheOthers)
{
    visual::SolidVisual* one = addSolid(shape);
    visual::SolidVisual* other = addSolid(shape, {300, 0, 0});
    service.update();
    const unsigned front = one->getFaceIndex(TopoDS::Face(along(40, 30).face));

    one->setFaceVisible(front, false);
    service.updateShapeFaces(one);
    service.update();

    EXPECT_EQ(along(40, 30).position.y, 100) << "through the hole";
    EXPECT_EQ(along(340, 30).position.y, 0);
    EXPECT_EQ(object(one).primitives.size(), 5u);
    EXPECT_EQ(object(other).primitives.size(), 6u);
    one->setVisible(true, true);
    service.update();
    EXPECT_TRUE(haveAllInCommon(one, other));
}

TEST_F(SharedParts, BodyThatIsGivenAnotherShapeLeavesTheOthersAsTheyAre)
{
    visual::SolidVisual* one = addBody(shape, "exchanged");
    visual::SolidVisual* other = addBody(shape, "exchanged");
    other->setPosition(300, 0, 0);
    service.update();

    scene.updateSolidVisual(bodies.front().get(), test::meshed(BRepPrimAPI_MakeCylinder(50, 20).Shape()));
    drain();
    service.update();

    one = dynamic_cast<visual::SolidVisual*>(visual::Scene::GetVisual(bodies.front()->getId()));
    EXPECT_EQ(object(one).primitives.size(), 3u);
    EXPECT_FALSE(along(40, 80).hit) << "above the cylinder";
    EXPECT_EQ(along(340, 80).visual, other);
    EXPECT_EQ(other->getFacesNum(), 6u);
    EXPECT_EQ(one->getFacesNum(), 3u);
}

TEST_F(SharedParts, BodyMadeAfterTheShapeWasMeshedAnewHasTheNewTriangles)
{
    const TopoDS_Shape round = BRepPrimAPI_MakeCylinder(50, 100).Shape();
    BRepMesh_IncrementalMesh(round, 20, false, 1.5, false);
    visual::SolidVisual* before = addSolid(round);
    service.update();
    const auto trianglesOf = [&](visual::Visual* visual) {
        std::size_t count = 0;
        for (const BVHPrimitive* face : object(visual).primitives)
            count += static_cast<const SensitiveFace*>(face)->primitives.size();
        return count;
    };
    const std::size_t coarse = trianglesOf(before);

    BRepTools::Clean(round);
    BRepMesh_IncrementalMesh(round, 0.1, false, 0.1, false);
    visual::SolidVisual* after = addSolid(round, {300, 0, 0});
    visual::SolidVisual* last = addSolid(round, {600, 0, 0});
    service.update();

    EXPECT_EQ(trianglesOf(before), coarse);
    EXPECT_GT(trianglesOf(after), 2 * coarse);
    EXPECT_TRUE(haveAllInCommon(after, last));
    EXPECT_EQ(along(0, 30).visual, before);
}

TEST_F(SharedParts, FlagsAreEachBodysOwn)
{
    visual::SolidVisual* first = addSolid(shape, {}, false);
    visual::SolidVisual* second = addSolid(shape, {0, 300, 0});
    service.setObjectEnabled(first, false);
    service.update();

    EXPECT_EQ(along(40, 30).visual, second);
    service.setObjectEnabled(first, true);
    service.update();
    EXPECT_EQ(along(40, 30).visual, first);
    const rob::Linef through({40, -100, 30}, {40, 500, 30});
    EXPECT_EQ(service.sense(through).visual, second) << "the first is not detectable";
}

TEST_F(SharedParts, MeshVisualsOfOneMeshShareItAtAnyScale)
{
    visual::MeshVisual* plain = addMesh(wall(100));
    const auto another = [&](float x) {
        auto* made = new visual::MeshVisual("mesh", world);
        made->attachMesh(plain->getMeshName());
        made->setPosition(x, 0, 0);
        service.addMeshVisual(made, true, false);
        return made;
    };
    visual::MeshVisual* large = another(1000);
    visual::MeshVisual* mirrored = another(-1000);
    large->setScale(2, 2, 2);
    mirrored->setScale(-1, 1, 0.5);
    service.markDirty(large);
    service.markDirty(mirrored);

    service.update();

    EXPECT_TRUE(haveAllInCommon(plain, large));
    EXPECT_TRUE(haveAllInCommon(plain, mirrored));
    EXPECT_EQ(along(10, 90).visual, plain);
    EXPECT_EQ(along(1010, 190).visual, large) << "beyond the mesh as it is";
    EXPECT_EQ(along(1010, 190).position, Posf(1010, 0, 190));
    EXPECT_EQ(along(-1040, 40).visual, mirrored);
    EXPECT_FALSE(along(-1040, 60).hit);
    EXPECT_FALSE(along(10, 190).hit);
    EXPECT_FLOAT_EQ(along(1010, 190).distance, 500) << "in the mesh's own size";
}

TEST_F(SharedParts, MeshLivesOnWhereTheFirstOfItsVisualsIsDeleted)
{
    visual::MeshVisual* first = addMesh(wall(100));
    auto* second = new visual::MeshVisual("mesh", world);
    second->attachMesh(first->getMeshName());
    second->setPosition(0, 300, 0);
    service.addMeshVisual(second, true, false);
    service.update();
    ASSERT_EQ(along(10, 30).visual, first);

    scene.deleteVisual(first);
    service.update();
    visual::MeshVisual* stranger = addMesh(wall(50)); // which might get the memory of what is gone
    service.update();

    EXPECT_EQ(along(10, 30).visual, stranger);
    EXPECT_EQ(along(10, 80).visual, second);
    scene.deleteVisual(second);
    service.update();
    EXPECT_FALSE(along(10, 80).hit);
}

TEST_F(SharedParts, BodiesComeAndGoWhileOtherThreadsPickThoseOfTheSameShape)
{
    visual::SolidVisual* stays = addSolid(shape);
    service.update();
    std::atomic<bool> isOver = false;
    std::atomic<unsigned> hits = 0, others = 0;
    std::thread asking([&] {
        while (!isOver) {
            const auto still = service.holdStill();
            const Result hit = along(40, 30);
            if (hit.hit)
                ++(hit.visual == stays && !hit.face.IsNull() ? hits : others);
        }
    });

    for (int i = 0; i < 300 || (hits == 0 && i < 100000); ++i) {
        visual::SolidVisual* passing = addSolid(shape, {0, 300, 0});
        service.update();
        scene.deleteVisual(passing);
        service.update();
    }
    isOver = true;
    asking.join();

    EXPECT_GT(hits, 0u);
    EXPECT_EQ(others, 0u);
}

} // namespace
} // namespace vrk::selection
