#include "platform/layout/Group.h"
#include "platform/layout/PointCloud.h"
#include "platform/sdf/SdfManager.h"
#include "platform/smart/SmartComponent.h"
#include "platform/station/BareShapes.h"
#include "platform/station/Import.h"
#include "platform/task/Instruction.h"
#include "platform/task/Path.h"
#include "scene/core/SceneCore.h"
#include "selection/VisualSelection.h"
#include "station/support/TestCell.h"
#include "station/support/TestStation.h"
#include "support/ThrowsExactly.h"
#include "task/MoveInstructionVisual.h"
#include "task/PathLineVisual.h"
#include "task/PathVisual.h"
#include "visual/FacetVisual.h"
#include "visual/PointCloudVisual.h"
#include "visual/ScanClouds.h"

#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <TopoDS_Shape.hxx>

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <mutex>
#include <random>

namespace vrk::visual {
namespace {

using layout::Layout;

rob::Posed at(double x, double y, double z)
{
    return rob::Posed(rob::Posd(x, y, z));
}

class SyncStation : public test::SceneFixture {
protected:
    void sync()
    {
        Scene::SyncStation();
        drain();
    }
    static Visual* visualOfId(unsigned id) { return Scene::HasVisual(id) ? Scene::GetVisual(id) : nullptr; }
    static Visual* visualOf(const sdf::SdfObject& object) { return visualOfId(object.getId()); }
    static void changeModel(const std::function<void()>& change)
    {
        const std::unique_lock lock(sdf::SdfManager::inst().mutex());
        change();
    }
    /// 0 for one that has a transient id, which another run would not have.
    static unsigned ownerOf(const Visual& visual)
    {
        const unsigned owner = visual.getParent()->getId();
        return owner < sdf::SdfManager::stationId ? owner : 0;
    }
    /// One line for each visual of a model's id: what it is, what it hangs on, where, and whether it is seen.
    static std::map<unsigned, std::string> view()
    {
        std::map<unsigned, std::string> lines;
        for (const auto& [id, visual] : SceneCore::Get()->visuals.all()) {
            if (id == 0 || id >= sdf::SdfManager::stationId)
                continue;
            const rob::Posef pose = visual->getPose();
            const auto rounded = [](float value) { return std::lround(value * 1000); };
            const auto* facets = dynamic_cast<const FacetVisual*>(visual);
            const auto* path = dynamic_cast<const PathVisual*>(visual);
            lines[id] = fmt::format("type {} on {} at {} {} {} turned {} {} {} attached {} seen {} mesh {} lines {}",
                                    static_cast<int>(visual->getType()), ownerOf(*visual), rounded(pose.position.x),
                                    rounded(pose.position.y), rounded(pose.position.z), rounded(pose.orientation.x),
                                    rounded(pose.orientation.y), rounded(pose.orientation.z), visual->isAttached(),
                                    visual->isVisible(), facets ? facets->getMeshName() : "",
                                    path ? path->getLines().size() : 0);
        }
        return lines;
    }
    /// Those lines in which two views differ.
    static std::vector<std::string> differences(const std::map<unsigned, std::string>& a,
                                                const std::map<unsigned, std::string>& b)
    {
        std::vector<std::string> lines;
        for (const auto& [id, line] : a)
            if (!b.contains(id) || b.at(id) != line)
                lines.push_back(fmt::format("{}: {} instead of {}", id, line, b.contains(id) ? b.at(id) : "nothing"));
        for (const auto& [id, line] : b)
            if (!a.contains(id))
                lines.push_back(fmt::format("{}: nothing instead of {}", id, line));
        return lines;
    }
    static std::map<unsigned, const Visual*> visuals()
    {
        std::map<unsigned, const Visual*> all;
        for (const auto& [id, visual] : SceneCore::Get()->visuals.all())
            all[id] = visual;
        return all;
    }
    void emptyScene()
    {
        for (std::vector<Visual*> added = addedToWorld(); !added.empty(); added = addedToWorld())
            scene.deleteVisual(added.front());
    }
    std::shared_ptr<layout::Part> addPart(const std::string& name, const rob::Posd& position = {})
    {
        auto part = test::makePart(name, position);
        Layout::inst().addPart(part);
        return part;
    }
};

/// A program of three moves in one work object.
struct SyncedProgram {
    SyncedProgram()
    {
        program->addDataItem(workObject);
        for (int i = 0; i < 3; ++i) {
            targets.push_back(std::make_shared<task::RobTargetDataItem>(test::newId(), "p" + std::to_string(i)));
            targets.back()->setPose(at(100.0 * i, 0, 50));
            program->addDataItem(targets.back());
            addMove(targets.back());
        }
        program->addPath(path);
        Layout::inst().addTask(program);
    }
    std::shared_ptr<task::MoveInst> addMove(const std::shared_ptr<task::RobTargetDataItem>& target)
    {
        auto move = std::make_shared<task::MoveInst>(test::newId(), "move", task::Motion::Linear, target);
        move->setWObjItem(workObject);
        path->addInstruction(move);
        return move;
    }

