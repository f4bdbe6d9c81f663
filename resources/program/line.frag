#version 330 core
// The pixels of a line, fading at its edges. Ends are round, so that the segments of a strip join.

in vec4 lineColour;
noperspective in vec2 place;
noperspective in float lift;
flat in float segmentLength;
flat in float radius;

uniform vec4 tint; // rgb: colour of the state; a: how much of it
uniform float opacity;

out vec4 fragColour;

void main()
{
    float away = length(vec2(place.x - clamp(place.x, 0.0, segmentLength), place.y));
    float cover = clamp(radius + 0.5 - away, 0.0, 1.0);
    if (cover < 0.02)
        discard;
    fragColour = vec4(mix(lineColour.rgb, tint.rgb, tint.a), lineColour.a * opacity * cover);
    // Soft pixels lie deeper than full ones, and those of an end deeper still: the soft end of one segment would else keep
    // the full pixels of the next one out.
    bool beyondEnd = place.x < 0.0 || place.x > segmentLength;
    gl_FragDepth = gl_FragCoord.z + (beyondEnd ? 1.0 : 0.5) * lift * (1.0 - cover);
}
