#include "scene/Scene.h"

#include "platform/common/Logger.h"
#include "platform/sdf/SdfManager.h"
#include "scene/core/SceneCore.h"
#include "task/bands/VectorBandVisual.h"
#include "visual/SelectedIds.h"
#include "visual/VisualStateManager.h"

#include <Standard_Failure.hxx>
#include <fmt/format.h>

#include <shared_mutex>
#include <utility>
#include <vector>

namespace vrk::visual {
namespace {

std::shared_ptr<const task::EdgeMfgShape> runOf(unsigned id)
{
    sdf::SdfManager& model = sdf::SdfManager::inst();
    const std::shared_lock lock(model.mutex());
    return std::dynamic_pointer_cast<const task::EdgeMfgShape>(model.share(id));
}

/// The visual whose coordinates those of the run are; null where it is not in the scene.
Visual* carrierOf(const task::EdgeMfgShape& run)
{
    const SceneCore& core = *SceneCore::Get();
    const unsigned body = run.getMfgVectors().empty() ? 0 : run.getMfgVectors().front().body;
    if (body == 0)
        return core.worldVisual;
    return core.visuals.has(body) ? core.visuals.get(body) : nullptr;
}

void build(const task::EdgeMfgShape& run, Visual* carrier)
{
    auto* band = new VectorBandVisual(run.getId(), carrier, run);
    SceneCore::Get()->visuals.enter(band);
    if (!carrier->isVisible())
        band->setVisible(false, true); // it goes with what it lies on
    if (SceneCore& core = *SceneCore::Get(); core.record<SelectedIds>().contains(band->getId())) {
        core.states->setLayer(band, VisualStateLayer::Selected, true, {});
        core.states->refreshWithParts(band);
    }
}

void doAddBand(unsigned id)
{
    const std::shared_ptr<const task::EdgeMfgShape> run = runOf(id);
    if (!run)
        return;
    const SceneCore& core = *SceneCore::Get();
    if (core.visuals.has(id))
        Visual::Delete(core.visuals.get(id));
    Visual* carrier = carrierOf(*run);
    if (!carrier)
        return;
    const auto tell = [&run](const char* cause) {
        AppLogger::inst()->warn(fmt::format("the band of {} is not drawn: {}", run->getName(), cause));
    };
    // A station is not lost for a band: what the model lets in may still have no width.
    try {
        build(*run, carrier);
    } catch (const std::overflow_error& failure) {
        tell(failure.what());
    } catch (const Standard_Failure& failure) {
        tell(failure.GetMessageString());
    }
}

struct KeptBand {
    unsigned id;
    bool isHidden;
};

} // namespace

std::function<void()> Scene::keepBands(const Visual& carrier)
{
    std::vector<KeptBand> bands;
    for (const Visual* child : carrier.getChildren())
        if (dynamic_cast<const VectorBandVisual*>(child))
            bands.push_back({child->getId(), carrier.isVisible() && !child->isVisible()});
    return [bands = std::move(bands)] {
        for (const KeptBand& band : bands) {
            doAddBand(band.id);
            if (band.isHidden && HasVisual(band.id))
                GetVisual(band.id)->setVisible(false, true);
        }
    };
}

void Scene::addBand(unsigned id)
{
    addRenderTask([id] { doAddBand(id); }, 0);
}

} // namespace vrk::visual
