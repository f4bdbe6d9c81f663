// A view in a widget of Qt's, beside the application's own: widget <file.step|.brep|.stl> [<picture.png>]
// Drag: orbit; wheel: zoom. With a picture it draws one frame into that, and ends.
#include <QApplication>
#include <QLabel>
#include <QMouseEvent>
#include <QSplitter>
#include <QTimer>
#include <iostream>
#include <vrk/platform/layout/Layout.h>
#include <vrk/platform/station/Import.h>
#include <vrk/scene/Scene.h>
#include <vrk/scene/StartUp.h>
#include <vrk/view/Camera.h>
#include <vrk/view/Navigator.h>
#include <vrk/view/WindowTarget.h>

using namespace vrk;

class View : public QWidget {
public:
    explicit View(std::string wanted) : picture(std::move(wanted)), target(winId(), 600, 400, 4)
    {
        setAttribute(Qt::WA_NativeWindow);
        setAttribute(Qt::WA_PaintOnScreen); // and not by Qt
        visual::Camera::Get()->setRenderTarget(target.renderTarget());
        connect(&frames, &QTimer::timeout, this, &View::draw);
        frames.start(16);
    }
    QPaintEngine* paintEngine() const override { return nullptr; }

    void draw()
    {
        const QSize pixels = size() * devicePixelRatioF();
        target.resize(static_cast<unsigned>(pixels.width()), static_cast<unsigned>(pixels.height()));
        visual::Scene::Get()->processMsgs();
        target.draw();
        if (!picture.empty()) {
            target.savePng(picture);
            QApplication::quit();
        }
    }
    void mousePressEvent(QMouseEvent* event) override { mouse.press(Button::Middle, at(event).x(), at(event).y()); }
    void mouseMoveEvent(QMouseEvent* event) override { mouse.move(at(event).x(), at(event).y()); }
    void mouseReleaseEvent(QMouseEvent* event) override { mouse.release(Button::Middle, at(event).x(), at(event).y()); }
    void wheelEvent(QWheelEvent* event) override
    {
        mouse.turnWheel(at(event).x(), at(event).y(), event->angleDelta().y() / 120.0);
    }

private:
    using Button = visual::Navigator::Button;
    QPointF at(const QSinglePointEvent* event) const { return event->position() * devicePixelRatioF(); }
    QTimer frames;
    std::string picture; // empty for none
    visual::Navigator mouse{*visual::Camera::Get()};
    visual::WindowTarget target;
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
    visual::Scene& scene = *visual::Scene::Get();
    visual::Scene::LoadStation();
    QSplitter window;
    window.addWidget(new QLabel("My application"));
    window.addWidget(new View(count > 2 ? words[2] : ""));
    window.resize(1000, 600);
    scene.processMsgs();
    scene.setCameraPose(scene.getViewPoseForDir({-0.5f, 0.7f, -0.5f}, {0, 0, 1}));
    window.show();
    return QApplication::exec();
}
