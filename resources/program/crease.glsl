// Where the normals of vertices run around a sharp edge of the surface, the triangle's own normal counts: for surfaces whose
// triangles share their vertices across such edges. What programs of fragments have in common.

// Cosines of the angle to the triangle's normal.
const float creaseBegin = 0.97;
const float creaseEnd = 0.90;

// n: the interpolated normal, of unit length.
vec3 creasedNormal(vec3 position, vec3 n)
{
    vec3 ofTriangle = cross(dFdx(position), dFdy(position));
    float area = length(ofTriangle);
    if (!(area > 0.0))
        return n;
    ofTriangle *= (dot(ofTriangle, n) < 0.0 ? -1.0 : 1.0) / area;
    return normalize(mix(ofTriangle, n, smoothstep(creaseEnd, creaseBegin, dot(ofTriangle, n))));
}
