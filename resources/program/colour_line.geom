#version 330 core
// A line as a strip of pixels with round ends. FROM_TRIANGLES: the line comes as a triangle of no area, whose second
// and third vertices are one.

#ifdef FROM_TRIANGLES
layout(triangles) in;
#else
layout(lines) in;
#endif
layout(triangle_strip, max_vertices = 4) out;

in vec4 endColour[];
#ifdef FROM_TRIANGLES
in float endReach[];
#endif

uniform vec4 viewportSize; // pixels
uniform float lineWidth;   // pixels on a picture of up to 1080 rows; more on a higher one, so that it is seen there too
uniform float haloWidth;   // the same, beside the line

out vec4 lineColour;
noperspective out vec2 place; // pixels from the first end: along the line and across
flat out float lineLength;    // pixels
flat out vec2 radii;          // pixels: of the line, and of the line with its halo

void main()
{
#ifdef FROM_TRIANGLES
    // An axis that is shrunk away, as no frame's size makes it: not even a dot with its halo.
    if (max(endReach[0], endReach[1]) < 0.05)
        return;
#endif
    vec4 a = gl_in[0].gl_Position;
    vec4 b = gl_in[1].gl_Position;
    vec4 colourA = endColour[0];
    vec4 colourB = endColour[1];

    // What lies behind the near plane has no place in the picture: the line is cut there.
    float nearA = a.z + a.w;
    float nearB = b.z + b.w;
    if (nearA <= 0.0 && nearB <= 0.0)
        return;
    if (nearA < 0.0) {
        float t = nearA / (nearA - nearB);
        a = mix(a, b, t);
        colourA = mix(colourA, colourB, t);
    } else if (nearB < 0.0) {
        float t = nearB / (nearB - nearA);
        b = mix(b, a, t);
        colourB = mix(colourB, colourA, t);
    }

    float fineness = max(1.0, viewportSize.y / 1080.0);
    radii = vec2(0.5 * lineWidth, 0.5 * lineWidth + haloWidth) * fineness;
    float reach = radii.y + 0.5; // half a pixel more, over which the edge fades

    vec2 halfSize = 0.5 * viewportSize.xy;
    vec2 pixelA = a.xy / a.w * halfSize;
    vec2 pixelB = b.xy / b.w * halfSize;
    lineLength = length(pixelB - pixelA);
    vec2 along = lineLength > 1e-3 ? (pixelB - pixelA) / lineLength : vec2(1.0, 0.0);
    vec2 across = vec2(-along.y, along.x);
    for (int i = 0; i < 4; ++i) {
        bool first = i < 2;
        float side = (i & 1) == 0 ? reach : -reach;
        vec4 end = first ? a : b;
        vec2 offset = along * (first ? -reach : reach) + across * side;
        gl_Position = end + vec4(offset / halfSize * end.w, 0.0, 0.0);
        place = vec2(first ? -reach : lineLength + reach, side);
        lineColour = first ? colourA : colourB;
        EmitVertex();
    }
    EndPrimitive();
}
