#include "edit/HideThings.h"

#include "platform/layout/Layout.h"
#include "platform/sdf/SdfManager.h"

#include <mutex>
#include <shared_mutex>

namespace vrkview {

using vrk::layout::Layout;

HideThings::HideThings(const QString& text, std::vector<unsigned> hidden)
    : Change(text, Touched::Visibility), after(std::move(hidden))
{
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    before = Layout::inst().visibilities;
}

void HideThings::note(const std::vector<unsigned>& hidden)
{
    const std::unique_lock lock(sdf::SdfManager::inst().mutex());
    Layout::inst().visibilities = hidden;
}

} // namespace vrkview
