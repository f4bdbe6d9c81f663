#pragma once

#include "platform/common/Export.h"

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string_view>

namespace vrk::selection {

/// What a pick can mean.
enum class PickKind : unsigned {
    Vertex,       ///< of a solid
    Edge,         ///< of a solid
    Face,         ///< of a solid
    Body,         ///< a solid or a mesh as a whole
    MeshTriangle, ///< of a mesh
    Curve,        ///< an edge of a curve of the station
    Line,         ///< a section of any other drawn line
    Point,        ///< a point of the station
    CloudPoint,
    Frame,  ///< an axis of a coordinate frame
    Target, ///< the frame of a robot target
};

inline constexpr unsigned pickKindCount = 11;

/// As it is told to the user and written in JSON: "vertex", "mesh triangle".
VRK_EXPORT std::string_view nameOf(PickKind kind);
VRK_EXPORT std::optional<PickKind> findPickKind(std::string_view name);

/// A set of kinds.
class PickKinds {
public:
    constexpr PickKinds() = default;
    constexpr PickKinds(std::initializer_list<PickKind> kinds)
    {
        for (const PickKind kind : kinds)
            add(kind);
    }
    static constexpr PickKinds All()
    {
        PickKinds all;
        all.bits = (1u << pickKindCount) - 1;
        return all;
    }

    constexpr bool contains(PickKind kind) const { return (bits >> static_cast<unsigned>(kind) & 1u) != 0; }
    constexpr void add(PickKind kind) { bits |= 1u << static_cast<unsigned>(kind); }
    constexpr void add(PickKinds kinds) { bits |= kinds.bits; }
    constexpr void remove(PickKind kind) { bits &= ~(1u << static_cast<unsigned>(kind)); }
    constexpr bool empty() const { return bits == 0; }
    constexpr bool containsAnyOf(PickKinds o) const { return (bits & o.bits) != 0; }
    constexpr bool operator==(const PickKinds&) const = default;
    /// Those that are in both.
    friend constexpr PickKinds operator&(PickKinds a, PickKinds b)
    {
        a.bits &= b.bits;
        return a;
    }

private:
    std::uint32_t bits = 0;
};

} // namespace vrk::selection
