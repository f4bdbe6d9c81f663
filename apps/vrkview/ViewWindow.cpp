#include "ViewWindow.h"

#include "StartUp.h"
#include "Station.h"
#include "ViewWidget.h"
#include "Views.h"

#include "platform/broker/SignalBroker.h"
#include "scene/Scene.h"
#include "visual/Visual.h"

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
                             "<tr><td><b>F1</b></td><td>This list</td></tr>"
                             "<tr><td><b>Ctrl+Q</b></td><td>Leave</td></tr>"
                             "</table>";

QString counted(std::uint64_t number, const char* one, const char* many)
{
    return QLocale(QLocale::English).toString(static_cast<qulonglong>(number)) + " " + (number == 1 ? one : many);
}

QString contentsOf(const Station& station)
{
    vrk::visual::Visual& world = *vrk::visual::Scene::GetWorldVisual();
    return QString::fromStdString(station.title) + "   " +
           QStringList{counted(world.getBodiesNum(), "body", "bodies"), counted(world.getFacesNum(), "face", "faces"),
                       counted(world.getTrianglesNum(), "triangle", "triangles")}
               .join(", ");
}

} // namespace

ViewWindow::ViewWindow(const Station& station)
    : view(new ViewWidget(this)), contents(new QLabel(contentsOf(station))), frameTime(new QLabel)
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
    connect(view, &ViewWidget::ready, this, [] {
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
    else
        QMainWindow::keyPressEvent(event);
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
