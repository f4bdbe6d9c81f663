#pragma once

#include "files/Station.h"

#include "platform/geometry/LengthUnit.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace vrkview {

/// Told of the steps of an import: the file's name, what is being done, and how much of that file is, from 0 to 1. What it
/// throws ends the import.
using ImportReport = std::function<void(const std::string& file, std::string_view step, double fraction)>;

/// How the meshes of files are made coarser as they are read.
struct Coarser {
    std::optional<double> tolerance; ///< millimetres; empty for one that suits the size of each mesh
};

/// What is to be done about a file that cannot be taken in, where there are others, and about one of which something is
/// missing.
enum class BadFile { IsLeftOut, EndsAll };

struct ReadingOptions {
    std::optional<Coarser> coarser;      // empty leaves meshes as they are
    std::optional<double> smooth;        // radians: across what edges of meshes light goes on; empty as the files say
    std::optional<vrk::LengthUnit> unit; // of files that name none; empty: millimetres, as nobody said otherwise
    BadFile bad = BadFile::IsLeftOut;
};

/// None of several files can be taken in, or something of them is missing where all is wanted.
class BadFiles : public std::runtime_error {
public:
    /// @param failures  a line for each, which make the text together.
    explicit BadFiles(std::vector<std::string> failures);

    const std::vector<std::string> failures;
};

/// What the files hold, together. Any thread.
/// @throws vrk::station::ImportError, vrk::station::StationFileError for the first file that cannot be taken in, and for a
///         second station file, where it is the only file or ends all; BadFiles where none of several can be taken in, and
///         where something of one is missing and ends all. Others are told in `Station::failures` and `Station::notes`.
Station importFiles(const std::vector<std::filesystem::path>& files, const ImportReport& report,
                    const ReadingOptions& how);
/// The same as a station of its own, with progress on standard error, and what became of the meshes: see `bringCloudsNear`.
Station importFiles(const std::vector<std::filesystem::path>& files, const ReadingOptions& how = {});

/// For the user: "torso: 34512 of 200000 triangles, within 0.5 mm".
std::string textOf(const vrk::station::SimplifiedMesh& mesh);

/// A surveyed cloud lies far from the origin, where single precision has no room for its details: clouds that are all there
/// is are moved to around the first one's own origin. With anything else in the station nothing is done.
void bringCloudsNear(Station& station);

} // namespace vrkview
