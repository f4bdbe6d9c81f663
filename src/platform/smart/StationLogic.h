#pragma once

#include "platform/sdf/SdfObject.h"

namespace vrk::smartcomp {

/// The station itself, as the owner of what stands in it. It is in no table and in no tree: as a parent it means the world.
class VRK_EXPORT StationLogic : public sdf::SdfObject {
public:
    static StationLogic* inst();

private:
    StationLogic();
};

} // namespace vrk::smartcomp
