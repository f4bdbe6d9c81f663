#include "scene/ViewLook.h"

#include "scene/Background.h"
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
    startedCore().record<DepthShade>().setEnabled(on);
}

bool HasDepthShade()
{
    return startedCore().record<DepthShade>().isEnabled();
}

void SetBackground(const rob::ColorTemplate<float>& top, const rob::ColorTemplate<float>& bottom)
{
    startedCore().record<Background>().show(top, bottom);
}

void ResetBackground()
{
    startedCore().record<Background>().hide();
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

} // namespace vrk::visual
