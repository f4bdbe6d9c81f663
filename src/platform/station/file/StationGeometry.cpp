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
    place.expectObject({"uri", "file_type"});
    const JsonPlace uriPlace = place.at("uri");
    const std::string uri = uriOf(uriPlace);
    const std::string type = place.at("file_type").asText();
    if (type != "brep" && type != "stl")
        place.at("file_type").fail("\"brep\" or \"stl\"");
    body.setGeometry(uri, type);
    if (use == GeometryUse::Skip || hasScheme(uri))
        return;

    const Pieces& pieces = piecesOf(fileOf(uri, type == "brep"), uriPlace);
    if (type == "stl") {
        // A form that the view does not read was converted.
        body.setGeometry(pieces.begin()->second->getGeometryUri(), "stl");
        return;
    }
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

const GeometryReader::Pieces& GeometryReader::piecesOf(const std::filesystem::path& file, const JsonPlace& place)
{
    const auto [entry, isNew] = files.try_emplace(file);
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
        for (const auto& part : ImportFile(file, tell)) {
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
    place.expectObject({"uri", "file_type"});
    const JsonPlace uriPlace = place.at("uri");
    const std::string uri = uriOf(uriPlace);
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
            const auto read = ImportPointCloud(file, progress);
            cloud = std::make_shared<layout::PointCloud>(id, name, read->getPoints(), read->getNormals());
        } catch (const ImportError& failure) {
            uriPlace.fail(fmt::format("geometry that can be read: {}", failure.what()));
        }
    }
    cloud->setGeometry(uri, type);
    return cloud;
}

GeometryWriter::GeometryWriter(const std::filesystem::path& stationFile)
    : stationFile(stationFile), folder(stationFile.parent_path()), filesName(nameBase(stationFile) + ".files")
{
}

Json GeometryWriter::jsonOf(const layout::Body& body, const std::string& path)
{
    return {{"uri", reference(body.getGeometryUri(), &body, path + "/geometry/uri")},
            {"file_type", body.getFileType()}};
}

Json GeometryWriter::jsonOf(const layout::PointCloud& cloud, const std::string& path)
{
    if (cloud.getGeometryUri().empty() && !cloud.getPoints().empty())
        return {{"uri", exported(cloud, path)}, {"file_type", "ply"}};
    return {{"uri", reference(cloud.getGeometryUri(), nullptr, path + "/geometry/uri")},
            {"file_type", cloud.getFileType()}};
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
    if (cloud.getNormals().size() == cloud.getPoints().size())
        points.normals = cloud.getNormals();
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
