#pragma once

#include "platform/sdf/SdfObject.h"

#include <memory>
#include <vector>

namespace vrk::layout {

class Body;

/// A thing of the station made of bodies. Its element holds "pose" and "detectable".
class VRK_EXPORT Part : public sdf::SdfContainer {
public:
    Part(unsigned id, std::string name);
    ~Part() override;

    /// In model order.
    const std::vector<std::shared_ptr<Body>>& getBodies() const { return bodies; }
    /// Makes a body with an id from the manager. The part keeps it; it enters the object table with the part.
    std::shared_ptr<Body> addBody(std::string name);
    /// The same with an id of the caller's.
    std::shared_ptr<Body> addBody(unsigned id, std::string name);
    std::vector<std::shared_ptr<sdf::SdfObject>> getPieces() const override;

    bool isDetectable() const;
    void setDetectable(bool detectable);

private:
    std::vector<std::shared_ptr<Body>> bodies;
};

} // namespace vrk::layout
