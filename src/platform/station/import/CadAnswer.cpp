#include "platform/station/import/CadAnswer.h"

#include <BRep_Builder.hxx>
#include <BRep_Tool.hxx>
#include <BinTools.hxx>
#include <Poly_PolygonOnTriangulation.hxx>
#include <Poly_Triangulation.hxx>
#include <TopExp.hxx>
#include <TopTools_IndexedMapOfOrientedShape.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Compound.hxx>
#include <TopoDS_Iterator.hxx>

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ostream>
#include <stdexcept>
#include <streambuf>
#include <system_error>

namespace vrk::station {
namespace {

constexpr std::string_view mark = "vrkCad02"; // of this form of the answer
// Bytes that a part, and a body, takes at least: no more of them can follow than there is room for.
constexpr std::size_t leastPart = 3 * sizeof(std::uint32_t) + 1 + 7 * sizeof(double);
constexpr std::size_t leastBody = 5 * sizeof(std::uint32_t) + 1;

/// Open CASCADE writes number by number; the system gets large pieces.
class DescriptorBuffer : public std::streambuf {
public:
    explicit DescriptorBuffer(int descriptor) : descriptor(descriptor), piece(std::size_t(1) << 20)
    {
        setp(piece.data(), piece.data() + piece.size());
    }

    /// Writes the last piece. @return the bytes of all.
    std::uint64_t finish()
    {
        writePiece();
        return written;
    }

protected:
    int_type overflow(int_type c) override
    {
        writePiece();
        *pptr() = traits_type::to_char_type(c);
        pbump(1);
        return c;
    }

private:
    void writePiece()
    {
        const char* from = pbase();
        while (from < pptr()) {
            const ssize_t count = ::write(descriptor, from, static_cast<std::size_t>(pptr() - from));
            if (count < 0 && errno == EINTR)
                continue;
            if (count < 0)
                throw std::system_error(errno, std::generic_category(), "the answer cannot be written");
            from += count;
        }
        written += static_cast<std::uint64_t>(pptr() - pbase());
        setp(piece.data(), piece.data() + piece.size());
    }

    int descriptor;
    std::uint64_t written = 0;
    std::vector<char> piece;
};

class SpanBuffer : public std::streambuf {
public:
    explicit SpanBuffer(std::span<const char> bytes)
    {
        char* const begin = const_cast<char*>(bytes.data()); // a buffer for reading is never written to
        setg(begin, begin, begin + bytes.size());
    }
    std::ptrdiff_t position() const { return gptr() - eback(); }

protected:
    // Open CASCADE looks ahead and goes back.
    pos_type seekoff(off_type offset, std::ios::seekdir from, std::ios::openmode) override
    {
        const off_type size = egptr() - eback();
        const off_type base = from == std::ios::beg ? 0 : from == std::ios::cur ? gptr() - eback() : size;
        if (offset < -base || offset > size - base)
            return pos_type(off_type(-1));
        setg(eback(), eback() + base + offset, egptr());
        return pos_type(base + offset);
    }
    pos_type seekpos(pos_type position, std::ios::openmode which) override
    {
        return seekoff(off_type(position), std::ios::beg, which);
    }
};

class HeadWriter {
public:
    explicit HeadWriter(std::ostream& stream) : stream(stream) {}

    template <typename T>
    void number(T value)
    {
        stream.write(reinterpret_cast<const char*>(&value), sizeof value);
    }
    void text(const std::string& text)
    {
        number(static_cast<std::uint32_t>(text.size()));
        stream.write(text.data(), static_cast<std::streamsize>(text.size()));
    }

private:
    std::ostream& stream;
};

class HeadReader {
public:
    explicit HeadReader(std::span<const char> bytes) : left(bytes) {}

