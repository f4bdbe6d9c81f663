#include "edit/History.h"

#include "demo/DemoParts.h"
#include "demo/DemoStation.h"
#include "edit/AddThings.h"
#include "edit/Attaching.h"
#include "edit/CloudPoints.h"
#include "edit/HideThings.h"
#include "edit/ModelPlaces.h"
#include "edit/MoveJoints.h"
#include "edit/MoveThings.h"
#include "edit/PaintBodies.h"
#include "edit/RemoveThings.h"
#include "edit/RenameThing.h"
#include "edit/ShowReach.h"
#include "files/Station.h"

#include "support/TempFolder.h"

#include "platform/layout/Assembly.h"
#include "platform/layout/Body.h"
#include "platform/layout/Frame.h"
#include "platform/layout/Group.h"
#include "platform/layout/Layout.h"
#include "platform/layout/Mechanism.h"
#include "platform/layout/Part.h"
#include "platform/layout/PointCloud.h"
#include "platform/sdf/SdfManager.h"
#include "platform/station/ImportCloud.h"
#include "platform/station/StationFile.h"
#include "platform/task/DataItem.h"
#include "platform/task/Instruction.h"
#include "platform/task/Path.h"
#include "platform/task/Task.h"

#include <gmock/gmock.h>

#include <BRepPrimAPI_MakeBox.hxx>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <fstream>
#include <map>
#include <random>
#include <sstream>

namespace vrkview::test {
namespace {

using demo::single;
using vrk::layout::Layout;
using vrk::rob::Posd;
using vrk::rob::Posed;

/// The demo station in the model alone, with a group, an operation and frames that lie on its things.
class EditHistoryTest : public testing::Test {
protected:
    void SetUp() override
    {
        static const Station cell = demoStation(); // which takes its time; each test leaves it as it was
        Layout& layout = Layout::inst();
        layout.replace(*cell.whole);
        for (const auto& part : cell.parts)
            layout.addPart(part);
        for (const auto& cloud : cell.clouds)
            layout.addPointCloud(cloud);
        auto group = std::make_shared<vrk::layout::Group>(sdf::ModelType::GroupFirst, newId(), "Furniture");
        auto operation = std::make_shared<vrk::task::Operation>(newId(), "Measuring");
        for (const unsigned id : {thing("Measuring bench"), thing("Pallet"), thing("Controller")}) {
            group->addMember(id);
            operation->addMember(id);
        }
        layout.addGroup(group);
        layout.addOperation(operation);
        for (const unsigned id : {thing("Pallet"), thing("Controller"), thing("Positioner")}) {
            auto frame = std::make_shared<vrk::layout::Frame>(newId(), "corner", Posed(Posd(1, 2, 3)));
            frame->setParentId(id);
            layout.addFrame(frame);
        }
    }
    void TearDown() override
    {
        while (history.canUndo())
            history.undo();
        Layout::inst().clear();
    }

    static unsigned newId() { return demo::newId(); }
    static unsigned thing(const std::string& name)
    {
        for (const auto& object : Layout::inst().objects())
            if (object->getName() == name)
                return object->getId();
        ADD_FAILURE() << "nothing is called " << name;
        return 0;
    }
    static std::shared_ptr<vrk::layout::Mechanism> positioner() { return Layout::inst().devices.front(); }
    std::string savedBytes()
    {
        const std::filesystem::path file = folder.path() / "cell.station.json";
        vrk::station::SaveStationFile(file);
        std::ostringstream bytes;
        bytes << std::ifstream(file, std::ios::binary).rdbuf();
        return bytes.str();
    }
    static vrk::rob::Posd placeOf(unsigned id) { return worldPoseOfThing(id).position; }

