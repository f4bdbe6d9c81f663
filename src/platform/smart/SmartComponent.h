#pragma once

#include "platform/sdf/SdfObject.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace vrk::visual {
class Visual;
}

namespace vrk::smartcomp {

/// A piece of an application's own in the station, which may have a visual that it builds by itself. Applications derive
/// from it; this class has no visual.
class VRK_EXPORT SmartComponent : public sdf::SdfContainer {
public:
    SmartComponent(unsigned id, std::string name);
    ~SmartComponent() override;

    /// The name under which `RegisterSmartComponent` knows how to make such components; it stands in station files.
    virtual std::string getKind() const { return "component"; }
    virtual bool hasVisual() const { return false; }
    /// Builds what is seen of the component under `parent`, through the scene's own operations. Render thread only.
    virtual void buildVisual(visual::Visual* parent);

    /// Whether it is no piece of another component.
    bool isTopLevel() const { return isStandalone(); }
    void addComponent(std::shared_ptr<SmartComponent> component);
    const std::vector<std::shared_ptr<SmartComponent>>& getComponents() const { return components; }
    std::vector<std::shared_ptr<sdf::SdfObject>> getPieces() const override;

private:
    std::vector<std::shared_ptr<SmartComponent>> components;
};

/// All components of the station, those inside others after the one that they are in. Call it under the manager's lock.
VRK_EXPORT std::vector<SmartComponent*> GetAllSmartComponents();

/// Lets the component build its visual.
VRK_EXPORT void BuildVisual(SmartComponent* component, visual::Visual* parent);

using SmartComponentMaker = std::function<std::shared_ptr<SmartComponent>(unsigned id, std::string name)>;

/// Tells how components of a kind are made when a station file names them. Any thread.
VRK_EXPORT void RegisterSmartComponent(const std::string& kind, SmartComponentMaker maker);
/// Null where nobody has registered the kind. Any thread.
VRK_EXPORT std::shared_ptr<SmartComponent> MakeSmartComponent(const std::string& kind, unsigned id, std::string name);

} // namespace vrk::smartcomp
