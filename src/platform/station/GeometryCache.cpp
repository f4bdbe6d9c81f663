#include "platform/station/GeometryCache.h"

#include "platform/common/Hash.h"
#include "platform/common/Logger.h"
#include "platform/station/Import.h"

#include <fmt/format.h>

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <mutex>
#include <set>
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

/// The files that this process has asked for.
struct HandedOut {
    std::mutex mutex;
    std::set<std::filesystem::path> files;
};

HandedOut& handedOut()
{
    static HandedOut all;
    return all;
}

std::filesystem::path handOut(const std::filesystem::path& file)
{
    // The time of change serves as that of the last use.
    std::error_code unchanged; // in a folder that cannot be written nothing is deleted either
    std::filesystem::last_write_time(file, std::filesystem::file_time_type::clock::now(), unchanged);
    const std::lock_guard lock(handedOut().mutex);
    handedOut().files.insert(file);
    return file;
}

bool isHandedOut(const std::filesystem::path& file)
{
    const std::lock_guard lock(handedOut().mutex);
    return handedOut().files.contains(file);
}

struct CachedFile {
    std::filesystem::file_time_type time;
    std::uintmax_t size = 0;
    std::filesystem::path path;
};

/// Another process may delete files meanwhile: those that cannot be asked are left out.
std::vector<CachedFile> filesIn(const std::filesystem::path& folder)
{
    std::vector<CachedFile> found;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        std::error_code gone;
        const CachedFile file{entry->last_write_time(gone), gone ? 0 : entry->file_size(gone), entry->path()};
        if (!gone && entry->is_regular_file(gone))
            found.push_back(file);
    }
    return found;
}

void trimFolder(const std::filesystem::path& folder, std::uintmax_t limit)
{
    std::vector<CachedFile> files = filesIn(folder);
    std::uintmax_t size = 0;
    for (const CachedFile& file : files)
        size += file.size;
    std::ranges::sort(files, {}, &CachedFile::time);
    for (const CachedFile& file : files) {
        if (size <= limit)
            return;
        std::error_code error;
        if (!isHandedOut(file.path) && std::filesystem::remove(file.path, error))
            size -= file.size;
    }
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
    common::Hash hash;
    hash.add(text);
    return hash.text();
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
            return handOut(folder / name);
    }

    const std::string bytes = make();
    for (const std::filesystem::path& folder : candidates) {
        std::filesystem::create_directories(folder, error);
        try {
            writeWhole(folder / name, bytes);
            const std::filesystem::path made = handOut(folder / name);
            trimFolder(folder, sizeLimit);
            return made;
        } catch (const std::runtime_error& failure) {
            FileLogger::inst()->trace(failure.what()); // the next folder may have the right or the room
        }
    }
    throw ImportError(candidates.empty() ? std::filesystem::path("vrkvisual") : candidates.front(),
                      "no folder to keep geometry in can be written");
}

void GeometryCache::Trim(std::uintmax_t limit)
{
    for (const std::filesystem::path& folder : folders())
        trimFolder(folder, limit);
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
