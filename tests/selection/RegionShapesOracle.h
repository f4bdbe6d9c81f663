#pragma once

#include "selection/RegionOracle.h"

#include "selection/CurveObject.h"
#include "selection/SensitiveEdge.h"
#include "selection/SensitiveFace.h"
#include "selection/SensitiveLine.h"
#include "selection/SensitiveMesh.h"

#include <BRep_Tool.hxx>
#include <Poly_PolygonOnTriangulation.hxx>
#include <TopExp.hxx>
#include <TopExp_Explorer.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>

#include <limits>
#include <optional>

/// What a region of the view holds of triangles and lines: how much of each lies inside and outside, by area and by length.
namespace vrk::selection {

using Corner = rob::Vec2Template<double>;

/// How much of a thing lies inside of a region and how much outside.
struct Amount {
    double inside = 0, outside = 0; // pixels, or square pixels

    void add(const Amount& o)
    {
        inside += o.inside;
        outside += o.outside;
    }
    /// Rounding may have made less than this of nothing.
    static constexpr double least = 1e-4;
    bool isClear() const
    {
        return (inside == 0 || inside > least) && (outside == 0 || outside > least) && inside + outside > least;
    }
};

/// Region, view and window of depth. A thing is cut to the space where it is shown, and what is left of it is cut into
/// slices between all heights at which anything begins, ends or crosses: in each, all goes straight.
class RegionMeasure {
public:
    RegionMeasure(const RegionQuery& query, const RegionView& view) : query(query), view(view), seen(view) {}

    bool holds(double x, double y) const
    {
        return x >= 0 && x <= view.width && y >= 0 && y <= view.height && crossingsRightOf(x, y) % 2 != 0;
    }
    const DoubleView& getSeen() const { return seen; }

    Amount ofTriangle(const std::array<rob::Posd, 3>& corners) const
    {
        std::vector<Shown> shown = even(corners);
        Amount amount;
        if (cut(shown, true))
            amount.outside = infinite;
        if (shown.size() > 2)
            amount.add(ofConvex(placesOf(shown)));
        return amount;
    }

    Amount ofSegment(const rob::Posd& from, const rob::Posd& to) const
    {
        std::vector<Shown> shown = even(std::array{from, to});
        Amount amount;
        if (cut(shown, false))
            amount.outside = infinite;
        if (shown.size() < 2)
            return amount;
        const std::vector<Corner> ends = placesOf(shown);
        const Corner way = ends[1] - ends[0];
        std::vector<double> parts{0, 1};
        const auto crossWith = [&](const Corner& a, const Corner& b) {
            const double area = cross(way, b - a);
            if (area != 0)
                if (const double t = cross(a - ends[0], b - a) / area; t > 0 && t < 1)
                    parts.push_back(t);
        };
        forEdges(crossWith);
        for (const auto& [a, b] : border())
            crossWith(a, b);
        std::ranges::sort(parts);
        for (std::size_t i = 1; i < parts.size(); ++i) {
            const Corner middle = ends[0] + way * ((parts[i - 1] + parts[i]) / 2);
            (holds(middle.x, middle.y) ? amount.inside : amount.outside) += way.length() * (parts[i] - parts[i - 1]);
        }
        return amount;
    }

private:
    static constexpr double infinite = std::numeric_limits<double>::infinity();
    struct Shown {
        double x, y, w, depth;
    };

    static double cross(const Corner& a, const Corner& b) { return a.x * b.y - a.y * b.x; }

    template <std::size_t count>
    std::vector<Shown> even(const std::array<rob::Posd, count>& corners) const
    {
        std::vector<Shown> shown;
        for (const rob::Posd& p : corners) {
            const DoubleView::Pixel pixel = seen.evenPixelOf(p);
            shown.push_back({pixel.x, pixel.y, pixel.w, seen.depthOf(p)});
        }
        return shown;
    }
    static std::vector<Corner> placesOf(const std::vector<Shown>& shown)
    {
        std::vector<Corner> places;
        for (const Shown& s : shown)
            places.emplace_back(s.x / s.w, s.y / s.w);
        return places;
    }
    /// To the window of depth, and to a frame around the view, outside of which there is nothing. True if something was
    /// taken away. @param isLoop  goes back from the last corner to the first.
    bool cut(std::vector<Shown>& shown, bool isLoop) const
    {
        constexpr double frame = 500; // pixels beyond the view
        bool isCut = false;
        const auto keep = [&](const auto& inside) {
            std::vector<Shown> kept;
            for (std::size_t i = 0; i < shown.size(); ++i) {
                const Shown& from = shown[i];
                const double a = inside(from);
                isCut = isCut || a < 0;
                if (a >= 0)
                    kept.push_back(from);
                if (!isLoop && i + 1 == shown.size())
                    break;
                const Shown& to = shown[(i + 1) % shown.size()];
                const double b = inside(to);
                if ((a > 0 && b < 0) || (a < 0 && b > 0)) {
                    const double t = a / (a - b);
                    kept.push_back({from.x + (to.x - from.x) * t, from.y + (to.y - from.y) * t,
                                    from.w + (to.w - from.w) * t, from.depth + (to.depth - from.depth) * t});
                }
            }
            shown = std::move(kept);
        };
        constexpr double beforeEye = 1e-3; // units: what is nearer to the plane of the eye is beside the frame
        keep([&](const Shown& s) { return s.depth - std::max(query.nearest, beforeEye); });
        if (query.farthest < infinite)
            keep([&](const Shown& s) { return query.farthest - s.depth; });
        keep([&](const Shown& s) { return s.x + frame * s.w; });
        keep([&](const Shown& s) { return (view.width + frame) * s.w - s.x; });
        keep([&](const Shown& s) { return s.y + frame * s.w; });
        keep([&](const Shown& s) { return (view.height + frame) * s.w - s.y; });
        return isCut;
    }

