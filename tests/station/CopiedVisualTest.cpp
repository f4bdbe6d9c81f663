#include "station/support/TestStation.h"
#include "visual/SolidVisual.h"

#include <Ogre.h>

namespace vrk::visual {
namespace {

using testing::StrEq;
using testing::Throws;

class CopiedVisual : public test::SceneFixture {
protected:
    CopiedVisual()
    {
        for (const auto& part : {first, second}) {
            layout::Layout::inst().addPart(part);
            scene.addPart(part.get());
        }
        drain();
    }
    ~CopiedVisual() override
    {
        scene.deleteCopiedVisual();
        drain();
    }
    /// The one copy in the scene; null for none.
    Visual* copy() const
    {
        for (Visual* child : world->getChildren())
            if (child->isCopied())
                return child;
        return nullptr;
    }

    std::shared_ptr<layout::Part> first = test::makePart("first");
    std::shared_ptr<layout::Part> second = test::makePart("second");
};

TEST_F(CopiedVisual, IsASeeThroughDoubleAtTheGivenPose)
{
    scene.showCopiedVisual(first->getId(), rob::Posef(rob::Posf(1, 2, 3)));
    drain();

    ASSERT_NE(copy(), nullptr);
    EXPECT_TRUE(scene.isCopiedVisualVisible());
    EXPECT_EQ(copy()->getId(), first->getId());
    EXPECT_EQ(copy()->getWorldPosition(), rob::Posf(1, 2, 3));
    EXPECT_FALSE(Scene::GetVisual(first->getId())->isCopied()) << "the registry keeps the source";
    for (Visual* child : copy()->getChildren())
        if (child->getType() == VisualType::Solid) {
            EXPECT_EQ(static_cast<SolidVisual*>(child)->getEntity()->getSubEntity(0)->getMaterialName(), "TransBody");
        }
}

TEST_F(CopiedVisual, ShownAgainItOnlyMoves)
{
    scene.showCopiedVisual(first->getId(), {});
    drain();
    const Visual* before = copy();
    copy()->setScale(2, 2, 2); // a new copy may well get the old one's address, but not this

    scene.showCopiedVisual(first->getId(), rob::Posef(rob::Posf(4, 5, 6)));
    drain();

    EXPECT_EQ(copy(), before);
    EXPECT_EQ(copy()->getSceneNode()->getScale(), Ogre::Vector3(2, 2, 2));
    EXPECT_EQ(copy()->getWorldPosition(), rob::Posf(4, 5, 6));
}

TEST_F(CopiedVisual, ThatOfAnotherVisualReplacesIt)
{
    scene.showCopiedVisual(first->getId(), {});
    scene.showCopiedVisual(second->getId(), {});
    drain();

    EXPECT_EQ(copy()->getId(), second->getId());
}

TEST_F(CopiedVisual, HiddenItStaysForTheNextTime)
{
    scene.showCopiedVisual(first->getId(), {});
    scene.hideCopiedVisual();
    drain();
    EXPECT_FALSE(scene.isCopiedVisualVisible());
    ASSERT_NE(copy(), nullptr);
    copy()->setScale(2, 2, 2);

    scene.showCopiedVisual(first->getId(), {});
    drain();
    EXPECT_TRUE(scene.isCopiedVisualVisible());
    EXPECT_EQ(copy()->getSceneNode()->getScale(), Ogre::Vector3(2, 2, 2)) << "the same one";
}

TEST_F(CopiedVisual, HidingAndShowingReachItsBodies)
{
    const auto areBodiesShown = [this] {
        bool found = false, shown = true;
        for (const Visual* child : copy()->getChildren())
            if (child->getType() == VisualType::Solid) {
                found = true;
                shown = shown && child->isVisible();
            }
        EXPECT_TRUE(found);
        return shown;
    };
    scene.showCopiedVisual(first->getId(), {});
    scene.hideCopiedVisual();
    drain();
    EXPECT_FALSE(areBodiesShown());

    scene.showCopiedVisual(first->getId(), {});
    drain();
    EXPECT_TRUE(areBodiesShown());
}

TEST_F(CopiedVisual, HidingOrDeletingNoneDoesNothing)
{
    scene.hideCopiedVisual();
    scene.deleteCopiedVisual();

    EXPECT_NO_THROW(drain());
    EXPECT_FALSE(scene.isCopiedVisualVisible());
}

TEST_F(CopiedVisual, DeletedItLeavesTheSourceWhole)
{
    scene.showCopiedVisual(first->getId(), {});
    scene.deleteCopiedVisual();
    drain();

    EXPECT_EQ(copy(), nullptr);
    EXPECT_EQ(Scene::GetVisual(first->getId())->getTrianglesNum(), 12u);
}

TEST_F(CopiedVisual, OneThatDiedIsMadeAnew)
{
    scene.showCopiedVisual(first->getId(), {});
    drain();

    scene.deleteVisual(copy());
    EXPECT_FALSE(scene.isCopiedVisualVisible());
    EXPECT_TRUE(Scene::HasVisual(first->getId())) << "the source, whose id it bore, stays registered";

    scene.showCopiedVisual(first->getId(), {});
    drain();
    EXPECT_TRUE(scene.isCopiedVisualVisible());
    EXPECT_NE(copy(), nullptr);
}

TEST_F(CopiedVisual, KindThatIsNotCopiedFails)
{
    const auto device = test::makeDevice();
    scene.addMechanism(device.get(), true);
    scene.showCopiedVisual(device->getId(), {});

    EXPECT_THAT([this] { drain(); }, Throws<std::bad_optional_access>(
                                         testing::Property(&std::exception::what, StrEq("Bad optional access"))));
}

TEST_F(CopiedVisual, ThatOfAnUnknownVisualFailsAndDropsTheOneThatWas)
{
    scene.showCopiedVisual(first->getId(), {});
    drain();

    scene.showCopiedVisual(4711, {});

    EXPECT_THAT([this] { drain(); },
                testing::ThrowsMessage<std::out_of_range>(StrEq("invalid unordered_map<K, T> key")));
    EXPECT_EQ(copy(), nullptr);
}

} // namespace
} // namespace vrk::visual