    vrk::test::TempFolder folder;
    History history;
};

std::vector<unsigned> thingsOfTheirOwn()
{
    std::vector<unsigned> ids;
    for (const auto& object : Layout::inst().objects())
        if (isThingOfItsOwn(object->getId()))
            ids.push_back(object->getId());
    return ids;
}

std::string textOf(const Posed& pose)
{
    const auto& [p, o] = std::pair(pose.position, pose.orientation);
    return fmt::format("[{} {} {} {} {} {} {}]", p.x, p.y, p.z, o.w, o.x, o.y, o.z);
}

constexpr std::size_t fewPoints = 100; // of a cloud that is looked at point by point

std::string textOf(const vrk::layout::PointCloud& cloud)
{
    std::string text = fmt::format(
        " {} points, hidden {}", cloud.getPoints().size(),
        cloud.getHiddenPoints() ? fmt::to_string(fmt::join(cloud.getHiddenPoints()->numbers(), ",")) : "none");
    if (cloud.getPoints().size() <= fewPoints)
        for (const vrk::rob::Posf& p : cloud.getPoints())
            text += fmt::format(" ({} {} {})", p.x, p.y, p.z);
    return text;
}

/// What the changes may touch of the model, in its order: quicker than a file, so that each step can be looked at. One
/// that restores a whole list would hide from the files what others before it left out of order.
std::string fingerprint()
{
    const Layout& layout = Layout::inst();
    std::string text;
    for (const auto& object : layout.objects()) {
        text += fmt::format("{} {} on {} {}", object->getId(), object->getName(), object->getParentId(),
                            textOf(object->getPose()));
        if (const auto* body = dynamic_cast<const vrk::layout::Body*>(object.get()))
            text += PaintBodies::ColorOf({body->getId()});
        if (const auto* cloud = dynamic_cast<const vrk::layout::PointCloud*>(object.get()))
            text += textOf(*cloud);
        if (const auto* group = dynamic_cast<const vrk::layout::Group*>(object.get()))
            text += fmt::format("{}", fmt::join(group->getMemberIds(), ","));
        if (const auto* operation = dynamic_cast<const vrk::task::Operation*>(object.get()))
            text += fmt::format("{}", fmt::join(operation->getMemberIds(), ","));
        if (const auto* task = dynamic_cast<const vrk::task::Task*>(object.get()))
            text += fmt::format("{}", task->getManipulatorId());
        text += sdf::SdfManager::inst().find(object->getId()) == object.get() ? "\n" : " is not in the table\n";
    }
    for (const auto& part : layout.parts) // with the members of others
        text += fmt::format("{} ", part->getId());
    for (const auto& attachment : layout.attachments)
        text += fmt::format("\n{} on {} {}", attachment.child, attachment.parent, textOf(attachment.pose));
    return text +
           fmt::format("\nhidden {} reaches {}", fmt::join(layout.visibilities, ","), fmt::join(layout.reaches, ","));
}

/// Changes as a person at the screen might make them, all of them needed.
class RandomChanges {
public:
    /// @param cloudFile  a file that the clouds may come from.
    RandomChanges(unsigned seed, std::filesystem::path cloudFile) : random(seed), cloudFile(std::move(cloudFile)) {}

    std::unique_ptr<Change> next()
    {
        std::unique_ptr<Change> change;
        while (!change || !change->isNeeded())
            change = any();
        return change;
    }

private:
    int below(std::size_t end) { return std::uniform_int_distribution<int>(0, static_cast<int>(end) - 1)(random); }
    double number(double reach) { return std::uniform_real_distribution<double>(-reach, reach)(random); }
    Posed place()
    {
        return {Posd(number(2000), number(2000), number(2000)), vrk::rob::Rotationd(number(3), number(3), number(3))};
    }
    template <typename List>
    auto oneOf(const List& list)
    {
        return list[static_cast<std::size_t>(below(list.size()))];
    }
    unsigned anyThing() { return oneOf(thingsOfTheirOwn()); }
    unsigned anyObject() { return oneOf(Layout::inst().objects())->getId(); }

