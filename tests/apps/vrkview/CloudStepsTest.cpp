#include "FakeInput.h"
#include "StepsFixture.h"
#include "edit/CloudActions.h"

#include "support/TempFolder.h"

#include "platform/layout/Layout.h"
#include "platform/sdf/SdfManager.h"
#include "platform/station/ImportCloud.h"
#include "scene/Scene.h"
#include "visual/PointCloudVisual.h"

#include <gmock/gmock.h>

#include <QAction>
#include <QLocale>

#include <numeric>

namespace vrkview::test {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using vrk::layout::Layout;
using vrk::layout::PointCloud;
using vrk::visual::PointCloudVisual;
using vrk::visual::Scene;

/// Points of the demo's scan in the window.
class CloudStepsTest : public StepsFixture {
protected:
    void SetUp() override
    {
        StepsFixture::SetUp();
        leaveView(); // with the mouse over a thing that would be highlighted
        settle();
        scan = Layout::inst().pointclouds.at(0);
        count = scan->getPoints().size();
        for (std::uint32_t i = 0; i < count; i += 3)
            third.push_back(i);
    }

    static std::string line() { return window().getSelectionText().toStdString(); }
    static QAction& action(const QString& text)
    {
        for (QAction* each : window().QWidget::actions())
            if (each->text().remove('&') == text)
                return *each;
        throw std::logic_error("no action " + text.toStdString());
    }
    PointCloudVisual& visual() const { return dynamic_cast<PointCloudVisual&>(*Scene::GetVisual(scan->getId())); }
    void selectThird() const
    {
        state().selectPoints({{scan->getId(), third}});
        settle();
    }
    static std::string grouped(std::size_t number)
    {
        return QLocale(QLocale::English).toString(static_cast<qulonglong>(number)).toStdString();
    }

    std::shared_ptr<PointCloud> scan;
    std::size_t count = 0;
    std::vector<std::uint32_t> third;
};

TEST_F(CloudStepsTest, SelectedPointsAreMarkedAndToldAndTheCloudItselfIsNotSelected)
{
    const QImage before = seen();
    EXPECT_EQ(line(), "");

    selectThird();

    EXPECT_EQ(visual().getMarkedPoints(), third);
    EXPECT_THAT(visual().getSelectedIndices(), IsEmpty());
    EXPECT_THAT(state().getSelected(), IsEmpty());
    EXPECT_EQ(line(), grouped(third.size()) + " points of 1 cloud selected");
    EXPECT_GT(differingShare(before, seen()), 0.0005);
    shoot("cloud-marked");
    state().selectVisuals({scan->getId()});
    settle();
    EXPECT_THAT(visual().getMarkedPoints(), IsEmpty());
    EXPECT_EQ(line(), "1 thing selected");
}

TEST_F(CloudStepsTest, CommandsAreThereWhileTheyHaveSomethingToDo)
{
    const auto expectEnabled = [](bool points, bool hidden) {
        for (const char* text : {"Hide Points", "Show Only These Points", "Cut Points Off", "Save Points As…"})
            EXPECT_EQ(action(text).isEnabled(), points) << text;
        EXPECT_EQ(action("Show All Points").isEnabled(), hidden);
    };
    expectEnabled(false, false);
    selectThird();
    expectEnabled(true, false);

    window().getClouds().hidePoints();
    settle();

    expectEnabled(false, true);
}

TEST_F(CloudStepsTest, PointsAreHiddenByTheirKeyAndComeBack)
{
    const QImage before = seen();
    selectThird();

    typeKey("p");
    settle();

    ASSERT_NE(visual().getHiddenPoints(), nullptr);
    EXPECT_EQ(visual().getHiddenPoints()->numbers(), third);
    EXPECT_THAT(state().getSelectedPoints(), IsEmpty());
    EXPECT_EQ(line(), grouped(third.size()) + " points hidden");
    EXPECT_GT(differingShare(before, seen()), 0.0005);
    shoot("cloud-hidden");
    history().undo();
    settle();
    EXPECT_EQ(visual().getHiddenPoints(), nullptr);
    EXPECT_EQ(line(), "");
    EXPECT_EQ(differingShare(before, seen()), 0);
    history().redo();
    settle();
    window().getClouds().showAllPoints();
    settle();
    EXPECT_EQ(visual().getHiddenPoints(), nullptr);
    EXPECT_EQ(differingShare(before, seen()), 0);
}

TEST_F(CloudStepsTest, PointsShownAloneStaySelected)
{
    selectThird();

    window().getClouds().showOnlyPoints();
    settle();

    ASSERT_NE(visual().getHiddenPoints(), nullptr);
    EXPECT_EQ(visual().getHiddenPoints()->size(), count - third.size());
    EXPECT_EQ(state().getSelectedPoints().at(scan->getId()), third);
    EXPECT_THAT(line(), HasSubstr(" selected, " + grouped(count - third.size()) + " points hidden"));
    shoot("cloud-alone");
}

TEST_F(CloudStepsTest, CutPointsAreASelectedCloudOfTheirOwn)
{
    const QImage before = seen();
    const std::size_t clouds = Layout::inst().pointclouds.size();
    selectThird();

    window().getClouds().cutPoints();
    settle();

    ASSERT_THAT(Layout::inst().pointclouds, SizeIs(clouds + 1)) << message();
    const PointCloud& made = *Layout::inst().pointclouds.back();
    EXPECT_EQ(made.getName(), scan->getName() + " cut");
    EXPECT_THAT(made.getPoints(), SizeIs(third.size()));
    EXPECT_THAT(visual().getPoints(), SizeIs(count - third.size()));
    ASSERT_TRUE(Scene::HasVisual(made.getId()));
    EXPECT_EQ(state().getSelected(), std::vector{made.getId()});
    EXPECT_NE(state().getTree().find(made.getId()), StationTree::none);
    const unsigned id = made.getId();
    state().clear();
    settle();
    shoot("cloud-cut");
    history().undo();
    settle();
    EXPECT_FALSE(Scene::HasVisual(id));
    EXPECT_THAT(visual().getPoints(), SizeIs(count));
    EXPECT_EQ(differingShare(before, seen()), 0);
}

TEST_F(CloudStepsTest, WholeCloudIsNotCutOff)
{
    std::vector<std::uint32_t> all(count);
    std::iota(all.begin(), all.end(), 0u);
    state().selectPoints({{scan->getId(), all}});

    window().getClouds().cutPoints();

    EXPECT_THAT(message(), HasSubstr("all points of '" + scan->getName() + "' are selected"));
    EXPECT_THAT(message(), HasSubstr("The station is as before."));
    EXPECT_TRUE(history().isSaved());
    EXPECT_EQ(state().getSelectedPoints().at(scan->getId()), all);
    window().getMessageBar().hide();
}

TEST_F(CloudStepsTest, PointsAreSavedAndAFailureIsTold)
{
    const vrk::test::TempFolder folder;
    selectThird();

    window().getClouds().savePointsTo(QString::fromStdString((folder / "some").string()));
    EXPECT_THAT(vrk::station::ImportPointCloud(folder / "some.ply")->getPoints(), SizeIs(third.size()));

    window().getClouds().savePointsTo(QString::fromStdString((folder / "no folder" / "some.xyz").string()));
    EXPECT_THAT(message(), HasSubstr("some.xyz: cannot be written. Choose another folder or name."));
    window().getMessageBar().hide();
    EXPECT_TRUE(history().isSaved());
}

} // namespace
} // namespace vrkview::test
