#include "edit/EditDimensions.h"

#include "platform/layout/Layout.h"
#include "platform/sdf/SdfManager.h"
#include "scene/Scene.h"

#include <QObject>

#include <algorithm>
#include <mutex>
#include <shared_mutex>
#include <stdexcept>
#include <utility>

namespace vrkview {
namespace {

using vrk::layout::Dimension;
using vrk::layout::Layout;
using vrk::visual::Scene;

QString nameOf(const std::vector<DimensionPointer>& dimensions)
{
    return dimensions.size() == 1 ? QString::fromStdString(dimensions.front()->name)
                                  : QObject::tr("%1 dimensions").arg(dimensions.size());
}

} // namespace

std::vector<DimensionPointer> dimensionsOfStation()
{
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    return Layout::inst().dimensions;
}

EditDimensions::EditDimensions(const QString& text, std::vector<DimensionPointer> after)
    : Change(text, Touched::Dimensions), before(dimensionsOfStation()), after(std::move(after))
{
}

void EditDimensions::put(const std::vector<DimensionPointer>& dimensions)
{
    {
        const std::unique_lock lock(sdf::SdfManager::inst().mutex());
        Layout::inst().dimensions = dimensions;
    }
    if (Scene* scene = Scene::Get()) // whose next frame takes them over
        scene->addRenderTask([] {}, 0);
}

std::unique_ptr<Change> addDimension(const DimensionPointer& dimension)
{
    if (dimension->ends.size() != Dimension::EndsOf(dimension->type))
        throw std::invalid_argument("a dimension has as many ends as its type says");
    std::vector<DimensionPointer> after = dimensionsOfStation();
    after.push_back(dimension);
    return std::make_unique<EditDimensions>(QObject::tr("Measure %1").arg(nameOf({dimension})), std::move(after));
}

std::unique_ptr<Change> removeDimensions(const std::vector<DimensionPointer>& dimensions)
{
    std::vector<DimensionPointer> after = dimensionsOfStation();
    std::erase_if(after, [&dimensions](const DimensionPointer& each) {
        return std::ranges::find(dimensions, each) != dimensions.end();
    });
    return std::make_unique<EditDimensions>(QObject::tr("Delete %1").arg(nameOf(dimensions)), std::move(after));
}

std::unique_ptr<Change> renameDimension(const DimensionPointer& dimension, const std::string& name)
{
    Dimension renamed = *dimension;
    renamed.name = name;
    std::vector<DimensionPointer> after = dimensionsOfStation();
    if (name != dimension->name)
        std::ranges::replace(after, dimension, DimensionPointer(std::make_shared<const Dimension>(std::move(renamed))));
    return std::make_unique<EditDimensions>(QObject::tr("Rename %1").arg(nameOf({dimension})), std::move(after));
}

} // namespace vrkview
