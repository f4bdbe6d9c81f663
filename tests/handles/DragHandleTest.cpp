#include "handles/DragHandle.h"

#include "HandleFixture.h"

#include "platform/geometry/ColorText.h"
#include "visual/RenderGroups.h"

#include <map>

namespace vrk::visual {
namespace {

using HandleType = DragHandle::HandleType;
using Mode = DragHandle::Mode;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr HandleType arrows[] = {HandleType::X, HandleType::Y, HandleType::Z};
constexpr HandleType rings[] = {HandleType::Roll, HandleType::Pitch, HandleType::Yaw};
constexpr HandleType discs[] = {HandleType::AssistRoll, HandleType::AssistPitch, HandleType::AssistYaw};

Ogre::Vector4 colorFrom(const std::string& text, float alpha = 1)
{
    const rob::Colorf color = geometry::ParseColorText(text);
    return {color.r, color.g, color.b, alpha};
}

/// What is seen of a handle.
struct Part {
    std::string mesh;
    std::string material;
    Ogre::Vector4 color;
    int group = 0;
    bool shown = false;

    bool operator==(const Part&) const = default;
};

std::vector<Part> partsOf(const DragHandle& handle)
{
    std::vector<Part> parts;
    for (int i = 0; i < 9; ++i) {
        const MeshVisual& part = *handle.getHandle(static_cast<HandleType>(i));
        const Ogre::Entity& entity = *part.getEntity();
        parts.push_back({entity.getMesh()->getName(), entity.getSubEntity(0)->getMaterialName(), test::colorOf(part),
                         entity.getRenderQueueGroup(), test::isShown(part)});
    }
    return parts;
}

/// The handle as the start-up left it, kept by the first test that runs.
struct AtStart {
    AtStart()
    {
        const selection::VisualSelection& picking = *selection::VisualSelection::Get();
        const DragHandle& handle = *DragHandle::Get();
        isRegisteredBeforeTheFirstTasks = picking.hasVisual(handle.getHandle(HandleType::X));
        saysRegistered = handle.isRegisteredInSelection();
        Scene::Get()->processMsgs();
        for (int i = 0; i < 9; ++i) {
            Visual* part = handle.getHandle(static_cast<HandleType>(i));
            registered.push_back(picking.hasVisual(part));
            if (registered.back())
                enabled.push_back(picking.isEnabled(part));
        }
        parts = partsOf(handle);
        mode = handle.getMode();
        showStatus = handle.getShowStatus();
        parent = handle.getParent();
    }

    bool isRegisteredBeforeTheFirstTasks;
    bool saysRegistered;
    std::vector<bool> registered;
    std::vector<bool> enabled;
    std::vector<Part> parts;
    Mode mode;
    bool showStatus;
    Visual* parent;
};

template <typename Base>
class WithDragHandle : public test::WithHandles<Base> {
protected:
    WithDragHandle() : handle(*DragHandle::Get())
    {
        atStart();
        this->scene.resetDragHandle();
        this->drain();
    }
    static const AtStart& atStart()
    {
        static const AtStart kept;
        return kept;
    }

