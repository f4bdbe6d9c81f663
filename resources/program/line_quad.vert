#version 330 core
// A corner of a segment that comes with its four corners, each of which knows both ends. Where many segments are one batch
// this takes a fraction of what a geometry program does.

in vec4 vertex;  // the first end
in vec4 uv0;     // xyz: the second end; w: the corner. 0 and 1 are at the first end, 2 and 3 at the second
in vec4 colour;

uniform mat4 worldViewProj;

#include "resource://program/line_corner.glsl"

void main()
{
    vec4 a = worldViewProj * vertex;
    vec4 b = worldViewProj * vec4(uv0.xyz, 1.0);
    vec4 colourA = vec4(colour.rgb, 1.0);
    vec4 colourB = colourA;
    if (!isBefore(a, b, colourA, colourB)) {
        gl_Position = vec4(2.0, 2.0, 2.0, 1.0);
        return;
    }
    int corner = int(uv0.w + 0.5);
    setCorner(a, b, colourA, corner < 2, (corner & 1) == 0,
              width * max(1.0, viewportSize.y / 1080.0));
}
