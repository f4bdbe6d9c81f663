// A view in a widget of Qt's, beside the application's own: widget <file.step|.brep|.stl> [<picture.png>]
// Drag: orbit. With a picture it draws one frame into that, and ends.
#include <vrk/platform/layout/Layout.h>
#include <vrk/platform/station/Import.h>
#include <vrk/scene/Scene.h>
#include <vrk/scene/StartUp.h>
#include <vrk/selection/VisualSelection.h>
#include <vrk/view/Camera.h>
#include <vrk/view/WindowTarget.h>

#include <QApplication>
#include <QLabel>
#include <QMouseEvent>
#include <QSplitter>
#include <QTimer>
#include <iostream>

using namespace vrk;

class View : public QWidget {
public:
    View()
    {
        setAttribute(Qt::WA_NativeWindow);
        setAttribute(Qt::WA_PaintOnScreen); // and not by Qt
        connect(&frames, &QTimer::timeout, this, &View::draw);
        frames.start(16);
    }
    QPaintEngine* paintEngine() const override { return nullptr; }

    void draw()
    {
        const QSize pixels = size() * devicePixelRatioF();
        const auto width = static_cast<unsigned>(pixels.width()), height = static_cast<unsigned>(pixels.height());
        if (!target) {
            target = std::make_unique<visual::WindowTarget>(winId(), width, height, 4);
            visual::Camera::Get()->setRenderTarget(target->renderTarget());
            visual::Scene& scene = *visual::Scene::Get();
            scene.setCameraPose(scene.getViewPoseForDir({-0.5f, 0.7f, -0.5f}, {0, 0, 1}));
        }
        target->resize(width, height);
        selection::VisualSelection::Get()->update();
        visual::Scene::Get()->processMsgs();
        target->draw();
        if (!picture.empty()) {
            target->savePng(picture);
            QApplication::quit();
        }
    }

    void mousePressEvent(QMouseEvent* event) override
    {
        last = event->position() * devicePixelRatioF();
        visual::Camera::Get()->startRotating(static_cast<float>(last.x()), static_cast<float>(last.y()));
    }
    void mouseMoveEvent(QMouseEvent* event) override
    {
        const QPointF by = event->position() * devicePixelRatioF() - last;
        last += by; // device pixels
        visual::Camera::Get()->rotateScene(static_cast<float>(by.x()), static_cast<float>(by.y()));
    }
    std::string picture;

private:
    QTimer frames;
    QPointF last;
    std::unique_ptr<visual::WindowTarget> target;
};

int main(int count, char** words)
{
    QApplication application(count, words);
    std::string why = "widget <file> [<picture.png>]";
    if (count < 2 || !visual::TryInit(16, 16, visual::DefaultSettings(), why)) {
        std::cerr << why << '\n';
        return 2;
    }
    for (const auto& part : station::ImportFile(words[1]))
        layout::Layout::inst().addPart(part);
    visual::Scene::LoadStation();
    visual::Scene::Get()->processMsgs();
    QSplitter window;
    window.addWidget(new QLabel("My application"));
    auto* view = new View;
    view->picture = count > 2 ? words[2] : "";
    window.addWidget(view);
    window.resize(1000, 600);
    window.show();
    return QApplication::exec();
}
