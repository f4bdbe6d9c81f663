#include "platform/station/StationFile.h"

#include "CacheFolder.h"
#include "StationModels.h"

#include "platform/layout/Assembly.h"
#include "platform/layout/Body.h"
#include "platform/layout/Frame.h"
#include "platform/layout/Group.h"
#include "platform/layout/Mechanism.h"
#include "platform/layout/Part.h"
#include "platform/sdf/SdfManager.h"
#include "platform/smart/SmartComponent.h"
#include "platform/station/Uri.h"
#include "platform/task/DataItem.h"
#include "platform/task/Task.h"

#include <nlohmann/json.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <shared_mutex>

namespace vrk::station {
namespace {

using layout::Layout;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::ThrowsMessage;

std::string binaryStl()
{
    std::string bytes(80, ' ');
    bytes += std::string("\1\0\0\0", 4);
    return bytes + std::string(50, '\0');
}

class StationFileTest : public testing::Test {
protected:
    StationFileTest() : mesh(folder.write("meshes/part.stl", binaryStl())) {}
    ~StationFileTest() override
    {
        Layout::inst().clear();
        SetStationFolder({});
    }

    std::filesystem::path saved(const std::string& name)
    {
        const std::filesystem::path file = folder / name;
        SaveStationFile(file);
        return file;
    }

    static std::shared_ptr<layout::Part> partOf(unsigned id)
    {
        const auto& parts = Layout::inst().parts;
        return *std::ranges::find(parts, id, [](const auto& part) { return part->getId(); });
    }

