#include "platform/station/GeometryCache.h"

#include "platform/common/Logger.h"
#include "platform/station/Import.h"

#include <fmt/format.h>

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <vector>

namespace vrk::station {
namespace {

constexpr std::size_t longestStem = 64; // of a cached file's name; file systems hold 255

/// The folders to try, best first.
std::vector<std::filesystem::path> folders()
{
    const std::filesystem::path inside = std::filesystem::path("vrkvisual") / "geometry";
    std::vector<std::filesystem::path> found;
    const char* const cache = std::getenv("XDG_CACHE_HOME");
    const char* const home = std::getenv("HOME");
    if (cache && std::filesystem::path(cache).is_absolute())
        found.push_back(cache / inside);
    else if (home && std::filesystem::path(home).is_absolute())
        found.push_back(std::filesystem::path(home) / ".cache" / inside);
    std::error_code error;
    const std::filesystem::path temp = std::filesystem::temp_directory_path(error);
    if (!error) // a name for each user: a folder of another's could not be written
        found.push_back(temp / fmt::format("vrkvisual-{}", getuid()) / "geometry");
    return found;
}

std::string plain(std::string stem)
{
    stem.resize(std::min(stem.size(), longestStem));
    std::ranges::replace_if(
        stem, [](unsigned char c) { return !std::isalnum(c) && c != '-' && c != '_' && c != '.'; }, '_');
    return stem;
}

} // namespace

std::string hashOf(std::string_view text)
{
    std::uint64_t hash = 0xcbf29ce484222325; // FNV-1a
    for (const unsigned char c : text)
        hash = (hash ^ c) * 0x100000001b3;
    return fmt::format("{:016x}", hash);
}

void writeWhole(const std::filesystem::path& file, std::string_view bytes)
{
    static std::atomic<unsigned> count{0};
    std::filesystem::path draft = file;
    draft += fmt::format(".{}-{}.tmp", getpid(), count.fetch_add(1));
    std::ofstream stream(draft, std::ios::binary);
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    stream.close();
    std::error_code error;
    if (stream)
        std::filesystem::rename(draft, file, error);
    if (!stream || error) {
        std::error_code ignored; // there may be no draft at all
        std::filesystem::remove(draft, ignored);
        throw std::runtime_error(fmt::format("{}: cannot be written", file.string()));
    }
}

std::filesystem::path GeometryCache::Get(const std::string& stem, const std::string& key, const std::string& ending,
                                         const std::function<std::string()>& make)
{
    const std::string name = fmt::format("{}-{}{}", plain(stem), hashOf(key), ending);
    const std::vector<std::filesystem::path> candidates = folders();
    std::error_code error;
    for (const std::filesystem::path& folder : candidates) {
        if (std::filesystem::is_regular_file(folder / name, error))
            return folder / name;
    }

    const std::string bytes = make();
    for (const std::filesystem::path& folder : candidates) {
        std::filesystem::create_directories(folder, error);
        try {
            writeWhole(folder / name, bytes);
            return folder / name;
        } catch (const std::runtime_error& failure) {
            FileLogger::inst()->trace(failure.what()); // the next folder may have the right or the room
        }
    }
    throw ImportError(candidates.empty() ? std::filesystem::path("vrkvisual") : candidates.front(),
                      "no folder to keep geometry in can be written");
}

std::string GeometryCache::KeyOf(const std::filesystem::path& file)
{
    const auto time = std::filesystem::last_write_time(file).time_since_epoch().count();
    return fmt::format("{}|{}|{}", std::filesystem::absolute(file).lexically_normal().string(),
                       std::filesystem::file_size(file), time);
}

bool GeometryCache::Holds(const std::filesystem::path& file)
{
    const std::filesystem::path normal = file.lexically_normal();
    return std::ranges::any_of(folders(), [&normal](const std::filesystem::path& folder) {
        return normal.parent_path() == folder.lexically_normal();
    });
}

} // namespace vrk::station