    DragHandle& handle;
};

class DragHandleTest : public WithDragHandle<test::SceneFixture> {
protected:
    std::vector<HandleType> shown() const
    {
        std::vector<HandleType> found;
        for (int i = 0; i < 9; ++i)
            if (test::isShown(*handle.getHandle(static_cast<HandleType>(i))))
                found.push_back(static_cast<HandleType>(i));
        return found;
    }
    std::string meshOf(HandleType type) const { return handle.getHandle(type)->getMeshName(); }
};

TEST_F(DragHandleTest, StartsAsTold)
{
    const auto arrow = [](const char* mesh, const char* color) {
        return Part{mesh, "Axis", colorFrom(color), renderGroup::handles, true};
    };
    const auto disc = [](const char* mesh, const char* color) {
        return Part{mesh, "Axis", colorFrom(color, 0.1f), renderGroup::handles, false};
    };
    EXPECT_THAT(atStart().parts, ElementsAre(arrow("DragHandleX", "#F20c00"), arrow("DragHandleY", "#16A951"),
                                             arrow("DragHandleZ", "#418AB4"), arrow("DragHandleRoll", "#F20c00"),
                                             arrow("DragHandlePitch", "#16A951"), arrow("DragHandleYaw", "#418AB4"),
                                             disc("RollHandleAssist", "#F20c00"), disc("PitchHandleAssist", "#16A951"),
                                             disc("YawHandleAssist", "#418AB4")));
    EXPECT_EQ(atStart().mode, Mode::None);
    EXPECT_TRUE(atStart().showStatus);
    EXPECT_EQ(atStart().parent, nullptr);
}

TEST_F(DragHandleTest, StartsRegisteredAndUnpickable)
{
    EXPECT_TRUE(atStart().saysRegistered);
    EXPECT_THAT(atStart().registered, testing::Each(true));
    EXPECT_THAT(atStart().enabled, testing::Each(false));
}

TEST_F(DragHandleTest, IsOneForTheProcess)
{
    EXPECT_EQ(DragHandle::Get(), &handle);
    EXPECT_EQ(handle.getType(), VisualType::Gui);
    EXPECT_EQ(handle.getName(), "DragHandle");
}

TEST_F(DragHandleTest, PartsAreToldApart)
{
    for (int i = 0; i < 9; ++i) {
        const auto type = static_cast<HandleType>(i);
        EXPECT_EQ(handle.getHandleType(handle.getHandle(type)), type);
    }
}

TEST_F(DragHandleTest, VisualOfAnotherObjectIsNoneOfItsParts)
{
    EXPECT_EQ(handle.getHandleType(addRegistered(world)), HandleType::None);
    EXPECT_EQ(handle.getHandleType(&handle), HandleType::None);
    EXPECT_EQ(handle.getHandleType(nullptr), HandleType::None);
    EXPECT_EQ(handle.getHandle(HandleType::None), nullptr);
}

TEST_F(DragHandleTest, ModeOfAnArrowHidesNothing)
{
    const std::vector<Part> before = partsOf(handle);
    const Mode modes[] = {Mode::X, Mode::Y, Mode::Z};
    for (int i = 0; i < 3; ++i) {
        handle.setMode(handle.getHandle(arrows[i]));

        EXPECT_EQ(handle.getMode(), modes[i]);
        EXPECT_EQ(partsOf(handle), before);
    }
}

struct RingCase {
    const char* name;
    HandleType ring;
    HandleType disc;
    Mode mode;
    const char* mesh;
    const char* color;
};
class RingMode : public DragHandleTest, public testing::WithParamInterface<RingCase> {};

TEST_P(RingMode, ShowsTheMainRingAndItsDiscAlone)
{
    const RingCase& c = GetParam();

    handle.setMode(c.ring);

    EXPECT_EQ(handle.getMode(), c.mode);
    EXPECT_THAT(shown(), ElementsAre(c.ring, c.disc));
    const Part ring = partsOf(handle)[static_cast<std::size_t>(c.ring)];
    EXPECT_EQ(ring, (Part{c.mesh, "Axis", colorFrom(c.color), renderGroup::handles, true}));
}

TEST_P(RingMode, OtherRingsKeepTheirShape)
{
    handle.setMode(GetParam().ring);

    for (const HandleType other : rings)
        if (other != GetParam().ring) {
            EXPECT_TRUE(meshOf(other).starts_with("DragHandle")) << meshOf(other);
        }
}
INSTANTIATE_TEST_SUITE_P(
    Table, RingMode,
    testing::Values(RingCase{"Roll", HandleType::Roll, HandleType::AssistRoll, Mode::Roll, "RollHandleMain", "#C91F37"},
                    RingCase{"Pitch", HandleType::Pitch, HandleType::AssistPitch, Mode::Pitch, "PitchHandleMain",
                             "#16A951"},
                    RingCase{"Yaw", HandleType::Yaw, HandleType::AssistYaw, Mode::Yaw, "YawHandleMain", "#418AB4"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(DragHandleTest, ModeOfADiscOrOfNothingEndsTheModeAndChangesNothingElse)
{
    handle.setMode(HandleType::Pitch);
    const std::vector<Part> before = partsOf(handle);
    for (const HandleType type : {discs[0], discs[1], discs[2], HandleType::None}) {
        handle.setMode(HandleType::X);

        handle.setMode(type);

        EXPECT_EQ(handle.getMode(), Mode::None);
        EXPECT_EQ(partsOf(handle), before);
    }
}

TEST_F(DragHandleTest, ShapeOfARingIsExchangedUnderTheSameVisual)
{
    const MeshVisual* ring = handle.getHandle(HandleType::Yaw);

    handle.setMode(HandleType::Yaw);

    EXPECT_EQ(handle.getHandle(HandleType::Yaw), ring);
    EXPECT_EQ(ring->getSceneNode()->getAttachedObjects().size(), 1u);
}

TEST_F(DragHandleTest, HidingHidesAllAndShowingShowsTheMainOnes)
{
    handle.hide();
    EXPECT_THAT(shown(), IsEmpty());
    EXPECT_FALSE(handle.getShowStatus());

    handle.show();
    EXPECT_THAT(shown(), ElementsAre(HandleType::X, HandleType::Y, HandleType::Z, HandleType::Roll, HandleType::Pitch,
                                     HandleType::Yaw));
    EXPECT_TRUE(handle.getShowStatus());
}

TEST_F(DragHandleTest, RingOfAHiddenHandleIsShownThoughItsStatusStays)
{
    handle.hide();

    handle.setMode(HandleType::Roll);

    EXPECT_THAT(shown(), ElementsAre(HandleType::Roll, HandleType::AssistRoll));
    EXPECT_FALSE(handle.getShowStatus());
}

TEST_F(DragHandleTest, ShowingAfterATurnLeavesTheMainRing)
{
    handle.setMode(HandleType::Roll);

    handle.show();

    EXPECT_EQ(shown().size(), 6u);
    EXPECT_EQ(meshOf(HandleType::Roll), "RollHandleMain");
    EXPECT_EQ(handle.getMode(), Mode::Roll);
}

TEST_F(DragHandleTest, ResetBringsTheSmallRingsBackAndShowsAHiddenHandle)
{
    handle.setMode(HandleType::Pitch);
    handle.setMode(HandleType::Roll);
    handle.hide();

    handle.resetMode();

    EXPECT_EQ(handle.getMode(), Mode::None);
    EXPECT_TRUE(handle.getShowStatus());
    std::vector<Part> expected = atStart().parts;
    expected[3].color = colorFrom("#C91F37"); // not the red of the start
    EXPECT_EQ(partsOf(handle), expected);
}

TEST_F(DragHandleTest, StatusIsAFieldOfItsOwn)
{
    handle.setShowStatus(false);

    EXPECT_FALSE(handle.getShowStatus());
    EXPECT_EQ(shown().size(), 6u);
}

TEST_F(DragHandleTest, SceneOperationsArePosted)
{
    handle.setMode(HandleType::Yaw);

    scene.hideDragHandle();
    EXPECT_TRUE(handle.getShowStatus());
    drain();
    EXPECT_FALSE(handle.getShowStatus());

    scene.showDragHandle();
    EXPECT_FALSE(handle.getShowStatus());
    drain();
    EXPECT_TRUE(handle.getShowStatus());
    EXPECT_EQ(meshOf(HandleType::Yaw), "YawHandleMain");

    scene.resetDragHandle();
    EXPECT_EQ(handle.getMode(), Mode::Yaw);
    drain();
    EXPECT_EQ(handle.getMode(), Mode::None);
    EXPECT_EQ(meshOf(HandleType::Yaw), "DragHandleYaw");
}

TEST_F(DragHandleTest, HoverIsAColourAndLeavesTheQueueGroup)
{
    const std::vector<Part> before = partsOf(handle);

    handle.showHover(HandleType::Y);
    const std::vector<Part> hovered = partsOf(handle);
    EXPECT_NE(hovered[1].color, before[1].color);
    EXPECT_EQ(hovered[1].group, renderGroup::handles);
    EXPECT_EQ(hovered[0], before[0]);

    handle.showHover(HandleType::Roll);
    EXPECT_EQ(partsOf(handle)[1], before[1]);

    handle.showHover(HandleType::None);
    EXPECT_EQ(partsOf(handle), before);
}

/// They are meshes like any other, and selected as these are; hovers leave them alone for that.
TEST_F(DragHandleTest, PartThatIsSelectedIsDrawnAmongBodies)
{
    MeshVisual* arrow = handle.getHandle(HandleType::Y);
    arrow->setSelected();
    EXPECT_EQ(partsOf(handle)[1].group, renderGroup::selected);
    arrow->clearHighlightOrSelect();
    EXPECT_EQ(partsOf(handle)[1].group, renderGroup::normal);
    scene.resetDragHandle();
    drain();
    arrow->getEntity()->setRenderQueueGroup(renderGroup::handles);
}

TEST_F(DragHandleTest, HoverOverADiscKeepsItFaint)
{
    handle.showHover(HandleType::AssistYaw);

    EXPECT_FLOAT_EQ(partsOf(handle)[8].color.w, 0.1f);
}

TEST_F(DragHandleTest, RingThatTakesItsOtherShapeComesInItsOwnColour)
{
    handle.showHover(HandleType::Yaw);
    handle.setMode(HandleType::Yaw);
    EXPECT_EQ(partsOf(handle)[5].color, colorFrom("#418AB4"));

    handle.showHover(HandleType::Yaw);
    EXPECT_NE(partsOf(handle)[5].color, colorFrom("#418AB4"));
    handle.showHover(HandleType::None);
    EXPECT_EQ(partsOf(handle)[5].color, colorFrom("#418AB4"));
}

TEST_F(DragHandleTest, PicksOfARingThatTookItsOtherShapeAreThoseOfItsFirst)
{
    attach(&handle, world);
    selection::VisualSelection& picking = *selection::VisualSelection::Get();
    picking.setCompoundObjectEnabled(&handle, true);
    Camera::Get()->setWorldPosition({0, 0, 4000});
    const auto hit = [&](float x, float y) {
        handle.updateScale();
        picking.update();
        return handle.getHandleType(picking.select(Ray({x, y, 500}, {0, 0, -1})).visual);
    };
    // The small yaw ring is a quarter from x to y; the main one half a circle that begins at -45 degrees.
    EXPECT_EQ(hit(106.2f, 105.9f), HandleType::Yaw);
    EXPECT_EQ(hit(135, -65.5f), HandleType::None);

    handle.setMode(HandleType::Yaw);

    EXPECT_EQ(hit(106.2f, 105.9f), HandleType::Yaw);
    EXPECT_EQ(hit(135, -65.5f), HandleType::None);
}

TEST_F(DragHandleTest, RemovalOfWhatItHangsOnLeavesItWhole)
{
    Visual* part = addRegistered(world);
    scene.attachGuiTo(&handle, part->getId(), {});
    drain();
    selection::VisualSelection::Get()->setCompoundObjectEnabled(&handle, true);

    scene.removeVisual(part->getId());
    drain();

    EXPECT_EQ(DragHandle::Get()->getParent(), nullptr);
    EXPECT_EQ(shown().size(), 6u);
    EXPECT_FALSE(selection::VisualSelection::Get()->isEnabled(handle.getHandle(HandleType::X)));
    scene.resetDragHandle(); // as a drag does that ends late
    drain();
}

} // namespace
} // namespace vrk::visual