    std::shared_ptr<task::Task> program = std::make_shared<task::Task>(test::newId(), "task");
    std::shared_ptr<task::Path> path = std::make_shared<task::Path>(test::newId(), "main");
    std::shared_ptr<task::WObjDataItem> workObject = std::make_shared<task::WObjDataItem>(test::newId(), "wobj");
    std::vector<std::shared_ptr<task::RobTargetDataItem>> targets;
};

TEST_F(SyncStation, EmptyViewShowsWhatALoadWouldShow)
{
    const test::TestCell cell = test::addCell();
    const SyncedProgram program;
    test::addModelCloud({{1, 2, 3}});
    Layout::inst().addFrame(std::make_shared<layout::Frame>(test::newId(), "frame", at(1, 2, 3)));
    Layout::inst().setHidden(cell.crate->getId(), true);
    Scene::LoadStation();
    drain();
    const auto loaded = view();
    emptyScene();

    sync();

    EXPECT_GT(loaded.size(), 20u);
    EXPECT_THAT(differences(view(), loaded), testing::IsEmpty());
}

TEST_F(SyncStation, WhatDidNotChangeIsNotTouched)
{
    test::addCell();
    const SyncedProgram program;
    test::addModelCloud({{1, 2, 3}});
    Scene::LoadStation();
    drain();
    const auto before = visuals();
    const PathLineVisual* const line = dynamic_cast<PathVisual&>(*visualOf(*program.path)).getLines().front();

    sync();
    sync();

    EXPECT_EQ(visuals(), before);
    EXPECT_EQ(dynamic_cast<PathVisual&>(*visualOf(*program.path)).getLines().front(), line);
}

TEST_F(SyncStation, AddedRemovedAndMovedThingsFollowTheModel)
{
    const auto stays = addPart("stays"), goes = addPart("goes");
    sync();
    const Visual* const kept = visualOf(*stays);
    const unsigned bodyOfGone = goes->getBodies()[0]->getId();

    const auto comes = addPart("comes");
    Layout::inst().remove(goes->getId());
    changeModel([&] { stays->setPose(at(7, 8, 9)); });
    sync();

    EXPECT_NE(visualOf(*comes), nullptr);
    EXPECT_EQ(visualOf(*goes), nullptr);
    EXPECT_EQ(visualOfId(bodyOfGone), nullptr);
    EXPECT_EQ(visualOf(*stays), kept);
    EXPECT_EQ(kept->getPosition(), rob::Posf(7, 8, 9));
}

TEST_F(SyncStation, PoseThatOnlyTheViewWasToldOfGivesWayToTheModels)
{
    const auto part = addPart("part", {1, 0, 0});
    sync();
    scene.setVisualPose(part->getId(), rob::Posef(rob::Posf(50, 0, 0)));

    sync();

    EXPECT_EQ(visualOf(*part)->getPosition(), rob::Posf(1, 0, 0));
}

TEST_F(SyncStation, BareShapeAddedToAPartOfTheStationIsShownAndPicked)
{
    const auto part = addPart("part");
    sync();
    const auto body = station::AddShape(*part, "ball", BRepPrimAPI_MakeSphere(5).Shape(), "#FF0000");

    sync();

    const auto* ball = dynamic_cast<const FacetVisual*>(visualOf(*body));
    ASSERT_NE(ball, nullptr);
    EXPECT_EQ(ball->getParent(), visualOf(*part));
    EXPECT_NE(ball->getEntity(), nullptr);
}

TEST_F(SyncStation, ShapeWithoutUriAndTrianglesIsMeshedAndDrawn)
{
    auto part = std::make_shared<layout::Part>(test::newId(), "bare");
    part->addBody("block")->setShape(BRepPrimAPI_MakeBox(3, 4, 5).Shape());
    Layout::inst().addPart(part);
    scene.addPart(part.get());
    drain();

    const auto& block = dynamic_cast<const FacetVisual&>(*visualOf(*part->getBodies()[0]));

    EXPECT_NE(block.getEntity(), nullptr);
    EXPECT_EQ(part->getBodies()[0]->getGeometryUri(), fmt::format("memory#{}", block.getId()));
}

TEST_F(SyncStation, ExchangedShapeIsDrawnAnewAndStaysHiddenSelectedAndCarrying)
{
    const auto part = addPart("part"), carried = addPart("carried");
    const unsigned body = part->getBodies()[0]->getId();
    Layout::inst().addAttachment(carried->getId(), body, at(1, 1, 1));
    sync();
    scene.setVisualSelected(part->getId());
    scene.setVisualVisible(body, false);
    drain();
    const std::string before = dynamic_cast<const FacetVisual&>(*visualOfId(body)).getMeshName();
    changeModel([&] { part->getBodies()[0]->setShape(BRepPrimAPI_MakeBox(1, 2, 3).Shape()); });

    sync();

    const auto& now = dynamic_cast<const FacetVisual&>(*visualOfId(body));
    EXPECT_NE(now.getMeshName(), before);
    EXPECT_FALSE(now.isVisible());
    EXPECT_FALSE(selection::VisualSelection::Get()->isEnabled(visualOfId(body))) << "what is hidden is not picked";
    EXPECT_TRUE(scene.isSelected(&now));
    EXPECT_EQ(scene.getSelectedVisuals(), std::vector<unsigned>{part->getId()});
    EXPECT_EQ(visualOf(*carried)->getParent(), &now);
    EXPECT_EQ(visualOf(*carried)->getPosition(), rob::Posf(1, 1, 1));
}

TEST_F(SyncStation, ExchangedBodyKeepsItsEdgesWhereTheseAloneAreShown)
{
    const auto part = addPart("part");
    sync();
    scene.setDisplayMode(Scene::DisplayMode::Edges);
    drain();
    changeModel([&] { part->getBodies()[0]->setShape(BRepPrimAPI_MakeBox(1, 2, 3).Shape()); });

    sync();

    Visual* body = visualOf(*part->getBodies()[0]);
    EXPECT_FALSE(body->isVisible());
    EXPECT_TRUE(std::ranges::any_of(body->getChildren(), [](const Visual* child) {
        return child->getType() == VisualType::WireFrame && child->isVisible();
    }));
    EXPECT_TRUE(selection::VisualSelection::Get()->isEnabled(body));
    scene.setDisplayMode(Scene::DisplayMode::ShadedWithEdges);
    drain();
}

TEST_F(SyncStation, ChangedColourIsShownWithoutANewVisual)
{
    const auto part = addPart("part");
    sync();
    const Visual* const body = visualOf(*part->getBodies()[0]);
    const BodySource before = dynamic_cast<const BodyVisual&>(*body).getSource();
    changeModel([&] { part->getBodies()[0]->setColor("#00FF00"); });

    sync();

    EXPECT_EQ(visualOf(*part->getBodies()[0]), body);
    EXPECT_NE(dynamic_cast<const BodyVisual&>(*body).getSource().colors, before.colors);
}

TEST_F(SyncStation, TwoThingsThatCarryEachOtherTheOtherWayRoundChangePlaces)
{
    const auto first = addPart("first"), second = addPart("second");
    Layout::inst().addAttachment(second->getId(), first->getId(), at(5, 0, 0));
    sync();
    ASSERT_EQ(visualOf(*second)->getParent(), visualOf(*first));
    Layout::inst().removeAttachment(second->getId());
    Layout::inst().addAttachment(first->getId(), second->getId(), at(6, 0, 0));

    sync();

    EXPECT_EQ(visualOf(*second)->getParent(), world);
    EXPECT_FALSE(visualOf(*second)->isAttached());
    EXPECT_EQ(visualOf(*first)->getParent(), visualOf(*second));
    EXPECT_TRUE(visualOf(*first)->isAttached());
    EXPECT_EQ(visualOf(*first)->getPosition(), rob::Posf(6, 0, 0));
}

TEST_F(SyncStation, RemovedCarrierLeavesWhatItCarriedOnTheWorld)
{
    const auto carrier = addPart("carrier"), carried = addPart("carried", {3, 0, 0});
    Layout::inst().addAttachment(carried->getId(), carrier->getId(), at(5, 0, 0));
    sync();
    const Visual* const kept = visualOf(*carried);

    Layout::inst().remove(carrier->getId());
    sync();

    EXPECT_EQ(visualOf(*carried), kept);
    EXPECT_EQ(kept->getParent(), world);
    EXPECT_FALSE(kept->isAttached());
    EXPECT_EQ(kept->getPosition(), rob::Posf(3, 0, 0));
}

TEST_F(SyncStation, HiddenInTheModelIsHiddenAndWhatIsShownAgainIsShown)
{
    const auto part = addPart("part"), other = addPart("other"), byHand = addPart("by hand");
    auto group = std::make_shared<layout::Group>(sdf::ModelType::GroupFirst, test::newId(), "group");
    group->addMember(other->getId());
    Layout::inst().addGroup(group);
    sync();
    scene.setVisualVisible(byHand->getId(), false);
    Layout::inst().setHidden(part->getId(), true);
    Layout::inst().setHidden(group->getId(), true);

    sync();
    EXPECT_FALSE(visualOf(*part)->isVisible());
    EXPECT_FALSE(visualOf(*other)->isVisible());
    Layout::inst().setHidden(part->getId(), false);
    Layout::inst().setHidden(group->getId(), false);
    sync();

    EXPECT_TRUE(visualOf(*part)->isVisible());
    EXPECT_TRUE(visualOf(*other)->isVisible());
    EXPECT_FALSE(visualOf(*byHand)->isVisible()) << "hidden by the application alone";
}

TEST_F(SyncStation, LinksAndFramesFollowTheirMechanism)
{
    const test::TestCell cell = test::addCell();
    sync();
    changeModel([&] { cell.gripper->getFrames()[0]->setPose(at(1, 2, 3)); });
    std::vector<double> joints = cell.arm->getJointValues();
    joints[0] = 0.5;
    cell.arm->setJointValues(joints);

    sync();

    for (const auto& link : cell.arm->getLinks())
        EXPECT_NEAR(visualOf(*link)->getPose().orientation.w, static_cast<float>(link->getPose().orientation.w), 1e-5f);
    EXPECT_EQ(visualOf(*cell.gripper->getFrames()[0])->getPosition(), rob::Posf(1, 2, 3));
}

TEST_F(SyncStation, TargetsAndLinesOfAProgramFollowTheModel)
{
    SyncedProgram program;
    sync();
    const Visual* const firstMove = visualOf(*program.path->getMoveInstructions()[0]);
    const auto& path = dynamic_cast<const PathVisual&>(*visualOf(*program.path));
    const std::uint64_t ways = path.getHashOfWays();
    changeModel([&] {
        program.targets[1]->setPose(at(0, 300, 0));
        program.workObject->setPose(at(1000, 0, 0));
    });

    sync();

    EXPECT_EQ(visualOf(*program.path->getMoveInstructions()[0]), firstMove) << "no new visuals for a moved target";
    EXPECT_EQ(dynamic_cast<const MoveInstructionVisual&>(*visualOf(*program.path->getMoveInstructions()[1]))
                  .getTargetInWorld(),
              rob::Posf(1000, 300, 0));
    EXPECT_NE(path.getHashOfWays(), ways) << "lines drawn anew";
}

TEST_F(SyncStation, MovesComeAndGoWithTheModel)
{
    SyncedProgram program;
    sync();
    const unsigned removed = program.path->getMoveInstructions()[0]->getId();
    const auto added =
        std::make_shared<task::MoveInst>(test::newId(), "late", task::Motion::Linear, program.targets[0]);
    changeModel([&] {
        program.path->removeInstruction(removed);
        sdf::SdfManager::inst().remove(removed);
        added->setWObjItem(program.workObject);
        program.path->addInstruction(added);
        sdf::SdfManager::inst().add(added);
    });

    sync();

    EXPECT_EQ(visualOfId(removed), nullptr);
    ASSERT_NE(visualOf(*added), nullptr);
    EXPECT_EQ(visualOf(*added)->getParent(), visualOf(*program.workObject));
}

TEST_F(SyncStation, RemovedProgramThatIsSelectedGoesWithAllItsVisuals)
{
    unsigned path = 0, move = 0;
    {
        SyncedProgram program;
        sync();
        path = program.path->getId();
        move = program.path->getMoveInstructions()[1]->getId();
        scene.setVisualSelected(path);
        drain();
        Layout::inst().remove(program.program->getId());
    } // the model's objects die here

    sync();

    EXPECT_EQ(visualOfId(path), nullptr);
    EXPECT_EQ(visualOfId(move), nullptr);
}

TEST_F(SyncStation, OtherObjectOfTheSameIdIsShownInPlaceOfTheFirst)
{
    const auto part = addPart("part");
    sync();
    const unsigned id = part->getId();
    Layout::inst().remove(id);
    auto cloud = std::make_shared<layout::PointCloud>(id, "cloud", layout::PointCloud::Points{{1, 2, 3}});
    Layout::inst().addPointCloud(cloud);

    sync();

    ASSERT_NE(visualOfId(id), nullptr);
    EXPECT_EQ(visualOfId(id)->getType(), VisualType::PointCloud);
}

TEST_F(SyncStation, BodyThatCannotBeShownIsNamedAndTheRestIsShown)
{
    const auto bad = std::make_shared<layout::Part>(test::newId(), "bad");
    const std::shared_ptr<layout::Body> body = bad->addBody("lid");
    body->setGeometry("/nowhere/lid.stl", "stl");
    const std::shared_ptr<layout::Body> sound = bad->addBody("pot");
    sound->setShape(BRepPrimAPI_MakeBox(1, 2, 3).Shape());
    Layout::inst().addPart(bad);
    const auto good = addPart("good");
    Scene::SyncStation();

    try {
        drain();
        ADD_FAILURE() << "nothing was told";
    } catch (const std::runtime_error& failure) {
        EXPECT_THAT(failure.what(),
                    testing::StartsWith(
                        fmt::format("SyncStation: 1 could not be shown, the first is body 'lid' ({}) of 'bad' ({}): ",
                                    body->getId(), bad->getId())));
    }

    EXPECT_NE(visualOf(*sound), nullptr);
    EXPECT_NE(visualOf(*good), nullptr);
    changeModel([&] { body->setGeometry("", ""); });
    changeModel([&] { body->setShape(BRepPrimAPI_MakeBox(1, 2, 3).Shape()); });
    sync();
    EXPECT_NE(visualOf(*body), nullptr) << "mended, it is shown by the next";
}

TEST_F(SyncStation, VisualsOfTheApplicationStay)
{
    const auto part = addPart("part");
    sync();
    auto* own = new Visual("own", visualOf(*part)); // of a transient id
    SceneCore::Get()->visuals.enter(own);
    const unsigned id = own->getId();

    sync();

    EXPECT_EQ(visualOfId(id), own);
}

/// Counts how often it is built; its visual enters no registry.
class CountedComponent : public smartcomp::SmartComponent {
public:
    using SmartComponent::SmartComponent;
    bool hasVisual() const override { return true; }
    void buildVisual(Visual* parent) override
    {
        ++count;
        new Visual(getId(), parent);
    }
    int count = 0;
};

TEST_F(SyncStation, ComponentIsBuiltOnce)
{
    const auto component = std::make_shared<CountedComponent>(test::newId(), "marker");
    Layout::inst().addSmartComponent(component);

    sync();
    sync();

    EXPECT_EQ(component->count, 1);
}

TEST_F(SyncStation, HiddenPointsOfACloudFollowTheModel)
{
    test::addModelCloud({{1, 2, 3}, {4, 5, 6}});
    const auto cloud = Layout::inst().pointclouds.front();
    sync();
    changeModel([&] { cloud->setHiddenPoints(layout::PointSet(std::array{1u})); });

    sync();

    EXPECT_EQ(dynamic_cast<const PointCloudVisual&>(*visualOf(*cloud)).getHiddenPoints(), cloud->getHiddenPoints());
}

/// Any changes of a model, in any order: after each sync the view is the one that a load would make.
class RandomSync : public SyncStation {
protected:
    unsigned below(std::size_t n) { return static_cast<unsigned>(random() % n); }
    rob::Posed anywhere() { return at(below(500), below(500), below(500)); }
    unsigned anyThing()
    {
        const Layout& station = Layout::inst();
        std::vector<unsigned> ids;
        for (const auto& part : station.parts)
            if (part->isStandalone())
                ids.push_back(part->getId());
        for (const auto& assembly : station.assemblies)
            ids.push_back(assembly->getId());
        for (const auto& tool : station.tools)
            ids.push_back(tool->getId());
        return ids.empty() ? 0 : ids[below(ids.size())];
    }
    bool isAbove(unsigned id, unsigned below) const
    {
        for (unsigned at = below; at != 0;) {
            if (at == id)
                return true;
            const auto& all = Layout::inst().attachments;
            const auto found = std::ranges::find(all, at, &layout::Attachment::child);
            at = found == all.end() ? 0 : found->parent;
        }
        return false;
    }
    void addThing()
    {
        switch (below(4)) {
        case 0:
            Layout::inst().addAssembly(test::makeAssembly("assembly", 2));
            break;
        case 1:
            Layout::inst().addTool(test::makeTool());
            break;
        case 2:
            Layout::inst().addManipulator(test::makeArm());
            break;
        default:
            addPart("part", {static_cast<double>(below(100)), 0, 0});
            break;
        }
    }
    void exchangeShape(layout::Part& part)
    {
        const TopoDS_Shape other = BRepPrimAPI_MakeBox(1 + below(9), 1 + below(9), 1).Shape();
        station::meshShape(other);
        changeModel([&] { part.getBodies()[0]->setShape(other); });
        station::AddShape(part, "more", BRepPrimAPI_MakeBox(2, 2, 2).Shape(), "#FF0000");
    }
    void change()
    {
        Layout& station = Layout::inst();
        const unsigned thing = anyThing();
        if (thing == 0 || below(4) == 0) {
            addThing();
            return;
        }
        switch (below(6)) {
        case 0:
            station.remove(thing);
            break;
        case 1:
            changeModel([&] { dynamic_cast<sdf::SdfNode&>(*sdf::SdfManager::inst().find(thing)).setPose(anywhere()); });
            break;
        case 2:
            station.setHidden(thing, below(2) == 0);
            break;
        case 3:
            if (const unsigned carrier = anyThing(); !isAbove(thing, carrier))
                station.addAttachment(thing, carrier, anywhere());
            break;
        case 4:
            station.removeAttachment(thing);
            break;
        default:
            if (const auto part = std::dynamic_pointer_cast<layout::Part>(sdf::Share(thing)))
                exchangeShape(*part);
            break;
        }
    }

    std::mt19937 random{7};
};

TEST_F(RandomSync, ViewIsTheOneThatALoadWouldMake)
{
    for (int round = 0; round < 60; ++round) {
        for (unsigned changes = below(6) + 1; changes > 0; --changes)
            change();
        sync();
        if (round % 5 != 4)
            continue;
        const auto synced = view();
        emptyScene();
        Scene::LoadStation();
        drain();
        ASSERT_THAT(differences(synced, view()), testing::IsEmpty()) << "round " << round;
    }
    EXPECT_GT(view().size(), 30u);
}

} // namespace
} // namespace vrk::visual
