#include "platform/cam/Contraction.h"

namespace vrk::cam {

bool Contraction::isTopologyKept(Number kept, Number gone)
{
    marks.resize(roles.size(), 0);
    const Number ofGone = ++search, inCommon = ++search;
    Number sharing = 0, common = 0;
    bool isKept = true;
    triangles.forCornersAt(gone, [&](Number t, Number i) {
        marks[triangles[t][LinkedTriangles::nextOf(i)]] = ofGone;
        marks[triangles[t][LinkedTriangles::previousOf(i)]] = ofGone;
        const Number atKept = triangles.indexOf(t, kept);
        if (atKept == LinkedTriangles::none)
            return;
        ++sharing;
        const Number across = triangles[t][3 - atKept - i];
        isKept = isKept && !triangles.isOnLine(t, triangles.edgeOf(t, gone, across));
    });
    triangles.forCornersAt(kept, [&](Number t, Number) {
        for (const Number vertex : triangles[t]) {
            if (vertex == kept || vertex == gone || marks[vertex] != ofGone)
                continue;
            marks[vertex] = inCommon;
            ++common;
            isKept = isKept && triangles.sizeAt(vertex) > (roles[vertex] == Role::Free ? 3u : 1u);
        }
    });
    return isKept && common == sharing;
}

const std::vector<Contraction::Number>& Contraction::contract(Number kept, Number gone)
{
    shared.clear();
    triangles.forTrianglesOn(kept, gone, [this](Number t) { shared.push_back(t); });
    for (const Number t : shared) {
        // The two edges to the vertex across become one.
        const Number across = triangles[t][3 - triangles.indexOf(t, kept) - triangles.indexOf(t, gone)];
        if (triangles.isOnLine(t, triangles.edgeOf(t, kept, across)))
            triangles.forTrianglesOn(gone, across, [&](Number s) {
                if (s != t)
                    triangles.setOnLine(s, triangles.edgeOf(s, gone, across), true);
            });
    }
    for (const Number t : shared)
        triangles.remove(t);
    triangles.forCornersAt(gone, [&](Number t, Number i) { triangles.setCorner(t, i, kept); });
    return shared;
}

} // namespace vrk::cam