    template <typename Call>
    void forEdges(const Call& call) const
    {
        for (std::size_t i = 0; i < query.corners.size(); ++i)
            call(query.corners[i], query.corners[(i + 1) % query.corners.size()]);
    }
    std::array<std::pair<Corner, Corner>, 4> border() const
    {
        const double w = view.width, h = view.height;
        return {{{{0, 0}, {w, 0}}, {{w, 0}, {w, h}}, {{w, h}, {0, h}}, {{0, h}, {0, 0}}}};
    }
    static std::optional<double> xAt(const Corner& a, const Corner& b, double y)
    {
        if ((a.y > y) == (b.y > y))
            return {};
        return a.x + (b.x - a.x) * (y - a.y) / (b.y - a.y);
    }
    unsigned crossingsRightOf(double x, double y) const
    {
        unsigned count = 0;
        forEdges([&](const Corner& a, const Corner& b) { count += xAt(a, b, y).value_or(-infinite) > x ? 1 : 0; });
        return count;
    }

    Amount ofConvex(const std::vector<Corner>& convex) const
    {
        std::vector<std::pair<Corner, Corner>> edges;
        for (std::size_t i = 0; i < convex.size(); ++i)
            edges.emplace_back(convex[i], convex[(i + 1) % convex.size()]);
        double low = infinite, high = -infinite;
        for (const Corner& c : convex) {
            low = std::min(low, c.y);
            high = std::max(high, c.y);
        }
        forEdges([&](const Corner& a, const Corner& b) {
            if (std::max(a.y, b.y) >= low && std::min(a.y, b.y) <= high)
                edges.emplace_back(a, b);
        });
        for (const auto& edge : border())
            edges.push_back(edge);
        std::vector<double> heights;
        const auto addHeight = [&](double y) {
            if (y >= low && y <= high)
                heights.push_back(y);
        };
        for (std::size_t i = 0; i < edges.size(); ++i) {
            const auto& [a, b] = edges[i];
            addHeight(a.y);
            addHeight(b.y);
            for (std::size_t k = 0; k < i; ++k) {
                const auto& [c, d] = edges[k];
                const double area = cross(b - a, d - c);
                if (area == 0)
                    continue;
                const double t = cross(c - a, d - c) / area, s = cross(c - a, b - a) / area;
                if (t >= 0 && t <= 1 && s >= 0 && s <= 1)
                    addHeight(a.y + (b.y - a.y) * t);
            }
        }
        std::ranges::sort(heights);
        Amount amount;
        for (std::size_t i = 1; i < heights.size(); ++i) {
            const Amount line = alongMiddle(convex, (heights[i - 1] + heights[i]) / 2);
            amount.add({line.inside * (heights[i] - heights[i - 1]), line.outside * (heights[i] - heights[i - 1])});
        }
        return amount;
    }
    Amount alongMiddle(const std::vector<Corner>& convex, double y) const
    {
        double from = infinite, to = -infinite;
        for (std::size_t i = 0; i < convex.size(); ++i)
            if (const auto x = xAt(convex[i], convex[(i + 1) % convex.size()], y)) {
                from = std::min(from, *x);
                to = std::max(to, *x);
            }
        if (!(from < to))
            return {};
        std::vector<double> places{from, to};
        const auto add = [&](double x) {
            if (x > from && x < to)
                places.push_back(x);
        };
        forEdges([&](const Corner& a, const Corner& b) { add(xAt(a, b, y).value_or(infinite)); });
        add(0);
        add(view.width);
        std::ranges::sort(places);
        Amount amount;
        for (std::size_t i = 1; i < places.size(); ++i)
            (holds((places[i - 1] + places[i]) / 2, y) ? amount.inside : amount.outside) += places[i] - places[i - 1];
        return amount;
    }

