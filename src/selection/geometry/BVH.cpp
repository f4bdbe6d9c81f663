#include "selection/geometry/BVH.h"

#include <utility>

namespace vrk::selection {

BVH::BVH() : arena(std::make_unique<Arena>()) {}

BVH::~BVH() = default;

BVH::BVH(BVH&& o) : BVH()
{
    swap(o);
}

BVH& BVH::operator=(BVH&& o) noexcept
{
    swap(o);
    return *this;
}

void BVH::swap(BVH& o) noexcept
{
    std::swap(root, o.root);
    std::swap(arena, o.arena);
}

} // namespace vrk::selection
