#pragma once

#include "platform/station/Import.h"

#include <TopoDS_Shape.hxx>

/// What the sources of the import share. Not installed.
namespace vrk::station {

using Parts = std::vector<std::shared_ptr<layout::Part>>;

constexpr double meshingStart = 0.5; ///< the share of an import that comes before the meshing

/// The one part of a file; `file` is absolute, is there and is not empty.
Parts readStl(const std::filesystem::path& file, const Progress& progress, LengthUnit unit);
/// The same of another mesh.
Parts readMesh(const std::filesystem::path& file, const Progress& progress, LengthUnit unit);

/// @throws ImportError where there is no such file, or none with something in it to read.
void checkReadable(const std::filesystem::path& file);
/// All of it. @throws ImportError as above.
std::string readWhole(const std::filesystem::path& file);

/// The text of an Open CASCADE failure on one line.
std::string oneLine(const char* text);

inline void report(const Progress& progress, std::string_view step, double fraction)
{
    if (progress)
        progress(step, fraction);
}

} // namespace vrk::station
