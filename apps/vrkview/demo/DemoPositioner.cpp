#include "demo/DemoPositioner.h"

#include "demo/DemoParts.h"

#include "platform/layout/Frame.h"
#include "platform/layout/Mechanism.h"
#include "platform/layout/Part.h"

#include <cmath>
#include <numbers>

namespace vrkview::demo {
namespace {

using vrk::layout::Part;

const gp_Dir up = gp::DZ();
const gp_Dir aside = gp::DY();

constexpr double tiltHeight = 640;
constexpr double tableDepth = 110; // of the table's top below the tilting axis
constexpr double tableRadius = 260;

EdgeTest liesAtY(double y)
{
    return [y](const gp_Pnt& middle, const gp_Vec& direction) {
        return std::abs(middle.Y() - y) < 1e-3 && std::abs(direction.Y()) < 1e-3;
    };
}

TopoDS_Shape footPlate()
{
    const TopoDS_Shape foot = plate(gp_Ax2(gp::Origin(), up, gp::DX()),
                                    {{-230, -40, 60}, {230, -40, 60}, {230, 530, 60}, {-230, 530, 60}}, 30);
    return bevelled(foot, 5, liesAtHeight(30));
}

TopoDS_Shape column()
{
    const TopoDS_Shape plain = sidePlate({{-150, 70, 42}, {150, 70, 42}, {0, tiltHeight, 165}}, 400, 560);
    return rounded(rounded(plain, 26, liesAtY(400)), 26, liesAtY(560));
}

TopoDS_Shape cradle()
{
    TopoDS_Shape arm = sidePlate({{-90, -226, 44}, {90, -226, 44}, {0, 0, 138}}, 292, 342);
    arm = rounded(arm, 14, liesAtY(292));
    const TopoDS_Shape shelf =
        plate(gp_Ax2(gp_Pnt(0, 0, -270), up, gp::DX()), {{0, 0, 150}, {130, 300, 4}, {-130, 300, 4}}, 62);
    return fused(arm, bevelled(shelf, 8, liesAtHeight(-208)));
}

void drawStand(Part& part)
{
    addBody(part, "Positioner foot", footPlate, color::graphite);
    addBody(part, "Positioner column", column, color::slate);
    addBody(
        part, "Tilt motor",
        [&] {
            return drum({0, 556, tiltHeight}, aside, 92, 120, 18);
        },
        color::graphite);
    addBody(
        part, "Tilt ring",
        [&] {
            return cylinder({0, 386, tiltHeight}, aside, 140, 16);
        },
        color::dark);
}

void drawCradle(Part& part)
{
    addBody(
        part, "Tilt hub",
        [&] {
            return drum({0, 340, 0}, aside, 132, 46, 4);
        },
        color::silver);
    addBody(part, "Cradle", cradle, color::orange);
    addBody(
        part, "Table bearing",
        [&] {
            return cylinder({0, 0, -208}, up, 120, 56);
        },
        color::dark);
    addBody(
        part, "Table motor",
        [&] {
            return drum({0, 0, -268}, gp_Dir(0, 0, -1), 84, 110, 16);
        },
        color::graphite);
}

TopoDS_Shape turntable()
{
    constexpr double thickness = 44, slotWidth = 14;
    const TopoDS_Shape disc =
        bevelled(cylinder({0, 0, -thickness}, up, tableRadius, thickness), 5,
                 [](const gp_Pnt& middle, const gp_Vec& direction) { return liesAtHeight(0)(middle, direction); });
    std::vector<TopoDS_Shape> slots = {cylinder({0, 0, -12}, up, 40, 20)};
    for (int i = 0; i < 4; ++i) {
        const double angle = std::numbers::pi * (2 * i + 1) / 4;
        const gp_Dir along(std::cos(angle), std::sin(angle), 0);
        slots.push_back(
            plate(gp_Ax2(gp_Pnt(0, 0, -14), up, along), {{110, 0, slotWidth / 2}, {400, 0, slotWidth / 2}}, 20));
    }
    return without(disc, slots);
}

void drawTable(Part& part)
{
    addBody(part, "Table", turntable, color::brightSteel);
}

} // namespace

std::shared_ptr<vrk::layout::Device> makePositioner(const vrk::rob::Posed& pose)
{
    auto positioner = std::make_shared<vrk::layout::Device>(newId(), "Positioner");
    positioner->setPose(pose);
    const LinkPart stand = makeLink("stand");
    const LinkPart cradle = makeLink("cradle");
    const LinkPart table = makeLink("table");
    drawStand(*stand.part);
    drawCradle(*cradle.part);
    drawTable(*table.part);
    for (const LinkPart& made : {stand, cradle, table})
        positioner->addLink(made.link);
    addTurn(*positioner, *stand.link, *cradle.link, {"tilt", {0, 0, tiltHeight}, {0, 1, 0}, -90, 90, 0});
    addTurn(*positioner, *cradle.link, *table.link, {"turn", {0, 0, -tableDepth}, {0, 0, 1}, -360, 360, 0});
    positioner->addFrame(std::make_shared<vrk::layout::Frame>(newId(), "Table centre"), table.link->getId());
    return positioner;
}

} // namespace vrkview::demo
