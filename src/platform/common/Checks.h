#pragma once

#include "platform/common/Export.h"

#include <optional>
#include <stdexcept>
#include <string_view>

/// Look-ups whose failure texts are part of the interface and read the same on every platform.
namespace vrk::common {

/// Model units: how far from its parent an object of a file may lie, along each axis. What the scene computes from places
/// must stay in the range of floats.
inline constexpr double farthestPlace = 1e12;

/// The value of `key` in a hash map.
/// @throws std::out_of_range "invalid unordered_map<K, T> key" if it has none.
template <typename Map>
auto& checkedAt(Map& map, const typename Map::key_type& key)
{
    const auto found = map.find(key);
    if (found == map.end())
        throw std::out_of_range("invalid unordered_map<K, T> key");
    return found->second;
}

/// The element of a vector at `index`.
/// @throws std::out_of_range "invalid vector subscript" past its end.
template <typename Vector>
auto& checkedSubscript(Vector& vector, std::size_t index)
{
    if (index >= vector.size())
        throw std::out_of_range("invalid vector subscript");
    return vector[index];
}

/// The number in the two characters of `text` from `position` on, base 16, read as `std::stoi` reads: leading white
/// space and a sign are taken, reading stops at the first character that is no digit.
/// @throws std::invalid_argument "invalid stoi argument" where there is no digit.
/// @throws std::out_of_range of std::string::substr where `text` is shorter than `position`.
VRK_EXPORT int hexByte(std::string_view text, std::size_t position);

/// An optional without a value was asked for it.
class VRK_EXPORT BadOptionalAccess : public std::bad_optional_access {
public:
    const char* what() const noexcept override { return "Bad optional access"; }
};

} // namespace vrk::common