    test::TempFolder folder;
    test::CacheFolder cache;
    std::filesystem::path mesh;
};

TEST_F(StationFileTest, WholeStationIsSavedAsTheSameBytesAfterLoading)
{
    const test::WholeStation models(mesh.string());
    const std::string first = test::TempFolder::Read(saved("first.station.json"));

    LoadStationFile(folder / "first.station.json");
    const std::string second = test::TempFolder::Read(saved("second.station.json"));

    EXPECT_GT(first.size(), 1000u);
    EXPECT_EQ(first, second);
}

TEST_F(StationFileTest, EmptyStationIsSavedWithoutLists)
{
    EXPECT_EQ(test::TempFolder::Read(saved("empty.station.json")),
              "{\n  \"format\": \"vrk-station\",\n  \"version\": 1\n}\n");
    LoadStationFile(folder / "empty.station.json");
    EXPECT_THAT(Layout::inst().objects(), IsEmpty());
}

TEST_F(StationFileTest, EveryObjectComesBackWithItsRelations)
{
    const test::WholeStation models(mesh.string());
    const std::vector<std::shared_ptr<sdf::SdfObject>> before = Layout::inst().objects();
    saved("cell.station.json");
    Layout::inst().clear();

    LoadStationFile(folder / "cell.station.json");

    const Layout& station = Layout::inst();
    const std::vector<std::shared_ptr<sdf::SdfObject>> after = station.objects();
    ASSERT_EQ(after.size(), before.size());
    for (std::size_t i = 0; i < before.size(); ++i) {
        SCOPED_TRACE(before[i]->getName());
        EXPECT_EQ(after[i]->getId(), before[i]->getId());
        EXPECT_EQ(after[i]->getName(), before[i]->getName());
        EXPECT_EQ(after[i]->getModelType(), before[i]->getModelType());
        EXPECT_EQ(after[i]->getParentId(), before[i]->getParentId());
        EXPECT_EQ(after[i]->isStandalone(), before[i]->isStandalone());
        EXPECT_EQ(after[i]->getPose(), before[i]->getPose());
        const std::shared_lock lock(sdf::SdfManager::inst().mutex());
        EXPECT_EQ(sdf::SdfManager::inst().find(after[i]->getId()), after[i].get());
    }
    EXPECT_EQ(station.manipulators[0]->getVendor(), "kuka");
    EXPECT_EQ(station.manipulators[0]->getJointValues(), models.arm->getJointValues());
    EXPECT_EQ(station.manipulators[0]->getJoints()[0].lower, -2);
    EXPECT_EQ(station.manipulators[0]->getPlainChildren().size(), 1u);
    EXPECT_EQ(station.tools[0]->getFrames().size(), 1u);
    EXPECT_EQ(station.devices[0]->getFrames()[1]->getParentId(), station.devices[0]->getLinks()[0]->getId());
    EXPECT_EQ(station.assemblies.size(), 2u);
    EXPECT_FALSE(partOf(models.part->getId())->isDetectable());
    EXPECT_EQ(station.groups[0]->getMemberIds(), (std::vector{models.fixture->getId(), models.frame->getId()}));
    EXPECT_EQ(station.components[0]->getComponents().size(), 1u);
    const auto& items = station.tasks[0]->getDataItems();
    ASSERT_EQ(items.size(), 3u);
    EXPECT_FALSE(dynamic_cast<const task::WObjDataItem&>(*items[1]).hasFixedUFrame());
    EXPECT_THAT(dynamic_cast<const task::JointTargetDataItem&>(*items[2]).jointValues, ElementsAre(0, -1.5, 0.1));
    EXPECT_EQ(station.tasks[0]->getManipulatorId(), models.arm->getId());
    EXPECT_EQ(station.operations[0]->getMemberIds().size(), 2u);
    ASSERT_EQ(station.attachments.size(), 1u);
    EXPECT_EQ(station.attachments[0].child, models.gripper->getId());
    EXPECT_EQ(station.attachments[0].pose, rob::Posed(rob::Posd(0, 0, 1)));
    EXPECT_THAT(station.visibilities, ElementsAre(models.fixture->getId(), models.frame->getId()));
    EXPECT_EQ(station.lastViewPointPose.position, rob::Posd(1000, -2000, 1500));
}

TEST_F(StationFileTest, DimensionsComeBackAndOlderReadersOpenWhatHasNone)
{
    const test::WholeStation models(mesh.string());
    const auto before = Layout::inst().dimensions;
    ASSERT_EQ(before.size(), 2u);
    EXPECT_THAT(test::TempFolder::Read(saved("cell.station.json")), HasSubstr("\"version\": 4,"));

    LoadStationFile(folder / "cell.station.json");

    const auto& after = Layout::inst().dimensions;
    ASSERT_EQ(after.size(), 2u);
    EXPECT_EQ(*after[0], *before[0]);
    EXPECT_EQ(*after[1], *before[1]);
    Layout::inst().removeDimension(after[0]);
    Layout::inst().removeDimension(before[1]); // which is not there any more
    ASSERT_EQ(Layout::inst().dimensions.size(), 1u);
    EXPECT_EQ(*Layout::inst().dimensions[0], *before[1]);
    Layout::inst().dimensions.clear();
    EXPECT_THAT(test::TempFolder::Read(saved("none.station.json")), HasSubstr("\"version\": 1,"));
}

TEST_F(StationFileTest, ReachesComeBackAndOlderReadersOpenWhatHasNone)
{
    const test::WholeStation models(mesh.string());
    Layout::inst().dimensions.clear();
    EXPECT_THAT(test::TempFolder::Read(saved("none.station.json")), HasSubstr("\"version\": 1,"));
    Layout::inst().reaches = {models.arm->getId()};
    const std::string text = test::TempFolder::Read(saved("cell.station.json"));
    EXPECT_THAT(text, HasSubstr("\"version\": 4,"));

    LoadStationFile(folder / "cell.station.json");

    EXPECT_THAT(Layout::inst().reaches, ElementsAre(models.arm->getId()));
    EXPECT_EQ(test::TempFolder::Read(saved("again.station.json")), text);
}

TEST_F(StationFileTest, LooksOfABodyComeBack)
{
    const test::WholeStation models(mesh.string());
    saved("cell.station.json");

    LoadStationFile(folder / "cell.station.json");

    const auto& body = *partOf(models.part->getId())->getBodies()[0];
    EXPECT_EQ(body.getMaterialName(), "Glass");
    EXPECT_EQ(sdf::textAt(*body.getElement(), "visual/color"), "#ED1C24");
    EXPECT_EQ(sdf::textAt(*body.getElement(), "visual/face_colors/f10"), "#0000ff");
    EXPECT_EQ(body.getPose(), rob::Posed(rob::Posd(0, 0, 5)));
    EXPECT_EQ(body.getGeometryUri(), mesh.string());
}

TEST_F(StationFileTest, JointsMoveAfterLoading)
{
    const test::WholeStation models;
    saved("cell.station.json");
    LoadStationFile(folder / "cell.station.json");
    const auto arm = Layout::inst().manipulators[0];
    ASSERT_NE(arm, models.arm);

    arm->setJointValues(std::vector{0.2, 1.0, 3.0});
    models.arm->setJointValues(std::vector{0.2, 1.0, 3.0});

    for (std::size_t i = 0; i < arm->getLinks().size(); ++i)
        EXPECT_EQ(arm->getLinks()[i]->getPose(), models.arm->getLinks()[i]->getPose());
}

TEST_F(StationFileTest, IdsGivenAfterLoadingAreNew)
{
    const test::WholeStation models;
    saved("cell.station.json");
    LoadStationFile(folder / "cell.station.json");

    const unsigned id = sdf::SdfManager::inst().generateId();

    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    EXPECT_EQ(sdf::SdfManager::inst().find(id), nullptr);
}

TEST_F(StationFileTest, StationUrisAreRelativeToTheLoadedStation)
{
    saved("cell.station.json");

    LoadStationFile(folder / "cell.station.json");

    EXPECT_EQ(UriToFilePath("station://a.stl"), folder / "a.stl");
}

TEST_F(StationFileTest, NumbersAreWrittenAsShortAsTheyReadBackExactly)
{
    const test::WholeStation models;

    const std::string text = test::TempFolder::Read(saved("cell.station.json"));

    EXPECT_THAT(text, HasSubstr("[1.25, -2.0, 0.3333333333333333, "));
    EXPECT_THAT(text, HasSubstr("\"values\": [0.0, -1.5, 0.1]"));
}

TEST_F(StationFileTest, NamesInAnyLanguageComeBack)
{
    const auto part = std::make_shared<layout::Part>(sdf::SdfManager::inst().generateId(), "手 \"\\\n\t\x01 Grüße");
    Layout::inst().addPart(part);
    saved("cell.station.json");

    LoadStationFile(folder / "cell.station.json");

    EXPECT_EQ(Layout::inst().parts[0]->getName(), part->getName());
}

TEST_F(StationFileTest, NameThatIsNoTextIsWrittenWithAReplacement)
{
    Layout::inst().addPart(std::make_shared<layout::Part>(sdf::SdfManager::inst().generateId(), "a\xFF"));
    saved("cell.station.json");

    LoadStationFile(folder / "cell.station.json");

    EXPECT_EQ(Layout::inst().parts[0]->getName(), "a\xEF\xBF\xBD");
}

TEST_F(StationFileTest, SavingReplacesTheFileAndLeavesNoDraft)
{
    folder.write("cell.station.json", "old");

    saved("cell.station.json");

    EXPECT_THAT(test::TempFolder::Read(folder / "cell.station.json"), HasSubstr("vrk-station"));
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path()))
        files += entry.is_regular_file() ? 1 : 0;
    EXPECT_EQ(files, 1);
}

