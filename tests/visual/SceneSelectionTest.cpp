#include "platform/broker/SignalBroker.h"
#include "platform/layout/Body.h"
#include "platform/sdf/SdfManager.h"
#include "platform/task/DataItem.h"
#include "platform/task/Task.h"
#include "scene/Scene.h"
#include "scene/core/SceneCore.h"
#include "support/SceneFixture.h"
#include "visual/Edges.h"
#include "visual/PointCloudVisual.h"
#include "visual/ScanClouds.h"
#include "visual/SolidVisual.h"
#include "visual/VisualStateManager.h"

#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>

namespace vrk::visual {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StrEq;
using testing::ThrowsMessage;
using testing::UnorderedElementsAre;

using Indices = std::vector<std::uint64_t>;
using Clouds = std::unordered_map<unsigned, Indices>;

/// What the application sees of the selection, whichever operation changed it.
class SceneSelection : public test::SceneFixture {
protected:
    SolidVisual* addSolid(const std::string& name = "selected box")
    {
        const TopoDS_Shape shape = test::meshedBox(10, 20, 30);
        const auto body = test::addModelBody(shape, name);
        SolidVisual::Build(world, body.get(), shape);
        return static_cast<SolidVisual*>(Scene::GetVisual(body->getId()));
    }
    PointCloudVisual* addCloud()
    {
        const auto node = test::addModelCloud({{0, 0, 0}, {1, 0, 5}, {2, 0, 0}, {3, 4, 0}});
        return static_cast<PointCloudVisual*>(PointCloudVisual::Build(world, node.get()));
    }
    /// A registered visual of this type.
    Visual* addVisual(VisualType type)
    {
        auto* visual = new Visual(world);
        visual->setType(type);
        SceneCore::Get()->visuals.enter(visual);
        return visual;
    }
    static TopoDS_Edge anEdgeOf(const SolidVisual& solid)
    {
        return TopoDS::Edge(TopExp_Explorer(solid.getShape(), TopAbs_EDGE).Current());
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
};

// Faces

TEST_F(SceneSelection, FaceIsSelectedAtOnceAndColouredLater)
{
    SolidVisual* solid = addSolid();

    const int posts = postsOf([&] { scene.selectBaseFace(solid->getId(), 2); });

    EXPECT_TRUE(scene.faceIsSelected(solid, 2));
    EXPECT_FALSE(scene.faceIsSelected(solid, 1));
    EXPECT_EQ(posts, 1);
}

TEST_F(SceneSelection, FaceOfAMeshIsNotSelected)
{
    Visual* mesh = addVisual(VisualType::Mesh);

    EXPECT_EQ(postsOf([&] {
                  scene.selectBaseFace(mesh->getId(), 1);
                  scene.selectSideFace(mesh->getId(), 1);
                  scene.clearSelectedFace(mesh->getId(), 1);
                  scene.clearSelectedFaces();
              }),
              0);
}

TEST_F(SceneSelection, FaceSelectedTwiceIsOneEntry)
{
    SolidVisual* solid = addSolid();
    scene.selectBaseFace(solid->getId(), 1);
    scene.selectBaseFace(solid->getId(), 1);

    scene.clearSelectedFace(solid->getId(), 1);

    EXPECT_FALSE(scene.faceIsSelected(solid, 1));
}

TEST_F(SceneSelection, SelectingAFaceEndsTheHighlightsTheFirstTimeOnly)
{
    SolidVisual* solid = addSolid();
    SolidVisual* other = addSolid();
    scene.setVisualHighlighted(other);
    EXPECT_EQ(postsOf([&] { scene.selectBaseFace(solid->getId(), 1); }), 2) << "the highlight's end and the colour";
    scene.setVisualHighlighted(other);

    EXPECT_EQ(postsOf([&] { scene.selectBaseFace(solid->getId(), 1); }), 0);

    EXPECT_EQ(postsOf([&] { scene.clearHighlightedBody(); }), 1) << "it was still highlighted";
}

TEST_F(SceneSelection, SelectingAFaceEndsHighlightsOfFaceAndEdge)
{
    SolidVisual* solid = addSolid();
    scene.highlightFace(solid, 2);
    scene.selectSideFace(solid->getId(), 1);
    EXPECT_EQ(postsOf([&] { scene.clearHighlightedFace(); }), 0);

    scene.highlightEdge(solid, anEdgeOf(*solid));
    scene.selectSideFace(solid->getId(), 3);
    EXPECT_EQ(postsOf([&] { scene.clearHighlightedEdge(); }), 0);
}

TEST_F(SceneSelection, ClearingAFaceEndsTheHighlightsWhetherItWasSelectedOrNot)
{
    SolidVisual* solid = addSolid();
    scene.highlightFace(solid, 2);

    EXPECT_EQ(postsOf([&] { scene.clearSelectedFace(solid->getId(), 1); }), 1);

    EXPECT_EQ(postsOf([&] { scene.clearHighlightedFace(); }), 0);
}

TEST_F(SceneSelection, ClearingAFaceOfAnUnknownVisualFails)
{
    EXPECT_THAT([&] { scene.clearSelectedFace(4711, 1); },
                ThrowsMessage<std::out_of_range>(StrEq("invalid unordered_map<K, T> key")));
    EXPECT_THAT([&] { scene.selectBaseFace(4711, 1); },
                ThrowsMessage<std::out_of_range>(StrEq("invalid unordered_map<K, T> key")));
}

TEST_F(SceneSelection, FacesAreClearedAtOnceWithATaskEach)
{
    SolidVisual* solid = addSolid();
    scene.selectBaseFace(solid->getId(), 1);
    scene.selectSideFace(solid->getId(), 2);

    EXPECT_EQ(postsOf([&] { scene.clearSelectedFaces(); }), 2);

    EXPECT_FALSE(scene.faceIsSelected(solid, 1));
    EXPECT_FALSE(scene.faceIsSelected(solid, 2));
}

TEST_F(SceneSelection, ClearingAllEndsFacesAtOnceAndVisualsLater)
{
    SolidVisual* solid = addSolid();
    scene.setVisualSelected(solid);
    drain();
    scene.selectBaseFace(solid->getId(), 1);

    scene.clearSelections();
    EXPECT_FALSE(scene.faceIsSelected(solid, 1));
    EXPECT_THAT(scene.getSelectedVisuals(), ElementsAre(solid->getId()));

    drain();
    EXPECT_THAT(scene.getSelectedVisuals(), IsEmpty());
}

// Visuals

TEST_F(SceneSelection, SelectedVisualsAreALiveReference)
{
    const std::vector<unsigned>& selected = scene.getSelectedVisuals();
    SolidVisual* solid = addSolid();

    scene.setVisualSelected(solid);
    EXPECT_THAT(selected, IsEmpty());
    drain();

    EXPECT_THAT(selected, ElementsAre(solid->getId()));
}

TEST_F(SceneSelection, VisualIsSelectedThroughAnyOfItsAncestors)
{
    Visual* assembly = addVisual(VisualType::Assembly);
    auto* part = new Visual(assembly);
    auto* body = new Visual(part);
    auto* sibling = new Visual(world);

    scene.setVisualSelected(assembly);
    drain();

    EXPECT_TRUE(scene.isSelected(body));
    EXPECT_TRUE(scene.isSelected(part));
    EXPECT_TRUE(scene.isSelected(assembly));
    EXPECT_FALSE(scene.isSelected(sibling));
}

TEST_F(SceneSelection, TaskStandsForPathsToolsWorkObjectsAndJointTargetsAndAtLastForItsRobot)
{
    // Ids in another order than that of the selection.
    const auto program = std::make_shared<task::Task>(900, "program");
    program->addDataItem(std::make_shared<task::JointTargetDataItem>(901, "joints"));
    program->addDataItem(std::make_shared<task::WObjDataItem>(902, "work object", 950));
    program->addDataItem(std::make_shared<task::ToolDataItem>(903, "tool"));
    program->addDataItem(std::make_shared<task::ToolDataItem>(904, "second tool"));
    program->addPath(905);
    program->addPath(906);
    program->setManipulatorId(907);
    sdf::SdfManager::inst().add(program);
    for (const unsigned id : {901u, 902u, 903u, 904u, 905u, 907u}) // the second path has none
        SceneCore::Get()->visuals.enter(new Visual(id, world));

    scene.setVisualSelected(900u);
    drain();

    EXPECT_THAT(scene.getSelectedVisuals(), ElementsAre(905, 903, 904, 902, 901, 907));
}

TEST_F(SceneSelection, TaskWhoseRobotHasNoVisualGoesOnWithWhatThatStandsFor)
{
    const auto program = std::make_shared<task::Task>(900, "program");
    const auto gathers = std::make_shared<task::Operation>(910, "gathers");
    program->setManipulatorId(910);
    gathers->addMember(911);
    sdf::SdfManager::inst().add(program);
    sdf::SdfManager::inst().add(gathers);
    sdf::SdfManager::inst().add(std::make_shared<sdf::SdfNode>(sdf::ModelType::Part, 911, "part"));
    SceneCore::Get()->visuals.enter(new Visual(911, world));

    scene.setVisualSelected(900u);
    drain();

    EXPECT_THAT(scene.getSelectedVisuals(), ElementsAre(911));
}

TEST_F(SceneSelection, TaskThatIsItsOwnRobotEndsThere)
{
    const auto program = std::make_shared<task::Task>(900, "program");
    program->addPath(905);
    program->setManipulatorId(900);
    sdf::SdfManager::inst().add(program);
    SceneCore::Get()->visuals.enter(new Visual(905, world));

    scene.setVisualSelected(900u);
    drain();

    EXPECT_THAT(scene.getSelectedVisuals(), ElementsAre(905));
}

TEST_F(SceneSelection, OperationsThatHoldEachOtherAreEnteredOnceAndTheirMembersAppendedAsNamed)
{
    const auto first = std::make_shared<task::Operation>(910, "first");
    const auto second = std::make_shared<task::Operation>(911, "second");
    for (const unsigned id : {912u, 911u, 912u, 910u})
        first->addMember(id);
    for (const unsigned id : {910u, 912u})
        second->addMember(id);
    sdf::SdfManager::inst().add(first);
    sdf::SdfManager::inst().add(second);
    sdf::SdfManager::inst().add(std::make_shared<sdf::SdfNode>(sdf::ModelType::Part, 912, "part"));
    SceneCore::Get()->visuals.enter(new Visual(912, world));

    scene.setVisualSelected(910u);
    drain();

    EXPECT_THAT(scene.getSelectedVisuals(), ElementsAre(912, 912, 912));
}

TEST_F(SceneSelection, TaskWithAVisualIsSelectedItself)
{
    const auto program = std::make_shared<task::Task>(900, "program");
    program->setManipulatorId(907);
    sdf::SdfManager::inst().add(program);
    for (const unsigned id : {900u, 907u})
        SceneCore::Get()->visuals.enter(new Visual(id, world));

    scene.setVisualSelected(900u);
    drain();

    EXPECT_THAT(scene.getSelectedVisuals(), ElementsAre(900));
}

// Clouds

TEST_F(SceneSelection, PointsOfCloudsReplaceWhatWasSelected)
{
    SolidVisual* solid = addSolid();
    PointCloudVisual* one = addCloud();
    PointCloudVisual* two = addCloud();
    scene.setVisualSelected(solid);
    scene.selectBaseFace(solid->getId(), 1);
    drain();

    scene.selectPointCloud({{one->getId(), {2, 0}}, {two->getId(), {1}}});
    EXPECT_FALSE(scene.faceIsSelected(solid, 1)) << "at once";
    EXPECT_THAT(scene.getSelectedVisuals(), ElementsAre(solid->getId())) << "posted";
    drain();

    EXPECT_THAT(scene.getSelectedVisuals(), UnorderedElementsAre(one->getId(), two->getId()));
    EXPECT_THAT(one->getSelectedIndices(), ElementsAre(2, 0));
    EXPECT_THAT(two->getSelectedIndices(), ElementsAre(1));
}

TEST_F(SceneSelection, PointsOfACloudEndTheHighlights)
{
    SolidVisual* solid = addSolid();
    scene.setVisualHighlighted(solid);

    scene.selectPointCloud({});

    EXPECT_EQ(postsOf([&] { scene.clearHighlightedBody(); }), 0);
    scene.highlightFace(solid, 1);
    scene.selectPointCloud({});
    EXPECT_EQ(postsOf([&] { scene.clearHighlightedFace(); }), 0);
    scene.highlightEdge(solid, anEdgeOf(*solid));
    scene.selectPointCloud({});
    EXPECT_EQ(postsOf([&] { scene.clearHighlightedEdge(); }), 0);
}

TEST_F(SceneSelection, NoCloudsClearTheSelection)
{
    SolidVisual* solid = addSolid();
    PointCloudVisual* cloud = addCloud();
    scene.selectPointCloud({{cloud->getId(), {1, 2}}});
    scene.selectBaseFace(solid->getId(), 1);
    drain();

    scene.selectPointCloud({});
    drain();

    EXPECT_THAT(scene.getSelectedVisuals(), IsEmpty());
    EXPECT_THAT(cloud->getSelectedIndices(), IsEmpty());
    EXPECT_FALSE(scene.faceIsSelected(solid, 1));
}

TEST_F(SceneSelection, CloudWithoutPointsIsSelectedAllTheSame)
{
    PointCloudVisual* cloud = addCloud();

    scene.selectPointCloud({{cloud->getId(), {}}});
    drain();

    EXPECT_THAT(scene.getSelectedVisuals(), ElementsAre(cloud->getId()));
    EXPECT_THAT(cloud->getSelectedIndices(), IsEmpty());
}

TEST_F(SceneSelection, CloudSelectedAgainStandsOnceAndLeavesTheListAtOnce)
{
    PointCloudVisual* cloud = addCloud();
    scene.selectPointCloud({{cloud->getId(), {1, 2}}});
    drain();

    scene.selectPointCloud({{cloud->getId(), {3}}});
    EXPECT_THAT(scene.getSelectedVisuals(), IsEmpty());
    drain();

    EXPECT_THAT(scene.getSelectedVisuals(), ElementsAre(cloud->getId()));
    EXPECT_THAT(cloud->getSelectedIndices(), ElementsAre(3));
}

TEST_F(SceneSelection, CloudThatWasSelectedAsAWholeKeepsThatLayerUntilAllIsCleared)
{
    PointCloudVisual* cloud = addCloud();
    scene.setVisualSelected(cloud);
    drain();
    const VisualStateManager& states = *Scene::GetStateManager();

    scene.selectPointCloud({{cloud->getId(), {3}}});
    drain();
    EXPECT_THAT(cloud->getSelectedIndices(), ElementsAre(3));
    EXPECT_TRUE(states.hasLayer(cloud, VisualStateLayer::Selected));

    scene.clearSelections();
    drain();
    EXPECT_THAT(cloud->getSelectedIndices(), IsEmpty());
    EXPECT_FALSE(states.hasLayer(cloud, VisualStateLayer::Selected));
}

TEST_F(SceneSelection, CloudSelectedTwiceInOneBatchStandsOnce)
{
    PointCloudVisual* cloud = addCloud();

    scene.selectPointCloud({{cloud->getId(), {1, 2}}});
    scene.selectPointCloud({{cloud->getId(), {3}}});
    drain();

    EXPECT_THAT(scene.getSelectedVisuals(), ElementsAre(cloud->getId()));
    EXPECT_THAT(cloud->getSelectedIndices(), ElementsAre(3));
}

TEST_F(SceneSelection, CloudThatIsNotNamedAgainLosesItsPoints)
{
    PointCloudVisual* one = addCloud();
    PointCloudVisual* two = addCloud();
    scene.selectPointCloud({{one->getId(), {1}}});
    drain();

    scene.selectPointCloud({{two->getId(), {2}}});
    drain();

    EXPECT_THAT(one->getSelectedIndices(), IsEmpty());
    EXPECT_THAT(scene.getSelectedVisuals(), ElementsAre(two->getId()));
}

TEST_F(SceneSelection, CloudWhoseNewPointsWentWithAFailedBatchIsClearedWithAllElse)
{
    PointCloudVisual* cloud = addCloud();
    scene.selectPointCloud({{cloud->getId(), {0, 1}}});
    drain();
    scene.addRenderTask([] { throw std::runtime_error("broken"); }, 0);
    scene.selectPointCloud({{cloud->getId(), {2}}});
    EXPECT_THROW(drain(), std::runtime_error);

    scene.clearSelections();
    drain();

    EXPECT_THAT(cloud->getSelectedIndices(), IsEmpty());
    EXPECT_THAT(scene.getSelectedVisuals(), IsEmpty());
}

TEST_F(SceneSelection, UnknownCloudFailsOnTheRenderThreadAfterTheClearing)
{
    SolidVisual* solid = addSolid();
    scene.setVisualSelected(solid);
    drain();

    scene.selectPointCloud({{4711, {1}}});

    EXPECT_THAT([this] { drain(); }, ThrowsMessage<std::out_of_range>(StrEq("invalid unordered_map<K, T> key")));
    EXPECT_THAT(scene.getSelectedVisuals(), IsEmpty());
}

// Visuals that are removed ahead of what was asked of them

struct LateCase {
    const char* name;
    void (*ask)(Scene& scene, SolidVisual* solid);
};

class LateSelection : public SceneSelection, public testing::WithParamInterface<LateCase> {};

TEST_P(LateSelection, OfAVisualThatIsRemovedFirstIsPassedOver)
{
    SolidVisual* solid = addSolid();
    const unsigned id = solid->getId();
    scene.selectBaseFace(id, 4);
    scene.setVisualHighlighted(solid);
    drain();

    scene.removeVisual(id);
    GetParam().ask(scene, solid);

    EXPECT_NO_THROW(drain());
    EXPECT_FALSE(Scene::HasVisual(id));
    EXPECT_THAT(Scene::GetStateManager()->visualsWithLayers(), IsEmpty());
    EXPECT_EQ(postsOf([&] { // nothing points to the dead
                  scene.clearSelectedFaces();
                  scene.clearHighlightedVisual();
              }),
              0);
}

INSTANTIATE_TEST_SUITE_P(
    Table, LateSelection,
    testing::Values(LateCase{"BaseFace", [](Scene& s, SolidVisual* v) { s.selectBaseFace(v->getId(), 1); }},
                    LateCase{"FaceCleared", [](Scene& s, SolidVisual* v) { s.clearSelectedFace(v->getId(), 4); }},
                    LateCase{"FacesCleared", [](Scene& s, SolidVisual*) { s.clearSelectedFaces(); }},
                    LateCase{"FaceHighlighted", [](Scene& s, SolidVisual* v) { s.highlightFace(v, 2); }},
                    LateCase{"FaceHighlightCleared",
                             [](Scene& s, SolidVisual* v) {
                                 s.highlightFace(v, 2);
                                 s.clearHighlightedFace();
                             }},
                    LateCase{"EdgeHighlighted",
                             [](Scene& s, SolidVisual* v) {
                                 s.highlightEdge(v,
                                                 TopoDS::Edge(TopExp_Explorer(v->getShape(), TopAbs_EDGE).Current()));
                             }},
                    LateCase{"Highlight",
                             [](Scene& s, SolidVisual* v) {
                                 s.clearHighlightedBody();
                                 s.setVisualHighlighted(v);
                             }},
                    LateCase{"HighlightCleared", [](Scene& s, SolidVisual*) { s.clearHighlightedBody(); }},
                    LateCase{"Selection", [](Scene& s, SolidVisual* v) { s.setVisualSelected(v); }},
                    LateCase{"AllCleared", [](Scene& s, SolidVisual*) { s.clearSelections(); }}),
    [](const auto& info) { return std::string(info.param.name); });

} // namespace
} // namespace vrk::visual
