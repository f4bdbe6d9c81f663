#include "visual/VisualStateManager.h"

#include "mesh/MeshManager.h"
#include "platform/broker/SignalBroker.h"
#include "platform/layout/Body.h"
#include "platform/layout/Layout.h"
#include "platform/sdf/SdfManager.h"
#include "platform/sdf/SdfObject.h"
#include "scene/core/SceneCore.h"
#include "support/SceneFixture.h"
#include "visual/MeshVisual.h"
#include "visual/SolidVisual.h"
#include "visual/VisualMark.h"

#include <Ogre.h>

namespace vrk::visual {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StrEq;
using testing::ThrowsMessage;

struct TopCase {
    const char* name;
    unsigned mask;
    VisualStateLayer top;
};

class TopLayer : public testing::TestWithParam<TopCase> {};

TEST_P(TopLayer, IsTheHighestInThePriorityOrder)
{
    EXPECT_EQ(VisualStateManager::pickTopLayer(GetParam().mask), GetParam().top);
}

INSTANTIATE_TEST_SUITE_P(Table, TopLayer,
                         testing::Values(TopCase{"NoneOfNothing", 0, VisualStateLayer::None},
                                         TopCase{"NoneOfOtherBits", 128 | 256, VisualStateLayer::None},
                                         TopCase{"SelectedOfAll", 127, VisualStateLayer::Selected},
                                         TopCase{"HighlightedBelowSelected", 63, VisualStateLayer::Highlighted},
                                         TopCase{"ContactBelowHighlighted", 31, VisualStateLayer::CollisionContact},
                                         TopCase{"NearMissBelowContact", 15, VisualStateLayer::CollisionNearMiss},
                                         TopCase{"GroupABeforeGroupBAgainstTheirNumbers", 2 | 4,
                                                 VisualStateLayer::EmphasizeGroupA},
                                         TopCase{"GroupBBelowGroupA", 4 | 1, VisualStateLayer::EmphasizeGroupB},
                                         TopCase{"MaterialLast", 1, VisualStateLayer::Material}),
                         [](const auto& info) { return std::string(info.param.name); });

class Layers : public test::SceneFixture {
protected:
    Layers() : states(*Scene::GetStateManager()) {}

    SolidVisual* addBody(Visual* parent = nullptr)
    {
        const TopoDS_Shape shape = test::meshedBox(10, 10, 10);
        const auto body = test::addModelBody(shape, "layers");
        SolidVisual::Build(parent ? parent : world, body.get(), shape);
        return static_cast<SolidVisual*>(Scene::GetVisual(body->getId()));
    }
    Visual* addVisual(VisualType type)
    {
        auto* visual = new Visual(world);
        visual->setType(type);
        SceneCore::Get()->visuals.enter(visual);
        return visual;
    }
    static std::string materialOf(const SolidVisual& solid)
    {
        return solid.getEntity()->getSubEntity(0)->getMaterialName();
    }
    void set(Visual* visual, VisualStateLayer layer, bool on = true, const std::string& material = {})
    {
        states.setLayer(visual, layer, on, material);
        states.refresh(visual);
    }
    /// How many tasks are posted by what `call` does.
    template <typename Call>
    static int postsOf(const Call& call)
    {
        int posts = 0;
        const boost::signals2::scoped_connection connection = broker::SignalBroker::onUpdateScene([&] { ++posts; });
        call();
        return posts;
    }

