#version 330 core
// A segment, of a list or of a strip, becomes a rectangle of pixels around it.
//
// BODY_EDGES: the segments are edges of a body, whose weight fades as the body becomes small in the picture, and which are as
// fine as the picture is; those that faces meet in without a bend are thinner and paler. PLAIN: no face is seen beside them, so
// that those of smaller bodies keep their weight, and dark bodies have no others.

layout(lines) in;
layout(triangle_strip, max_vertices = 4) out;

in vec4 pointColour[];

#ifdef BODY_EDGES
uniform mat4 worldViewProj;
uniform mat4 worldView;
uniform vec4 extent;     // the sphere around the body, in its frame: middle and radius; none where that is 0
uniform float seenFrom; // pixels of a picture of up to 1080 rows; those of bodies that are smaller do not arrive here
uniform float fullFrom;
#ifdef PLAIN
uniform float smoothPart; // of their weight that those without a bend keep
#else
uniform vec4 onDark; // x: 1 on a body as dark as a line
#endif
uniform vec4 firstSmooth; // x: the first segment without a bend, y: 0 where there is none

const vec3 light = vec3(0.42, 0.44, 0.47);
const float palest = 0.65; // in however coarse a picture
const float smoothWidth = 0.6;
const float smoothOpacity = 0.5;
#endif

#include "resource://program/line_corner.glsl"

void main()
{
    vec4 a = gl_in[0].gl_Position;
    vec4 b = gl_in[1].gl_Position;
    vec4 colourA = pointColour[0];
    vec4 colourB = pointColour[1];
    float lineWidth = width * max(1.0, viewportSize.y / 1080.0);
#ifdef BODY_EDGES
    float distance = (worldViewProj * vec4(extent.xyz, 1.0)).w;
    float size = extent.w * length(worldView[0].xyz) * abs(projection[1][1]) * viewportSize.y / max(distance, 1e-6);
    float weight = clamp((size / max(1.0, viewportSize.y / 1080.0) - seenFrom) / (fullFrom - seenFrom), 0.0, 1.0);
    if (extent.w <= 0.0 || distance <= extent.w)
        weight = 1.0;
    // Finer in a coarser picture, too: what would be less than a pixel is a pixel that is as much paler.
    float scaled = width * viewportSize.y / 1080.0;
    lineWidth = max(scaled, 1.0);
    weight *= clamp(scaled, palest, 1.0);
    if (firstSmooth.y > 0.0 && float(gl_PrimitiveIDIn) >= firstSmooth.x) {
        lineWidth *= smoothWidth;
        weight *= smoothOpacity;
#ifdef PLAIN
        weight *= smoothPart;
#endif
    }
    if (weight <= 0.0)
        return;
#ifndef PLAIN
    colourA.rgb = mix(colourA.rgb, light, onDark.x);
    colourB.rgb = mix(colourB.rgb, light, onDark.x);
#endif
    colourA.a *= weight;
    colourB.a *= weight;
#endif
    if (!isBefore(a, b, colourA, colourB))
        return;
    for (int i = 0; i < 4; ++i) {
        bool first = i < 2;
        setCorner(a, b, first ? colourA : colourB, first, (i & 1) == 0, lineWidth);
        EmitVertex();
    }
    EndPrimitive();
}
