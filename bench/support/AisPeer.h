#pragma once

#include <TopoDS_Shape.hxx>
#include <gp_Pnt.hxx>
#include <gp_Vec.hxx>

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace vrk::bench {

/// Open CASCADE's viewer, which draws shapes as faces with their boundaries into a picture that is no window's.
///
/// The shapes need triangles. Whatever OpenGL context is current stays so between the calls.
class AisPeer {
public:
    AisPeer(const std::vector<std::pair<TopoDS_Shape, gp_Vec>>& placed, int width, int height, int samples);
    ~AisPeer();
    AisPeer(const AisPeer&) = delete;
    AisPeer& operator=(const AisPeer&) = delete;

    /// A frame, up axis z.
    /// @param verticalAngle  from the lower to the upper edge, radians.
    /// @return its pixels, red, green and blue.
    const std::vector<std::uint8_t>& draw(const gp_Pnt& eye, const gp_Pnt& target, double verticalAngle);

private:
    struct Viewer;

    std::unique_ptr<Viewer> viewer;
};

} // namespace vrk::bench
