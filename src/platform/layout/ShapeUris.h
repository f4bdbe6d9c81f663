#pragma once

#include <TopoDS_Shape.hxx>

#include <string>

/// Keeps shapes apart in the view, which knows them by their URIs alone. Not installed.
namespace vrk::layout {

/// The text that tells one shape from another: the same for shapes that are drawn alike, in every run. It writes the shape
/// out, and so takes about as long as saving it.
std::string contentOf(const TopoDS_Shape& shape);

/// One body's hold on the URI of its shape. The view draws one mesh for a URI, so a URI stands for one shape as long as any
/// body has it. Shapes of the same content, such as a file that is read twice, are one shape here.
///
/// Thread: any; one claim by one thread at a time.
class ShapeClaim {
public:
    ShapeClaim() = default;
    ~ShapeClaim() { release(); }
    ShapeClaim(const ShapeClaim&) = delete;
    ShapeClaim& operator=(const ShapeClaim&) = delete;

    /// Holds `uri` for `shape` in place of what was held.
    /// @return false, and nothing is held, if other bodies hold the URI for a shape of other content.
    bool take(const std::string& uri, const TopoDS_Shape& shape);
    void release();

private:
    std::string held;
    bool holds = false;
};

} // namespace vrk::layout
