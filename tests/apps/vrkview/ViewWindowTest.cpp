#include "window/ViewWindow.h"

#include "FakeInput.h"
#include "WindowFixture.h"
#include "canvas/Surroundings.h"
#include "canvas/ViewLegend.h"
#include "canvas/ViewState.h"
#include "edit/History.h"

#include "scene/Scene.h"
#include "scene/ViewLook.h"
#include "view/Camera.h"

#include <gmock/gmock.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QMessageBox>
#include <QMouseEvent>
#include <QStatusBar>
#include <QTimer>

#include <algorithm>
#include <string>
#include <thread>

#include <sys/resource.h>

namespace vrkview::test {
namespace {

using testing::HasSubstr;
using vrk::visual::Camera;
using vrk::visual::Scene;

/// Remembers the last press of a mouse button.
class PressWatch : public QObject {
public:
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::MouseButtonPress)
            place = static_cast<QMouseEvent*>(event)->position();
        return false;
    }
    QPointF place{-1, -1};
};

bool isBackground(QRgb pixel)
{
    return std::abs(qRed(pixel) - 115) <= 1 && std::abs(qBlue(pixel) - 115) <= 1;
}

class ViewWindowTest : public WindowFixture {
protected:
    static vrk::rob::DirTemplate<float> viewDirection()
    {
        return Camera::Get()->getWorldRotation() * vrk::rob::DirTemplate<float>(0, 0, -1);
    }
    static bool looksAlong(float x, float y, float z)
    {
        return viewDirection().dot(vrk::rob::DirTemplate<float>(x, y, z)) > 0.999f;
    }
    /// The part of the picture in which something is to be seen, beside the legend, which is always there.
    static QRect shownArea(const QImage& picture)
    {
        const QRect legend = window().findChild<ViewLegend*>()->getArea();
        QRect area;
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x)
                if (!isBackground(picture.pixel(x, y)) && !legend.contains(x, y))
                    area |= QRect(x, y, 1, 1);
        return area;
    }
};

TEST_F(ViewWindowTest, StationFillsTheView)
{
    const QImage picture = after("g"); // the grid goes on beyond the picture

    EXPECT_TRUE(isBackground(picture.pixel(3, 3)));
    EXPECT_TRUE(isBackground(picture.pixel(picture.width() - 4, picture.height() - 4)));
    const QRect area = shownArea(picture);
    EXPECT_GT(std::max(area.height() / double(picture.height()), area.width() / double(picture.width())), 0.8);
    typeKey("g");
}

TEST_F(ViewWindowTest, StatusLineTellsWhatIsShown)
{
    QString text;
    for (const QLabel* label : window().statusBar()->findChildren<QLabel*>())
        text += label->text() + "|";

    EXPECT_THAT(text.toStdString(), HasSubstr("Demo station"));
    EXPECT_THAT(text.toStdString(), HasSubstr(" bodies, "));
    EXPECT_THAT(text.toStdString(), HasSubstr(" faces, "));
    EXPECT_THAT(text.toStdString(), HasSubstr(" triangles"));
    EXPECT_THAT(text.toStdString(), HasSubstr(" 1 cloud, 200,000 points"));
    EXPECT_THAT(text.toStdString(), HasSubstr(" ms"));
}

TEST_F(ViewWindowTest, KeysOfTheKeyboardChooseTheDirection)
{
    typeKey("5");
    EXPECT_TRUE(waitFor([] { return looksAlong(0, 0, -1); }));
    typeKey("1");
    EXPECT_TRUE(waitFor([] { return looksAlong(0, 1, 0); }));
    typeKey("3");
    EXPECT_TRUE(waitFor([] { return looksAlong(1, 0, 0); }));
    typeKey("0");
    EXPECT_TRUE(waitFor([] { return looksAlong(-0.57735f, 0.57735f, -0.57735f); }));
}

