#include "ViewWindow.h"

#include "Contents.h"
#include "DrawMode.h"
#include "StartUp.h"
#include "Surroundings.h"
#include "ViewWidget.h"
#include "Views.h"

#include "platform/broker/SignalBroker.h"
#include "scene/Scene.h"

#include <QKeyEvent>
#include <QLocale>
#include <QMessageBox>
#include <QStatusBar>

namespace vrkview {
namespace {

constexpr QSize startSize(1280, 840);

const char* const keysText = "<table cellspacing='6'>"
                             "<tr><td><b>F</b></td><td>Everything in view</td></tr>"
                             "<tr><td><b>0</b> or <b>I</b></td><td>Isometric view</td></tr>"
                             "<tr><td><b>1</b> &nbsp; <b>2</b></td><td>Front, back</td></tr>"
                             "<tr><td><b>3</b> &nbsp; <b>4</b></td><td>Left, right</td></tr>"
                             "<tr><td><b>5</b> &nbsp; <b>6</b></td><td>Top, bottom</td></tr>"
                             "<tr><td><b>F5</b> &nbsp; <b>F6</b></td><td>Shaded, shaded with edges</td></tr>"
                             "<tr><td><b>F7</b> &nbsp; <b>F8</b></td><td>Edges, wire</td></tr>"
                             "<tr><td><b>G</b></td><td>Grid shown or hidden</td></tr>"
                             "<tr><td><b>N</b></td><td>Grid across the next axis: z, x, y</td></tr>"
                             "<tr><td><b>+</b> &nbsp; <b>-</b></td><td>Longer, shorter frames</td></tr>"
                             "<tr><td><b>F1</b></td><td>This list</td></tr>"
                             "<tr><td><b>Ctrl+Q</b></td><td>Leave</td></tr>"
                             "</table>";

QString counted(std::uint64_t number, const char* one, const char* many)
{
    return QLocale(QLocale::English).toString(static_cast<qulonglong>(number)) + " " + (number == 1 ? one : many);
}

QString describe(const Station& station)
{
    const Contents contents = contentsOf(*vrk::visual::Scene::GetWorldVisual());
    QStringList counts;
    if (!station.parts.empty())
        counts << counted(contents.bodies, "body", "bodies") << counted(contents.faces, "face", "faces")
               << counted(contents.triangles, "triangle", "triangles");
    if (contents.curves > 0)
        counts << counted(contents.curves, "curve", "curves");
    if (!station.clouds.empty())
        counts << counted(station.clouds.size(), "cloud", "clouds");
    if (contents.points > 0)
        counts << counted(contents.points, "point", "points");
    return QString::fromStdString(station.title) + "   " + counts.join(", ");
}

} // namespace

ViewWindow::ViewWindow(const Station& station)
    : view(new ViewWidget(this)), contents(new QLabel(describe(station))), frameTime(new QLabel),
      hiddenFaces(station.hiddenFaces)
{
    setWindowTitle(QString::fromStdString(station.title) + " - vrkview");
    setCentralWidget(view);
    statusBar()->setSizeGripEnabled(false);
    statusBar()->addWidget(contents);
    statusBar()->addPermanentWidget(new QLabel("F1 keys"));
    statusBar()->addPermanentWidget(frameTime);
    frameTime->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    frameTime->setMinimumWidth(fontMetrics().horizontalAdvance("10,000.0 ms"));
    frameTicked = vrk::broker::SignalBroker::onFrameTicked([this](double ms) { showFrameTime(ms); });
    connect(view, &ViewWidget::ready, this, [this] {
        enlargeCross(static_cast<float>(devicePixelRatioF()));
        suitCameraToScene();
        lookAlong(*findView("iso"));
    });
    connect(view, &ViewWidget::failed, contents, &QLabel::setText);
    resize(startSize);
}

ViewWindow::~ViewWindow() = default;

void ViewWindow::keyPressEvent(QKeyEvent* event)
{
    const int key = event->key();
    if (event->modifiers() == Qt::ControlModifier && key == Qt::Key_Q)
        close();
    else if (event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier))
        QMainWindow::keyPressEvent(event);
    else if (const View* chosen = key == Qt::Key_I ? findView("iso") : findView(key - Qt::Key_0))
        lookAlong(*chosen);
    else if (key == Qt::Key_F)
        fitAll();
    else if (key == Qt::Key_F1)
        showKeys();
    else if (!changeLook(key))
        QMainWindow::keyPressEvent(event);
}

bool ViewWindow::changeLook(int key)
{
    if (const DrawMode* chosen = findDrawMode(key - Qt::Key_F1 + 1)) {
        showAs(*chosen, hiddenFaces);
        return true;
    }
    switch (key) {
    case Qt::Key_G:
        showGrid(!isGridShown());
        return true;
    case Qt::Key_N:
        turnGrid();
        return true;
    case Qt::Key_Plus:
    case Qt::Key_Equal: // where plus is, without shift
        changeFrameSize(1);
        return true;
    case Qt::Key_Minus:
        changeFrameSize(-1);
        return true;
    default:
        return false;
    }
}

void ViewWindow::showKeys()
{
    auto* box = new QMessageBox(QMessageBox::NoIcon, "Keys", keysText, QMessageBox::Close, this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

void ViewWindow::showFrameTime(double milliseconds)
{
    frameTime->setText(QLocale(QLocale::English).toString(milliseconds, 'f', 1) + " ms");
}

} // namespace vrkview
