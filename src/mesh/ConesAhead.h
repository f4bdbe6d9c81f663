#pragma once

#include "mesh/Mesh.h"

#include <future>
#include <memory>
#include <string>
#include <vector>

namespace vrk::visual {

/// The cones of the global meshes, made by a thread of their own while something else is done: Open CASCADE takes some
/// milliseconds for each. As long as it lives, `MeshManager::createConeComponent` takes them from here.
///
/// One at a time. The thread ends with it at the latest.
class ConesAhead {
public:
    ConesAhead();
    ~ConesAhead();
    ConesAhead(const ConesAhead&) = delete;
    ConesAhead& operator=(const ConesAhead&) = delete;

    /// The cone with these measures, waited for and handed out once; null where it is none of them, or none was made ahead.
    /// The thread that made the object.
    static std::unique_ptr<Mesh> Take(const std::string& name, float radius, float height);

private:
    std::unique_ptr<Mesh> take(const std::string& name, float radius, float height);

    std::future<std::vector<std::unique_ptr<Mesh>>> coming;
    std::vector<std::unique_ptr<Mesh>> made; // null where it was taken
};

} // namespace vrk::visual
