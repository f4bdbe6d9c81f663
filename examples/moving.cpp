// A model of one's own, made in memory and moved from another thread at 100 Hz: moving <picture.png>
// A block travels along a beam for a second; the last frame is written.
#include <vrk/platform/layout/Layout.h>
#include <vrk/platform/layout/Part.h>
#include <vrk/platform/station/BareShapes.h>
#include <vrk/scene/Init.h>
#include <vrk/scene/Scene.h>
#include <vrk/scene/StartUp.h>
#include <vrk/view/Camera.h>
#include <vrk/view/OffscreenTarget.h>
#include <vrk/view/RenderFrame.h>

#include <BRepPrimAPI_MakeBox.hxx>

#include <chrono>
#include <iostream>
#include <thread>

using namespace vrk;

int main(int count, char** words)
try {
    std::string why;
    if (count != 2 || !visual::TryInit(16, 16, visual::DefaultSettings(), why)) {
        std::cerr << (count != 2 ? "moving <picture.png>" : why) << '\n';
        return 2;
    }
    visual::OffscreenTarget target(640, 400, 4);
    visual::Camera::Get()->setRenderTarget(target.renderTarget());
    visual::Scene& scene = *visual::Scene::Get();
    const auto block = station::PartOf("Block", BRepPrimAPI_MakeBox(120, 120, 120).Shape(), "#E8731A");
    const auto beam = station::PartOf("Beam", BRepPrimAPI_MakeBox(1200, 60, 60).Shape(), "#4A6A8A");
    for (const auto& part : {block, beam}) {
        layout::Layout::inst().addPart(part);
        scene.addPart(part.get());
    }
    scene.processMsgs();
    scene.setCameraPose(scene.getViewAllPose());

    std::thread mover([&scene, id = block->getId()] { // any thread may post
        for (int step = 0; step <= 100; ++step) {
            scene.setVisualPose(id, rob::Posef(rob::Posf(10.8f * static_cast<float>(step), -30, 60)));
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
    });
    int frames = 0;
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(1200);
    for (; std::chrono::steady_clock::now() < end; ++frames) {
        scene.processMsgs();
        visual::renderFrame();
    }
    mover.join();
    scene.processMsgs(); // what was posted last
    visual::renderFrame();
    target.savePng(words[1]);
    std::cout << frames << " frames\n";
    visual::ReleaseResources();
} catch (const std::exception& failure) {
    std::cerr << failure.what() << '\n';
    return 1;
}
