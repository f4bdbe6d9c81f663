#include "selection/region/RegionObjects.h"

#include "selection/LineObject.h"
#include "selection/PointObject.h"
#include "selection/SensitiveEdge.h"
#include "selection/SensitiveFace.h"
#include "selection/SensitiveLine.h"
#include "selection/SensitiveMesh.h"
#include "selection/ShapeBorders.h"
#include "selection/ShapeObject.h"
#include "selection/geometry/BVHWalk.h"
#include "selection/region/SeenMap.h"
#include "visual/Visual.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace vrk::selection {
namespace {

using Coverage = RegionTest::Coverage;
using Cover = RegionQuery::Cover;
using Kind = SelectableObject::ObjectKind;
using rob::Posd;

constexpr std::size_t worthAHierarchy = 256; // triangles; fewer are asked one by one

/// One object, asked for all that is looked for.
class Question {
public:
    Question(const SelectableObject& object, const RegionQuery& query, const RegionView& view,
             const ScreenRegion& region, const SeenMap* seen)
        : object(object), query(query), seen(seen),
          test(query, region,
               ObjectInView(view, rob::Posed(object.worldPose), rob::Vec3Template<double>(object.worldScale)))
    {
    }

    void ask(RegionAnswer& answer) const
    {
        const RegionAnswer::Whole whole{object.visual, object.visual->getId()};
        if (object.kind == Kind::Point) {
            if (query.kinds.singlePoints && isPointIn())
                answer.singlePoints.push_back(whole);
            return;
        }
        if (object.primitives.empty() || !isAskedFor())
            return;
        // The boxes of lines have room for the rays that pass them by; they enclose the lines all the same.
        const Box all = object.partsBox();
        if (!all.isValid())
            return;
        const Coverage coverage = test.classify(all.min, all.max);
        if (coverage == Coverage::Outside)
            return;
        if (object.kind == Kind::Line) {
            if (isFrameIn())
                answer.frames.push_back(whole);
            return;
        }
        if (object.kind == Kind::Curve)
            return askCurve(whole, answer);
        if (query.kinds.bodies && isBodyIn(coverage))
            answer.bodies.push_back(whole);
        if (object.kind != Kind::Shape)
            return;
        if (query.kinds.faces)
            askFaces(coverage, answer);
        if (query.kinds.edges)
            askEdges(coverage, answer);
    }

private:
    /// Whether it is of a kind that is looked for, or has parts that are.
    bool isAskedFor() const
    {
        switch (object.kind) {
        case Kind::Shape:
        case Kind::Mesh:
            return query.kinds.bodies || query.kinds.faces || query.kinds.edges;
        case Kind::Line:
            return query.kinds.frames && static_cast<const LineObject&>(object).isOfFrame();
        case Kind::Curve:
            return query.kinds.edges || query.kinds.curves;
        default:
            return false;
        }
    }

    bool isWhollyWanted() const { return query.cover == Cover::WhollyInside; }

    const SensitiveTriangleSet& trianglesOf(const BVHPrimitive* part) const
    {
        if (object.kind == Kind::Shape)
            return *static_cast<const SensitiveFace*>(part);
        return *static_cast<const SensitiveMesh*>(part);
    }

    bool isBodyIn(Coverage coverage) const
    {
        if (seen && !seen->isSeen(object))
            return false;
        if (coverage == Coverage::Inside || (seen && !isWhollyWanted())) // a ray through the region has met it
            return true;
        const auto isIn = [this](const BVHPrimitive* part) { return areTrianglesIn(trianglesOf(part), part->box); };
        return isWhollyWanted() ? std::ranges::all_of(object.primitives, isIn)
                                : std::ranges::any_of(object.primitives, isIn);
    }

    void askFaces(Coverage coverage, RegionAnswer& answer) const
    {
        for (std::size_t i = 0; i < object.primitives.size(); ++i) {
            const auto* face = static_cast<const SensitiveFace*>(object.primitives[i]);
            if (face->isEmpty() || (seen && !seen->isSeen(object, i)))
                continue;
            if (coverage == Coverage::Inside || (seen && !isWhollyWanted()) || areTrianglesIn(*face, face->box))
                answer.faces.push_back({object.visual, object.visual->getId(), face->getFaceIndex()});
        }
    }

