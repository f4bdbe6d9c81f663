#pragma once

#include "platform/common/Export.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

namespace vrk::station {

/// Geometry that was made from other files, kept in files of its own from run to run: meshes in other units, forms that the
/// view does not read, shapes that an import makes up.
///
/// It lies in "vrkvisual/geometry" of `$XDG_CACHE_HOME`, which is ~/.cache where it is not set, or of the system's
/// temporary directory where that cannot be written. Whoever deletes it loses time and nothing else.
///
/// It is held to `sizeLimit` bytes: a file that is added makes room by deleting those that were not asked for the longest
/// time. What this process has asked for stays, since bodies may be read from it later.
///
/// Thread: any, and any number of processes: a file appears whole or not at all.
class VRK_EXPORT GeometryCache {
public:
    static constexpr std::uintmax_t sizeLimit = std::uintmax_t(4) << 30;

    /// The file for `key`, which describes its content in full. Where it is missing it is written from what `make` returns.
    /// @param stem    what the file's name begins with, for people who look at the folder.
    /// @param ending  such as ".stl"
    /// @throws ImportError "<folder>: no folder to keep geometry in can be written"; whatever `make` throws.
    static std::filesystem::path Get(const std::string& stem, const std::string& key, const std::string& ending,
                                     const std::function<std::string()>& make);
    /// Deletes the files of the cache that were not asked for the longest time until it holds `limit` bytes at most.
    static void Trim(std::uintmax_t limit);
    /// What tells one state of a file from another: path, size and time of change.
    static std::string KeyOf(const std::filesystem::path& file);
    /// Whether the file lies in the cache.
    static bool Holds(const std::filesystem::path& file);
};

/// The 64-bit FNV-1a hash of a text as 16 digits (Fowler, Noll, Vo): the same in every run.
VRK_EXPORT std::string hashOf(std::string_view text);

/// Writes a file so that it is there whole or not at all, in place of one of that name.
/// @throws std::runtime_error "<file>: cannot be written"
VRK_EXPORT void writeWhole(const std::filesystem::path& file, std::string_view bytes);

} // namespace vrk::station