TEST_F(ViewWindowTest, FitKeepsTheDirection)
{
    Camera::Get()->setWorldPosition({20000, -20000, 20000});
    settle();
    const auto before = viewDirection();

    typeKey("f");

    EXPECT_TRUE(waitFor([] { return Camera::Get()->getWorldPosition().length() < 12000; }));
    EXPECT_GT(viewDirection().dot(before), 0.9999f);
}

/// The share of the pixels that show something.
double shown(const QImage& picture)
{
    long count = 0;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            count += isBackground(picture.pixel(x, y)) ? 0 : 1;
    return static_cast<double>(count) / (static_cast<double>(picture.width()) * picture.height());
}

/// Of the one thing in the tree with this name.
unsigned idOf(const StationTree& tree, const std::string& name)
{
    return std::ranges::find(tree.getRows(), name, &StationTree::Row::name)->id;
}

TEST_F(ViewWindowTest, FunctionKeysChooseTheDisplayAndBackComesTheSamePicture)
{
    typeKey("g"); // the grid counts in every mode, and so does the fence: meshes have no edges and stay shaded
    ViewState& state = window().getState();
    const unsigned fence = idOf(state.getTree(), "Fence");
    state.setVisible({fence}, false);
    const QImage first = after("0");

    const QImage shaded = after("F5");
    const QImage edges = after("F7");
    const QImage wire = after("F8");
    const QImage last = after("F6");

    EXPECT_NE(shaded, first);
    EXPECT_LT(shown(edges), 0.8 * shown(shaded));
    EXPECT_NE(wire, edges);
    EXPECT_NE(wire, shaded);
    EXPECT_EQ(last, first); // the front of the gear case is left away again, too
    state.setVisible({fence}, true);
    typeKey("g");
}

TEST_F(ViewWindowTest, LinesAreModesAsTheOthersAndBackComesTheSamePicture)
{
    typeKey("g");
    const QImage first = after("F6");

    const QImage lines = after("F9");
    const QImage dashed = after("F10");
    const QImage edges = after("F7"); // from one to a mode without
    const QImage linesAgain = after("F9");
    const QImage last = after("F6");

    EXPECT_LT(shown(lines), 0.7 * shown(first));
    EXPECT_GT(shown(lines), 0.01);
    EXPECT_NE(dashed, lines);
    EXPECT_NE(edges, lines);
    EXPECT_EQ(linesAgain, lines);
    EXPECT_EQ(last, first);
    EXPECT_EQ(vrk::visual::GetLineLook(), vrk::visual::LineLook::None);
    typeKey("g");
}

TEST_F(ViewWindowTest, GhostsFollowTheSelectionAndAreNoStepOfWork)
{
    ViewState& state = window().getState();
    const History& history = state.getHistory();
    const int steps = history.count();
    state.selectVisuals({idOf(state.getTree(), "Robot")});
    state.clear(); // the mouse may rest on it: its highlight goes with the selection
    const QImage first = after("0");

    const QImage nothingSelected = after("e");
    EXPECT_EQ(nothingSelected, first);
    EXPECT_FALSE(vrk::visual::HasGhosts());

    state.selectVisuals({idOf(state.getTree(), "Robot")});
    settle();
    const QImage robot = seen();
    EXPECT_TRUE(vrk::visual::HasGhosts());
    state.selectVisuals({idOf(state.getTree(), "Fence")});
    settle();
    EXPECT_NE(seen(), robot);

    EXPECT_NE(after("e"), robot);
    EXPECT_FALSE(vrk::visual::HasGhosts());
    state.clear();
    settle();
    EXPECT_EQ(seen(), first);
    EXPECT_EQ(history.count(), steps);
}

