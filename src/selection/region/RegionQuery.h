#pragma once

#include "platform/common/Export.h"
#include "scene/math/Vec.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <stop_token>
#include <vector>

namespace vrk::visual {
class Visual;
struct CameraSnapshot;
} // namespace vrk::visual

namespace vrk::selection {

/// A view as a region is asked about in it, in double precision: a value that any thread may keep.
struct VRK_EXPORT RegionView {
    using Matrix = std::array<double, 16>; ///< row after row; it is applied to columns

    RegionView() = default;
    /// Of a camera as it was at one moment.
    explicit RegionView(const visual::CameraSnapshot& camera);
    /// The main camera as it was after its last change. Any thread.
    /// @throws std::logic_error "there is no camera with a render target" before start-up and while the camera draws into
    ///         nothing or into no pixels.
    static RegionView OfMainCamera();

    Matrix view{};       ///< from the world to the camera, which looks along its negative z axis
    Matrix projection{}; ///< from the camera to the cube that reaches from -1 to 1
    double width = 0;    ///< pixels
    double height = 0;
};

/// What is asked about a part of the view: a value, made anew for each question or kept and changed.
///
/// The region is a polygon in pixels of the view, counted from its top left corner. It may be concave and cross itself:
/// inside is where a line to the right crosses its edges an odd number of times. Four corners that make an upright rectangle
/// have their border inside. What lies outside of the view, or behind the eye, is outside of the region.
///
/// The paint on a body is passed over: what lies there is the body.
///
/// Everything is reckoned in double precision from what is drawn, with the scale of each visual.
struct VRK_EXPORT RegionQuery {
    /// What counts of what has an extent. Of a point of a cloud both say the same.
    enum class Cover {
        Touching,     ///< some part of it is inside
        WhollyInside, ///< nothing of it is outside: of the region, of the view and of the window of depth
    };
    /// Bodies hide what lies behind them; all else hides nothing.
    enum class Sight {
        Through,     ///< what is hidden counts too
        Seen,        ///< a body or face counts if a ray through every fourth pixel of the region meets it first
        SeenExactly, ///< the same, with a ray through every pixel
    };
    /// What is looked for.
    struct Kinds {
        bool bodies = true;       ///< solids and meshes
        bool faces = false;       ///< of solids
        bool edges = false;       ///< of the faces that solids show, and of curves
        bool frames = true;       ///< of targets
        bool points = false;      ///< of clouds
        bool curves = true;       ///< of the station, each as a whole
        bool singlePoints = true; ///< of the station
    };

    /// From any corner to the opposite one.
    static RegionQuery Rectangle(double x1, double y1, double x2, double y2);
    static RegionQuery Polygon(std::vector<rob::Vec2Template<double>> corners);

    std::vector<rob::Vec2Template<double>> corners;
    Kinds kinds;
    Cover cover = Cover::Touching;
    Sight sight = Sight::Through;
    // The window of depth: distances from the eye along the direction in which it looks, in model units.
    double nearest = 0;
    double farthest = std::numeric_limits<double>::infinity();

    /// Ends the question early, from any thread: the answer is then empty and says so.
    std::stop_token stop;
    /// Told how much is done, ascending to 1: from several threads, though never from two at once. It must not call the
    /// service. An exception ends the question and comes out of it.
    std::function<void(double)> progress;
};

/// What a region holds. The visuals are good as long as nobody deletes them, the ids longer.
struct RegionAnswer {
    struct Whole {
        visual::Visual* visual;
        unsigned id;
        bool operator==(const Whole&) const = default;
    };
    struct Part {
        visual::Visual* visual;
        unsigned id;
        unsigned
            part; ///< from 1: of a solid the number in its map of faces or of edges, of a curve that of its edge child
        bool operator==(const Part&) const = default;
    };
    struct Cloud {
        visual::Visual* visual;
        unsigned id;
        bool isWhole;                      ///< all points that the cloud draws are inside
        std::vector<std::uint32_t> points; ///< all the same: their numbers, ascending
        bool operator==(const Cloud&) const = default;
    };

    std::vector<Whole> bodies; ///< each list by ascending id, then by part
    std::vector<Part> faces;
    std::vector<Part> edges;
    std::vector<Whole> frames;
    std::vector<Whole> curves;
    std::vector<Whole> singlePoints;
    std::vector<Cloud> clouds; ///< those with a point inside
    bool isStopped = false;    ///< the question was ended early, and nothing else is told

    bool operator==(const RegionAnswer&) const = default;
};

} // namespace vrk::selection
