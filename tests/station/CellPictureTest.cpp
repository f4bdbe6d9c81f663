#include "station/support/TestCell.h"
#include "visual/VisualStateManager.h"

namespace vrk::visual {
namespace {

using test::bodyIdsOf;
using test::Picture;
using test::Pixel;
using test::TestCell;

const test::View fromTheFront{{730, -880, 640}, {215, -110, 190}};

/// A part of the workpiece's top and one of the arm's base, which are seen in every picture.
const rob::PosTemplate<float> onWorkpiece(480, -60, 270);
const rob::PosTemplate<float> onBase(45, -76, 60);
const rob::PosTemplate<float> onCrate(130, -400, 40);

using State = Scene::VisualCollisionState;

void mark(Scene& scene, VisualStateLayer layer, const std::vector<unsigned>& bodies)
{
    for (const unsigned id : bodies) {
        switch (layer) {
        case VisualStateLayer::CollisionNearMiss: {
            VisualStateManager& states = *Scene::GetStateManager();
            states.setLayer(Scene::GetVisual(id), layer, true, {});
            states.refresh(Scene::GetVisual(id));
            break;
        }
        case VisualStateLayer::CollisionContact:
            scene.setCollision(id, true);
            break;
        case VisualStateLayer::EmphasizeGroupA:
            scene.setVisualCollisionEmphasizeState(id, State::GroupA);
            break;
        case VisualStateLayer::EmphasizeGroupB:
            scene.setVisualCollisionEmphasizeState(id, State::GroupB);
            break;
        default:
            scene.bodyVisualUseMaterial(id, "TransBody");
        }
    }
}

class CellPicture : public test::RenderTest {
protected:
    CellPicture() : cell(test::addCell())
    {
        Scene::LoadStation();
        setSize(480, 400);
        plain = render(fromTheFront);
    }
    /// The changed picture; the arm and the workpiece look different in it, the crate as before.
    Picture changed()
    {
        const Pixel base = pixelAt(plain, onBase), workpiece = pixelAt(plain, onWorkpiece);
        const Picture picture = render(fromTheFront);
        EXPECT_GT(difference(pixelAt(picture, onBase), base), 15);
        EXPECT_GT(difference(pixelAt(picture, onWorkpiece), workpiece), 15);
        EXPECT_EQ(difference(pixelAt(picture, onCrate), pixelAt(plain, onCrate)), 0);
        return picture;
    }
    /// The arm and the workpiece in one layer.
    Picture inLayer(VisualStateLayer layer)
    {
        mark(scene, layer, bodyIdsOf(*cell.arm));
        mark(scene, layer, bodyIdsOf(*cell.workpiece));
        return changed();
    }

    TestCell cell;
    Picture plain;
};

TEST_F(CellPicture, ShowsWhatStandsInTheCellAndWhatIsAttached)
{
    EXPECT_GT(difference(pixelAt(plain, onWorkpiece), pixelAt(plain, onBase)), 15);
    EXPECT_TRUE(matchesBaseline(plain, "cell_plain"));
}

TEST_F(CellPicture, SelectedArmAndWorkpieceAreDrawnInTheColourOfTheSelection)
{
    scene.setVisualsSelected({cell.arm->getId(), cell.workpiece->getId()});

    EXPECT_TRUE(matchesBaseline(changed(), "cell_selected"));
}

TEST_F(CellPicture, HighlightedArmIsDrawnInTheColourOfTheHighlight)
{
    scene.setVisualHighlighted(cell.arm->getId());

    const Picture picture = render(fromTheFront);

    EXPECT_GT(difference(pixelAt(picture, onBase), pixelAt(plain, onBase)), 15);
    EXPECT_EQ(difference(pixelAt(picture, onWorkpiece), pixelAt(plain, onWorkpiece)), 0);
    EXPECT_TRUE(matchesBaseline(picture, "cell_highlighted"));
}

struct LayerCase {
    const char* name;
    VisualStateLayer layer;
    const char* baseline;
};

class CellLayer : public CellPicture, public testing::WithParamInterface<LayerCase> {};

TEST_P(CellLayer, HasALookOfItsOwn)
{
    EXPECT_TRUE(matchesBaseline(inLayer(GetParam().layer), GetParam().baseline));
}

INSTANTIATE_TEST_SUITE_P(
    Table, CellLayer,
    testing::Values(LayerCase{"CollisionContact", VisualStateLayer::CollisionContact, "cell_contact"},
                    LayerCase{"CollisionNearMiss", VisualStateLayer::CollisionNearMiss, "cell_near_miss"},
                    LayerCase{"EmphasisOfGroupA", VisualStateLayer::EmphasizeGroupA, "cell_group_a"},
                    LayerCase{"EmphasisOfGroupB", VisualStateLayer::EmphasizeGroupB, "cell_group_b"},
                    LayerCase{"MaterialUnderTheOthers", VisualStateLayer::Material, "cell_material"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(CellPicture, EveryLayerAtOnceShowsTheSelectionAndLeavesNothingBehind)
{
    const std::vector<VisualStateLayer> layers = {VisualStateLayer::Material, VisualStateLayer::EmphasizeGroupA,
                                                  VisualStateLayer::CollisionNearMiss,
                                                  VisualStateLayer::CollisionContact};
    const unsigned workpiece = bodyIdsOf(*cell.workpiece).front();
    scene.setVisualSelected(workpiece);
    const Picture selected = render(fromTheFront);

    for (const VisualStateLayer layer : layers)
        mark(scene, layer, {workpiece});
    EXPECT_EQ(largestDifference(render(fromTheFront), selected), 0);

    scene.clearSelections();
    drain();
    for (const VisualStateLayer layer : layers)
        Scene::GetStateManager()->clearLayer(layer);
    EXPECT_EQ(largestDifference(render(fromTheFront), plain), 0);
}

} // namespace
} // namespace vrk::visual