    VisualStateManager& states;
};

TEST_F(Layers, NothingShowsBeforeTheRefresh)
{
    SolidVisual* solid = addBody();

    states.setLayer(solid, VisualStateLayer::Selected, true, {});
    EXPECT_EQ(materialOf(*solid), "Body");

    states.refresh(solid);
    EXPECT_EQ(materialOf(*solid), "BodySelected");
}

TEST_F(Layers, DroppedSelectionShowsTheHighlightThatWasUnderIt)
{
    SolidVisual* solid = addBody();
    set(solid, VisualStateLayer::Highlighted);
    set(solid, VisualStateLayer::Selected);
    EXPECT_EQ(materialOf(*solid), "BodySelected");

    set(solid, VisualStateLayer::Selected, false);

    EXPECT_EQ(materialOf(*solid), "BodyHighlighted");
}

TEST_F(Layers, OfBothGroupsTheFirstShows)
{
    SolidVisual* solid = addBody();

    set(solid, VisualStateLayer::EmphasizeGroupB);
    EXPECT_EQ(materialOf(*solid), "EmphasizeCollisionGroupB");

    set(solid, VisualStateLayer::EmphasizeGroupA);
    EXPECT_EQ(materialOf(*solid), "EmphasizeCollisionGroupA");
}

TEST_F(Layers, MaterialUnderAContactComesBackWithoutIt)
{
    SolidVisual* solid = addBody();
    set(solid, VisualStateLayer::Material, true, "KUKA");
    EXPECT_EQ(materialOf(*solid), "KUKA");
    set(solid, VisualStateLayer::CollisionContact);
    EXPECT_EQ(materialOf(*solid), "CollisionContact");

    set(solid, VisualStateLayer::CollisionContact, false);

    EXPECT_EQ(materialOf(*solid), "KUKA");
}

TEST_F(Layers, MaterialLayerWithoutMaterialIsThePlainLook)
{
    SolidVisual* solid = addBody();

    set(solid, VisualStateLayer::Material);

    EXPECT_EQ(materialOf(*solid), "Body");
    EXPECT_TRUE(states.hasLayer(solid, VisualStateLayer::Material));
}

TEST_F(Layers, LayerSetAgainWithoutMaterialKeepsTheOneThatItHas)
{
    SolidVisual* solid = addBody();
    set(solid, VisualStateLayer::Material, true, "KUKA");

    set(solid, VisualStateLayer::Material, true, {});

    EXPECT_EQ(materialOf(*solid), "KUKA");
}

TEST_F(Layers, ClearedLayerForgetsItsMaterial)
{
    SolidVisual* solid = addBody();
    set(solid, VisualStateLayer::Material, true, "KUKA");
    set(solid, VisualStateLayer::CollisionNearMiss);

    states.clearLayer(VisualStateLayer::Material);
    set(solid, VisualStateLayer::CollisionNearMiss, false);

    EXPECT_FALSE(states.hasEntry(solid));
    set(solid, VisualStateLayer::Material);
    EXPECT_EQ(materialOf(*solid), "Body");
}

TEST_F(Layers, ManagersAreCopiedAndMovedWithWhatTheyHold)
{
    SolidVisual* solid = addBody();
    states.setLayer(solid, VisualStateLayer::Material, true, "KUKA");

    VisualStateManager copied(states);
    VisualStateManager assigned;
    assigned = states;
    states.remove(solid);
    const VisualStateManager moved(std::move(copied));
    VisualStateManager moveAssigned;
    moveAssigned = std::move(assigned);

    EXPECT_TRUE(moved.hasLayer(solid, VisualStateLayer::Material));
    moveAssigned.refresh(solid);
    EXPECT_EQ(materialOf(*solid), "KUKA");
}

TEST_F(Layers, RemovedVisualLosesItsLayersAndKeepsItsLook)
{
    SolidVisual* solid = addBody();
    set(solid, VisualStateLayer::Selected);

    states.remove(solid);

    EXPECT_FALSE(states.hasLayer(solid, VisualStateLayer::Selected));
    EXPECT_EQ(materialOf(*solid), "BodySelected");
}

TEST_F(Layers, NearMissShowsItsMaterial)
{
    SolidVisual* solid = addBody();

    set(solid, VisualStateLayer::CollisionNearMiss);

    EXPECT_EQ(materialOf(*solid), "CollisionNearMiss");
}

TEST_F(Layers, TakingALayerThatIsNotThereMakesNoEntry)
{
    SolidVisual* solid = addBody();

    states.setLayer(solid, VisualStateLayer::Highlighted, false, {});

    EXPECT_FALSE(states.hasEntry(solid));
}

TEST_F(Layers, LastLayerTakesTheEntryAlong)
{
    SolidVisual* solid = addBody();
    set(solid, VisualStateLayer::Material, true, "KUKA");
    EXPECT_TRUE(states.hasEntry(solid));

    set(solid, VisualStateLayer::Material, false);

    EXPECT_FALSE(states.hasEntry(solid));
    EXPECT_EQ(materialOf(*solid), "Body");
}

TEST_F(Layers, ClearedLayerGoesFromEveryVisual)
{
    SolidVisual* first = addBody();
    SolidVisual* second = addBody();
    set(first, VisualStateLayer::CollisionContact);
    set(second, VisualStateLayer::CollisionContact);
    set(second, VisualStateLayer::Material, true, "ABB");

    states.clearLayer(VisualStateLayer::CollisionContact);

    EXPECT_EQ(materialOf(*first), "Body");
    EXPECT_EQ(materialOf(*second), "ABB");
    EXPECT_FALSE(states.hasEntry(first));
    EXPECT_TRUE(states.hasEntry(second));
}

TEST_F(Layers, VisualThatDiesWithItsParentTakesItsLayersAlong)
{
    Visual* part = addVisual(VisualType::Part);
    SolidVisual* solid = addBody(part);
    set(solid, VisualStateLayer::CollisionContact);

    scene.deleteVisual(part);

    EXPECT_FALSE(states.hasEntry(solid));
    EXPECT_NO_THROW(states.clearLayer(VisualStateLayer::CollisionContact));
}

TEST_F(Layers, HighlightMovesFromVisualToVisual)
{
    SolidVisual* first = addBody();
    SolidVisual* second = addBody();
    scene.setVisualHighlighted(first);

    scene.setVisualHighlighted(second->getId());
    drain();

    EXPECT_EQ(materialOf(*first), "Body");
    EXPECT_EQ(materialOf(*second), "BodyHighlighted");
}

TEST_F(Layers, HighlightWhoseEndWentWithAFailedBatchGoesWithTheNextClearing)
{
    SolidVisual* solid = addBody();
    scene.setVisualHighlighted(solid);
    drain();
    scene.addRenderTask([] { throw std::runtime_error("broken"); }, 0);
    scene.clearHighlightedVisual();
    EXPECT_THROW(drain(), std::runtime_error);
    EXPECT_EQ(materialOf(*solid), "BodyHighlighted") << "nothing records it any more";

    scene.clearHighlightedBody();
    drain();

    EXPECT_EQ(materialOf(*solid), "Body");
    EXPECT_FALSE(states.hasEntry(solid));
    EXPECT_EQ(postsOf([this] { scene.clearHighlightedVisual(); }), 0);
}

TEST_F(Layers, HighlightSetAnewAfterAFailedBatchStays)
{
    SolidVisual* solid = addBody();
    scene.setVisualHighlighted(solid);
    drain();
    scene.addRenderTask([] { throw std::runtime_error("broken"); }, 0);
    scene.clearHighlightedVisual();
    EXPECT_THROW(drain(), std::runtime_error);

    scene.setVisualHighlighted(solid);
    drain();

    EXPECT_EQ(materialOf(*solid), "BodyHighlighted");
}

TEST_F(Layers, VisualThatDiesWhileTheEndOfItsHighlightIsOwedIsPassedOver)
{
    SolidVisual* solid = addBody();
    scene.setVisualHighlighted(solid);
    drain();
    scene.addRenderTask([] { throw std::runtime_error("broken"); }, 0);
    scene.clearHighlightedVisual();
    EXPECT_THROW(drain(), std::runtime_error);
    scene.deleteVisual(solid);

    scene.clearHighlightedVisual();

    EXPECT_NO_THROW(drain());
}

TEST_F(Layers, MarkWhoseEndWentWithAFailedBatchGoesWithTheNextClearing)
{
    SolidVisual* solid = addBody();
    {
        const SelectedVisual mark(solid);
        drain();
        scene.addRenderTask([] { throw std::runtime_error("broken"); }, 0);
    }
    EXPECT_THROW(drain(), std::runtime_error);

    scene.clearSelections();
    drain();

    EXPECT_FALSE(states.hasEntry(solid));
}

TEST_F(Layers, HighlightingWhatIsHighlightedPostsNothing)
{
    SolidVisual* solid = addBody();

    EXPECT_EQ(postsOf([&] { scene.setVisualHighlighted(solid); }), 1);
    EXPECT_EQ(postsOf([&] { scene.setVisualHighlighted(solid->getId()); }), 0);
}

TEST_F(Layers, HighlightingASelectedVisualOnlyEndsTheOldHighlight)
{
    SolidVisual* first = addBody();
    SolidVisual* second = addBody();
    scene.setVisualSelected(second);
    drain();
    scene.setVisualHighlighted(first);

    scene.setVisualHighlighted(second);
    drain();

    EXPECT_EQ(materialOf(*first), "Body");
    EXPECT_EQ(materialOf(*second), "BodySelected");
    EXPECT_FALSE(states.hasLayer(second, VisualStateLayer::Highlighted));
}

TEST_F(Layers, HighlightedVisualThatDiesIsForgotten)
{
    SolidVisual* solid = addBody();
    scene.setVisualHighlighted(solid);
    drain();

    scene.deleteVisual(solid);
    scene.clearHighlightedVisual();

    EXPECT_NO_THROW(drain());
}

TEST_F(Layers, SelectionReplacesTheOneBefore)
{
    SolidVisual* first = addBody();
    SolidVisual* second = addBody();
    scene.setVisualSelected(first->getId());
    drain();

    scene.setVisualSelected(second->getId());
    drain();

    EXPECT_EQ(materialOf(*first), "Body");
    EXPECT_EQ(materialOf(*second), "BodySelected");
    EXPECT_THAT(scene.getSelectedVisuals(), ElementsAre(second->getId()));
}

TEST_F(Layers, SeveralVisualsAreSelectedTogether)
{
    SolidVisual* first = addBody();
    SolidVisual* second = addBody();

    scene.setVisualsSelected({first->getId(), second->getId()});
    drain();

    EXPECT_EQ(materialOf(*first), "BodySelected");
    EXPECT_EQ(materialOf(*second), "BodySelected");
}

TEST_F(Layers, SelectingAVisualEndsSelectedFaces)
{
    SolidVisual* solid = addBody();
    scene.selectBaseFace(solid->getId(), 1);

    scene.setVisualSelected(solid);
    drain();

    EXPECT_FALSE(scene.faceIsSelected(solid, 1));
}

TEST_F(Layers, SelectingSeveralVisualsEndsSelectedFacesAndHighlights)
{
    SolidVisual* solid = addBody();
    SolidVisual* highlighted = addBody();
    scene.selectBaseFace(solid->getId(), 1);
    scene.setVisualHighlighted(highlighted);

    scene.setVisualsSelected({solid->getId()});
    drain();

    EXPECT_FALSE(scene.faceIsSelected(solid, 1));
    EXPECT_EQ(materialOf(*highlighted), "Body");
    EXPECT_THAT(scene.getSelectedVisuals(), ElementsAre(solid->getId()));
}

TEST_F(Layers, SelectingAVisualEndsTheHighlight)
{
    SolidVisual* solid = addBody();
    SolidVisual* highlighted = addBody();
    scene.setVisualHighlighted(highlighted);

    scene.setVisualSelected(solid);
    drain();

    EXPECT_EQ(materialOf(*highlighted), "Body");
}

TEST_F(Layers, ClearingSkipsVisualsThatDied)
{
    SolidVisual* solid = addBody();
    scene.setVisualSelected(solid);
    drain();
    scene.deleteVisual(solid);
    EXPECT_THAT(scene.getSelectedVisuals(), testing::SizeIs(1)) << "the id of a dead visual stays";

    scene.clearSelections();
    drain();

    EXPECT_THAT(scene.getSelectedVisuals(), IsEmpty());
}

TEST_F(Layers, BodyOfASelectedAssemblyIsSelected)
{
    Visual* assembly = addVisual(VisualType::Assembly);
    auto* part = new Visual(assembly);
    SolidVisual* solid = addBody(part);
    EXPECT_FALSE(scene.isSelected(solid));

    scene.setVisualSelected(assembly);
    drain();

    EXPECT_TRUE(scene.isSelected(solid));
    EXPECT_TRUE(scene.isSelected(assembly));
    EXPECT_FALSE(scene.isSelected(world));
}

TEST_F(Layers, SelectingAnUnknownIdSelectsNothing)
{
    scene.setVisualSelected(4711u);

    EXPECT_NO_THROW(drain());
    EXPECT_THAT(scene.getSelectedVisuals(), IsEmpty());
}

TEST_F(Layers, AskingForAnUnknownIdFailsAtOnce)
{
    const auto unknownKey = ThrowsMessage<std::out_of_range>(StrEq("invalid unordered_map<K, T> key"));

    EXPECT_THAT([this] { scene.setVisualHighlighted(4711u); }, unknownKey);
    EXPECT_THAT([this] { scene.bodyVisualUseMaterial(4711, "Body"); }, unknownKey);
    EXPECT_THAT([this] { scene.bodyVisualUseDefaultMaterial(4711); }, unknownKey);
}

TEST_F(Layers, ColourReachesABodyAndTheBodiesThatAreDirectChildren)
{
    Visual* part = addVisual(VisualType::Part);
    SolidVisual* solid = addBody(part);

    scene.setVisualColor(part->getId(), 0.25f, 0.5f, 0.75f);
    drain();

    EXPECT_EQ(MeshManager::GetFaceColor("layers", solid->getShape(), 1), rob::Colorf(0.25f, 0.5f, 0.75f));
}

TEST_F(Layers, ColourDoesNotReachDeeperThanOneLevel)
{
    Visual* assembly = addVisual(VisualType::Assembly);
    auto* part = new Visual(assembly);
    SolidVisual* solid = addBody(part);
    const rob::Colorf before = MeshManager::GetFaceColor("layers", solid->getShape(), 1);

    scene.setVisualColor(assembly->getId(), 0.25f, 0.5f, 0.75f);
    drain();

    EXPECT_EQ(MeshManager::GetFaceColor("layers", solid->getShape(), 1), before);
}

TEST_F(Layers, ColourOfTheModelComesBack)
{
    Visual* part = addVisual(VisualType::Part);
    SolidVisual* solid = addBody(part);
    const auto colour = [&] { return MeshManager::GetFaceColor("layers", solid->getShape(), 1); };
    const rob::Colorf before = colour();
    for (const auto& reset : {std::function<void()>([&] { scene.resetColor(part->getId()); }),
                              std::function<void()>([&] { scene.resetColor(part); }),
                              std::function<void()>([&] { scene.resetColor(solid); })}) {
        scene.setVisualColor(solid->getId(), 0.25f, 0.5f, 0.75f);
        drain();
        ASSERT_NE(colour(), before);

        reset();
        EXPECT_NE(colour(), before) << "it is posted";
        drain();

        EXPECT_EQ(colour(), before);
    }
}

TEST_F(Layers, MaterialOfABodyIsSetAndTakenBack)
{
    SolidVisual* solid = addBody();

    scene.bodyVisualUseMaterial(solid->getId(), "FANUC");
    drain();
    EXPECT_EQ(materialOf(*solid), "FANUC");

    scene.bodyVisualUseDefaultMaterial(solid->getId());
    drain();
    EXPECT_EQ(materialOf(*solid), "Body");
}

TEST_F(Layers, MaterialOfSomethingElseIsPassedOver)
{
    Visual* part = addVisual(VisualType::Part);

    EXPECT_EQ(postsOf([&] {
                  scene.bodyVisualUseMaterial(part->getId(), "FANUC");
                  scene.bodyVisualUseDefaultMaterial(part->getId());
              }),
              0);
    drain();

    EXPECT_FALSE(states.hasEntry(part));
}

TEST_F(Layers, CollisionMarksEveryBodyBelow)
{
    Visual* assembly = addVisual(VisualType::Assembly);
    auto* part = new Visual(assembly);
    SolidVisual* first = addBody(part);
    SolidVisual* second = addBody(part);

    scene.setCollision(assembly->getId(), true);
    drain();
    EXPECT_EQ(materialOf(*first), "CollisionContact");
    EXPECT_EQ(materialOf(*second), "CollisionContact");

    scene.setCollision(assembly->getId(), false);
    drain();
    EXPECT_EQ(materialOf(*first), "Body");
}

TEST_F(Layers, CollisionPassesOverBodiesThatDrawNothing)
{
    Visual* assembly = addVisual(VisualType::Assembly);
    auto* empty = new Visual(assembly);
    empty->setType(VisualType::Mesh);

    EXPECT_EQ(postsOf([&] { scene.setCollision(assembly->getId(), true); }), 0);
    EXPECT_EQ(postsOf([&] { scene.setCollisionHighlights({assembly->getId(), 4711}, true); }), 0);
    EXPECT_EQ(postsOf([&] { scene.setCollision(4711, true); }), 0);

    SolidVisual* drawn = addBody(assembly);
    EXPECT_EQ(postsOf([&] { scene.setCollisionHighlights({assembly->getId(), drawn->getId()}, true); }), 1);
    drain();
    EXPECT_FALSE(states.hasEntry(empty));
    EXPECT_TRUE(states.hasLayer(drawn, VisualStateLayer::CollisionContact));
}

TEST_F(Layers, CollisionsOfSeveralVisualsSkipUnknownOnes)
{
    SolidVisual* solid = addBody();

    scene.setCollisionHighlights({4711, solid->getId()}, true);
    drain();
    EXPECT_EQ(materialOf(*solid), "CollisionContact");

    scene.clearAllCollisionContacts();
    EXPECT_EQ(materialOf(*solid), "CollisionContact") << "it is posted";
    drain();
    EXPECT_EQ(materialOf(*solid), "Body");
}

TEST_F(Layers, EmphasisMovesBetweenTheGroups)
{
    SolidVisual* solid = addBody();

    scene.setVisualCollisionEmphasizeState(solid->getId(), Scene::VisualCollisionState::GroupA);
    drain();
    EXPECT_EQ(materialOf(*solid), "EmphasizeCollisionGroupA");

    scene.setVisualCollisionEmphasizeState(solid->getId(), Scene::VisualCollisionState::GroupB);
    drain();
    EXPECT_EQ(materialOf(*solid), "EmphasizeCollisionGroupB");

    scene.clearVisualCollisionEmphasizeState(solid->getId());
    drain();
    EXPECT_EQ(materialOf(*solid), "Body");
    EXPECT_EQ(postsOf([&] {
                  scene.setVisualCollisionEmphasizeState(4711, Scene::VisualCollisionState::GroupA);
                  scene.clearVisualCollisionEmphasizeState(4711);
              }),
              0);
}

// Visuals that are removed ahead of what was asked of them

struct LateLookCase {
    const char* name;
    void (*ask)(Scene& scene, SolidVisual* solid);
};

class LateLook : public Layers, public testing::WithParamInterface<LateLookCase> {};

TEST_P(LateLook, OfAVisualThatIsRemovedFirstIsPassedOver)
{
    SolidVisual* solid = addBody();
    SolidVisual* other = addBody();

    scene.removeVisual(solid->getId());
    GetParam().ask(scene, solid);
    scene.setCollision(other->getId(), true);

    EXPECT_NO_THROW(drain());
    EXPECT_THAT(states.visualsWithLayers(), ElementsAre(other));
}

INSTANTIATE_TEST_SUITE_P(
    Table, LateLook,
    testing::Values(
        LateLookCase{"Material",
                     [](Scene& s, SolidVisual* v) { s.bodyVisualUseMaterial(v->getId(), "CollisionContact"); }},
        LateLookCase{"DefaultMaterial", [](Scene& s, SolidVisual* v) { s.bodyVisualUseDefaultMaterial(v->getId()); }},
        LateLookCase{"Collision", [](Scene& s, SolidVisual* v) { s.setCollision(v->getId(), true); }},
        LateLookCase{"Emphasis",
                     [](Scene& s, SolidVisual* v) {
                         s.setVisualCollisionEmphasizeState(v->getId(), Scene::VisualCollisionState::GroupA);
                     }},
        LateLookCase{"Colour", [](Scene& s, SolidVisual* v) { s.resetColor(v); }}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(Layers, CollisionReachesWhatLeftTheVisualAfterItWasAskedFor)
{
    Visual* assembly = addVisual(VisualType::Assembly);
    SolidVisual* solid = addBody(assembly);

    scene.reparentVisual(solid->getId(), 0);
    scene.setCollision(assembly->getId(), true);
    drain();

    EXPECT_EQ(materialOf(*solid), "CollisionContact");
}

TEST_F(Layers, CollisionReachesABodyThatIsNotRegisteredAndPassesOverOneThatWentWithItsOwner)
{
    Visual* owner = addVisual(VisualType::Part);
    MeshVisual* arrow = MeshVisual::BuildArrow(owner, {}, {0, 0, 1});
    const auto drawnIn = [](const MeshVisual& visual) {
        return visual.getEntity()->getSubEntity(0)->getMaterialName();
    };

    scene.setCollision(owner->getId(), true);
    drain();
    EXPECT_EQ(drawnIn(*arrow), "CollisionContact");

    scene.removeVisual(owner->getId());
    scene.setCollision(owner->getId(), true);
    EXPECT_NO_THROW(drain());
    EXPECT_THAT(states.visualsWithLayers(), IsEmpty());
}

// Marks of the application's own

TEST_F(Layers, MarkShowsByAPostWhileItLives)
{
    SolidVisual* solid = addBody();
    {
        const SelectedVisual selected(solid);
        const HighlightedVisual highlighted(solid);
        EXPECT_FALSE(states.hasEntry(solid));
        drain();
        EXPECT_EQ(materialOf(*solid), "BodySelected");
        EXPECT_TRUE(states.hasLayer(solid, VisualStateLayer::Highlighted));
    }
    EXPECT_EQ(materialOf(*solid), "BodySelected");

    drain();

    EXPECT_EQ(materialOf(*solid), "Body");
    EXPECT_FALSE(states.hasEntry(solid));
    EXPECT_THAT(scene.getSelectedVisuals(), IsEmpty());
}

TEST_F(Layers, MarkOnAVisualThatDiesFirstIsPassedOver)
{
    SolidVisual* solid = addBody();
    {
        const HighlightedVisual highlighted(solid);
        scene.removeVisual(solid->getId());
        drain();
        EXPECT_THAT(states.visualsWithLayers(), IsEmpty());
    }

    EXPECT_NO_THROW(drain());
    EXPECT_THAT(states.visualsWithLayers(), IsEmpty());
}

TEST_F(Layers, VisualThatIsNotRegisteredCanBeMarked)
{
    MeshVisual* arrow = MeshVisual::BuildArrow(world, {}, {0, 0, 1});
    const SelectedVisual selected(arrow);

    drain();

    EXPECT_TRUE(states.hasLayer(arrow, VisualStateLayer::Selected));
}

} // namespace
} // namespace vrk::visual
