#include "mesh/ConesAhead.h"

#include "mesh/ProceduralMeshes.h"

#include <array>
#include <cstddef>
#include <utility>

namespace vrk::visual {
namespace {

struct Cone {
    const char* name;
    float radius, height;
};

/// Those of `MeshManager::createGlobleMeshes`.
constexpr std::array cones = {Cone{"frame_axis_head", 1, 3},     Cone{"HandleHead", 10, 45},
                              Cone{"joint_arrow_head", 20, 200}, Cone{"path_arrow_head", 5, 20},
                              Cone{"mfg_arrow_shaft", 1, 25},    Cone{"mfg_arrow_head", 2, 8},
                              Cone{"VectorHead", 20, 100},       Cone{"head", 0.6f, 3.75f}};

ConesAhead* present = nullptr;

std::vector<std::unique_ptr<Mesh>> makeAll()
{
    std::vector<std::unique_ptr<Mesh>> made;
    for (const Cone& cone : cones)
        made.push_back(makeCone(cone.name, cone.radius, cone.height));
    return made;
}

} // namespace

ConesAhead::ConesAhead() : coming(std::async(std::launch::async, makeAll))
{
    present = this;
}

ConesAhead::~ConesAhead()
{
    present = nullptr;
}

std::unique_ptr<Mesh> ConesAhead::Take(const std::string& name, float radius, float height)
{
    return present ? present->take(name, radius, height) : nullptr;
}

std::unique_ptr<Mesh> ConesAhead::take(const std::string& name, float radius, float height)
{
    for (std::size_t i = 0; i < cones.size(); ++i) {
        if (cones[i].name != name || cones[i].radius != radius || cones[i].height != height)
            continue;
        if (made.empty())
            made = coming.get();
        return std::move(made[i]);
    }
    return nullptr;
}

} // namespace vrk::visual
