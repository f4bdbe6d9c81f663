#pragma once

#include <cstdint>
#include <unordered_set>

namespace vrk::visual {

/// The OGRE meshes, by their handles, of which only the outsides can be seen: no handle is given twice, so one that stays in
/// here beyond its mesh does no harm.
///
/// Owner: the scene's records. Thread: render thread.
class ClosedMeshes {
public:
    void add(std::uint64_t handle) { handles.insert(handle); }
    bool has(std::uint64_t handle) const { return handles.contains(handle); }

private:
    std::unordered_set<std::uint64_t> handles;
};

} // namespace vrk::visual
