// A window of GLFW's: window <file.step|.brep|.stl> [<picture.png>]
// Left button: select, with Shift by a rectangle; middle: orbit; right: pan; wheel: zoom.
// With a picture it draws one frame into that, and ends.
#include <vrk/platform/layout/Layout.h>
#include <vrk/platform/station/Import.h>
#include <vrk/scene/Scene.h>
#include <vrk/scene/StartUp.h>
#include <vrk/selection/geometry/Result.h>
#include <vrk/selection/region/RegionQuery.h>
#include <vrk/view/Camera.h>
#include <vrk/view/Navigator.h>
#include <vrk/view/RenderFrame.h>
#include <vrk/view/WindowTarget.h>
#include <vrk/visual/Visual.h>

#define GLFW_EXPOSE_NATIVE_X11 // behind our headers: it makes macros of words that they use
#include <GLFW/glfw3.h>
#include <GLFW/glfw3native.h>
#include <algorithm>
#include <iostream>
#include <vector>
using namespace vrk;

static visual::Navigator* navigator = nullptr; // orbits, pans, zooms, and says what is clicked
static double atX = 0, atY = 0;
static void press(GLFWwindow*, int button, int action, int modifiers)
{
    using Button = visual::Navigator::Button;
    const Button which = button == GLFW_MOUSE_BUTTON_LEFT     ? Button::Left
                         : button == GLFW_MOUSE_BUTTON_MIDDLE ? Button::Middle
                                                              : Button::Right;
    if (action == GLFW_PRESS)
        navigator->press(which, atX, atY, (modifiers & GLFW_MOD_SHIFT) != 0);
    else
        navigator->release(which, atX, atY);
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
    visual::Navigator mouse(*visual::Camera::Get());
    navigator = &mouse;
    mouse.onClick = [&scene](const selection::Result& hit) {
        hit.hit ? scene.setVisualSelected(hit.visual->getId()) : scene.clearSelections();
    };
    mouse.onRegion = [&scene](const selection::RegionAnswer& taken) {
        std::vector<unsigned> ids;
        for (const selection::RegionAnswer::Whole& body : taken.bodies)
            ids.push_back(body.id);
        scene.setVisualsSelected(ids);
    };
    glfwSetMouseButtonCallback(window, press);
    glfwSetCursorPosCallback(window, [](GLFWwindow*, double x, double y) { navigator->move(atX = x, atY = y); });
    glfwSetScrollCallback(window, [](GLFWwindow*, double, double by) { navigator->turnWheel(atX, atY, by); });
    for (bool isDone = false; !isDone && !glfwWindowShouldClose(window); glfwWaitEventsTimeout(0.016)) {
        int width = 0, height = 0;
        glfwGetFramebufferSize(window, &width, &height);
        target.resize(static_cast<unsigned>(std::max(width, 1)), static_cast<unsigned>(std::max(height, 1)));
        scene.processMsgs();
        visual::renderFrame();
        if ((isDone = count > 2))
            target.savePng(words[2]);
    }
} catch (const std::exception& failure) {
    std::cerr << failure.what() << '\n';
    return 1;
}
