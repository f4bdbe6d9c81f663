#include "platform/station/file/StationGeometry.h"

#include "platform/layout/Body.h"
#include "platform/layout/Part.h"
#include "platform/layout/PointCloud.h"
#include "platform/station/GeometryCache.h"
#include "platform/station/ImportCloud.h"
#include "platform/station/StationFile.h"
#include "platform/station/Uri.h"
#include "platform/station/clouds/CloudWriters.h"

#include <BRepTools.hxx>

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <sstream>

namespace vrk::station {
namespace {

constexpr std::string_view ending = ".station.json";

bool hasScheme(const std::string& uri)
{
    return uri.find("://") != std::string::npos;
}

/// The file of a reference to a shape: "<file>#<name>", or a file as a whole.
std::filesystem::path fileOf(const std::string& uri, bool isBrep)
{
    return isBrep ? uri.substr(0, uri.rfind('#')) : uri;
}

bool isFile(const std::filesystem::path& file)
{
    std::error_code error;
    return std::filesystem::is_regular_file(file, error);
}

/// What a file may be called in any folder.
std::string plainName(std::string name)
{
    std::ranges::replace_if(
        name, [](unsigned char c) { return !std::isalnum(c) && c != '-' && c != '_'; }, '_');
    return name;
}

std::string nameBase(const std::filesystem::path& stationFile)
{
    const std::string name = stationFile.filename().string();
    return isStationFile(stationFile) ? name.substr(0, name.size() - ending.size()) : stationFile.stem().string();
}

LengthUnit unitAt(const JsonPlace& place)
{
    if (!place.has("unit"))
        return LengthUnit::Millimetre;
    const JsonPlace at = place.at("unit");
    const std::optional<LengthUnit> unit = LengthUnitNamed(at.asText());
    if (!unit)
        at.fail("\"mm\", \"cm\", \"m\" or \"in\"");
    return *unit;
}

void addUnit(Json& json, LengthUnit unit)
{
    if (unit != LengthUnit::Millimetre)
        json["unit"] = NameOf(unit);
}

} // namespace

GeometryReader::GeometryReader(const std::filesystem::path& stationFile, GeometryUse use, const Progress& progress)
    : folder(stationFile.parent_path()), use(use), progress(progress)
{
}

std::string GeometryReader::uriOf(const JsonPlace& place) const
{
    const std::string uri = place.asText();
    if (uri.empty())
        place.fail("a file");
    return hasScheme(uri) ? uri : (folder / uri).lexically_normal().string();
}

void GeometryReader::give(layout::Body& body, const JsonPlace& place)
{
    place.expectObject({"uri", "file_type", "unit"});
    const JsonPlace uriPlace = place.at("uri");
    const std::string uri = uriOf(uriPlace);
    const std::string type = place.at("file_type").asText();
    if (type != "brep" && type != "stl" && type != "mesh")
        place.at("file_type").fail("\"brep\", \"stl\" or \"mesh\"");
    if (type == "brep" && place.has("unit"))
        place.at("unit").fail("no unit, as a shape has its own");
    const LengthUnit unit = unitAt(place);
    body.setGeometry(uri, type);
    if (type == "mesh" || unit != LengthUnit::Millimetre)
        body.setSource(uri, unit);
    if (use == GeometryUse::Skip || hasScheme(uri))
        return;

    const FileInUnit file{fileOf(uri, type == "brep"), unit};
    if (type != "brep")
        return giveMesh(body, file, uriPlace);
    const Pieces& pieces = piecesOf(file, uriPlace);
    if (const auto found = pieces.find(uri); found != pieces.end()) {
        body.setShape(found->second->getShape());
    } else if (uri.find('#') == std::string::npos) {
        TopoDS_Shape& shape = wholeShapes[uri];
        if (shape.IsNull())
            shape = ImportShape(uri);
        body.setShape(shape);
    } else {
        uriPlace.fail(fmt::format("the name of a shape in its file, not '{}'", uriPlace.asText()));
    }
}

/// A form that the view does not read, or a unit that is not the model's, was converted.
void GeometryReader::giveMesh(layout::Body& body, const FileInUnit& file, const JsonPlace& place)
{
    const auto& [uri, mesh] = *piecesOf(file, place).begin();
    if (mesh->getFileType() != body.getFileType())
        place.fail(fmt::format("{}, not '{}'",
                               body.getFileType() == "stl" ? "an STL file" : "a mesh of another format than STL",
                               place.asText()));
    body.setGeometry(mesh->getGeometryUri(), mesh->getFileType());
    body.setSource(mesh->getSourceFile(), mesh->getSourceUnit());
}

const GeometryReader::Pieces& GeometryReader::piecesOf(const FileInUnit& fileInUnit, const JsonPlace& place)
{
    const auto& [file, unit] = fileInUnit;
    const auto [entry, isNew] = files.try_emplace(fileInUnit);
    Pieces& pieces = entry->second;
    if (!isNew)
        return pieces;
    if (!isFile(file))
        place.fail(fmt::format("a file that is there, not '{}'", place.asText()));
    // Told again and again, so that a file that takes long can be given up.
    const auto tell = [this, name = file.filename().string()](std::string_view, double) {
        if (progress)
            progress(name, 0);
    };
    tell({}, 0);
    try {
        for (const auto& part : ImportFile(file, tell, unit)) {
            for (const auto& body : part->getBodies())
                pieces.emplace(body->getGivenUri(), body);
        }
    } catch (const ImportError& failure) {
        place.fail(fmt::format("geometry that can be read: {}", failure.what()));
    }
    return pieces;
}

std::shared_ptr<layout::PointCloud> GeometryReader::makeCloud(unsigned id, const std::string& name,
                                                              const JsonPlace& place)
{
    place.expectObject({"uri", "file_type", "unit"});
    const JsonPlace uriPlace = place.at("uri");
    const std::string uri = uriOf(uriPlace);
    const LengthUnit unit = unitAt(place);
    const std::string type = place.at("file_type").asText();
    if (type != "ply" && type != "pcd" && type != "xyz")
        place.at("file_type").fail("\"ply\", \"pcd\" or \"xyz\"");
    std::shared_ptr<layout::PointCloud> cloud;
    if (use == GeometryUse::Skip) {
        cloud = std::make_shared<layout::PointCloud>(id, name, layout::PointCloud::Points());
    } else {
        const std::filesystem::path file = UriToFilePath(uri);
        if (!isFile(file))
            uriPlace.fail(fmt::format("a file that is there, not '{}'", uriPlace.asText()));
        try {
            cloud = std::make_shared<layout::PointCloud>(id, name, layout::PointCloud::Points());
            layout::PointCloud::Content content;
            ImportPointCloud(file, progress, unit)->exchange(content);
            cloud->exchange(content);
        } catch (const ImportError& failure) {
            uriPlace.fail(fmt::format("geometry that can be read: {}", failure.what()));
        }
    }
    cloud->setGeometry(uri, type);
    cloud->setFileUnit(unit);
    return cloud;
}

GeometryWriter::GeometryWriter(const std::filesystem::path& stationFile)
    : stationFile(stationFile), folder(stationFile.parent_path()), filesName(nameBase(stationFile) + ".files")
{
}

Json GeometryWriter::jsonOf(const layout::Body& body, const std::string& path)
{
    if (const std::string source = body.getSourceFile(); isFile(source)) {
        Json json{{"uri", relative(source)}, {"file_type", body.getFileType()}};
        addUnit(json, body.getSourceUnit());
        meshes = true;
        return json;
    }
    meshes = meshes || body.getFileType() == "mesh";
    return {{"uri", reference(body.getGeometryUri(), &body, path + "/geometry/uri")},
            {"file_type", body.getFileType()}};
}

Json GeometryWriter::jsonOf(const layout::PointCloud& cloud, const std::string& path)
{
    if (cloud.getGeometryUri().empty() && !cloud.getPoints().empty())
        return {{"uri", exported(cloud, path)}, {"file_type", "ply"}};
    Json json{{"uri", reference(cloud.getGeometryUri(), nullptr, path + "/geometry/uri")},
              {"file_type", cloud.getFileType()}};
    addUnit(json, cloud.getFileUnit());
    meshes = meshes || json.contains("unit");
    return json;
}

std::string GeometryWriter::reference(const std::string& uri, const layout::Body* body, const std::string& path)
{
    if (hasScheme(uri))
        return uri;
    const bool isBrep = body && body->getFileType() == "brep";
    if (isBrep && body->hasOwnUri() && !body->getShape().IsNull())
        return exported(uri, body->getShape()); // its file holds another shape
    const std::filesystem::path named = fileOf(uri, isBrep);
    std::error_code error;
    const std::filesystem::path file =
        named.empty() ? named : std::filesystem::absolute(named, error).lexically_normal();
    if (!file.empty() && isFile(file)) {
        const std::string piece = uri.substr(named.string().size());
        return (GeometryCache::Holds(file) ? copied(file) : relative(file)) + piece;
    }
    if (isBrep && !body->getShape().IsNull())
        return exported(uri, body->getShape());
    throw StationFileError(stationFile, path, fmt::format("expected a file that is there, not '{}'", uri));
}

std::string GeometryWriter::relative(const std::filesystem::path& file) const
{
    // A way over the root says nothing about where the two stand to each other.
    const std::filesystem::path inRoot = file.relative_path();
    const std::filesystem::path folderInRoot = folder.relative_path();
    if (folderInRoot.empty() || *inRoot.begin() != *folderInRoot.begin())
        return file.string();
    return file.lexically_relative(folder).string();
}

std::string GeometryWriter::copied(const std::filesystem::path& source)
{
    const std::string name = source.filename().string();
    copies.emplace(name, source);
    return filesName + '/' + name;
}

std::string GeometryWriter::exported(const std::string& uri, const TopoDS_Shape& shape)
{
    std::string& known = exportedUris[uri];
    if (!known.empty())
        return known;
    std::ostringstream stream;
    BRepTools::Write(shape, stream);
    const std::string stem = plainName(uri.substr(uri.rfind('#') + 1));
    // Named by what it holds: a station that refers to an older state of the shape keeps that.
    const std::string name = fmt::format("{}-{}.brep", stem.empty() ? "shape" : stem, hashOf(stream.str()));
    texts.emplace(name, stream.str());
    return known = filesName + '/' + name;
}

/// Named by what it holds, too.
std::string GeometryWriter::exported(const layout::PointCloud& cloud, const std::string& path)
{
    // Readers drop a point that is not finite, and the numbers behind it would be those of others.
    if (!std::ranges::all_of(cloud.getPoints(), &rob::PosTemplate<float>::isFinite))
        throw StationFileError(stationFile, path, "expected points that are finite, as no file holds them yet");
    ExportedPoints points;
    points.points.reserve(cloud.getPoints().size());
    for (const rob::PosTemplate<float>& point : cloud.getPoints())
        points.points.emplace_back(point);
    if (cloud.hasNormals())
        points.normals = cloud.getNormals();
    if (cloud.hasColors())
        points.colors = cloud.getColors();
    std::string bytes = plyOf(points);
    const std::string name = fmt::format("{}-{}.ply", plainName(cloud.getName()), hashOf(bytes));
    texts.emplace(name, std::move(bytes));
    return filesName + '/' + name;
}

void GeometryWriter::write() const
{
    if (copies.empty() && texts.empty())
        return;
    const std::filesystem::path target = folder / filesName;
    std::error_code error;
    std::filesystem::create_directories(target, error);
    for (const auto& [name, text] : texts) {
        if (!isFile(target / name))
            writeWhole(target / name, text);
    }
    for (const auto& [name, source] : copies) {
        if (isFile(target / name))
            continue;
        std::ostringstream text;
        text << std::ifstream(source, std::ios::binary).rdbuf();
        writeWhole(target / name, text.str());
    }
}

} // namespace vrk::station
