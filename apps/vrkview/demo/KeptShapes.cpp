#include "demo/KeptShapes.h"

#include "platform/station/Import.h"

#include <BinTools.hxx>
#include <Standard_Failure.hxx>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace vrkview::demo {
namespace {

ShapesMadeAnew* anew = nullptr;

void append(std::string& bytes, const std::string& piece)
{
    const std::uint64_t size = piece.size();
    bytes.append(reinterpret_cast<const char*>(&size), sizeof size);
    bytes += piece;
}

/// Takes a piece off the front; none where the rest is shorter than its length says.
std::optional<std::string_view> takePiece(std::string_view& bytes)
{
    std::uint64_t size = 0;
    if (bytes.size() < sizeof size)
        return {};
    std::memcpy(&size, bytes.data(), sizeof size);
    bytes.remove_prefix(sizeof size);
    if (bytes.size() < size)
        return {};
    const std::string_view piece = bytes.substr(0, size);
    bytes.remove_prefix(size);
    return piece;
}

TopoDS_Shape readShape(std::string_view bytes)
{
    TopoDS_Shape shape;
    std::istringstream stream{std::string(bytes)};
    try {
        BinTools::Read(shape, stream);
    } catch (const Standard_Failure&) {
        shape.Nullify(); // not what this version of the library writes: whoever asks makes it anew
    }
    return shape;
}

} // namespace

TopoDS_Shape kept(const std::string& name, const ShapeMaker& make)
{
    TopoDS_Shape shape;
    if (!anew)
        shape = shapeIn(keptBytes(), name);
    if (shape.IsNull())
        shape = make();
    vrk::station::meshShape(shape); // of one that was read it makes the normals, which are not written
    if (anew)
        anew->add({name, shape});
    return shape;
}

ShapesMadeAnew::ShapesMadeAnew()
{
    anew = this;
}

ShapesMadeAnew::~ShapesMadeAnew()
{
    anew = nullptr;
}

void ShapesMadeAnew::add(NamedShape made)
{
    if (std::ranges::find(shapes, made.name, &NamedShape::name) != shapes.end())
        throw std::logic_error("two shapes of the demo station have the name " + made.name);
    shapes.push_back(std::move(made));
}

std::string bytesOf(const std::vector<NamedShape>& shapes)
{
    std::string bytes;
    for (const auto& [name, shape] : shapes) {
        std::ostringstream stream;
        BinTools::Write(shape, stream, true, false, BinTools_FormatVersion_CURRENT);
        if (!stream)
            throw std::runtime_error("the shape " + name + " cannot be written");
        append(bytes, name);
        append(bytes, stream.str());
    }
    return bytes;
}

TopoDS_Shape shapeIn(std::span<const std::byte> bytes, const std::string& name)
{
    std::string_view rest(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    while (const std::optional<std::string_view> nameHere = takePiece(rest)) {
        const std::optional<std::string_view> shape = takePiece(rest);
        if (!shape)
            break;
        if (*nameHere == name)
            return readShape(*shape);
    }
    return {};
}

} // namespace vrkview::demo
