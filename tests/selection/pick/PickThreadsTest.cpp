#include "platform/layout/Part.h"
#include "platform/station/BareShapes.h"
#include "selection/VisualSelection.h"
#include "selection/pick/PickQuery.h"
#include "support/SceneFixture.h"
#include "view/Camera.h"
#include "visual/Visual.h"

#include <BRepPrimAPI_MakeBox.hxx>

#include <atomic>
#include <chrono>
#include <deque>
#include <random>
#include <thread>

/// Picks of other threads, while the render thread adds, moves, hides and removes what they pick.
namespace vrk::selection {
namespace {

class PickThreads : public test::RenderTest {
protected:
    PickThreads()
    {
        render(test::lookingAtOrigin(400));
        query.camera = PickCamera::Main(1);
    }
    void addBlock()
    {
        parts.push_back(station::PartOf("block", BRepPrimAPI_MakeBox(20, 20, 20).Shape(), "#FF0000"));
        scene.addPart(parts.back().get());
    }
    void changeOne()
    {
        const auto place = static_cast<float>(random() % 60);
        const unsigned id = parts[random() % parts.size()]->getId();
        switch (random() % 4) {
        case 0:
            addBlock();
            break;
        case 1:
            if (parts.size() < 3)
                break;
            scene.removeVisual(parts.front()->getId());
            drain(); // a visual outlives no part
            parts.pop_front();
            return;
        case 2:
            scene.setVisualPose(id, rob::Posef(rob::Posf(place, -place, 0)));
            break;
        default:
            scene.setVisualVisible(id, random() % 2 == 0);
            break;
        }
        drain();
    }

    std::deque<std::shared_ptr<layout::Part>> parts;
    PickQuery query;
    std::mt19937 random{11};
};

TEST_F(PickThreads, UnderTheLockAPickSeesWholeThingsOrNone)
{
    VisualSelection& picking = *VisualSelection::Get();
    addBlock();
    drain();
    picking.update();
    std::atomic<bool> isOver = false;
    std::atomic<std::size_t> asked = 0, hits = 0;
    const auto askOnce = [&](const PickQuery& mine) {
        const auto still = picking.holdStill();
        if (picking.isDirty())
            return;
        try {
            const auto best = mine.askBest(picking);
            hits += best && best->visual->getId() != 0;
            ++asked;
        } catch (const std::logic_error&) { // a visual moved just then
        }
    };
    const auto ask = [&](unsigned seed) {
        std::mt19937 places(seed);
        PickQuery mine = query;
        while (!isOver) {
            mine.x = 150 + static_cast<double>(places() % 100);
            mine.y = 100 + static_cast<double>(places() % 100);
            askOnce(mine);
            std::this_thread::sleep_for(std::chrono::microseconds(50)); // the one that changes things comes in
        }
    };
    std::thread first(ask, 1), second(ask, 2);

    for (int i = 0; i < 300 || (hits == 0 && i < 20000); ++i) {
        changeOne();
        picking.update();
    }
    isOver = true;
    first.join();
    second.join();

    EXPECT_GT(asked, 0u);
    EXPECT_GT(hits, 0u);
}

TEST_F(PickThreads, UpdateWaitsForTheLock)
{
    VisualSelection& picking = *VisualSelection::Get();
    addBlock();
    drain();
    std::atomic<bool> isHeld = false, isGiven = false;
    std::thread holder([&] {
        const auto still = picking.holdStill();
        isHeld = true;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        isGiven = true;
    });
    while (!isHeld)
        std::this_thread::yield();

    picking.update();

    EXPECT_TRUE(isGiven);
    holder.join();
}

} // namespace
} // namespace vrk::selection
