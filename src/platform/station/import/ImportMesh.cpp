#include "platform/station/GeometryCache.h"
#include "platform/station/import/ImportFormats.h"
#include "platform/station/import/StlFile.h"

#include "platform/common/Logger.h"
#include "platform/layout/Body.h"
#include "platform/layout/Part.h"
#include "platform/sdf/SdfManager.h"

#include <fmt/format.h>

namespace vrk::station {
namespace {

/// The file that the view reads in place of `file`: it takes binary files and ascii ones in small letters, under the two
/// endings, and draws by the normals of the file.
std::filesystem::path readableStl(const std::filesystem::path& file, const Progress& progress)
{
    const bool isReadable = checkStl(file);
    const std::string ending = file.extension().string();
    if (isReadable && (ending == ".stl" || ending == ".STL"))
        return file;
    report(progress, "converting", 0.25);
    FileLogger::inst()->trace(
        fmt::format("{}: the view does not read this form of STL; it shows a copy", file.string()));
    return GeometryCache::Get(file.stem().string(), GeometryCache::KeyOf(file), ".stl",
                              [&file] { return binaryStl(readStlFacets(file)); });
}

} // namespace

Parts readStl(const std::filesystem::path& file, const Progress& progress)
{
    report(progress, "reading", 0);
    const std::filesystem::path readable = readableStl(file, progress);
    const std::string name = file.stem().string();
    auto part = std::make_shared<layout::Part>(sdf::SdfManager::inst().generateId(), name);
    part->addBody(name)->setGeometry(readable.string(), "stl");
    return {part};
}

} // namespace vrk::station