    std::unique_ptr<Change> any()
    {
        switch (below(13)) {
        case 0:
            return moving();
        case 1:
            return joints();
        case 2:
            return std::make_unique<RenameThing>(anyObject(), "Thing " + std::to_string(below(1000)));
        case 3:
        case 4: {
            const unsigned child = anyThing(), parent = anyObject();
            return AttachThing::IsPossible(child, parent) ? std::make_unique<AttachThing>(child, parent) : nullptr;
        }
        case 5:
            return std::make_unique<DetachThing>(anyThing());
        case 6:
            return hiding();
        case 7:
            return std::make_unique<PaintBodies>(std::vector{anyThing()},
                                                 oneOf(std::vector<std::string>{"#ED1C24", "#10C279", "#0D8DDF"}));
        case 8:
            return std::make_unique<AddThings>(something());
        case 9:
        case 10:
            return ofPoints();
        case 11: { // of what is no robot it would change nothing
            const auto& robots = Layout::inst().manipulators;
            return std::make_unique<ShowReach>(std::vector{anyThing(), robots.empty() ? 0 : oneOf(robots)->getId()},
                                               below(2) == 0);
        }
        default:
            return removal();
        }
    }
    /// Of a few objects, among them some that cannot be moved, which are left out.
    std::unique_ptr<Change> moving()
    {
        std::vector<unsigned> ids = {anyThing()};
        for (int i = below(3); i > 0; --i)
            if (const unsigned moved = movedFor(anyObject()); moved != 0)
                ids.push_back(moved);
        std::vector<MoveThings::Place> places;
        for (const unsigned id : topmostOf(ids))
            places.push_back({id, place()});
        return std::make_unique<MoveThings>(places);
    }
    std::unique_ptr<Change> joints()
    {
        std::vector<std::shared_ptr<vrk::layout::Mechanism>> moving;
        for (const auto& mechanism : Layout::inst().manipulators)
            moving.push_back(mechanism);
        for (const auto& mechanism : Layout::inst().devices)
            moving.push_back(mechanism);
        if (moving.empty())
            return nullptr;
        const auto mechanism = oneOf(moving);
        std::vector<double> values = mechanism->getJointValues();
        for (double& value : values)
            value += number(0.5);
        return std::make_unique<MoveJoints>(mechanism, values);
    }
    std::unique_ptr<Change> hiding()
    {
        std::vector<unsigned> hidden = Layout::inst().visibilities;
        const unsigned id = anyObject();
        if (std::erase(hidden, id) == 0)
            hidden.push_back(id);
        return std::make_unique<HideThings>("Hide", hidden);
    }
    /// Of small clouds.
    std::unique_ptr<Change> ofPoints()
    {
        std::vector<std::shared_ptr<vrk::layout::PointCloud>> clouds = Layout::inst().pointclouds;
        std::erase_if(clouds, [](const auto& cloud) { return cloud->getPoints().size() > fewPoints; });
        if (clouds.empty())
            return nullptr;
        const auto cloud = oneOf(clouds);
        const auto count = static_cast<std::uint32_t>(cloud->getPoints().size());
        std::vector<std::uint32_t> numbers;
        for (std::uint32_t i = 0; i < count; ++i)
            if (below(3) == 0)
                numbers.push_back(i);
        const PointsOfClouds points{{cloud->getId(), numbers}};
        switch (below(5)) {
        case 0:
            return HidePoints::Also(points);
        case 1:
            return HidePoints::AllBut(points, {oneOf(clouds)->getId()});
        case 2:
            return HidePoints::None();
        default: // something is left of the cloud
            return numbers.size() < count ? std::make_unique<CutPoints>(points) : nullptr;
        }
    }
    std::shared_ptr<Station> something()
    {
        auto station = std::make_shared<Station>();
        station->title = "box";
        const std::string name = "Box " + std::to_string(++made);
        station->parts = {single(name, place(), BRepPrimAPI_MakeBox(10, 20, 30 + made).Shape(), demo::color::sage)};
        if (below(4) == 0) {
            auto cloud = std::make_shared<vrk::layout::PointCloud>(
                sdf::SdfManager::inst().generateId(), "Scan", vrk::layout::PointCloud::Points{{1, 2, 3}, {4, 5, 6}});
            cloud->setPose(place());
            cloud->setGeometry(cloudFile.string(), "xyz");
            station->clouds = {cloud};
        }
        return station;
    }
    /// Of few things, so that the station does not run empty.
    std::unique_ptr<Change> removal()
    {
        if (thingsOfTheirOwn().size() < 8)
            return nullptr;
        std::vector<unsigned> ids{anyThing()};
        if (below(3) == 0)
            ids.push_back(anyThing());
        return std::make_unique<RemoveThings>(ids);
    }

