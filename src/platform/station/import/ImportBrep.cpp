#include "platform/station/import/CadParts.h"
#include "platform/station/import/OcctProgress.h"

#include <BRepTools.hxx>
#include <BRep_Builder.hxx>
#include <BinTools.hxx>
#include <Standard_Failure.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS_Compound.hxx>
#include <TopoDS_Iterator.hxx>

#include <fmt/format.h>

#include <array>
#include <fstream>
#include <new>

namespace vrk::station {
namespace {

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

} // namespace

std::vector<TopoDS_Shape> bodyShapesOf(const TopoDS_Shape& shape)
{
    std::vector<TopoDS_Shape> bodies;
    const auto addAll = [&](TopAbs_ShapeEnum kind, TopAbs_ShapeEnum outside) {
        for (TopExp_Explorer body(shape, kind, outside); body.More(); body.Next())
            if (TopExp_Explorer(body.Current(), TopAbs_FACE).More()) // what lost all of them is nothing
                bodies.push_back(body.Current());
    };
    addAll(TopAbs_SOLID, TopAbs_SHAPE);
    addAll(TopAbs_SHELL, TopAbs_SOLID);

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

TopoDS_Shape readWholeBrep(const std::filesystem::path& file, const Progress& progress)
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

CadContent readBrep(const std::filesystem::path& file, const Progress& progress)
{
    report(progress, "reading", 0);
    const TopoDS_Shape shape = readWholeBrep(file, progress);
    const std::vector<TopoDS_Shape> shapes = bodyShapesOf(shape);
    if (shapes.empty())
        throw ImportError(file, "the BREP file holds no shapes");

    CadPart part;
    part.name = file.stem().string();
    for (std::size_t i = 0; i < shapes.size(); ++i) {
        CadBody body;
        body.name = shapes.size() == 1 ? part.name : fmt::format("{}.{}", part.name, i + 1);
        body.uri = fmt::format("{}#{}", file.string(), i + 1);
        body.shape = shapes[i];
        part.bodies.push_back(std::move(body));
    }
    CadContent content;
    content.parts.push_back(std::move(part));
    return content;
}

} // namespace vrk::station
