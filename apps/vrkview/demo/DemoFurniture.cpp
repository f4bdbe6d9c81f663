#include "demo/DemoFurniture.h"

#include "demo/DemoParts.h"
#include "demo/KeptShapes.h"

#include "platform/layout/Assembly.h"
#include "platform/layout/Body.h"
#include "platform/layout/Part.h"
#include "platform/station/GeometryCache.h"

#include <array>
#include <cstdint>
#include <string>
#include <type_traits>

namespace vrkview::demo {
namespace {

using vrk::layout::Assembly;
using vrk::layout::Part;
using vrk::rob::Posed;

const gp_Dir up = gp::DZ();

// The fence

constexpr double panelWidth = 750, fenceHeight = 1300, panelLow = 140;
constexpr double left = -820, behind = 820; // where it stands
constexpr int panelsBehind = 3, panelsLeft = 2;

using Corner = std::array<float, 3>;

/// Triangles of a binary STL file.
class StlText {
public:
    void addBar(const Corner& low, const Corner& high)
    {
        const auto corner = [&](int i) {
            return Corner{i & 1 ? high[0] : low[0], i & 2 ? high[1] : low[1], i & 4 ? high[2] : low[2]};
        };
        struct Side {
            Corner normal;
            std::array<int, 4> corners; // anticlockwise from outside
        };
        constexpr std::array<Side, 6> sides = {Side{{-1, 0, 0}, {0, 4, 6, 2}}, Side{{1, 0, 0}, {1, 3, 7, 5}},
                                               Side{{0, -1, 0}, {0, 1, 5, 4}}, Side{{0, 1, 0}, {2, 6, 7, 3}},
                                               Side{{0, 0, -1}, {0, 2, 3, 1}}, Side{{0, 0, 1}, {4, 5, 7, 6}}};
        for (const auto& [normal, at] : sides) {
            add(normal, corner(at[0]), corner(at[1]), corner(at[2]));
            add(normal, corner(at[0]), corner(at[2]), corner(at[3]));
        }
    }
    std::string text() const { return std::string(80, ' ') + bytesOf(count) + triangles; }

private:
    template <typename Value>
    static std::string bytesOf(const Value& value)
    {
        static_assert(std::is_trivially_copyable_v<Value>);
        return {reinterpret_cast<const char*>(&value), sizeof value};
    }
    void add(const Corner& normal, const Corner& a, const Corner& b, const Corner& c)
    {
        triangles += bytesOf(normal) + bytesOf(a) + bytesOf(b) + bytesOf(c) + bytesOf(std::uint16_t{0});
        ++count;
    }