    const RegionQuery& query;
    const RegionView& view;
    DoubleView seen;
};

/// A triangle in the world, and what it belongs to.
struct DrawnTriangle {
    std::array<rob::Posd, 3> corners;
    visual::Visual* visual;
    unsigned face; // 0 of a mesh
};

/// A straight piece of an edge in the world.
struct DrawnSection {
    rob::Posd from, to;
    visual::Visual* visual;
    unsigned edge;
};

/// Where a visual's coordinates lie in the world, with the scale that it is drawn in.
class DrawnPlace {
public:
    explicit DrawnPlace(const visual::Visual& visual) : pose(visual.getWorldPose())
    {
        const Ogre::Vector3& s = visual.getSceneNode()->_getDerivedScale();
        scale = {s.x, s.y, s.z};
    }
    rob::Posd operator()(const rob::Posd& p) const
    {
        return pose * rob::Posd(p.x * scale.x, p.y * scale.y, p.z * scale.z);
    }

private:
    rob::Posed pose;
    rob::Vec3d scale;
};

inline std::vector<DrawnTriangle> drawnTriangles(const VisualSelection& service,
                                                 const std::vector<visual::Visual*>& visuals)
{
    std::vector<DrawnTriangle> all;
    for (visual::Visual* visual : visuals) {
        const SelectableObject& object = *service.getObject(visual);
        if (object.kind != SelectableObject::ObjectKind::Shape && object.kind != SelectableObject::ObjectKind::Mesh)
            continue;
        const DrawnPlace place(*visual);
        for (const BVHPrimitive* part : object.primitives) {
            const auto& set = dynamic_cast<const SensitiveTriangleSet&>(*part);
            const auto* face = dynamic_cast<const SensitiveFace*>(part);
            for (const BVHPrimitive* primitive : set.primitives) {
                rob::Trianglef stored;
                set.getTriangle(stored, static_cast<const SensitiveIndexedTriangle&>(*primitive));
                const auto out = [&](const rob::Posf& p) { return place(rob::Posed(set.pose) * rob::Posd(p)); };
                all.push_back({{out(stored.a), out(stored.b), out(stored.c)}, visual, face ? face->getFaceIndex() : 0});
            }
        }
    }
    return all;
}

/// Of solids, by the triangles of the faces that are shown, and of curves.
inline std::vector<DrawnSection> drawnSections(const VisualSelection& service,
                                               const std::vector<visual::Visual*>& visuals)
{
    std::vector<DrawnSection> all;
    for (visual::Visual* visual : visuals) {
        const SelectableObject& object = *service.getObject(visual);
        const DrawnPlace place(*visual);
        if (object.kind == SelectableObject::ObjectKind::Curve) {
            unsigned number = 0;
            for (const BVHPrimitive* part : object.primitives) {
                const auto& edge = dynamic_cast<const SensitiveEdge&>(*part);
                const auto out = [&](const rob::Posf& p) { return place(rob::Posed(edge.getPose()) * rob::Posd(p)); };
                ++number;
                for (const BVHPrimitive* line : edge.primitives) {
                    const auto& section = dynamic_cast<const SensitiveLine&>(*line);
                    all.push_back({out(section.getStart()), out(section.getEnd()), visual, number});
                }
            }
        }
        if (object.kind != SelectableObject::ObjectKind::Shape)
            continue;
        const auto& solid = static_cast<const visual::SolidVisual&>(*visual);
        TopTools_IndexedMapOfShape edges;
        TopExp::MapShapes(solid.getShape(), TopAbs_EDGE, edges);
        std::set<int> known;
        for (int f = 1; f <= solid.getFaceMap().Size(); ++f) {
            if (!solid.isFaceVisible(static_cast<unsigned>(f)))
                continue;
            TopLoc_Location at;
            const TopoDS_Face& face = TopoDS::Face(solid.getFaceMap()(f));
            const auto triangles = BRep_Tool::Triangulation(face, at);
            for (TopExp_Explorer edge(face, TopAbs_EDGE); edge.More(); edge.Next()) {
                const int number = edges.FindIndex(edge.Current());
                const auto nodes = BRep_Tool::PolygonOnTriangulation(TopoDS::Edge(edge.Current()), triangles, at);
                if (nodes.IsNull() || BRep_Tool::Degenerated(TopoDS::Edge(edge.Current())) ||
                    !known.insert(number).second)
                    continue;
                const auto out = [&](int i) {
                    const gp_Pnt p = triangles->Node(nodes->Nodes()(i)).Transformed(at.Transformation());
                    return place({p.X(), p.Y(), p.Z()});
                };
                for (int i = 1; i < nodes->NbNodes(); ++i)
                    all.push_back({out(i), out(i + 1), visual, static_cast<unsigned>(number)});
            }
        }
    }
    return all;
}

} // namespace vrk::selection
