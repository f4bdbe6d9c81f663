#include "platform/station/import/ImportFormats.h"

#include "platform/geometry/EdgePolygons.h"
#include "platform/layout/Body.h"
#include "platform/layout/Part.h"
#include "platform/sdf/SdfManager.h"
#include "platform/station/FileKinds.h"
#include "platform/station/GeometryCache.h"
#include "platform/station/import/OcctProgress.h"

#include <BRepBndLib.hxx>
#include <BRepMesh_IncrementalMesh.hxx>
#include <BRepTools.hxx>
#include <BRep_Builder.hxx>
#include <BRep_Tool.hxx>
#include <BinTools.hxx>
#include <Bnd_Box.hxx>
#include <Message.hxx>
#include <Message_Messenger.hxx>
#include <Poly_Triangulation.hxx>
#include <Standard_Failure.hxx>
#include <StdPrs_ToolTriangulatedShape.hxx>
#include <TopExp.hxx>
#include <TopExp_Explorer.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Compound.hxx>
#include <TopoDS_Iterator.hxx>

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <fstream>
#include <map>
#include <mutex>
#include <new>
#include <vector>

namespace vrk::station {
namespace {

constexpr double angularDeflection = 0.35; // radians

/// Keeps Open CASCADE from writing to the console. Its messenger is one for the process.
class QuietMessenger {
public:
    QuietMessenger() : printers(Message::DefaultMessenger()->Printers())
    {
        Message::DefaultMessenger()->ChangePrinters().Clear();
    }
    ~QuietMessenger() { Message::DefaultMessenger()->ChangePrinters() = printers; }
    QuietMessenger(const QuietMessenger&) = delete;
    QuietMessenger& operator=(const QuietMessenger&) = delete;

private:
    Message_SequenceOfPrinters printers;
};

/// Open CASCADE's readers share parameters and the messenger: one import at a time.
std::mutex& importMutex()
{
    static std::mutex mutex;
    return mutex;
}

using Reader = Parts (*)(const std::filesystem::path&, const Progress&);

Reader readerOf(const std::filesystem::path& file)
{
    switch (fileKindOf(file)) {
    case FileKind::Step:
        return readStep;
    case FileKind::Brep:
        return readBrep;
    case FileKind::Stl:
        return readStl;
    default:
        throw ImportError(file, fmt::format("not a kind of file that can be read ({})", endingsOf(isShapeKind)));
    }
}

/// Each body's shape once: occurrences of one product share it.
std::vector<TopoDS_Shape> distinctShapes(const Parts& parts)
{
    TopTools_IndexedMapOfShape seen;
    std::vector<TopoDS_Shape> shapes;
    for (const auto& part : parts) {
        for (const auto& body : part->getBodies()) {
            const TopoDS_Shape& shape = body->getShape();
            const int known = seen.Extent();
            if (!shape.IsNull() && seen.Add(shape) > known)
                shapes.push_back(shape);
        }
    }
    return shapes;
}

/// Computes the normals that are missing, so that nobody writes into a triangulation later. It takes a hundredth of the
/// time of the meshing.
void addNormals(const TopTools_IndexedMapOfShape& faces)
{
    for (int i = 1; i <= faces.Extent(); ++i) {
        TopLoc_Location location;
        const TopoDS_Face& face = TopoDS::Face(faces(i));
        const Handle(Poly_Triangulation) triangles = BRep_Tool::Triangulation(face, location);
        if (!triangles.IsNull())
            StdPrs_ToolTriangulatedShape::ComputeNormals(face, triangles); // does nothing where there are some
    }
}

/// Appends the wires, edges and vertices that belong to nothing.
void addLoose(const TopoDS_Shape& shape, std::vector<TopoDS_Shape>& found)
{
    switch (shape.ShapeType()) {
    case TopAbs_COMPOUND:
        for (TopoDS_Iterator piece(shape); piece.More(); piece.Next())
            addLoose(piece.Value(), found);
        break;
    case TopAbs_WIRE:
    case TopAbs_EDGE:
    case TopAbs_VERTEX:
        found.push_back(shape);
        break;
    default:
        break;
    }
}

void addPolygons(const TopoDS_Shape& shape)
{
    Bnd_Box box;
    BRepBndLib::Add(shape, box);
    if (!box.IsVoid() && !box.IsOpen())
        geometry::addEdgePolygons(shape, deflectionFor(box.CornerMin().Distance(box.CornerMax())));
}

/// As `meshShape`; a break leaves a part of it undone.
void mesh(const TopoDS_Shape& shape, const Message_ProgressRange& range)
{
    TopTools_IndexedMapOfShape faces;
    TopExp::MapShapes(shape, TopAbs_FACE, faces);
    // Only the faces without triangles go to the mesher, which would otherwise make coarse ones anew.
    TopoDS_Compound bare;
    const BRep_Builder builder;
    builder.MakeCompound(bare);
    bool anyBare = false;
    for (int i = 1; i <= faces.Extent(); ++i) {
        TopLoc_Location location;
        if (BRep_Tool::Triangulation(TopoDS::Face(faces(i)), location).IsNull()) {
            builder.Add(bare, faces(i));
            anyBare = true;
        }
    }

    if (anyBare) {
        Bnd_Box box;
        BRepBndLib::Add(shape, box);
        // A shape without end, such as a half space, has no triangles; the mesher would not come back from it.
        if (box.IsVoid() || box.IsOpen())
            return;
        const double diagonal = box.CornerMin().Distance(box.CornerMax());
        IMeshTools_Parameters fineness;
        fineness.Deflection = deflectionFor(diagonal);
        fineness.Angle = angularDeflection;
        fineness.InParallel = true;
        BRepMesh_IncrementalMesh(bare, fineness, range);
    }
    addNormals(faces);
    addPolygons(shape);
}

void meshParts(const Parts& parts, const Progress& progress)
{
    const std::vector<TopoDS_Shape> shapes = distinctShapes(parts);
    const double share = (1 - meshingStart) / static_cast<double>(std::max<std::size_t>(1, shapes.size()));
    for (std::size_t i = 0; i < shapes.size(); ++i) {
        const std::string step = fmt::format("meshing {} of {}", i + 1, shapes.size());
        const double from = meshingStart + share * static_cast<double>(i);
        report(progress, step, from);
        const Handle(OcctProgress) meshing = new OcctProgress(progress, step, from, from + share);
        mesh(shapes[i], meshing->Start());
        meshing->rethrow();
    }
}

/// Reads the text form or the binary form, which the first bytes tell apart.
TopoDS_Shape shapeOfBrepFile(const std::filesystem::path& file, const Message_ProgressRange& range = {})
{
    std::array<char, 64> head{};
    std::ifstream(file, std::ios::binary).read(head.data(), head.size() - 1);
    const std::string_view start(head.data());
    const bool isBinary = start.find("Open CASCADE Topology V") != std::string_view::npos;
    const bool isText = start.find("CASCADE Topology V") != std::string_view::npos || start.starts_with("DBRep_");
    if (!isBinary && !isText)
        throw ImportError(file, "not a BREP file");

    TopoDS_Shape shape;
    try {
        std::ifstream stream(file, std::ios::binary);
        // Past the end of a file that is cut short Open CASCADE would read on for ever.
        stream.exceptions(std::ios::failbit | std::ios::badbit);
        if (isBinary)
            BinTools::Read(shape, stream, range);
        else
            BRepTools::Read(shape, stream, BRep_Builder(), range);
    } catch (const std::ios_base::failure&) {
        shape.Nullify();
    } catch (const std::bad_alloc&) { // a damaged number of something
        shape.Nullify();
    } catch (const Standard_Failure&) {
        shape.Nullify();
    }
    if (shape.IsNull())
        throw ImportError(file, "the BREP file is cut short or damaged");
    return shape;
}

/// As `shapeOfBrepFile`, told as the first half of an import.
TopoDS_Shape readShape(const std::filesystem::path& file, const Progress& progress)
{
    const Handle(OcctProgress) reading = new OcctProgress(progress, "reading", 0, meshingStart);
    try {
        const TopoDS_Shape shape = shapeOfBrepFile(file, reading->Start());
        reading->rethrow();
        return shape;
    } catch (const ImportError&) {
        reading->rethrow(); // a file that was given up is no damaged one
        throw;
    }
}

/// Keeps more than one body, or what is none, together.
TopoDS_Shape wholeShapeOf(const std::filesystem::path& file)
{
    checkReadable(file);
    if (readerOf(file) != readBrep)
        throw ImportError(file, "only a BREP file is meant as a whole");
    const std::lock_guard lock(importMutex());
    const QuietMessenger quiet;
    const TopoDS_Shape shape = shapeOfBrepFile(file);
    meshShape(shape);
    return shape;
}

/// What `call` returns; Open CASCADE's failures become those of an import.
template <typename Call>
auto callOcct(const std::filesystem::path& file, const Call& call)
{
    try {
        return call();
    } catch (const Standard_Failure& failure) {
        throw ImportError(file, fmt::format("Open CASCADE fails on it, {}: {}", failure.DynamicType()->Name(),
                                            oneLine(failure.GetMessageString())));
    }
}

/// The shapes of a file by their URIs, without triangles where the file has none. Those of the file that was read last are
/// kept: bodies of one file ask for their shapes one after the other. Call it with the import locked.
const std::map<std::string, TopoDS_Shape>& shapesOf(const std::filesystem::path& file)
{
    static std::string readKey;
    static std::map<std::string, TopoDS_Shape> shapes;
    const Reader read = readerOf(file);
    const std::string key = GeometryCache::KeyOf(file);
    if (key == readKey)
        return shapes;
    readKey.clear();
    shapes.clear();
    for (const auto& part : read(file, {}))
        for (const auto& body : part->getBodies())
            if (!body->getShape().IsNull())
                shapes.emplace(body->getGivenUri(), body->getShape());
    readKey = key;
    return shapes;
}

} // namespace

void checkReadable(const std::filesystem::path& file)
{
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(file, error);
    if (status.type() == std::filesystem::file_type::not_found)
        throw ImportError(file, "no such file");
    if (status.type() == std::filesystem::file_type::directory)
        throw ImportError(file, "it is a folder");
    if (!std::ifstream(file, std::ios::binary))
        throw ImportError(file, "the file cannot be opened");
    if (std::filesystem::file_size(file, error) == 0 || error)
        throw ImportError(file, "the file is empty");
}

std::string readWhole(const std::filesystem::path& file)
{
    checkReadable(file);
    std::ifstream stream(file, std::ios::binary);
    const std::uintmax_t size = std::filesystem::file_size(file);
    std::string bytes(size, '\0');
    stream.read(bytes.data(), static_cast<std::streamsize>(size));
    bytes.resize(static_cast<std::size_t>(stream.gcount()));
    return bytes;
}

ImportError::ImportError(const std::filesystem::path& file, const std::string& cause)
    : std::runtime_error(fmt::format("{}: {}", file.string(), oneLine(cause.c_str())))
{
}

std::string oneLine(const char* text)
{
    std::string line = text == nullptr ? "" : text;
    std::ranges::replace_if(
        line, [](unsigned char c) { return std::iscntrl(c) != 0; }, ' ');
    return line;
}

std::vector<TopoDS_Shape> bodyShapesOf(const TopoDS_Shape& shape)
{
    std::vector<TopoDS_Shape> bodies;
    for (TopExp_Explorer solid(shape, TopAbs_SOLID); solid.More(); solid.Next())
        bodies.push_back(solid.Current());
    for (TopExp_Explorer shell(shape, TopAbs_SHELL, TopAbs_SOLID); shell.More(); shell.Next())
        bodies.push_back(shell.Current());

    TopExp_Explorer face(shape, TopAbs_FACE, TopAbs_SHELL);
    if (face.More()) {
        TopoDS_Compound loose;
        const BRep_Builder builder;
        builder.MakeCompound(loose);
        for (; face.More(); face.Next())
            builder.Add(loose, face.Current());
        bodies.push_back(loose);
    }
    addLoose(shape, bodies);
    return bodies;
}

Parts readBrep(const std::filesystem::path& file, const Progress& progress)
{
    report(progress, "reading", 0);
    const TopoDS_Shape shape = readShape(file, progress);
    const std::vector<TopoDS_Shape> shapes = bodyShapesOf(shape);
    if (shapes.empty())
        throw ImportError(file, "the BREP file holds no geometry");

    const std::string name = file.stem().string();
    auto part = std::make_shared<layout::Part>(sdf::SdfManager::inst().generateId(), name);
    for (std::size_t i = 0; i < shapes.size(); ++i) {
        const std::shared_ptr<layout::Body> body =
            part->addBody(shapes.size() == 1 ? name : fmt::format("{}.{}", name, i + 1));
        body->setGeometry(fmt::format("{}#{}", file.string(), i + 1), "brep");
        body->setShape(shapes[i]);
    }
    return {part};
}

Parts ImportFile(const std::filesystem::path& file, const Progress& progress)
{
    const std::filesystem::path absolute = std::filesystem::absolute(file).lexically_normal();
    checkReadable(absolute);
    const Reader read = readerOf(absolute);

    const std::lock_guard lock(importMutex());
    const QuietMessenger quiet;
    return callOcct(absolute, [&] {
        Parts parts = read(absolute, progress);
        meshParts(parts, progress);
        report(progress, "done", 1);
        return parts;
    });
}

TopoDS_Shape ImportShape(const std::string& uri)
{
    if (uri.find('#') == std::string::npos)
        return wholeShapeOf(uri);
    const std::filesystem::path file = uri.substr(0, uri.rfind('#'));
    const std::filesystem::path absolute = std::filesystem::absolute(file).lexically_normal();
    checkReadable(absolute);
    const std::lock_guard lock(importMutex());
    const QuietMessenger quiet;
    return callOcct(absolute, [&] {
        const std::map<std::string, TopoDS_Shape>& shapes = shapesOf(absolute);
        const auto found = shapes.find(absolute.string() + uri.substr(uri.rfind('#')));
        if (found == shapes.end())
            throw ImportError(file, fmt::format("it holds no shape for '{}'", uri));
        meshShape(found->second);
        return found->second;
    });
}

double deflectionFor(double diagonal)
{
    return std::clamp(diagonal / 1000, 0.005, 2.0);
}

void meshShape(const TopoDS_Shape& shape)
{
    mesh(shape, {});
}

} // namespace vrk::station