    std::uint32_t count = 0;
    std::string triangles;
};

/// A frame of square tube with upright bars in it, along x from the middle of one post to that of the next.
std::string panelStl()
{
    constexpr float from = 36, to = panelWidth - 36, low = panelLow, high = fenceHeight - 30, tube = 13, wire = 4;
    constexpr int bars = 11;
    StlText stl;
    for (const float z : {low, high - 2 * tube})
        stl.addBar({from, -tube, z}, {to, tube, z + 2 * tube});
    for (const float x : {from, to - 2 * tube})
        stl.addBar({x, -tube, low + 2 * tube}, {x + 2 * tube, tube, high - 2 * tube});
    for (int i = 1; i <= bars; ++i) {
        const float x = from + (to - from) * static_cast<float>(i) / (bars + 1);
        stl.addBar({x - wire, -wire, low + 2 * tube}, {x + wire, wire, high - 2 * tube});
    }
    for (int i = 1; i <= 2; ++i) {
        const float z = low + (high - low) * static_cast<float>(i) / 3;
        stl.addBar({from + 2 * tube, wire, z - wire}, {to - 2 * tube, 3 * wire, z + wire});
    }
    return stl.text();
}

TopoDS_Shape makePost()
{
    TopoDS_Shape foot = bevelled(box({-70, -70, 0}, {70, 70, 12}), 3, liesAtHeight(12));
    TopoDS_Shape tube = rounded(box({-30, -30, 6}, {30, 30, fenceHeight}), 8, isAlong(up));
    return fused(foot, tube);
}

/// As many panels in a row as given, each with the post before it.
void addRow(Assembly& fence, const TopoDS_Shape& post, const std::string& panelFile, int panels, double startX,
            double startY, double turn)
{
    const Posed start = at(startX, startY, 0, turn);
    for (int i = 0; i < panels; ++i) {
        const Posed place = start * at(i * panelWidth, 0, 0);
        fence.addPart(single("Fence post", place, post, color::safety));
        const std::shared_ptr<Part> panel = makePart("Fence panel", place);
        const std::shared_ptr<vrk::layout::Body> body = panel->addBody("Fence panel");
        body->setGeometry(panelFile, "stl");
        body->setColor(color::graphite);
        fence.addPart(panel);
    }
}

/// Four legs with bars between them.
/// @param x, y  how far out of the middle the legs reach.
TopoDS_Shape benchFrame(double x, double y, double height, double tube)
{
    std::vector<TopoDS_Shape> frame;
    for (const double side : {-1.0, 1.0}) {
        for (const double end : {-1.0, 1.0})
            frame.push_back(rounded(box({end > 0 ? x - tube : -x, side > 0 ? y - tube : -y, 0},
                                        {end > 0 ? x : -x + tube, side > 0 ? y : -y + tube, height}),
                                    10, isAlong(up)));
        frame.push_back(
            box({-x + tube, side > 0 ? y - tube + 8 : -y + 8, 120}, {x - tube, side > 0 ? y - 8 : -y + tube - 8, 164}));
        frame.push_back(
            box({side > 0 ? x - tube + 8 : -x + 8, -y + tube, 120}, {side > 0 ? x - 8 : -x + tube - 8, y - tube, 164}));
    }
    return together(frame);
}

TopoDS_Shape palletBoards()
{
    constexpr double length = 1200, depth = 800, board = 22, block = 78;
    std::vector<TopoDS_Shape> wood;
    for (const double y : {-350.0, 0.0, 350.0}) {
        wood.push_back(box({-length / 2, y - 50, 0}, {length / 2, y + 50, board}));
        for (const double x : {-527.5, 0.0, 527.5})
            wood.push_back(box({x - 72.5, y - 50, board}, {x + 72.5, y + 50, board + block}));
    }
    for (const double x : {-527.5, 0.0, 527.5})
        wood.push_back(box({x - 72.5, -depth / 2, board + block}, {x + 72.5, depth / 2, board + block + board}));
    for (const double y : {-350.0, -175.0, 0.0, 175.0, 350.0})
        wood.push_back(box({-length / 2, y - 62, board + block + board}, {length / 2, y + 62, palletHeight}));
    return together(wood);
}

} // namespace

std::shared_ptr<Assembly> makeFence()
{
    // In the cache, so that a station which is saved takes the file along.
    const std::string panel =
        vrk::station::GeometryCache::Get("fence_panel", "demo station, fence panel 1", ".stl", panelStl);
    auto fence = std::make_shared<Assembly>(newId(), "Fence");
    const TopoDS_Shape post = kept("Fence post", makePost);
    addRow(*fence, post, panel, panelsLeft, left, behind - panelsLeft * panelWidth, 90);
    addRow(*fence, post, panel, panelsBehind, left, behind, 0);
    fence->addPart(single("Fence post", at(left + panelsBehind * panelWidth, behind, 0), post, color::safety));
    return fence;
}

std::shared_ptr<Part> makePedestal(double height)
{
    constexpr double plateThickness = 24;
    const auto square = [](double half, double from, double to, double corner) {
        return rounded(box({-half, -half, from}, {half, half, to}), corner, isAlong(up));
    };
    const std::shared_ptr<Part> part = makePart("Pedestal");
    addBody(
        *part, "Pedestal", [&] { return square(190, 10, height - 10, 34); }, color::slate);
    addBody(
        *part, "Pedestal plates",
        [&] {
            return together({bevelled(square(300, 0, plateThickness, 24), 4, liesAtHeight(plateThickness)),
                             square(225, height - plateThickness, height, 60)});
        },
        color::graphite);
    return part;
}

std::shared_ptr<Part> makeCabinet(const Posed& pose)
{
    constexpr double width = 520, depth = 420, height = 860, foot = 60;
    const std::shared_ptr<Part> part = makePart("Controller", pose);
    const auto casing = [] {
        const TopoDS_Shape plain = box({-width / 2, -depth / 2, foot}, {width / 2, depth / 2, height});
        return bevelled(rounded(plain, 24, isAlong(up)), 6, liesAtHeight(height));
    };
    addBody(*part, "Cabinet", casing, color::graphite);
    addBody(
        *part, "Cabinet foot",
        [&] {
            return box({-width / 2 + 30, -depth / 2 + 30, 0}, {width / 2 - 30, depth / 2 - 30, foot});
        },
        color::dark);
    const double front = -depth / 2;
    addBody(
        *part, "Door",
        [&] {
            return rounded(box({-width / 2 + 34, front - 10, 110}, {width / 2 - 34, front + 5, height - 40}), 16,
                           isAlong(gp::DY()));
        },
        color::casing);
    addBody(
        *part, "Handle",
        [&] {
            return rounded(box({150, front - 34, 420}, {172, front - 8, 560}), 6, isAlong(up));
        },
        color::dark);
    addBody(
        *part, "Vents",
        [&] {
            return together({box({-150, front - 12, 170}, {80, front - 8, 182}),
                             box({-150, front - 12, 200}, {80, front - 8, 212}),
                             box({-150, front - 12, 230}, {80, front - 8, 242})});
        },
        color::dark);
    addBody(
        *part, "Main switch",
        [&] {
            return drum({-130, front - 8, 700}, gp_Dir(0, -1, 0), 34, 24, 5);
        },
        color::red);
    const double x = width / 2 - 80, y = depth / 2 - 80;
    addBody(
        *part, "Lamp foot",
        [&] {
            return cylinder({x, y, height}, up, 24, 120);
        },
        color::steel);
    addBody(
        *part, "Green lamp",
        [&] {
            return cylinder({x, y, height + 120}, up, 30, 58);
        },
        color::green);
    addBody(
        *part, "Amber lamp",
        [&] {
            return cylinder({x, y, height + 182}, up, 30, 58);
        },
        color::safety);
    addBody(
        *part, "Red lamp",
        [&] {
            return drum({x, y, height + 244}, up, 30, 62, 10);
        },
        color::red);
    return part;
}

std::shared_ptr<Part> makeBench(const Posed& pose)
{
    constexpr double length = 1080, depth = 640, top = 64, tube = 60, inset = 40;
    const std::shared_ptr<Part> part = makePart("Measuring bench", pose);
    const auto stone = [] {
        const TopoDS_Shape plain =
            box({-length / 2, -depth / 2, benchHeight - top}, {length / 2, depth / 2, benchHeight});
        return bevelled(rounded(plain, 12, isAlong(up)), 5, liesAtHeight(benchHeight));
    };
    addBody(*part, "Stone top", stone, color::granite);
    const auto frame = [] { return benchFrame(length / 2 - inset, depth / 2 - inset, benchHeight - top, tube); };
    addBody(*part, "Bench frame", frame, color::brightSteel);
    return part;
}

std::shared_ptr<Part> makePallet(const Posed& pose)
{
    const std::shared_ptr<Part> part = makePart("Pallet", pose);
    addBody(*part, "Pallet", palletBoards, color::wood);
    return part;
}

} // namespace vrkview::demo
