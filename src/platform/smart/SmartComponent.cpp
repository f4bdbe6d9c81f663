#include "platform/smart/SmartComponent.h"

#include "platform/layout/Layout.h"

#include <map>
#include <mutex>

namespace vrk::smartcomp {
namespace {

struct Makers {
    std::mutex mutex;
    std::map<std::string, SmartComponentMaker> byKind;
};

Makers& makers()
{
    static Makers* const known = [] {
        auto* made = new Makers; // never freed: threads may still ask while statics are destroyed
        made->byKind["component"] = [](unsigned id, std::string name) {
            return std::make_shared<SmartComponent>(id, std::move(name));
        };
        return made;
    }();
    return *known;
}

void appendWithPieces(SmartComponent* component, std::vector<SmartComponent*>& all)
{
    all.push_back(component);
    for (const std::shared_ptr<SmartComponent>& piece : component->getComponents())
        appendWithPieces(piece.get(), all);
}

} // namespace

SmartComponent::SmartComponent(unsigned id, std::string name)
    : SdfContainer(sdf::ModelType::SmartComponent, id, std::move(name))
{
}

SmartComponent::~SmartComponent() = default;

void SmartComponent::buildVisual(visual::Visual*) {}

void SmartComponent::addComponent(std::shared_ptr<SmartComponent> component)
{
    addChild(*component);
    components.push_back(std::move(component));
}

std::vector<std::shared_ptr<sdf::SdfObject>> SmartComponent::getPieces() const
{
    return {components.begin(), components.end()};
}

std::vector<SmartComponent*> GetAllSmartComponents()
{
    std::vector<SmartComponent*> all;
    for (const std::shared_ptr<SmartComponent>& component : layout::Layout::inst().components)
        appendWithPieces(component.get(), all);
    return all;
}

void BuildVisual(SmartComponent* component, visual::Visual* parent)
{
    component->buildVisual(parent);
}

void RegisterSmartComponent(const std::string& kind, SmartComponentMaker maker)
{
    Makers& known = makers();
    const std::lock_guard lock(known.mutex);
    known.byKind[kind] = std::move(maker);
}

std::shared_ptr<SmartComponent> MakeSmartComponent(const std::string& kind, unsigned id, std::string name)
{
    Makers& known = makers();
    SmartComponentMaker maker;
    {
        const std::lock_guard lock(known.mutex);
        const auto found = known.byKind.find(kind);
        if (found == known.byKind.end())
            return nullptr;
        maker = found->second;
    }
    return maker(id, std::move(name));
}

} // namespace vrk::smartcomp
