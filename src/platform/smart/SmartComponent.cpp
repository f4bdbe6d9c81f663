#include "platform/smart/SmartComponent.h"

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
