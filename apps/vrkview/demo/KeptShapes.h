#pragma once

#include <TopoDS_Shape.hxx>

#include <cstddef>
#include <functional>
#include <span>
#include <string>
#include <vector>

/// The demo's shapes as they came out when the program was built: its bodies need no booleans and no meshing at the start.
namespace vrkview::demo {

using ShapeMaker = std::function<TopoDS_Shape()>;

/// The shape of this name, with the triangles of `vrk::station::meshShape`: read from what the program holds, or made where
/// that lacks it. Each call gives a shape of its own. Any thread.
TopoDS_Shape kept(const std::string& name, const ShapeMaker& make);

struct NamedShape {
    std::string name;
    TopoDS_Shape shape;
};

/// While it lives, `kept` makes every shape anew and takes it down here. One at a time, and nothing else calls `kept`
/// meanwhile but this thread.
class ShapesMadeAnew {
public:
    ShapesMadeAnew();
    ~ShapesMadeAnew();
    ShapesMadeAnew(const ShapesMadeAnew&) = delete;
    ShapesMadeAnew& operator=(const ShapesMadeAnew&) = delete;

    /// In the order of the calls.
    const std::vector<NamedShape>& get() const { return shapes; }
    /// @throws std::logic_error for a name that was there before: another shape may have been meant.
    void add(NamedShape made);

private:
    std::vector<NamedShape> shapes;
};

/// As bytes for `keptBytes`, with triangles.
/// @throws std::runtime_error where a shape cannot be written.
std::string bytesOf(const std::vector<NamedShape>& shapes);
/// The shape of this name in such bytes; null where they lack it or are not whole.
TopoDS_Shape shapeIn(std::span<const std::byte> bytes, const std::string& name);

/// What the program holds. It stands in a source of its own, as the program that writes these bytes has none yet.
std::span<const std::byte> keptBytes();

} // namespace vrkview::demo
