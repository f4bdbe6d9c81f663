#pragma once

#include "visual/Visual.h"

#include <memory>

namespace cadcam {
template <typename T>
class TMesh;
}
namespace Ogre {
class Entity;
}

namespace vrk::visual {

class Mesh;

/// A mesh from the operations on machined surfaces, for a look at it. Its mesh and its entity have fixed names: there is one
/// at a time. It stands in no registry and cannot be picked.
///
/// Owner: the parent visual. Thread: render thread.
class VRK_EXPORT CamMeshVisual : public Visual {
public:
    explicit CamMeshVisual(Visual* parent);
    /// Frees the triangles in memory. The entity and the mesh on the GPU stay: the next one finds them by their names, takes
    /// the mesh and makes the entity anew.
    ~CamMeshVisual() override;

    static CamMeshVisual* Build(Visual* parent, cadcam::TMesh<double>* mesh);

private:
    std::unique_ptr<Mesh> mesh;
    Ogre::Entity* entity = nullptr;
};

} // namespace vrk::visual
