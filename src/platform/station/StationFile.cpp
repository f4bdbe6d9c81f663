#include "platform/station/StationFile.h"

#include "platform/sdf/SdfManager.h"
#include "platform/station/FileKinds.h"
#include "platform/station/GeometryCache.h"
#include "platform/station/Uri.h"
#include "platform/station/file/StationText.h"
#include "platform/station/import/ImportFormats.h"

#include <fmt/format.h>

#include <fstream>
#include <shared_mutex>
#include <sstream>

namespace vrk::station {
namespace {

std::filesystem::path absolutePath(const std::filesystem::path& file)
{
    return std::filesystem::absolute(file).lexically_normal();
}

} // namespace

StationFileError::StationFileError(const std::filesystem::path& file, const std::string& where,
                                   const std::string& expected)
    : std::runtime_error(fmt::format("{}: {}: {}", file.string(), oneLine(where.c_str()), oneLine(expected.c_str())))
{
}

bool isStationFile(const std::filesystem::path& file)
{
    return fileKindOf(file) == FileKind::Station;
}

layout::StationContent ReadStationFile(const std::filesystem::path& file, const Progress& progress)
{
    const std::filesystem::path absolute = absolutePath(file);
    std::error_code error;
    std::ifstream stream;
    if (std::filesystem::is_regular_file(absolute, error)) // a pipe would be waited for
        stream.open(absolute, std::ios::binary);
    if (!stream.is_open())
        throw StationFileError(absolute, "/", "expected a file that can be read");
    std::ostringstream text;
    text << stream.rdbuf();
    return parseStation(text.str(), absolute, GeometryUse::Load, progress);
}

void LoadStationFile(const std::filesystem::path& file, const Progress& progress)
{
    layout::StationContent content = ReadStationFile(file, progress);
    SetStationFolder(absolutePath(file).parent_path());
    layout::Layout::inst().replace(std::move(content));
}

void SaveStationFile(const std::filesystem::path& file)
{
    const std::filesystem::path absolute = absolutePath(file);
    GeometryWriter geometry(absolute);
    std::string text;
    {
        const std::shared_lock lock(sdf::SdfManager::inst().mutex());
        text = writeStation(layout::Layout::inst(), geometry);
    }
    parseStation(text, absolute, GeometryUse::Skip); // what would not be read again is not written
    try {
        geometry.write();
        writeWhole(absolute, text);
    } catch (const std::runtime_error& failure) {
        throw StationFileError(absolute, "/", fmt::format("expected room to write: {}", failure.what()));
    }
}

} // namespace vrk::station
