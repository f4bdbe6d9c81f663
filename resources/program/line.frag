#version 330 core
// The pixels of a line, fading at its edges. Ends are round, so that the segments of a strip join.
//
// DASHED: thin dashes. Those of a long segment begin at its left end, where another that lies over it has its own; those of
// curves, whose segments are short, go on across the ends of these.

in vec4 lineColour;
noperspective in vec2 place;
noperspective in float lift;
flat in float segmentLength;
flat in float radius;

uniform vec4 tint; // rgb: colour of the state; a: how much of it
uniform float opacity;

#ifdef DASHED
uniform vec4 viewportSize;
uniform float rowsAbove; // of the picture, above the target

const float period = 12.0;   // pixels of a picture of up to 1080 rows
const float dash = 0.55;     // of the period
const float thinness = 0.6;  // of a whole line
const float longSegment = 4; // periods

/// How much of the pixel a dash covers, along the line.
float dashCover()
{
    float full = period * max(1.0, viewportSize.y / 1080.0);
    vec2 along = vec2(dFdx(place.x), dFdy(place.x)); // of unit length
    bool isLevel = abs(along.x) >= abs(along.y);
    bool isLeftToRight = (isLevel ? along.x : along.y) > 0.0;
    float at = isLeftToRight ? place.x : segmentLength - place.x;
    if (segmentLength < longSegment * full)
        at = isLevel ? gl_FragCoord.x : gl_FragCoord.y + rowsAbove;
    float fromMiddle = abs(fract(at / full - 0.5 * dash + 0.5) - 0.5) * full;
    return clamp(0.5 * dash * full - fromMiddle + 0.5, 0.0, 1.0);
}
#endif

out vec4 fragColour;

void main()
{
    float away = length(vec2(place.x - clamp(place.x, 0.0, segmentLength), place.y));
#ifdef DASHED
    float cover = clamp(max(thinness * radius, 0.4) + 0.5 - away, 0.0, 1.0) * dashCover();
#else
    float cover = clamp(radius + 0.5 - away, 0.0, 1.0);
#endif
    if (cover < 0.02)
        discard;
    fragColour = vec4(mix(lineColour.rgb, tint.rgb, tint.a), lineColour.a * opacity * cover);
    // Soft pixels lie deeper than full ones, and those of an end deeper still: the soft end of one segment would else keep
    // the full pixels of the next one out.
    bool beyondEnd = place.x < 0.0 || place.x > segmentLength;
    gl_FragDepth = gl_FragCoord.z + (beyondEnd ? 1.0 : 0.5) * lift * (1.0 - cover);
}
