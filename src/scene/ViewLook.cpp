#include "scene/ViewLook.h"

#include "scene/Background.h"
#include "scene/BodyLooks.h"
#include "scene/CoarseLook.h"
#include "scene/CornerPicture.h"
#include "scene/DepthShade.h"
#include "scene/GroundShadow.h"
#include "scene/HoverOutline.h"
#include "scene/core/SceneCore.h"

#include <stdexcept>

namespace vrk::visual {
namespace {

SceneCore& startedCore()
{
    SceneCore* core = SceneCore::Get();
    if (!core)
        throw std::logic_error("The library has not been started.");
    return *core;
}

} // namespace

void SetDepthShade(bool on)
{
    SceneCore& core = startedCore();
    core.record<DepthShade>().setEnabled(on);
    core.record<CoarseLook>().suit();
}

bool HasDepthShade()
{
    return startedCore().record<DepthShade>().isEnabled();
}

void SetBackground(const rob::ColorTemplate<float>& top, const rob::ColorTemplate<float>& bottom)
{
    startedCore().record<Background>().show(top, bottom);
    BodyLooks::suitInk(top, bottom);
}

void ResetBackground()
{
    const rob::ColorTemplate<float> plain(0.45f, 0.45f, 0.45f); // of a camera
    startedCore().record<Background>().hide();
    BodyLooks::suitInk(plain, plain);
}

void SetOutlined(const std::vector<unsigned>& ids)
{
    startedCore().record<HoverOutline>().setAround(ids);
}

void TakeGroundShadow()
{
    startedCore().record<GroundShadow>().take();
}

void RemoveGroundShadow()
{
    startedCore().record<GroundShadow>().remove();
}

void SetCornerPicture(std::span<const std::uint8_t> rgba, unsigned width, unsigned height, unsigned margin)
{
    startedCore().record<CornerPicture>().show(rgba, width, height, margin);
}

void ResetCornerPicture()
{
    startedCore().record<CornerPicture>().hide();
}

void SetLineLook(LineLook look)
{
    startedCore().record<BodyLooks>().setLines(look);
}

LineLook GetLineLook()
{
    return startedCore().record<BodyLooks>().getLines();
}

void SetGhostsExcept(const std::vector<unsigned>& ids)
{
    startedCore().record<BodyLooks>().setWhole(ids);
}

void EndGhosts()
{
    startedCore().record<BodyLooks>().endGhosts();
}

bool HasGhosts()
{
    return startedCore().record<BodyLooks>().hasGhosts();
}

void SetCoarseness(Coarseness coarseness)
{
    startedCore().record<CoarseLook>().set(coarseness);
}

Coarseness GetCoarseness()
{
    return startedCore().record<CoarseLook>().get();
}

} // namespace vrk::visual
