#pragma once

#include <cstdint>
#include <filesystem>
#include <system_error>

namespace vrk::common {

/// By what a file that was written anew is told from the one that was read: not where that took less than the clock of the file
/// system can tell, and the size is the same.
struct FileState {
    std::filesystem::path path;
    std::filesystem::file_time_type written;
    std::uintmax_t size = 0;

    bool operator==(const FileState&) const = default;
};

/// Of a file that is not there, the same each time.
inline FileState stateOf(const std::filesystem::path& path)
{
    std::error_code error;
    const auto written = std::filesystem::last_write_time(path, error);
    return {path, written, std::filesystem::file_size(path, error)};
}

} // namespace vrk::common
