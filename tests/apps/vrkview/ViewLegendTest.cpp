#include "canvas/ViewLegend.h"

#include "FakeInput.h"
#include "StepsFixture.h"
#include "canvas/HeightLegend.h"

#include <QApplication>

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace vrkview::test {
namespace {

/// The scan of the demo, which is coloured by height.
class ViewLegendTest : public StepsFixture {
protected:
    void SetUp() override
    {
        StepsFixture::SetUp();
        leaveView();
        settle();
    }

    static const ViewLegend& viewLegend() { return *window().findChild<ViewLegend*>(); }
    static const QImage& legend() { return viewLegend().getPicture(); }
    static QRect area() { return viewLegend().getArea(); }
    static void showScanAlone()
    {
        std::vector<unsigned> others;
        for (const StationTree::Row& row : state().getTree().getRows())
            if (row.kind != vrk::VisualType::PointCloud)
                others.push_back(row.id);
        state().hideOnly(others);
        settle();
    }
    /// Of the legend's pixels that hide what is behind them: how many are seen so, from 0 to 1.
    static double shareIn(const QImage& picture)
    {
        const QPoint corner = area().topLeft();
        int all = 0, same = 0;
        for (int y = 0; y < legend().height(); ++y)
            for (int x = 0; x < legend().width(); ++x) {
                const QColor wanted = legend().pixelColor(x, y);
                if (wanted.alpha() < 255)
                    continue;
                const QColor there = picture.pixelColor(corner + QPoint(x, y));
                const int apart =
                    std::max({std::abs(wanted.red() - there.red()), std::abs(wanted.green() - there.green()),
                              std::abs(wanted.blue() - there.blue())});
                ++all;
                same += apart <= 2 ? 1 : 0;
            }
        EXPECT_GT(all, 500) << "the bar, at least";
        return all == 0 ? 0 : static_cast<double>(same) / all;
    }
};

TEST_F(ViewLegendTest, IsInTheCornerAsLongAsAScanIsShownByHeight)
{
    const QImage before = seen();
    EXPECT_GT(shareIn(before), 0.99);
    EXPECT_EQ(legend(), heightLegend(view().toDevice(view().size()), view().devicePixelRatioF()).value().picture);
    EXPECT_TRUE(view().rect().contains(QRect(area().topLeft() / view().devicePixelRatioF(), QSize(1, 1))));
    const unsigned scan = thing("Scan of the bracket");

    state().setVisible({scan}, false);
    settle();
    EXPECT_TRUE(legend().isNull());
    EXPECT_TRUE(area().isEmpty());
    shoot("legend-gone");

    state().setVisible({scan}, true);
    settle();
    EXPECT_FALSE(legend().isNull());
    EXPECT_EQ(differingShare(seen(), before), 0);
    showScanAlone();
    EXPECT_GT(shareIn(seen()), 0.99);
    shoot("legend");
}

TEST_F(ViewLegendTest, KeepsItsCornerInAWindowOfAnotherSize)
{
    showScanAlone();
    const QSize before = window().size();
    const QSize sizeBefore = legend().size();

    window().resize(900, 620);
    ASSERT_TRUE(waitFor([] { return window().size() == QSize(900, 620); }));
    settle();

    EXPECT_LT(legend().height(), sizeBefore.height());
    EXPECT_GT(shareIn(seen()), 0.99);
    shoot("legend-small");
    window().resize(before);
    ASSERT_TRUE(waitFor([&] { return window().size() == before; }));
    settle();
    EXPECT_EQ(legend().size(), sizeBefore);
    EXPECT_GT(shareIn(seen()), 0.99);
}

TEST_F(ViewLegendTest, PicturesOfTheViewAreWithoutIt)
{
    showScanAlone();

    const QImage picture = view().takePicture(view().toDevice(view().size()));
    settle();

    EXPECT_LT(shareIn(picture), 0.2);
    EXPECT_GT(shareIn(seen()), 0.99);
}

TEST_F(ViewLegendTest, MouseGoesThroughIt)
{
    showScanAlone();
    const QPointF inside = QPointF(area().center()) / view().devicePixelRatioF();
    const QPoint place = inside.toPoint();
    state().selectVisuals({thing("Scan of the bracket")});
    const vrk::rob::Posef before = camera();

    turnWheel(place, 2);
    settle();
    EXPECT_GT((camera().position - before.position).length(), 1);
    EXPECT_FALSE(pickedAt(place)) << "nothing of the station is there";
    clickAt(place);

    EXPECT_TRUE(state().getSelected().empty()) << "as by a click on nothing";
    EXPECT_GT(shareIn(seen()), 0.99);
}

} // namespace
} // namespace vrkview::test
