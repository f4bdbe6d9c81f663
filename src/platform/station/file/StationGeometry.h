#pragma once

#include "platform/geometry/LengthUnit.h"
#include "platform/station/Import.h"
#include "platform/station/file/StationJson.h"

#include <TopoDS_Shape.hxx>

#include <map>
#include <set>
#include <utility>

namespace vrk::layout {
class Body;
class PointCloud;
} // namespace vrk::layout

/// The geometry files that a station file refers to. Not installed.
namespace vrk::station {

enum class GeometryUse {
    Load,
    Skip, ///< the references are taken as they stand
};

/// Resolves references and reads each file once.
class GeometryReader {
public:
    GeometryReader(const std::filesystem::path& stationFile, GeometryUse use, const Progress& progress);

    bool isLoading() const { return use == GeometryUse::Load; }
    /// Gives a body its geometry, which stands at `place`.
    void give(layout::Body& body, const JsonPlace& place);
    std::shared_ptr<layout::PointCloud> makeCloud(unsigned id, const std::string& name, const JsonPlace& place);

private:
    /// A file of meshes or shapes, in the unit that is told for one that has none.
    using FileInUnit = std::pair<std::filesystem::path, LengthUnit>;
    /// What a file holds, by the URI of each piece.
    using Pieces = std::map<std::string, std::shared_ptr<layout::Body>>;

    std::string uriOf(const JsonPlace& place) const;
    const Pieces& piecesOf(const FileInUnit& file, const JsonPlace& place);
    void giveMesh(layout::Body& body, const FileInUnit& file, const JsonPlace& place);

    std::filesystem::path folder; // of the station
    GeometryUse use;
    const Progress& progress;
    std::map<FileInUnit, Pieces> files;
    std::map<std::string, TopoDS_Shape> wholeShapes;
};

/// Finds how a station file refers to geometry, and gathers what must be written beside it.
class GeometryWriter {
public:
    explicit GeometryWriter(const std::filesystem::path& stationFile);

    /// The "geometry" of a body. @param path  of the body, for failures.
    Json jsonOf(const layout::Body& body, const std::string& path);
    Json jsonOf(const layout::PointCloud& cloud, const std::string& path);
    /// Whether any of them is in a unit, or a mesh of a kind, that came with version `meshVersion`.
    bool hasMeshes() const { return meshes; }
    /// Writes what was gathered. Files of these names hold the same already and stay.
    void write() const;

private:
    std::string reference(const std::string& uri, const layout::Body* body, const std::string& path);
    std::string relative(const std::filesystem::path& file) const;
    /// The name of the copy of a file, or of a text, beside the station.
    std::string copied(const std::filesystem::path& source);
    std::string exported(const std::string& uri, const TopoDS_Shape& shape);
    /// Of a cloud that no file holds.
    std::string exported(const layout::PointCloud& cloud, const std::string& path);

    std::filesystem::path stationFile;
    std::filesystem::path folder;
    std::string filesName;                               // the folder beside the station
    std::map<std::string, std::filesystem::path> copies; // by file name
    std::map<std::string, std::string> texts;            // by file name
    std::map<std::string, std::string> exportedUris;
    bool meshes = false;
};

} // namespace vrk::station