    std::span<const char> take(std::size_t count)
    {
        if (count > left.size())
            throw std::runtime_error("the answer is cut short");
        const std::span<const char> taken = left.first(count);
        left = left.subspan(count);
        return taken;
    }
    template <typename T>
    T number()
    {
        T value;
        std::memcpy(&value, take(sizeof value).data(), sizeof value);
        return value;
    }
    /// How many of what takes at least `least` bytes follow.
    std::uint32_t count(std::size_t least)
    {
        const auto count = number<std::uint32_t>();
        if (count > left.size() / least)
            throw std::runtime_error("the answer is cut short");
        return count;
    }
    std::string text()
    {
        const std::span<const char> bytes = take(count(1));
        return {bytes.begin(), bytes.end()};
    }
    /// "#RRGGBB", or none.
    std::string color()
    {
        std::string text = this->text();
        const bool isColor = text.size() == 7 && text.front() == '#' &&
                             text.find_first_not_of("0123456789ABCDEF", 1) == std::string::npos;
        if (!text.empty() && !isColor)
            throw std::runtime_error("the answer has a colour that is none");
        return text;
    }
    std::span<const char> rest() const { return left; }

private:
    std::span<const char> left;
};

/// @param shape  its number.
void writeBody(HeadWriter& head, const CadBody& body, int shape)
{
    head.text(body.name);
    head.text(body.uri);
    head.text(body.color);
    head.number(static_cast<std::uint32_t>(body.faceColors.size()));
    for (const auto& [face, color] : body.faceColors) {
        head.number(static_cast<std::uint32_t>(face));
        head.text(color);
    }
    head.number(static_cast<std::uint32_t>(shape));
    head.number(static_cast<char>(body.shape.Free())); // what the compound takes from it
}

/// What the head says of a body's shape.
struct ShapeNote {
    std::uint32_t number = 0; // from 1
    bool isFree = false;
};

/// All but the shape.
ShapeNote readBody(HeadReader& head, CadBody& body)
{
    body.name = head.text();
    body.uri = head.text();
    body.color = head.color();
    for (std::uint32_t left = head.count(2 * sizeof(std::uint32_t)); left > 0; --left) {
        const auto face = head.number<std::uint32_t>();
        body.faceColors[face] = head.color();
    }
    const auto number = head.number<std::uint32_t>();
    return {number, head.number<char>() != 0};
}

/// Gives a body its shape.
void complete(CadBody& body, const ShapeNote& note, const std::vector<TopoDS_Shape>& shapes)
{
    if (note.number == 0 || note.number > shapes.size())
        throw std::runtime_error("the answer has a body without a shape");
    body.shape = shapes[note.number - 1];
    body.shape.Free(note.isFree);
    if (body.faceColors.empty())
        return;
    TopTools_IndexedMapOfShape faces;
    TopExp::MapShapes(body.shape, TopAbs_FACE, faces);
    for (const auto& [face, color] : body.faceColors) {
        if (face == 0 || face > static_cast<unsigned>(faces.Extent()) || color.empty())
            throw std::runtime_error("the answer has a colour for no face");
    }
}

void writePose(HeadWriter& head, const rob::Posed& pose)
{
    const auto& p = pose.position;
    const auto& q = pose.orientation;
    for (const double number : {p.x, p.y, p.z, q.w, q.x, q.y, q.z})
        head.number(number);
}

rob::Posed readPose(HeadReader& head)
{
    rob::Posed pose;
    auto& p = pose.position;
    auto& q = pose.orientation;
    for (double* const number : {&p.x, &p.y, &p.z, &q.w, &q.x, &q.y, &q.z})
        *number = head.number<double>();
    return pose;
}

/// All that a compound holds, each piece once: the same in its writer and its reader.
using Pieces = TopTools_IndexedMapOfShape;

Pieces piecesOf(const TopoDS_Shape& compound)
{
    Pieces pieces;
    TopExp::MapShapes(compound, pieces);
    return pieces;
}

/// Calls `call` with the triangles of each face.
template <typename Call>
void forTriangles(const Pieces& pieces, const Call& call)
{
    for (int i = 1; i <= pieces.Extent(); ++i) {
        if (pieces(i).ShapeType() != TopAbs_FACE)
            continue;
        TopLoc_Location location;
        const Handle(Poly_Triangulation) triangles = BRep_Tool::Triangulation(TopoDS::Face(pieces(i)), location);
        if (!triangles.IsNull())
            call(triangles);
    }
}

/// Open CASCADE leaves those out of triangles that an edge refers to as well.
void writeNormals(HeadWriter& head, const Pieces& pieces)
{
    forTriangles(pieces, [&head](const Handle(Poly_Triangulation) & triangles) {
        const int count = triangles->HasNormals() ? triangles->NbNodes() : 0;
        head.number(static_cast<std::uint32_t>(count));
        gp_Vec3f normal;
        for (int i = 1; i <= count; ++i) {
            triangles->Normal(i, normal);
            head.number(normal);
        }
    });
}

void readNormals(HeadReader& tail, const Pieces& pieces)
{
    forTriangles(pieces, [&tail](const Handle(Poly_Triangulation) & triangles) {
        const std::uint32_t count = tail.count(sizeof(gp_Vec3f));
        if (count == 0)
            return;
        if (count != static_cast<std::uint32_t>(triangles->NbNodes()))
            throw std::runtime_error("the answer has normals for no nodes");
        triangles->AddNormals();
        for (std::uint32_t i = 1; i <= count; ++i)
            triangles->SetNormal(static_cast<int>(i), tail.number<gp_Vec3f>());
    });
    if (!tail.rest().empty())
        throw std::runtime_error("the answer goes on behind its end");
}

/// Nobody looks at the indices of triangles and polygons again before they are followed.
void checkTriangles(const Pieces& pieces)
{
    forTriangles(pieces, [](const Handle(Poly_Triangulation) & triangles) {
        const int last = triangles->NbNodes();
        for (int i = 1; i <= triangles->NbTriangles(); ++i) {
            int a = 0, b = 0, c = 0;
            triangles->Triangle(i).Get(a, b, c);
            if (a < 1 || b < 1 || c < 1 || a > last || b > last || c > last)
                throw std::runtime_error("the answer has a triangle without a corner");
        }
    });
}

void checkPolygons(const TopoDS_Edge& edge)
{
    for (int i = 1;; ++i) {
        TopLoc_Location location;
        Handle(Poly_PolygonOnTriangulation) polygon;
        Handle(Poly_Triangulation) triangles;
        BRep_Tool::PolygonOnTriangulation(edge, polygon, triangles, location, i);
        if (polygon.IsNull() || triangles.IsNull())
            return;
        for (int node = 1; node <= polygon->NbNodes(); ++node) {
            if (polygon->Node(node) < 1 || polygon->Node(node) > triangles->NbNodes())
                throw std::runtime_error("the answer has an edge without a node");
        }
    }
}

void checkMesh(const Pieces& pieces)
{
    checkTriangles(pieces);
    for (int i = 1; i <= pieces.Extent(); ++i) {
        if (pieces(i).ShapeType() == TopAbs_EDGE)
            checkPolygons(TopoDS::Edge(pieces(i)));
    }
}

std::vector<TopoDS_Shape> readShapes(std::span<const char> bytes, const Message_ProgressRange& range)
{
    SpanBuffer buffer(bytes);
    std::istream stream(&buffer);
    stream.exceptions(std::ios::failbit | std::ios::badbit);
    TopoDS_Shape compound;
    BinTools::Read(compound, stream, range);
    if (compound.IsNull() || compound.ShapeType() != TopAbs_COMPOUND)
        throw std::runtime_error("the answer has no shapes");
    const Pieces pieces = piecesOf(compound);
    HeadReader tail(bytes.subspan(static_cast<std::size_t>(buffer.position())));
    readNormals(tail, pieces);
    checkMesh(pieces);
    std::vector<TopoDS_Shape> shapes;
    for (TopoDS_Iterator shape(compound); shape.More(); shape.Next())
        shapes.push_back(shape.Value());
    return shapes;
}

void writePart(HeadWriter& head, const CadPart& part, TopTools_IndexedMapOfOrientedShape& shapes)
{
    head.text(part.name);
    writePose(head, part.pose);
    head.number(part.owner);
    head.number(static_cast<char>(part.isAssembly));
    head.number(static_cast<std::uint32_t>(part.bodies.size()));
    for (const CadBody& body : part.bodies)
        writeBody(head, body, shapes.Add(body.shape));
}

/// All but the shapes, whose notes it appends.
void readPart(HeadReader& head, CadPart& part, std::vector<ShapeNote>& notes)
{
    part.name = head.text();
    part.pose = readPose(head);
    part.owner = head.number<std::uint32_t>();
    part.isAssembly = head.number<char>() != 0;
    part.bodies.resize(head.count(leastBody));
    for (CadBody& body : part.bodies)
        notes.push_back(readBody(head, body));
    if (part.isAssembly && !part.bodies.empty())
        throw std::runtime_error("the answer has an assembly with bodies");
}

/// Owners are assemblies that stand before what they own, and lie no deeper than may be.
void checkOwners(const CadParts& parts)
{
    std::vector<std::size_t> depths;
    for (const CadPart& part : parts) {
        const bool isOwned = part.owner != 0;
        if (isOwned && (part.owner > depths.size() || !parts[part.owner - 1].isAssembly))
            throw std::runtime_error("the answer has a part of no assembly");
        depths.push_back(isOwned ? depths[part.owner - 1] + 1 : 0);
        if (depths.back() > deepestAssembly)
            throw std::runtime_error("the answer has assemblies without end");
    }
}

} // namespace

std::uint64_t writeAnswer(const CadContent& content, int descriptor)
{
    DescriptorBuffer buffer(descriptor);
    std::ostream stream(&buffer);
    stream.exceptions(std::ios::failbit | std::ios::badbit);
    stream.write(mark.data(), mark.size());
    HeadWriter head(stream);
    TopTools_IndexedMapOfOrientedShape shapes;
    head.number(static_cast<std::uint32_t>(content.notes.size()));
    for (const std::string& note : content.notes)
        head.text(note);
    head.number(static_cast<std::uint32_t>(content.parts.size()));
    for (const CadPart& part : content.parts)
        writePart(head, part, shapes);

    TopoDS_Compound compound;
    const BRep_Builder builder;
    builder.MakeCompound(compound);
    for (int i = 1; i <= shapes.Extent(); ++i)
        builder.Add(compound, shapes(i));
    BinTools::Write(compound, stream, true, false, BinTools_FormatVersion_CURRENT);
    writeNormals(head, piecesOf(compound));
    return buffer.finish();
}

CadContent readAnswer(std::span<const char> bytes, const Message_ProgressRange& range)
{
    HeadReader head(bytes);
    const std::span<const char> found = head.take(mark.size());
    if (std::string_view(found.data(), found.size()) != mark)
        throw std::runtime_error("the answer is that of another version");
    CadContent content;
    content.notes.resize(head.count(sizeof(std::uint32_t)));
    for (std::string& note : content.notes)
        note = oneLine(head.text().c_str());
    content.parts.resize(head.count(leastPart));
    std::vector<ShapeNote> notes; // of each body
    for (CadPart& part : content.parts)
        readPart(head, part, notes);
    checkOwners(content.parts);

    const std::vector<TopoDS_Shape> shapes = readShapes(head.rest(), range);
    auto note = notes.begin();
    for (CadPart& part : content.parts)
        for (CadBody& body : part.bodies)
            complete(body, *note++, shapes);
    return content;
}

} // namespace vrk::station
