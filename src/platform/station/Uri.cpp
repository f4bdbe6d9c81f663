#include "platform/station/Uri.h"

#include "platform/common/ResourcePath.h"

#include <fmt/format.h>

#include <charconv>
#include <fstream>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string_view>

namespace vrk {
namespace {

constexpr std::string_view resourceScheme = "resource://";
constexpr std::string_view fileScheme = "file://";
constexpr std::string_view stationScheme = "station://";

std::mutex mutex; // guards `stationFolder`
std::filesystem::path stationFolder;

/// The byte of an escape such as "%20" at `position`. None for what is no escape, and for the zero byte, which would cut
/// the path short.
std::optional<char> escapedByte(std::string_view text, std::size_t position)
{
    if (text[position] != '%' || position + 2 >= text.size())
        return std::nullopt;
    unsigned char byte = 0;
    const char* const end = text.data() + position + 3;
    const auto [stop, error] = std::from_chars(text.data() + position + 1, end, byte, 16);
    if (error != std::errc() || stop != end || byte == 0)
        return std::nullopt;
    return static_cast<char>(byte);
}

std::string unescaped(std::string_view text)
{
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (const std::optional<char> byte = escapedByte(text, i)) {
            result += *byte;
            i += 2;
        } else {
            result += text[i];
        }
    }
    return result;
}

} // namespace

std::unique_ptr<common::ZipBuffer> ReadFileFromURI(const std::string& uri)
{
    if (uri.starts_with(resourceScheme))
        return common::ZipManager::Read(common::GetResourcePath(), uri.substr(resourceScheme.size()));

    const std::filesystem::path file = UriToFilePath(uri);
    std::error_code error;
    const std::uintmax_t length = std::filesystem::file_size(file, error); // fails for folders as well
    std::ifstream stream(file, std::ios::binary);
    if (error || !stream)
        throw std::runtime_error(fmt::format("{}: cannot be opened", uri));
    std::unique_ptr<char[]> bytes(new char[length]);
    if (!stream.read(bytes.get(), static_cast<std::streamsize>(length)))
        throw std::runtime_error(fmt::format("{}: cannot be read", uri));
    return std::make_unique<common::ZipBuffer>(std::move(bytes), length);
}

std::filesystem::path UriToFilePath(const std::string& uri)
{
    if (uri.starts_with(fileScheme))
        return unescaped(std::string_view(uri).substr(fileScheme.size()));
    if (!uri.starts_with(stationScheme))
        return uri;

    // Without its leading slashes: an absolute path would step out of the station's folder.
    const std::filesystem::path inside =
        std::filesystem::path(unescaped(std::string_view(uri).substr(stationScheme.size()))).relative_path();
    const std::lock_guard lock(mutex);
    return (stationFolder.empty() ? std::filesystem::current_path() : stationFolder) / inside;
}

void SetStationFolder(const std::filesystem::path& folder)
{
    const std::lock_guard lock(mutex);
    stationFolder = folder;
}

} // namespace vrk