TEST_F(ViewWindowTest, FaceThatIsSelectedKeepsItsBodyFromBeingAGhost)
{
    ViewState& state = window().getState();
    typeKey("e");
    const unsigned body = idOf(state.getTree(), "Shoulder");
    state.toggleFace(body, 1, ViewState::FaceUse::Base);
    settle();
    const QImage face = seen();
    EXPECT_TRUE(vrk::visual::HasGhosts());

    vrk::visual::SetGhostsExcept({});
    settle();
    EXPECT_NE(seen(), face);
    vrk::visual::SetGhostsExcept({body});
    settle();
    EXPECT_EQ(seen(), face);

    state.clear();
    EXPECT_FALSE(vrk::visual::HasGhosts());
    typeKey("e");
}

TEST_F(ViewWindowTest, FitIsTheSameWhileOnlyEdgesAreShown)
{
    typeKey("F7");
    typeKey("0");
    settle();
    const auto withEdges = Camera::Get()->getWorldPosition();

    typeKey("F6");
    typeKey("0");
    settle();

    EXPECT_NEAR((Camera::Get()->getWorldPosition() - withEdges).length(), 0, 1e-2);
}

TEST_F(ViewWindowTest, GridIsShownAndHidden)
{
    const QImage with = after("0");
    EXPECT_TRUE(isGridShown());

    const QImage without = after("g");

    EXPECT_FALSE(isGridShown());
    EXPECT_NE(without, with);
    EXPECT_EQ(after("g"), with);
}

TEST_F(ViewWindowTest, GridTurnsThroughTheThreeAxes)
{
    const QImage alongZ = after("0");

    const QImage alongX = after("n");
    const QImage alongY = after("n");

    EXPECT_NE(alongX, alongZ);
    EXPECT_NE(alongY, alongX);
    EXPECT_EQ(after("n"), alongZ);
}

TEST_F(ViewWindowTest, FramesGrowAndShrink)
{
    const QImage before = after("0");

    const QImage longer = after("plus");

    EXPECT_NE(longer, before);
    EXPECT_EQ(after("minus"), before);
}

TEST_F(ViewWindowTest, MouseOverTheViewReachesTheWidget)
{
    PressWatch watch;
    view().installEventFilter(&watch);

    moveMouse(view(), QPoint(120, 90));
    clickLeft();

    EXPECT_TRUE(waitFor([&] { return watch.place == QPointF(120, 90); }));
    view().removeEventFilter(&watch);
}

TEST_F(ViewWindowTest, MouseStaysInTheViewWhileItsSizeChanges)
{
    int moves = 0, leaves = 0;
    const auto moving = QObject::connect(&view(), &ViewWidget::mouseMoved, [&moves] { ++moves; });
    const auto leaving = QObject::connect(&view(), &ViewWidget::mouseLeft, [&leaves] { ++leaves; });
    moveMouse(view(), QPoint(160, 110));
    ASSERT_TRUE(waitFor([&] { return moves > 0; }));
    const QSize before = window().size();

    for (const QSize& size : {QSize(900, 620), QSize(1000, 700), before}) {
        window().resize(size);
        ASSERT_TRUE(waitFor([&] { return window().size() == size; }));
        settle();
    }

    EXPECT_EQ(leaves, 0);
    QObject::disconnect(moving);
    QObject::disconnect(leaving);
}

TEST_F(ViewWindowTest, AfterAResizeTheWholeViewIsDrawn)
{
    const QSize before = window().size();
    window().resize(900, 620);
    ASSERT_TRUE(waitFor([before] { return window().size() != before; }));
    settle();
    typeKey("f");
    const QImage picture = after("g");

    EXPECT_EQ(Camera::Get()->viewportWidth(), static_cast<unsigned>(view().toDevice(view().size()).width()));
    EXPECT_EQ(Camera::Get()->viewportHeight(), static_cast<unsigned>(view().toDevice(view().size()).height()));
    const QRect area = shownArea(picture);
    EXPECT_GT(area.width(), picture.width() * 7 / 10);
    EXPECT_NEAR(area.center().x(), picture.width() / 2, 15);
    window().resize(before);
    typeKey("g");
}