    std::mt19937 random;
    std::filesystem::path cloudFile;
    int made = 0;
};

TEST_F(EditHistoryTest, ReachOfARobotIsShownHiddenAndTakenBackAsTheSameFile)
{
    const unsigned robot = Layout::inst().manipulators.front()->getId();
    const std::string before = savedBytes();

    history.push(std::make_unique<ShowReach>(std::vector{robot, thing("Pallet")}, true));

    EXPECT_THAT(Layout::inst().reaches, testing::ElementsAre(robot)) << "what is no robot is passed over";
    EXPECT_EQ(history.undoText().toStdString().substr(0, 10), "Show reach");
    const std::string shown = savedBytes();
    EXPECT_NE(shown, before);
    history.push(std::make_unique<ShowReach>(std::vector{robot}, true));
    EXPECT_EQ(history.count(), 1) << "which changes nothing";
    history.undo();
    EXPECT_EQ(savedBytes(), before);
    history.redo();
    EXPECT_EQ(savedBytes(), shown);
}

TEST_F(EditHistoryTest, RemovedRobotTakesItsReachAlongAndBringsItBack)
{
    const unsigned robot = Layout::inst().manipulators.front()->getId();
    history.push(std::make_unique<ShowReach>(std::vector{robot}, true));
    const std::string shown = savedBytes();

    history.push(std::make_unique<RemoveThings>(std::vector{robot}));

    EXPECT_THAT(Layout::inst().reaches, testing::IsEmpty());
    history.undo();
    EXPECT_EQ(savedBytes(), shown);
}

TEST_F(EditHistoryTest, ThousandChangesTakenBackAndMadeAgainGiveTheSameFiles)
{
    constexpr int steps = 1000;
    constexpr int between = 250; // a file is looked at after so many, on the way forth and back
    const std::filesystem::path cloudFile = folder.path() / "scan.xyz";
    std::ofstream(cloudFile) << "1 2 3\n4 5 6\n";
    std::string manyLines;
    for (int i = 0; i < 60; ++i)
        manyLines += fmt::format("{} {} {} 0 0 1\n", i, i % 7, i % 5);
    const auto cloud = vrk::station::ImportPointCloud(folder.write("small.xyz", manyLines));
    Layout::inst().addPointCloud(cloud);
    RandomChanges changes(20260719, cloudFile);
    std::vector<std::string> files{savedBytes()};
    std::vector<std::string> states{fingerprint()};
    const std::size_t objects = sdf::SdfManager::inst().size();
    std::map<std::string, int> ofPoints;
    for (int i = 1; i <= steps; ++i) {
        history.push(changes.next());
        for (const char* text : {"Show only ", "Show all points", "Cut off "})
            if (history.undoText().startsWith(text))
                ++ofPoints[text];
        states.push_back(fingerprint());
        if (i % between == 0 || i == steps)
            files.push_back(savedBytes());
    }
    ASSERT_EQ(history.count(), steps);
    for (const char* text : {"Show only ", "Show all points", "Cut off "})
        EXPECT_GT(ofPoints[text], 10) << text;
    ASSERT_NE(files.back(), files.front());
    const std::size_t objectsAtTheEnd = sdf::SdfManager::inst().size();

    for (int i = steps; i > 0; --i) {
        if (i % between == 0) {
            ASSERT_EQ(savedBytes(), files[static_cast<std::size_t>(i / between)])
                << "at step " << i << " on the way back";
        }
        const std::string step = history.undoText().toStdString();
        history.undo();
        ASSERT_EQ(fingerprint(), states[static_cast<std::size_t>(i - 1)])
            << "'" << step << "' taken back, number " << i;
    }
    EXPECT_EQ(savedBytes(), files.front());
    EXPECT_EQ(sdf::SdfManager::inst().size(), objects);
    EXPECT_FALSE(history.canUndo());

    for (int i = 1; i <= steps; ++i) {
        const std::string step = history.redoText().toStdString();
        history.redo();
        ASSERT_EQ(fingerprint(), states[static_cast<std::size_t>(i)]) << "'" << step << "' made again, number " << i;
        if (i % between == 0) {
            ASSERT_EQ(savedBytes(), files[static_cast<std::size_t>(i / between)]) << "at step " << i << " made again";
        }
    }
    EXPECT_EQ(savedBytes(), files.back());
    EXPECT_EQ(sdf::SdfManager::inst().size(), objectsAtTheEnd);
}

TEST_F(EditHistoryTest, StepHasItsNameInTheMenu)
{
    history.push(std::make_unique<MoveThings>(thing("Pallet"), Posed(Posd(1, 2, 3))));
    EXPECT_EQ(history.undoText(), "Move Pallet");

    history.push(std::make_unique<RemoveThings>(std::vector{thing("Pallet"), thing("Controller")}));
    EXPECT_EQ(history.undoText(), "Delete 2 things");

    history.undo();
    EXPECT_EQ(history.undoText(), "Move Pallet");
    EXPECT_EQ(history.redoText(), "Delete 2 things");
}

TEST_F(EditHistoryTest, MovesOfOneGestureMakeOneStep)
{
    const std::vector<double> start = positioner()->getJointValues();
    for (const double turn : {0.1, 0.2, 0.3})
        history.push(std::make_unique<MoveJoints>(positioner(), std::vector(start.size(), turn), 7));
    EXPECT_EQ(history.count(), 1);
    history.push(std::make_unique<MoveJoints>(positioner(), std::vector(start.size(), 0.4), 8));
    EXPECT_EQ(history.count(), 2);

    history.undo();
    EXPECT_EQ(positioner()->getJointValues(), std::vector(start.size(), 0.3));
    history.undo();
    EXPECT_EQ(positioner()->getJointValues(), start);
    history.redo();
    EXPECT_EQ(positioner()->getJointValues(), std::vector(start.size(), 0.3));
}

TEST_F(EditHistoryTest, MovesOfTheSameThingsInOneGestureMakeOneStep)
{
    const unsigned pallet = thing("Pallet"), controller = thing("Controller");
    const Posed palletBefore = poseOfThing(pallet), controllerBefore = poseOfThing(controller);
    const auto moved = [&](double by, int gesture) {
        return std::make_unique<MoveThings>(
            std::vector<MoveThings::Place>{{pallet, Posed(Posd(by, 0, 0))}, {controller, Posed(Posd(0, by, 0))}},
            gesture);
    };
    history.push(moved(1, 7));
    history.push(moved(2, 7));
    EXPECT_EQ(history.count(), 1);
    EXPECT_EQ(history.undoText(), "Move 2 things");
    history.push(std::make_unique<MoveThings>(pallet, Posed(Posd(9, 0, 0)), 7)); // not the same
    EXPECT_EQ(history.count(), 2);
    history.push(moved(3, 8));
    EXPECT_EQ(history.count(), 3);

    history.undo();
    history.undo();
    EXPECT_EQ(poseOfThing(pallet), Posed(Posd(2, 0, 0)));
    EXPECT_EQ(poseOfThing(controller), Posed(Posd(0, 2, 0)));
    history.undo();
    EXPECT_EQ(poseOfThing(pallet), palletBefore);
    EXPECT_EQ(poseOfThing(controller), controllerBefore);
    history.push(moved(1, 9));
    history.push(std::make_unique<MoveThings>(
        std::vector<MoveThings::Place>{{pallet, palletBefore}, {controller, controllerBefore}}, 9));
    EXPECT_FALSE(history.canUndo()) << "back where it was: there is nothing to take back";
}

// What can be moved

const vrk::task::Task& program()
{
    return *Layout::inst().tasks.front();
}

const vrk::task::MoveInst& moveOf(bool toATarget)
{
    for (const vrk::task::MoveInst* move : program().getOwnPaths().front()->getMoveInstructions())
        if (move->isRobTargetInst() == toATarget)
            return *move;
    throw std::logic_error("the demo has such a move");
}

TEST_F(EditHistoryTest, WhatStandsByItselfIsMovedAndOfAMoveItsTarget)
{
    const Layout& layout = Layout::inst();
    for (const unsigned id : {thing("Pallet"), thing("Welding torch"), layout.manipulators.front()->getId(),
                              layout.devices.front()->getId(), layout.assemblies.front()->getId(),
                              layout.pointclouds.front()->getId(), layout.frames.front()->getId()})
        EXPECT_EQ(movedFor(id), id) << nameOfThing(id).toStdString();
    const vrk::task::MoveInst& move = moveOf(true);
    EXPECT_EQ(movedFor(move.getId()), move.getTargetItemId());
    const auto& fixture = move.getWObjItem();
    EXPECT_EQ(movedFor(fixture->getId()), fixture->getId());

    EXPECT_EQ(movedFor(0), 0u);
    EXPECT_EQ(movedFor(4711471), 0u);
    EXPECT_EQ(movedFor(thing("Fixture plate")), 0u) << "a body is of its part";
    EXPECT_EQ(movedFor(moveOf(false).getId()), 0u) << "a posture has no place";
    EXPECT_EQ(movedFor(program().getId()), 0u);
    fixture->setFixedUFrame(false);
    EXPECT_EQ(movedFor(fixture->getId()), 0u) << "its owner alone moves it";
    fixture->setFixedUFrame(true);
}

TEST_F(EditHistoryTest, MembersOfAssembliesAreMovedAndRemovedByThemselves)
{
    const auto fence = Layout::inst().assemblies.front();
    const auto members = fence->getParts();
    ASSERT_GE(members.size(), 3u);
    const unsigned second = members[1]->getId(), last = members.back()->getId();
    EXPECT_EQ(movedFor(second), second);
    EXPECT_EQ(movedFor(dynamic_cast<const vrk::layout::Part&>(*members[1]).getBodies().front()->getId()), 0u);
    const std::string before = savedBytes();

    history.push(std::make_unique<MoveThings>(second, poseOfThing(second) * Posed(vrk::rob::Posd(0, 0, 100))));
    EXPECT_EQ(worldPoseOfThing(second), worldPoseOfThing(fence->getId()) * poseOfThing(second));
    history.push(std::make_unique<RemoveThings>(std::vector{second}));
    EXPECT_EQ(sdf::SdfManager::inst().find(second), nullptr);
    EXPECT_EQ(fence->getParts().size(), members.size() - 1);
    EXPECT_EQ(fence->getObjChildren().size(), members.size() - 1);
    const std::string without = savedBytes();
    EXPECT_NE(without, before);
    history.push(std::make_unique<RemoveThings>(std::vector{fence->getId(), last}));
    EXPECT_EQ(sdf::SdfManager::inst().find(fence->getId()), nullptr);

    history.undo();
    EXPECT_EQ(savedBytes(), without);
    history.undo();
    EXPECT_EQ(fence->getParts(), members);
    history.undo();
    EXPECT_EQ(savedBytes(), before);
}

TEST_F(EditHistoryTest, MemberAndItsAssemblyAreRemovedTogether)
{
    const auto fence = Layout::inst().assemblies.front();
    const auto members = fence->getParts();
    const std::string before = savedBytes();

    history.push(
        std::make_unique<RemoveThings>(std::vector{members.back()->getId(), fence->getId(), members.front()->getId()}));

    EXPECT_EQ(sdf::SdfManager::inst().find(fence->getId()), nullptr);
    EXPECT_EQ(sdf::SdfManager::inst().find(members.front()->getId()), nullptr);
    history.undo();
    EXPECT_EQ(fence->getParts(), members);
    EXPECT_EQ(savedBytes(), before);
}

TEST_F(EditHistoryTest, TopmostAreThoseThatHangOnNoOther)
{
    const unsigned pallet = thing("Pallet"), controller = thing("Controller"), torch = thing("Welding torch");
    const unsigned arm = Layout::inst().manipulators.front()->getId();
    history.push(std::make_unique<AttachThing>(controller, pallet));

    EXPECT_THAT(topmostOf({torch, arm, pallet, controller, pallet}), testing::ElementsAre(arm, pallet));
    EXPECT_THAT(topmostOf({torch, controller}), testing::ElementsAre(torch, controller));
    EXPECT_THAT(topmostOf({}), testing::IsEmpty());
}

TEST_F(EditHistoryTest, TargetIsMovedInItsWorkObject)
{
    const vrk::task::MoveInst& move = moveOf(true);
    const unsigned target = move.getTargetItemId();
    const Posed before = poseOfThing(target);
    EXPECT_EQ(before, move.getTargetItem()->getPose());
    EXPECT_EQ(worldPoseOfThing(target), worldPoseOfBase(target) * before);
    EXPECT_EQ(worldPoseOfBase(target), worldPoseOfThing(move.getWObjItemId()));
    const std::string bytes = savedBytes();

    history.push(std::make_unique<MoveThings>(target, Posed(Posd(1, 2, 3))));

    EXPECT_EQ(move.getTargetItem()->getPose(), Posed(Posd(1, 2, 3)));
    EXPECT_EQ(history.undoText(), "Move above");
    EXPECT_NE(savedBytes(), bytes);
    history.undo();
    EXPECT_EQ(savedBytes(), bytes);
}

TEST_F(EditHistoryTest, WhatChangesNothingMakesNoStep)
{
    history.push(std::make_unique<MoveThings>(thing("Pallet"), poseOfThing(thing("Pallet"))));
    history.push(std::make_unique<RenameThing>(thing("Pallet"), "Pallet"));
    history.push(std::make_unique<RenameThing>(thing("Pallet"), ""));
    history.push(std::make_unique<DetachThing>(thing("Pallet")));
    history.push(std::make_unique<RemoveThings>(std::vector{thing("Fixture plate")})); // a body: it is of its part
    history.push(std::make_unique<HideThings>("Hide", Layout::inst().visibilities));

    EXPECT_EQ(history.count(), 0);
    EXPECT_TRUE(history.isSaved());
}

TEST_F(EditHistoryTest, StationIsUnsavedUntilItIsAsItWasSaved)
{
    history.push(std::make_unique<RenameThing>(thing("Pallet"), "Rack"));
    EXPECT_FALSE(history.isSaved());
    history.noteSaved();
    EXPECT_TRUE(history.isSaved());

    history.undo();
    EXPECT_FALSE(history.isSaved());
    history.redo();
    EXPECT_TRUE(history.isSaved());
}

TEST_F(EditHistoryTest, AttachedAndDetachedThingStaysWhereItIs)
{
    const unsigned pallet = thing("Pallet");
    const Posd before = placeOf(pallet);

    history.push(std::make_unique<AttachThing>(pallet, positioner()->getLinks().back()->getId()));
    EXPECT_NEAR((placeOf(pallet) - before).length(), 0, 1e-9);
    history.push(std::make_unique<MoveJoints>(positioner(), std::vector<double>(positioner()->jointValueCount(), 0.5)));
    const Posd turned = placeOf(pallet);
    EXPECT_GT((turned - before).length(), 1);
    history.push(std::make_unique<DetachThing>(pallet));

    EXPECT_NEAR((placeOf(pallet) - turned).length(), 0, 1e-9);
    EXPECT_EQ(carrierOf(pallet), std::nullopt);
}

TEST_F(EditHistoryTest, NothingCarriesItself)
{
    const unsigned fixture = thing("Fixture"); // on the positioner, and the workpiece on it

    EXPECT_FALSE(AttachThing::IsPossible(fixture, fixture));
    EXPECT_FALSE(AttachThing::IsPossible(fixture, thing("Workpiece")));
    EXPECT_FALSE(AttachThing::IsPossible(thing("Positioner"), fixture));
    EXPECT_TRUE(AttachThing::IsPossible(thing("Workpiece"), thing("Pallet")));
    EXPECT_FALSE(AttachThing::IsPossible(thing("Fixture plate"), thing("Pallet"))); // a body lies in its part
}

TEST_F(EditHistoryTest, WhatARemovedThingCarriedStaysWhereItIs)
{
    const unsigned fixture = thing("Fixture"), workpiece = thing("Workpiece");
    const Posd place = placeOf(workpiece);
    const std::string before = savedBytes();

    history.push(std::make_unique<RemoveThings>(std::vector{fixture}));

    EXPECT_EQ(sdf::SdfManager::inst().find(fixture), nullptr);
    EXPECT_EQ(carrierOf(workpiece), std::nullopt);
    EXPECT_NEAR((placeOf(workpiece) - place).length(), 0, 1e-9);
    history.undo();
    EXPECT_EQ(savedBytes(), before);
}

TEST_F(EditHistoryTest, DimensionsComeBackInTheirOrderWithWhatTheyMeasure)
{
    using vrk::layout::Dimension;
    using End = vrk::layout::DimensionEnd;
    const unsigned workpiece = thing("Workpiece");
    for (const unsigned id : {thing("Pedestal"), workpiece, thing("Pedestal")})
        Layout::inst().addDimension(std::make_shared<Dimension>(
            Dimension{"", Dimension::Type::Distance, {{End::Kind::Point, id, 0, {}}, {End::Kind::Frame, id, 0, {}}}}));
    const std::string before = savedBytes();

    history.push(std::make_unique<RemoveThings>(std::vector{workpiece}));

    EXPECT_EQ(Layout::inst().dimensions.size(), 2u);
    history.undo();
    EXPECT_EQ(Layout::inst().dimensions.size(), 3u);
    EXPECT_EQ(savedBytes(), before);
}

TEST_F(EditHistoryTest, AssemblyIsPaintedDownToItsMembersInOneStep)
{
    const auto& fence = Layout::inst().assemblies.front();
    ASSERT_EQ(fence->getName(), "Fence");
    const std::string before = savedBytes();

    history.push(std::make_unique<PaintBodies>(std::vector{fence->getId()}, "#ED1C24"));

    EXPECT_EQ(history.count(), 1);
    EXPECT_EQ(history.undoText(), "Colour Fence");
    for (const auto& member : fence->getParts())
        for (const auto& body : dynamic_cast<const vrk::layout::Part&>(*member).getBodies())
            EXPECT_EQ(sdf::textAt(*body->getElement(), "visual/color"), "#ED1C24") << body->getName();
    history.undo();
    EXPECT_EQ(savedBytes(), before);
}

TEST_F(EditHistoryTest, BodiesOfOneGeometryArePaintedTogether)
{
    // As the mesh that holds the colours is one, and the station must look the same when it is opened again.
    const TopoDS_Shape box = BRepPrimAPI_MakeBox(1, 2, 3).Shape();
    auto first = single("First", {}, box, demo::color::sage), second = single("Second", {}, box, demo::color::steel);
    for (const auto& part : {first, second}) {
        part->getBodies().front()->setGeometry("shared box", "brep");
        Layout::inst().addPart(part);
    }

    history.push(std::make_unique<PaintBodies>(std::vector{first->getId()}, "#ED1C24"));
    EXPECT_EQ(PaintBodies::ColorOf({second->getId()}), "#ED1C24");

    history.undo();
    EXPECT_EQ(PaintBodies::ColorOf({first->getId()}), demo::color::sage);
    EXPECT_EQ(PaintBodies::ColorOf({second->getId()}), demo::color::steel);
}

} // namespace
} // namespace vrkview::test