TEST_F(StationFileTest, FileThatCannotBeWrittenIsToldOf)
{
    const std::filesystem::path file = folder / "no such folder" / "cell.station.json";

    EXPECT_THAT([&] { SaveStationFile(file); },
                ThrowsMessage<StationFileError>(file.string() + ": /: expected room to write: " + file.string() +
                                                ": cannot be written"));
}

TEST_F(StationFileTest, StationThatWouldNotBeReadAgainIsNotWritten)
{
    folder.write("cell.station.json", "old");
    const auto part = std::make_shared<layout::Part>(sdf::SdfManager::inst().generateId(), "part");
    part->setPose(rob::Posed(rob::Posd(0, std::numeric_limits<double>::quiet_NaN(), 0)));
    Layout::inst().addPart(part);

    EXPECT_THAT([&] { SaveStationFile(folder / "cell.station.json"); },
                ThrowsMessage<StationFileError>((folder / "cell.station.json").string() +
                                                ": /parts/0/pose/1: expected a finite number"));
    EXPECT_EQ(test::TempFolder::Read(folder / "cell.station.json"), "old");
}

TEST_F(StationFileTest, EndingIsKnownInAnyCase)
{
    EXPECT_TRUE(isStationFile("a/cell.station.json"));
    EXPECT_TRUE(isStationFile("CELL.Station.JSON"));
    EXPECT_FALSE(isStationFile("cell.json"));
    EXPECT_FALSE(isStationFile("station.json"));
}

/// The kind of component that an application brings.
class Conveyor : public smartcomp::SmartComponent {
public:
    using SmartComponent::SmartComponent;
    std::string getKind() const override { return "file test conveyor"; }
    bool hasVisual() const override { return true; }
};

TEST_F(StationFileTest, ComponentOfTheApplicationComesBackAsItsKind)
{
    smartcomp::RegisterSmartComponent("file test conveyor", [](unsigned id, std::string name) {
        return std::make_shared<Conveyor>(id, std::move(name));
    });
    Layout::inst().addSmartComponent(std::make_shared<Conveyor>(sdf::SdfManager::inst().generateId(), "belt"));
    saved("cell.station.json");

    LoadStationFile(folder / "cell.station.json");

    EXPECT_NE(std::dynamic_pointer_cast<Conveyor>(Layout::inst().components[0]), nullptr);
}

TEST_F(StationFileTest, ExampleOfTheDocumentationIsLoadedAndSavedAsItStands)
{
    const std::string document = test::TempFolder::Read(std::filesystem::path(VRK_DOCS_DIR) / "station-format.md");
    const std::size_t begin = document.find("```json\n") + 8;
    const std::string example = document.substr(begin, document.find("```", begin) - begin);
    folder.write("parts/bracket.stl", binaryStl());
    const std::filesystem::path file = folder.write("cell.station.json", example);

    LoadStationFile(file);

    EXPECT_EQ(Layout::inst().devices[0]->getName(), "turn table");
    EXPECT_EQ(Layout::inst().parts[0]->getBodies()[0]->getGeometryUri(), (folder / "parts/bracket.stl").string());
    EXPECT_EQ(Layout::inst().attachments[0].parent, 3u);
    SaveStationFile(folder / "again.station.json");
    EXPECT_EQ(test::TempFolder::Read(folder / "again.station.json"), example);
}

} // namespace
} // namespace vrk::station