    void askEdges(Coverage coverage, RegionAnswer& answer) const
    {
        const ShapeBorders& borders = static_cast<const ShapeObject&>(object).getBorders();
        for (const ShapeBorders::Edge& edge : borders.getEdges()) {
            const Coverage own = coverage == Coverage::Inside ? coverage : test.classify(edge.lower, edge.higher);
            if (isStripIn(test, borders.pointsOf(edge), own))
                answer.edges.push_back({object.visual, object.visual->getId(), edge.number});
        }
    }

    void askCurve(const RegionAnswer::Whole& whole, RegionAnswer& answer) const
    {
        bool isAnyIn = false, isAllInside = true;
        unsigned number = 0;
        std::vector<Posd> nodes;
        for (const BVHPrimitive* part : object.primitives) {
            const auto* edge = static_cast<const SensitiveEdge*>(part);
            ++number;
            nodes.clear();
            for (const BVHPrimitive* section : edge->primitives) {
                const auto* line = static_cast<const SensitiveLine*>(section);
                if (nodes.empty())
                    nodes.emplace_back(line->getStart());
                nodes.emplace_back(line->getEnd());
            }
            if (nodes.empty())
                continue;
            const RegionTest ofPart = test.ofPart(rob::Posed(edge->getPose()));
            const bool isIn = isStripIn(ofPart, nodes, Coverage::Partial);
            isAnyIn = isAnyIn || isIn;
            // One that is inside and not seen is none that is outside.
            isAllInside = isAllInside && isWhollyWanted() && (isIn || isStripInside(ofPart, nodes));
            if (isIn && query.kinds.edges)
                answer.edges.push_back({whole.visual, whole.id, number});
        }
        if (query.kinds.curves && isAnyIn && (isAllInside || !isWhollyWanted()))
            answer.curves.push_back(whole);
    }

    bool isPointIn() const
    {
        const Posd place = static_cast<const PointObject&>(object).getDrawnPlace();
        if (!test.holds(place))
            return false;
        const ObjectInView& view = test.getView();
        const double w = view.w.at(place);
        return !seen || !seen->isHidden({view.x.at(place) / w, view.y.at(place) / w}, w, view.depth.at(place));
    }

    bool isFrameIn() const
    {
        bool isAnySeen = false;
        for (const BVHPrimitive* part : object.primitives) {
            const auto* line = static_cast<const SensitiveLine*>(part);
            const std::array<Posd, 2> ends{Posd(line->getStart()), Posd(line->getEnd())};
            const bool isIn = isWhollyWanted() ? test.holdsAll(ends) : test.touches(ends);
            if (isWhollyWanted() && !isIn)
                return false;
            if (isIn && !isAnySeen) {
                SeenRun run;
                lookAt(test, ends[0], ends[1], run);
                isAnySeen = run.isEnough();
            }
        }
        return isAnySeen;
    }

    /// @param coverage  of a box around the strip.
    bool isStripIn(const RegionTest& ofPart, std::span<const Posd> nodes, Coverage coverage) const
    {
        if (coverage == Coverage::Outside)
            return false;
        const std::size_t sections = std::max<std::size_t>(nodes.size(), 2) - 1;
        const auto endsOf = [&](std::size_t i) {
            return std::array<Posd, 2>{nodes[i], nodes[std::min(i + 1, nodes.size() - 1)]};
        };
        SeenRun run;
        for (std::size_t i = 0; i < sections; ++i) {
            const std::array<Posd, 2> ends = endsOf(i);
            const bool isIn =
                coverage == Coverage::Inside || (isWhollyWanted() ? ofPart.holdsAll(ends) : ofPart.touches(ends));
            if (isWhollyWanted() && !isIn)
                return false;
            if (isIn && run.longest < 2)
                lookAt(ofPart, ends[0], ends[1], run);
            if (run.isEnough() && (!seen || run.longest > 1) && (!isWhollyWanted() || coverage == Coverage::Inside))
                return true;
        }
        return run.isEnough();
    }

    static bool isStripInside(const RegionTest& ofPart, std::span<const Posd> nodes)
    {
        for (std::size_t i = 0; i + 1 < nodes.size(); ++i)
            if (!ofPart.holdsAll(nodes.subspan(i, 2)))
                return false;
        return true;
    }

    /// What is seen of a line: two places side by side, or the only one. One alone may be the corner at which a line begins
    /// that turns away.
    struct SeenRun {
        unsigned asked = 0, now = 0, longest = 0;

        void add(bool isSeen)
        {
            ++asked;
            now = isSeen ? now + 1 : 0;
            longest = std::max(longest, now);
        }
        bool isEnough() const { return longest > 0 && longest >= std::min(2u, asked); }
    };

