#include "platform/layout/ShapeUris.h"

#include "platform/common/Hash.h"

#include <BRepBuilderAPI_Copy.hxx>
#include <BRep_Tool.hxx>
#include <BinTools.hxx>
#include <Poly_Triangulation.hxx>
#include <Standard_Failure.hxx>
#include <TopExp.hxx>
#include <TopExp_Explorer.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>

#include <fmt/format.h>

#include <cstdint>
#include <mutex>
#include <streambuf>
#include <unordered_map>

namespace vrk::layout {
namespace {

/// Hashes what is written to it.
class HashBuffer : public std::streambuf {
public:
    common::Hash hash;

protected:
    int_type overflow(int_type c) override
    {
        hash.addNumber(static_cast<char>(c));
        return c;
    }
    std::streamsize xsputn(const char* bytes, std::streamsize count) override
    {
        hash.add({bytes, static_cast<std::size_t>(count)});
        return count;
    }
};

std::string writtenGeometryOf(const TopoDS_Shape& shape)
{
    HashBuffer buffer;
    std::ostream stream(&buffer);
    BRepBuilderAPI_Copy bare(shape, false, false); // without triangles and polygons
    // Meshing leaves its mark also in the flags, which are written.
    TopTools_IndexedMapOfShape pieces;
    TopExp::MapShapes(bare.Shape(), pieces);
    for (int i = 1; i <= pieces.Extent(); ++i) {
        TopoDS_Shape piece = pieces(i);
        piece.Modified(false);
        piece.Checked(false);
    }
    BinTools::Write(bare.Shape(), stream);
    return buffer.hash.text();
}

/// Of the geometry alone: a shape that was just read has no triangles yet, and is the same. One that is too damaged to be
/// copied, such as one with an edge that goes on to 1e308, is like no other.
std::string geometryOf(const TopoDS_Shape& shape)
{
    try {
        return writtenGeometryOf(shape);
    } catch (const Standard_Failure&) {
        common::Hash hash;
        hash.addNumber(reinterpret_cast<std::uintptr_t>(shape.TShape().get()));
        return hash.text();
    }
}

/// Of the triangles by which it is drawn; empty where a face has none.
std::string trianglesOf(const TopoDS_Shape& shape)
{
    common::Hash hash;
    for (TopExp_Explorer face(shape, TopAbs_FACE); face.More(); face.Next()) {
        TopLoc_Location location;
        const Handle(Poly_Triangulation) triangles = BRep_Tool::Triangulation(TopoDS::Face(face.Current()), location);
        if (triangles.IsNull())
            return {};
        hash.addNumber(triangles->NbNodes());
        for (int i = 1; i <= triangles->NbNodes(); ++i) {
            const gp_Pnt node = triangles->Node(i);
            for (int axis = 1; axis <= 3; ++axis)
                hash.addNumber(node.Coord(axis));
        }
        for (int i = 1; i <= triangles->NbTriangles(); ++i)
            for (int corner = 1; corner <= 3; ++corner)
                hash.addNumber(triangles->Triangle(i)(corner));
    }
    return hash.text();
}

bool isSameContent(const TopoDS_Shape& a, const TopoDS_Shape& b)
{
    if (a.IsEqual(b))
        return true;
    const std::string trianglesA = trianglesOf(a);
    const std::string trianglesB = trianglesOf(b);
    if (!trianglesA.empty() && !trianglesB.empty() && trianglesA != trianglesB)
        return false;
    return geometryOf(a) == geometryOf(b);
}

struct Claimed {
    TopoDS_Shape shape;
    unsigned bodies = 0;
};

/// Never destroyed: bodies may live as long as the process.
struct Claims {
    std::mutex mutex;
    std::unordered_map<std::string, Claimed> byUri;
};

Claims& claims()
{
    static auto* const all = new Claims;
    return *all;
}

} // namespace

std::string contentOf(const TopoDS_Shape& shape)
{
    common::Hash hash;
    hash.add(geometryOf(shape));
    hash.add(trianglesOf(shape));
    return hash.text();
}

bool ShapeClaim::take(const std::string& uri, const TopoDS_Shape& shape)
{
    release();
    Claims& all = claims();
    const std::lock_guard lock(all.mutex);
    const auto [entry, isNew] = all.byUri.try_emplace(uri);
    if (isNew)
        entry->second.shape = shape;
    else if (!isSameContent(entry->second.shape, shape))
        return false;
    ++entry->second.bodies;
    held = uri;
    holds = true;
    return true;
}

void ShapeClaim::release()
{
    if (!holds)
        return;
    holds = false;
    Claims& all = claims();
    const std::lock_guard lock(all.mutex);
    const auto entry = all.byUri.find(held);
    if (--entry->second.bodies == 0)
        all.byUri.erase(entry);
}

} // namespace vrk::layout
