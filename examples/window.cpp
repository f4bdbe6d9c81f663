// A window of GLFW's: window <file.step|.brep|.stl> [<picture.png>]
// Left button: select; middle: orbit; right: pan; wheel: zoom. With a picture it draws one frame into that, and ends.
#include <vrk/platform/layout/Layout.h>
#include <vrk/platform/station/Import.h>
#include <vrk/scene/Scene.h>
#include <vrk/scene/StartUp.h>
#include <vrk/selection/VisualSelection.h>
#include <vrk/view/Camera.h>
#include <vrk/view/RenderFrame.h>
#include <vrk/view/WindowTarget.h>
#include <vrk/visual/Visual.h>

#define GLFW_EXPOSE_NATIVE_X11 // behind our headers: it makes macros of words that they use
#include <GLFW/glfw3.h>
#include <GLFW/glfw3native.h>
#include <iostream>
using namespace vrk;

static float lastX = 0, lastY = 0;

static void press(GLFWwindow*, int button, int action, int)
{
    if (action == GLFW_PRESS && button == GLFW_MOUSE_BUTTON_MIDDLE)
        visual::Camera::Get()->startRotating(lastX, lastY);
    if (action != GLFW_PRESS || button != GLFW_MOUSE_BUTTON_LEFT)
        return;
    const selection::Result hit = selection::VisualSelection::Get()->select(lastX, lastY);
    visual::Scene::Get()->clearSelections();
    if (hit.hit)
        visual::Scene::Get()->setVisualSelected(hit.visual->getId());
}

static void move(GLFWwindow* window, double toX, double toY)
{
    const auto x = static_cast<float>(toX), y = static_cast<float>(toY);
    if (glfwGetMouseButton(window, GLFW_MOUSE_BUTTON_MIDDLE) == GLFW_PRESS)
        visual::Camera::Get()->rotateScene(x - lastX, y - lastY);
    if (glfwGetMouseButton(window, GLFW_MOUSE_BUTTON_RIGHT) == GLFW_PRESS)
        visual::Camera::Get()->translateScene(x, y, x - lastX, y - lastY);
    lastX = x, lastY = y;
}

static void turnWheel(GLFWwindow*, double, double notches)
{
    visual::Camera::Get()->zoom(lastX, lastY, 0, static_cast<float>(notches));
}

int main(int count, char** words)
try {
    std::string why = "window <file> [<picture.png>]";
    if (count < 2 || !glfwInit() || !visual::TryInit(16, 16, visual::DefaultSettings(), why))
        throw std::runtime_error(why);
    glfwWindowHint(GLFW_CLIENT_API, GLFW_NO_API); // the context is the library's
    GLFWwindow* window = glfwCreateWindow(1000, 700, "vrkvisual", nullptr, nullptr);
    visual::WindowTarget target(glfwGetX11Window(window), 1000, 700, 4);
    visual::Camera::Get()->setRenderTarget(target.renderTarget());
    for (const auto& part : station::ImportFile(words[1]))
        layout::Layout::inst().addPart(part);
    visual::Scene& scene = *visual::Scene::Get();
    visual::Scene::LoadStation();
    scene.processMsgs();
    scene.setCameraPose(scene.getViewPoseForDir({-0.5f, 0.7f, -0.5f}, {0, 0, 1}));
    glfwSetMouseButtonCallback(window, press);
    glfwSetCursorPosCallback(window, move);
    glfwSetScrollCallback(window, turnWheel);
    for (bool isDone = false; !isDone && !glfwWindowShouldClose(window); glfwWaitEventsTimeout(0.016)) {
        int width = 0, height = 0;
        glfwGetFramebufferSize(window, &width, &height);
        if (width > 0 && height > 0)
            target.resize(static_cast<unsigned>(width), static_cast<unsigned>(height));
        selection::VisualSelection::Get()->update(); // for the picks of gestures
        scene.processMsgs();
        visual::renderFrame();
        if ((isDone = count > 2))
            target.savePng(words[2]);
    }
} catch (const std::exception& failure) {
    std::cerr << failure.what() << '\n';
    return 1;
}
