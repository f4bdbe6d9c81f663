// Pictures without a window: pictures <folder> <file.step|.brep|.stl|.urdf>...
// Writes one from each of 12 sides of what the files hold, and tells what lies in the middle of each.
#include <vrk/platform/layout/Layout.h>
#include <vrk/platform/station/Import.h>
#include <vrk/platform/station/ImportUrdf.h>
#include <vrk/scene/Init.h>
#include <vrk/scene/Scene.h>
#include <vrk/scene/StartUp.h>
#include <vrk/selection/VisualSelection.h>
#include <vrk/view/Camera.h>
#include <vrk/view/OffscreenTarget.h>
#include <vrk/view/RenderFrame.h>
#include <vrk/visual/Visual.h>

#include <cmath>
#include <iostream>

using namespace vrk;

static void add(const std::filesystem::path& file)
{
    layout::Layout& station = layout::Layout::inst();
    if (file.extension() == ".urdf")
        station.addMechanism(station::ImportUrdf(file));
    else
        for (const auto& part : station::ImportFile(file))
            station.addPart(part);
}

int main(int count, char** words)
try {
    for (int i = 2; i < count; ++i)
        add(words[i]);
    std::string why;
    if (count < 3 || !visual::TryInit(16, 16, visual::DefaultSettings(), why)) {
        std::cerr << (count < 3 ? "pictures <folder> <file>..." : why) << '\n';
        return 2;
    }
    visual::OffscreenTarget target(1200, 800, 4);
    visual::Camera& camera = *visual::Camera::Get();
    camera.setRenderTarget(target.renderTarget());
    visual::Scene& scene = *visual::Scene::Get();
    visual::Scene::LoadStation();
    scene.processMsgs();
    for (int side = 0; side < 12; ++side) {
        const float turn = static_cast<float>(side) * 0.5236f; // 30 degrees
        const rob::Dirf into = rob::normalized(rob::Vec3f(-std::cos(turn), -std::sin(turn), -0.5f));
        scene.setCameraPose(scene.getViewPoseForDir(into, {0, 0, 1}));
        scene.processMsgs();
        visual::renderFrame();
        target.savePng(std::filesystem::path(words[1]) / ("side" + std::to_string(side) + ".png"));
        selection::VisualSelection::Get()->update();
        const selection::Result hit = selection::VisualSelection::Get()->select(600, 400);
        std::cout << side << ": " << (hit.hit ? hit.visual->getName() : std::string("nothing")) << '\n';
    }
    visual::ReleaseResources();
} catch (const std::exception& failure) {
    std::cerr << failure.what() << '\n';
    return 1;
}
