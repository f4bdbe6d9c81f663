#pragma once

#include "platform/common/Export.h"

namespace vrk::visual {

class Visual;

/// How a visual was last asked to look: what is made anew under it has to look the same.
enum class PartLook { Normal, Selected, Highlighted };

/// Keeps pointers to visuals that others may remove, or hang elsewhere: such a part tells its keeper when it dies, and the
/// keeper, which may die first, lets go of it. Thread: render thread.
class VRK_EXPORT PartKeeper {
public:
    virtual void forgetPart(const Visual* part) = 0;
    PartLook getLook() const { return look; }

protected:
    ~PartKeeper() = default;

    PartLook look = PartLook::Normal;
};

} // namespace vrk::visual
