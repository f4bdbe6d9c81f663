#include "HandleFixture.h"

#include "handles/VectorHandle.h"
#include "support/Allocations.h"

namespace vrk::visual {
namespace {

using test::Cost;
using test::costOf;

class HandleCost : public test::WithHandles<test::RenderTest> {
protected:
    HandleCost()
    {
        attach(DragHandle::Get(), world);
        attach(VectorHandle::Get(), place);
        VectorHandle::Get()->registerToSelection(true);
        drain();
    }
    ~HandleCost() override { VectorHandle::Get()->unregisterFromSelection(); }

    Visual* place = addRegistered(world);

    /// As a frame begins: the picture before it is drawn, picks were asked for, and the camera has moved on.
    void beginFrame(float distance)
    {
        render(test::lookingAtOrigin(distance));
        selection::VisualSelection::Get()->update();
        Camera::Get()->setWorldPosition({0, -2 * distance, 0});
    }
};

TEST_F(HandleCost, CounterSeesWhatTheLibraryAllocates)
{
    EXPECT_GT(costOf([&] { new Visual(world); }).allocations, 0u);
}

TEST_F(HandleCost, ScalingAllocatesNothingBesideOgresOwnNoteOfTheNode)
{
    // OGRE keeps a set of the children that a node must update with the next picture, and enters any that is changed.
    Ogre::SceneNode* bare = world->getSceneNode()->createChildSceneNode();
    for (const float distance : {1000.0f, 1010.0f, 700.0f}) {
        beginFrame(distance);
        const Cost ofBare = costOf([&] { bare->setScale(distance, 2, 3); });

        const Cost cost = costOf([] { DragHandle::Get()->updateScale(); });

        EXPECT_EQ(cost, ofBare);
        EXPECT_EQ(costOf([] { DragHandle::Get()->updateScale(); }), Cost()); // it is noted already
        EXPECT_FLOAT_EQ(DragHandle::Get()->getSceneNode()->getScale().x, 2 * distance * 0.00025f);
        EXPECT_TRUE(selection::VisualSelection::Get()->isDirty());
    }
    sceneManager->destroySceneNode(bare);
}

TEST_F(HandleCost, HandleInAMovedPlaceAllocatesNothing)
{
    for (const float distance : {1000.0f, 1010.0f, 700.0f}) {
        beginFrame(distance);
        place->setPosition(distance, 0, 0); // as a drag does: OGRE visits all below it anyway

        EXPECT_EQ(costOf([] { VectorHandle::Get()->updateScale(); }), Cost());
    }
}

} // namespace
} // namespace vrk::visual