    /// Adds the places of a section within the region, as often as the rays are apart.
    void lookAt(const RegionTest& ofPart, const Posd& start, const Posd& end, SeenRun& run) const
    {
        if (!seen)
            return run.add(true);
        const ObjectInView& view = ofPart.getView();
        const auto pixelOf = [&view](const Posd& p) {
            const double w = view.w.at(p);
            return ScreenRegion::Place(view.x.at(p) / w, view.y.at(p) / w);
        };
        constexpr double most = 4096;
        double pieces = most; // of a section that reaches behind the eye
        if (view.w.at(start) > 0 && view.w.at(end) > 0)
            pieces = std::clamp(std::ceil((pixelOf(end) - pixelOf(start)).length() / seen->getStep()), 1.0, most);
        for (double i = 0.5; i < pieces; ++i) { // not at an end, which is seen where another edge begins
            // Evenly in the view, which is not so in the world.
            const double s = i / pieces, ofStart = (1 - s) * view.w.at(end), ofEnd = s * view.w.at(start);
            const double t = view.w.at(start) > 0 && view.w.at(end) > 0 ? ofEnd / (ofStart + ofEnd) : s;
            const Posd p = start + (end - start) * t;
            if (ofPart.holds(p))
                run.add(!seen->isHiddenAtNearest(pixelOf(p), view.w.at(p), view.depth.at(p)));
            if (run.longest > 1)
                return;
        }
    }

    /// Whether a set of triangles is in the region, as it is asked. @param box  in the coordinates of the object.
    bool areTrianglesIn(const SensitiveTriangleSet& set, const Box& box) const
    {
        if (set.isEmpty())
            return isWhollyWanted(); // nothing of it is outside
        const Coverage coverage = test.classify(box.min, box.max);
        if (coverage != Coverage::Partial)
            return coverage == Coverage::Inside;
        const RegionTest ofSet = set.hasPose ? test.ofPart(rob::Posed(set.pose)) : test;
        rob::TriangleTemplate<float> triangle;
        const auto isTriangleIn = [&](const SensitiveIndexedTriangle& primitive) {
            set.getTriangle(triangle, primitive);
            const std::array<Posd, 3> corners{Posd(triangle.a), Posd(triangle.b), Posd(triangle.c)};
            return isWhollyWanted() ? ofSet.holdsAll(corners) : ofSet.touches(corners);
        };
        if (set.primitives.size() <= worthAHierarchy) {
            const auto isPrimitiveIn = [&](const BVHPrimitive* p) {
                return isTriangleIn(*static_cast<const SensitiveIndexedTriangle*>(p));
            };
            return isWhollyWanted() ? std::ranges::all_of(set.primitives, isPrimitiveIn)
                                    : std::ranges::any_of(set.primitives, isPrimitiveIn);
        }
        return isHierarchyIn(set.getRoot(), ofSet, isTriangleIn);
    }

    /// Down to the triangles only where a box does not tell. Nothing decides before all have been asked but one that is
    /// inside, where any will do, or outside, where none may be.
    template <typename IsIn>
    bool isHierarchyIn(const BVHNode* root, const RegionTest& ofSet, const IsIn& isTriangleIn) const
    {
        const bool wholly = isWhollyWanted();
        PendingStack<const BVHNode*> pending;
        if (root)
            pending.push(root);
        while (!pending.empty()) {
            const BVHNode* node = pending.pop();
            const Coverage coverage = ofSet.classify(node->box.min, node->box.max);
            if (coverage != Coverage::Partial) {
                const bool isIn = coverage == Coverage::Inside;
                if (isIn != wholly)
                    return isIn;
                continue;
            }
            if (node->kind == BVHNode::Inner) {
                const auto* inner = static_cast<const BVHInnerNode*>(node);
                pending.push(inner->left);
                pending.push(inner->right);
                continue;
            }
            const auto* leaf = static_cast<const BVHLeaf*>(node);
            for (unsigned i = 0; i < leaf->count; ++i)
                if (isTriangleIn(*static_cast<const SensitiveIndexedTriangle*>(leaf->primitives[i])) != wholly)
                    return !wholly;
        }
        return wholly;
    }

    const SelectableObject& object;
    const RegionQuery& query;
    const SeenMap* seen;
    RegionTest test;
};

} // namespace

void askObject(const SelectableObject& object, const RegionQuery& query, const RegionView& view,
               const ScreenRegion& region, const SeenMap* seen, RegionAnswer& answer)
{
    Question(object, query, view, region, seen).ask(answer);
}

} // namespace vrk::selection
