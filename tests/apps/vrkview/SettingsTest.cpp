#include "window/Settings.h"

#include "support/TempFolder.h"

#include <gtest/gtest.h>

namespace vrkview::test {
namespace {

class SettingsTest : public testing::Test {
protected:
    void SetUp() override
    {
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, QString::fromStdString(folder.path().string()));
    }
    vrk::test::TempFolder folder;
};

TEST_F(SettingsTest, BeforeTheFirstChoiceThereAreOnlyDefaults)
{
    const Settings settings;

    EXPECT_TRUE(settings.recentFiles().isEmpty());
    EXPECT_TRUE(settings.drawMode().isEmpty());
    EXPECT_TRUE(settings.windowState().isEmpty());
    EXPECT_TRUE(settings.closedDocks().isEmpty());
    EXPECT_TRUE(settings.isGridShown(true));
    EXPECT_FALSE(settings.isGridShown(false));
    for (const ProgramPartName& each : allProgramParts())
        EXPECT_EQ(settings.isDrawn(each.part), each.part != ProgramPart::ZAxesOnly) << each.name;
    EXPECT_EQ(settings.mouseStyle(), Settings::MouseStyle::OrbitWithMiddle);
    EXPECT_EQ(settings.moveSteps(), (MoveSteps{5, 5}));
    EXPECT_TRUE(settings.isCoarserWhileMoving());
}

TEST_F(SettingsTest, ChoicesAreThereInTheNextRun)
{
    {
        Settings settings;
        settings.setDrawMode("wire");
        settings.setGridShown(true);
        settings.setDrawn(ProgramPart::Arrows, false);
        settings.setDrawn(ProgramPart::ZAxesOnly, true);
        settings.setMouseStyle(Settings::MouseStyle::OrbitWithLeft);
        settings.setWindow("geometry", "state");
        settings.setClosedDocks({"program"});
        settings.setMoveSteps({10, 15});
        settings.setCoarserWhileMoving(false);
    }

    const Settings next;

    EXPECT_EQ(next.drawMode(), "wire");
    EXPECT_TRUE(next.isGridShown(false));
    EXPECT_TRUE(next.isDrawn(ProgramPart::Targets));
    EXPECT_FALSE(next.isDrawn(ProgramPart::Arrows));
    EXPECT_TRUE(next.isDrawn(ProgramPart::ZAxesOnly));
    EXPECT_EQ(next.mouseStyle(), Settings::MouseStyle::OrbitWithLeft);
    EXPECT_EQ(next.windowGeometry(), "geometry");
    EXPECT_EQ(next.windowState(), "state");
    EXPECT_EQ(next.closedDocks(), QStringList("program"));
    EXPECT_EQ(next.moveSteps(), (MoveSteps{10, 15}));
    EXPECT_FALSE(next.isCoarserWhileMoving());
}

TEST_F(SettingsTest, StepsThatAreNoChoiceAreTheUsualOnes)
{
    for (const char* length : {"0", "-5", "2", "inf", "nan", "wide"}) {
        QSettings(QSettings::IniFormat, QSettings::UserScope, "vrkview", "vrkview")
            .setValue("move/length-step", length);
        EXPECT_EQ(Settings().moveSteps(), MoveSteps()) << length;
    }
}

TEST_F(SettingsTest, FileThatIsOpenedAgainComesFirstAndStandsOnce)
{
    Settings settings;
    for (const char* file : {"/a.step", "/b.step", "/a.step"})
        settings.addRecentFile(file);

    EXPECT_EQ(settings.recentFiles(), QStringList({"/a.step", "/b.step"}));
}

TEST_F(SettingsTest, OldestFilesAreForgotten)
{
    Settings settings;
    for (int i = 0; i <= Settings::mostRecentFiles; ++i)
        settings.addRecentFile(QString("/%1.step").arg(i));

    EXPECT_EQ(settings.recentFiles().size(), Settings::mostRecentFiles);
    EXPECT_EQ(settings.recentFiles().back(), "/1.step");
}

TEST_F(SettingsTest, MouseStyleIsToldWhenItIsAnother)
{
    Settings settings;
    int told = 0;
    QObject::connect(&settings, &Settings::mouseStyleChanged, [&told] { ++told; });

    settings.setMouseStyle(Settings::MouseStyle::OrbitWithMiddle);
    settings.setMouseStyle(Settings::MouseStyle::OrbitWithLeft);

    EXPECT_EQ(told, 1);
}

} // namespace
} // namespace vrkview::test