TEST_F(ViewWindowTest, ShadowOnTheGroundComesAndGoes)
{
    const QImage without = after("g");
    const auto darker = [&](const QImage& with) {
        int count = 0;
        for (int y = 0; y < without.height(); ++y)
            for (int x = 0; x < without.width(); ++x)
                count += isBackground(without.pixel(x, y)) && qGray(with.pixel(x, y)) < qGray(without.pixel(x, y)) - 15;
        return count / (double(without.width()) * without.height());
    };

    const QImage with = after("j");
    EXPECT_GT(darker(with), 0.02);
    EXPECT_EQ(after("j"), without);
    typeKey("g");
}

TEST_F(ViewWindowTest, NothingIsDrawnWhileNothingChanges)
{
    const int before = frames();

    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < 600)
        QApplication::processEvents(QEventLoop::AllEvents, 20);

    EXPECT_EQ(frames(), before);
}

double processorSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) * 1e-6;
}

TEST_F(ViewWindowTest, IdleWindowUsesNoProcessor)
{
    constexpr int seconds = 3;
    QEventLoop loop; // which sleeps, as the application's does
    QTimer::singleShot(2000, &loop, &QEventLoop::quit);
    loop.exec(); // the driver has a late look at its programs
    const double before = processorSeconds();

    QTimer::singleShot(seconds * 1000, &loop, &QEventLoop::quit);
    loop.exec();

    EXPECT_LT(processorSeconds() - before, 0.01 * seconds);
}

TEST_F(ViewWindowTest, PostFromAnotherThreadIsDrawn)
{
    const int before = frames();
    bool ran = false;

    std::thread([&ran] { Scene::Get()->addRenderTask([&ran] { ran = true; }, 0); }).join();

    EXPECT_TRUE(waitFor([&] { return ran && frames() > before; }));
}

TEST_F(ViewWindowTest, TaskThatFailsIsToldAndTheWindowGoesOn)
{
    QString told;
    const auto connection =
        QObject::connect(&view(), &ViewWidget::failed, [&told](const QString& text) { told = text; });

    Scene::Get()->addRenderTask([] { throw std::runtime_error("no such thing"); }, 0);

    EXPECT_TRUE(waitFor([&] { return told == "no such thing"; }));
    QObject::disconnect(connection);
    typeKey("5");
    EXPECT_TRUE(waitFor([] { return looksAlong(0, 0, -1); }));
}

TEST_F(ViewWindowTest, UncoveredViewIsDrawnAgain)
{
    QWidget cover;
    cover.setWindowFlag(Qt::WindowStaysOnTopHint);
    cover.setGeometry(window().geometry());
    cover.show();
    ASSERT_TRUE(waitFor([&] { return cover.isVisible(); }));
    settle();
    const int before = frames();

    cover.hide();

    EXPECT_TRUE(waitFor([&] { return frames() > before; }));
    settle();
    EXPECT_GT(shownArea(seen()).height(), view().height() / 2);
}

TEST_F(ViewWindowTest, F1ListsTheKeys)
{
    typeKey("F1");

    QMessageBox* box = nullptr;
    EXPECT_TRUE(waitFor([&] { return (box = window().findChild<QMessageBox*>()) && box->isVisible(); }));
    ASSERT_NE(box, nullptr);
    EXPECT_THAT(box->text().toStdString(), HasSubstr("Isometric"));
    EXPECT_THAT(box->text().toStdString(), HasSubstr("<b>G</b></td><td style='white-space:nowrap'>Grid</td>"));
    EXPECT_THAT(box->text().toStdString(), HasSubstr("<b>0</b> or <b>I</b>"));
    EXPECT_THAT(box->text().toStdString(), HasSubstr("<b>Middle drag</b></td><td style='white-space:nowrap'>orbits"));
    EXPECT_THAT(box->text().toStdString(), HasSubstr("<b>Alt+Shift+click</b>"));
    settle();
    shoot("keys");
    box->close();
}

} // namespace
} // namespace vrkview::test
