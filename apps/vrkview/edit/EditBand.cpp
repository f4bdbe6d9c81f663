#include "edit/EditBand.h"

#include "edit/Bands.h"

#include "platform/sdf/SdfManager.h"
#include "scene/Scene.h"

#include <mutex>
#include <shared_mutex>
#include <utility>

namespace vrkview {

using vrk::task::EdgeMfgShape;
using vrk::visual::Scene;

BandLook BandLook::Of(const EdgeMfgShape& band)
{
    BandLook look{band.getStart(), band.getEnd(), band.closed, {}};
    for (const vrk::geometry::MfgVectors& edge : band.getMfgVectors()) {
        std::vector<vrk::rob::Dird>& directions = look.directions.emplace_back();
        for (const vrk::geometry::MfgVector& vector : edge.vectors)
            directions.push_back(vector.direction);
    }
    return look;
}

void BandLook::putOn(EdgeMfgShape& band) const
{
    band.setStart(start);
    band.setEnd(end);
    band.closed = closed;
    for (std::size_t edge = 0; edge < directions.size(); ++edge)
        for (std::size_t i = 0; i < directions[edge].size(); ++i)
            band.setDirection(static_cast<int>(edge), i, directions[edge][i]);
}

std::unique_ptr<EdgeMfgShape> draftOf(const EdgeMfgShape& band, const BandLook& look)
{
    auto draft = std::make_unique<EdgeMfgShape>(0, std::string());
    draft->chordTolerance = band.chordTolerance;
    for (const vrk::geometry::MfgVectors& edge : band.getMfgVectors())
        draft->addEdge(edge);
    look.putOn(*draft);
    return draft;
}

EditBand::EditBand(const QString& text, unsigned id, BandLook look)
    : Change(text, Touched::Nothing), band(bandOf(id)), after(std::move(look))
{
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    if (band)
        before = BandLook::Of(*band);
}

void EditBand::put(const BandLook& look) const
{
    {
        const std::unique_lock lock(sdf::SdfManager::inst().mutex());
        look.putOn(*band);
    }
    drawBand(band->getId());
}

} // namespace vrkview
