#include "platform/common/ZipManager.h"

#include "platform/common/FileState.h"
#include "platform/common/ResourcePath.h"

#include <fmt/format.h>
#include <minizip/unzip.h>

#include <algorithm>
#include <array>
#include <climits>
#include <mutex>
#include <stdexcept>
#include <unordered_map>
#include <utility>

namespace vrk::common {
namespace {

constexpr std::string_view resourceScheme = "resource://";
constexpr int caseSensitive = 1;
// Deflate packs no better than about 1032 to 1; a greater promise is a damaged size and must not be allocated.
constexpr ZPOS64_T bestRatio = 1040;

struct ZipCloser {
    void operator()(void* zip) const { unzClose(zip); }
};
using ZipFile = std::unique_ptr<void, ZipCloser>;

ZipFile openZip(const std::filesystem::path& zip)
{
    return ZipFile(unzOpen64(zip.c_str()));
}

/// Where the entries of one state of a zip lie.
struct Places {
    FileState of;
    std::unordered_map<std::string, unz64_file_pos> entries;
};

/// The name of the entry that the zip stands at; empty for one that is too long to be looked for.
std::string currentName(const ZipFile& zip)
{
    std::array<char, 1024> name{};
    unz_file_info64 info{};
    if (unzGetCurrentFileInfo64(zip.get(), &info, name.data(), name.size() - 1, nullptr, 0, nullptr, 0) != UNZ_OK ||
        info.size_filename >= name.size())
        return {};
    return name.data();
}

std::unordered_map<std::string, unz64_file_pos> entriesOf(const ZipFile& zip)
{
    std::unordered_map<std::string, unz64_file_pos> entries;
    for (int state = unzGoToFirstFile(zip.get()); state == UNZ_OK; state = unzGoToNextFile(zip.get())) {
        unz64_file_pos place{};
        if (unzGetFilePos64(zip.get(), &place) == UNZ_OK)
            entries.emplace(currentName(zip), place);
    }
    return entries;
}

/// Of the zip that was asked for last: a start asks for all entries of one, several times, and each search would go through
/// what lies ahead of an entry.
std::shared_ptr<const Places> placesOf(const ZipFile& zip, const std::filesystem::path& path)
{
    static std::mutex mutex;
    static std::shared_ptr<const Places> last;
    const FileState present = stateOf(path);
    const std::lock_guard lock(mutex);
    if (!last || last->of != present)
        last = std::make_shared<Places>(Places{present, entriesOf(zip)});
    return last;
}

/// Goes to the entry.
bool isThere(const ZipFile& zip, const std::filesystem::path& path, const std::string& entry)
{
    const std::shared_ptr<const Places> places = placesOf(zip, path);
    const auto found = places->entries.find(entry);
    if (found != places->entries.end() && unzGoToFilePos64(zip.get(), &found->second) == UNZ_OK &&
        currentName(zip) == entry)
        return true;
    // It may have been written anew at the same time with the same size.
    return unzLocateFile(zip.get(), entry.c_str(), caseSensitive) == UNZ_OK;
}

/// The bytes of the entry that the zip stands at; null if they cannot be had whole.
std::unique_ptr<ZipBuffer> readCurrent(const ZipFile& zip)
{
    unz_file_info64 info{};
    if (unzGetCurrentFileInfo64(zip.get(), &info, nullptr, 0, nullptr, 0, nullptr, 0) != UNZ_OK)
        return nullptr;
    if (info.uncompressed_size > (info.compressed_size + 1) * bestRatio || unzOpenCurrentFile(zip.get()) != UNZ_OK)
        return nullptr;

    const std::size_t length = info.uncompressed_size;
    std::unique_ptr<char[]> bytes(new char[length]);
    std::size_t done = 0;
    while (done < length) {
        const auto piece = static_cast<unsigned>(std::min<std::size_t>(length - done, INT_MAX));
        const int got = unzReadCurrentFile(zip.get(), bytes.get() + done, piece);
        if (got <= 0)
            break;
        done += static_cast<std::size_t>(got);
    }
    // Closing is what tests the checksum.
    const bool whole = unzCloseCurrentFile(zip.get()) == UNZ_OK && done == length;
    return whole ? std::make_unique<ZipBuffer>(std::move(bytes), length) : nullptr;
}

} // namespace

bool ZipManager::Exists(const std::string& uri)
{
    if (!uri.starts_with(resourceScheme))
        return false;
    const std::filesystem::path path = GetResourcePath();
    const ZipFile zip = openZip(path);
    return zip && isThere(zip, path, uri.substr(resourceScheme.size()));
}

std::unique_ptr<ZipBuffer> ZipManager::Read(const std::filesystem::path& zip, const std::string& entry)
{
    const ZipFile file = openZip(zip);
    if (!file)
        throw std::runtime_error(
            fmt::format("{}: cannot be opened as a zip file, '{}' is not read", zip.string(), entry));
    if (!isThere(file, zip, entry))
        throw std::runtime_error(fmt::format("{}: no entry '{}'", zip.string(), entry));
    std::unique_ptr<ZipBuffer> buffer = readCurrent(file);
    if (!buffer)
        throw std::runtime_error(fmt::format("{}: the entry '{}' is damaged", zip.string(), entry));
    return buffer;
}

} // namespace vrk::common
