#include "platform/station/FileKinds.h"
#include "platform/station/import/CadParts.h"
#include "platform/station/import/OcctProgress.h"

#include <Standard_Failure.hxx>
#include <TopTools_IndexedMapOfShape.hxx>

#include <fmt/format.h>

#include <algorithm>

namespace vrk::station {
namespace {

/// Each body's shape once: occurrences of one product share it.
std::vector<TopoDS_Shape> distinctShapes(const CadParts& parts)
{
    TopTools_IndexedMapOfShape seen;
    std::vector<TopoDS_Shape> shapes;
    for (const CadPart& part : parts) {
        for (const CadBody& body : part.bodies) {
            const int known = seen.Extent();
            if (!body.shape.IsNull() && seen.Add(body.shape) > known)
                shapes.push_back(body.shape);
        }
    }
    return shapes;
}

void meshParts(const CadParts& parts, const Progress& progress)
{
    const std::vector<TopoDS_Shape> shapes = distinctShapes(parts);
    const double share = (1 - meshingStart) / static_cast<double>(std::max<std::size_t>(1, shapes.size()));
    for (std::size_t i = 0; i < shapes.size(); ++i) {
        const std::string step = fmt::format("meshing {} of {}", i + 1, shapes.size());
        const double from = meshingStart + share * static_cast<double>(i);
        report(progress, step, from);
        const Handle(OcctProgress) meshing = new OcctProgress(progress, step, from, from + share);
        meshShape(shapes[i], meshing->Start());
        meshing->rethrow();
    }
}

CadContent contentOf(const std::filesystem::path& file, CadRequest request, const Progress& progress)
{
    const FileKind kind = fileKindOf(file);
    if (request != CadRequest::Whole)
        return kind == FileKind::Step   ? readStep(file, progress)
               : kind == FileKind::Iges ? readIges(file, progress)
                                        : readBrep(file, progress);
    CadBody body;
    body.shape = readWholeBrep(file, progress);
    CadPart part;
    part.bodies.push_back(std::move(body));
    CadContent content;
    content.parts.push_back(std::move(part));
    return content;
}

} // namespace

void callOcct(const std::filesystem::path& file, const std::function<void()>& call)
{
    try {
        call();
    } catch (const Standard_Failure& failure) {
        throw ImportError(file, fmt::format("Open CASCADE fails on it, {}: {}", failure.DynamicType()->Name(),
                                            oneLine(failure.GetMessageString())));
    }
}

CadContent readCad(const std::filesystem::path& file, CadRequest request, const Progress& progress)
{
    CadContent content;
    callOcct(file, [&] {
        content = contentOf(file, request, progress);
        leaveOutEndless(content);
        if (content.parts.empty())
            throw ImportError(file, "nothing of it can be shown: " + listed(content.notes));
        if (request != CadRequest::Bare)
            meshParts(content.parts, progress);
    });
    return content;
}

} // namespace vrk::station
