#version 330 core
// A segment, of a list or of a strip, becomes a rectangle of pixels around it.

layout(lines) in;
layout(triangle_strip, max_vertices = 4) out;

in vec4 pointColour[];

#include "resource://program/line_corner.glsl"

void main()
{
    vec4 a = gl_in[0].gl_Position;
    vec4 b = gl_in[1].gl_Position;
    vec4 colourA = pointColour[0];
    vec4 colourB = pointColour[1];
    if (!isBefore(a, b, colourA, colourB))
        return;
    for (int i = 0; i < 4; ++i) {
        bool first = i < 2;
        setCorner(a, b, first ? colourA : colourB, first, (i & 1) == 0);
        EmitVertex();
    }
    EndPrimitive();
}
