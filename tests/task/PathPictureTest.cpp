#include "ProgramFixture.h"

#include "platform/layout/Body.h"
#include "visual/SolidVisual.h"

namespace vrk::visual {
namespace {

using rob::Posd;
using rob::Posf;
using test::Picture;
using test::Pixel;

/// A program over a plate: down to it from the side, along it, over an arc, and away.
class PathPicture : public test::WithProgram<test::RenderTest> {
protected:
    PathPicture()
    {
        setSize(800, 500);
        settings.targetFrameSize = 30;
        settings.jointTargetFrameSize = 30;
        const TopoDS_Shape shape = test::meshedBox(520, 300, 20);
        const auto body = test::addModelBody(shape, "path-plate", "#5A6068");
        SolidVisual::Build(world, body.get(), shape);
        Scene::GetVisual(body->getId())->setPosition(-260, -150, -20);

        place(program.dashed(Posd(-200, -100, 150)));
        place(program.dashed(Posd(-200, -100, 10)));
        place(program.linear(Posd(-50, -100, 10)));
        place(program.linear(Posd(0, -20, 10)));
        task::MoveInst* arc = program.circular(Posd(70, 60, 10), Posd(140, -20, 10));
        place(arc);
        arc->getCircleItem()->setPose({arc->getCircleItem()->getPose().position, downwards});
        place(program.linear(Posd(140, -100, 10)));
        last = program.dashed(Posd(140, -100, 150));
        place(last);
    }
    /// Z goes into the plate, as with tools.
    static void place(task::MoveInst* move)
    {
        test::targetOf(move).setPose({test::targetOf(move).getPose().position, downwards});
    }
    bool isYellow(const Picture& picture, const Posf& at) const
    {
        const Pixel pixel = pixelAt(picture, at);
        return pixel.r > 180 && pixel.g > 140 && pixel.b < 120;
    }

    static const rob::Rotationd downwards;
    task::MoveInst* last = nullptr;
};

const rob::Rotationd PathPicture::downwards(0, 1, 0, 0);
const test::View fromAbove{{130, -430, 390}, {0, 0, 30}, {0, 0, 1}};

TEST_F(PathPicture, PathWithItsLinesArrowsAndTargets)
{
    show();

    const Picture picture = render(fromAbove);

    EXPECT_TRUE(isYellow(picture, {-100, -100, 10})) << "a straight one";
    EXPECT_TRUE(isYellow(picture, {-200, -100, 140})) << "the first dash";
    EXPECT_FALSE(isYellow(picture, {-200, -100, 10 + 140 * 0.025f})) << "a gap";
    EXPECT_TRUE(matchesBaseline(picture, "path"));
}

TEST_F(PathPicture, SelectedPathWithAHighlightedMove)
{
    show();
    scene.setVisualsSelected({program.path->getId()});
    scene.setVisualHighlighted(last->getId());

    EXPECT_TRUE(matchesBaseline(render(fromAbove), "path_selected"));
}

TEST_F(PathPicture, SwitchesTakeAwayWhatTheyName)
{
    show();
    const Picture whole = render(fromAbove);
    const Posf onLine(-100, -100, 10);

    scene.setDrawTargetVisual(false);
    scene.setDrawPathArrow(false);
    const Picture linesAlone = render(fromAbove);
    EXPECT_TRUE(isYellow(linesAlone, onLine));
    EXPECT_GT(largestDifference(linesAlone, whole), 50);
    scene.setDrawSegVisual(false);
    const Picture nothing = render(fromAbove);
    EXPECT_FALSE(isYellow(nothing, onLine));
    scene.setDrawSegVisual(true);
    scene.setDrawTargetVisual(true);
    scene.setDrawPathArrow(true);
    EXPECT_LT(largestDifference(render(fromAbove), whole), 2) << "and give it back";
}

// The looks, one by one

struct ProgramLook {
    const char* baseline;
    void (*take)(Scene& scene, const test::TestProgram& program);
    bool isLineYellow;
};
class LooksOfAProgram : public PathPicture, public testing::WithParamInterface<ProgramLook> {};

TEST_P(LooksOfAProgram, AreTheirPictures)
{
    setSize(480, 300);
    for (const task::MoveInst* move : program.path->getMoveInstructions()) // their z axes out of the plate, to be seen
        for (const auto& item : {move->getTargetItem(), move->getCircleItem()})
            if (item)
                item->setPose(rob::Posed(item->getPose().position));
    show();
    const Picture whole = render(fromAbove);
    const Posf onLine(-100, -100, 10);
    ASSERT_TRUE(isYellow(whole, onLine));

    GetParam().take(scene, program);
    drain();
    const Picture picture = render(fromAbove);

    EXPECT_EQ(isYellow(picture, onLine), GetParam().isLineYellow);
    EXPECT_GT(largestDifference(picture, whole), 50);
    EXPECT_TRUE(matchesBaseline(picture, GetParam().baseline));
}

void drawOnly(Scene& scene, bool targets, bool arrows, bool lines)
{
    if (!targets)
        scene.setDrawTargetVisual(false);
    if (!arrows)
        scene.setDrawPathArrow(false);
    if (!lines)
        scene.setDrawSegVisual(false);
}

INSTANTIATE_TEST_SUITE_P(
    Table, LooksOfAProgram,
    testing::Values(
        ProgramLook{"program_targets",
                    [](Scene& scene, const test::TestProgram&) { drawOnly(scene, true, false, false); }, false},
        ProgramLook{"program_arrows",
                    [](Scene& scene, const test::TestProgram&) { drawOnly(scene, false, true, false); }, false},
        ProgramLook{"program_lines",
                    [](Scene& scene, const test::TestProgram&) { drawOnly(scene, false, false, true); }, true},
        ProgramLook{"program_z_axes",
                    [](Scene& scene, const test::TestProgram&) { scene.setDrawTargetZAxisOnly(true); }, true},
        ProgramLook{"program_highlighted",
                    [](Scene& scene, const test::TestProgram& of) { scene.setVisualHighlighted(of.path->getId()); },
                    false},
        ProgramLook{"program_selected",
                    [](Scene& scene, const test::TestProgram& of) { scene.setVisualsSelected({of.path->getId()}); },
                    false}),
    [](const auto& info) { return std::string(info.param.baseline); });

TEST_F(PathPicture, JointMovesAreDashed)
{
    setSize(480, 300);
    for (const task::MoveInst* move : std::vector(program.path->getMoveInstructions()))
        program.path->removeInstruction(move->getId());
    for (const Posd& to : {Posd(-200, -100, 150), Posd(-200, -100, 10), Posd(140, -100, 10), Posd(140, 60, 10)})
        place(program.dashed(to));
    show();

    const Picture picture = render(fromAbove);

    EXPECT_TRUE(isYellow(picture, {-200 + 340 * 0.08f, -100, 10})) << "a dash";
    EXPECT_FALSE(isYellow(picture, {-200 + 340 * 0.175f, -100, 10})) << "a gap";
}

} // namespace
} // namespace vrk::visual
