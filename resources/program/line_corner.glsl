// A corner of the rectangle of pixels around a segment, with room for round ends and soft edges: what a geometry program and a
// vertex program of lines have in common.
//
// It is drawn a little nearer to the eye, so that it is seen over the faces that it lies on. By how much goes with the width
// of a pixel at its distance: enough for faces that fall away at the slope below, at any distance and in any picture, and
// too little to be seen through a wall.

uniform vec4 viewportSize; // pixels
uniform mat4 projection;
uniform float width; // pixels of a picture of up to 1080 rows; a finer one has as much wider lines

const float slope = 2.2;
const float depthSteps = 2e-7; // a few steps of a depth buffer of 24 bits; far away these are more than a pixel

out vec4 lineColour;
noperspective out vec2 place; // pixels from the first end: along the segment, and across
noperspective out float lift; // by how much the line is nearer, as depth in the picture
flat out float segmentLength; // pixels
flat out float radius;        // pixels

// Whether there is anything of the segment in front of the near plane: what lies behind it has no place in the picture, so
// the segment ends there. One of no length is no dot.
bool isBefore(inout vec4 a, inout vec4 b, inout vec4 colourA, inout vec4 colourB)
{
    if (a == b)
        return false;
    float insideA = a.z + a.w;
    float insideB = b.z + b.w;
    if (insideA < 0.0 && insideB < 0.0)
        return false;
    if (insideA < 0.0) {
        float t = insideA / (insideA - insideB);
        a = mix(a, b, t);
        colourA = mix(colourA, colourB, t);
    } else if (insideB < 0.0) {
        float t = insideB / (insideB - insideA);
        b = mix(b, a, t);
        colourB = mix(colourB, colourA, t);
    }
    return true;
}

/// @param lineWidth  pixels
void setCorner(vec4 a, vec4 b, vec4 colour, bool first, bool left, float lineWidth)
{
    radius = 0.5 * lineWidth;
    float reach = radius + 0.5; // half a pixel more, over which the edge fades
    float pixelPerDistance = 2.0 / (abs(projection[1][1]) * viewportSize.y);

    vec2 halfSize = 0.5 * viewportSize.xy;
    vec2 pixelA = a.xy / a.w * halfSize;
    vec2 pixelB = b.xy / b.w * halfSize;
    segmentLength = length(pixelB - pixelA);
    vec2 along = segmentLength > 1e-4 ? (pixelB - pixelA) / segmentLength : vec2(1.0, 0.0);
    vec2 across = vec2(-along.y, along.x);
    float side = left ? reach : -reach;
    vec4 end = first ? a : b;
    vec2 offset = along * (first ? -reach : reach) + across * side;
    // w - z is what is left to the far plane and goes with one over the distance: a part of it is that part of the distance.
    float nearer = min(slope * reach * pixelPerDistance * (end.w - end.z) + depthSteps * end.w, end.z + end.w);
    gl_Position = vec4(end.xy + offset / halfSize * end.w, end.z - nearer, end.w);
    place = vec2(first ? -reach : segmentLength + reach, side);
    lift = 0.5 * nearer / end.w;
    lineColour = colour;
}
