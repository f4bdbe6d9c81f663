#version 330 core
// The pixels of a line, fading at its edges. Ends are round, so that the segments of a strip join.
//
// BODY_EDGES: beside the line there is a little light, by which it is seen on a face as dark as itself. The colour comes times
// its alpha, which the light has none of.

in vec4 lineColour;
noperspective in vec2 place;
noperspective in float lift;
flat in float segmentLength;
flat in float radius;
#ifdef BODY_EDGES
flat in float glowWidth;
#endif

uniform vec4 tint; // rgb: colour of the state; a: how much of it
uniform float opacity;
#ifdef BODY_EDGES
const vec3 glow = vec3(0.13, 0.14, 0.155);
#endif

out vec4 fragColour;

void main()
{
    float away = length(vec2(place.x - clamp(place.x, 0.0, segmentLength), place.y));
    float cover = clamp(radius + 0.5 - away, 0.0, 1.0);
    vec3 colour = mix(lineColour.rgb, tint.rgb, tint.a);
    float alpha = lineColour.a * opacity;
#ifdef BODY_EDGES
    float light = clamp(radius + 0.5 + glowWidth - away, 0.0, 1.0) - cover;
    if (cover + light < 0.02)
        discard;
    fragColour = vec4((colour * cover + glow * light) * alpha, alpha * cover);
#else
    if (cover < 0.02)
        discard;
    fragColour = vec4(colour, alpha * cover);
#endif
    // Soft pixels lie deeper than full ones, and those of an end deeper still: the soft end of one segment would else keep
    // the full pixels of the next one out.
    bool beyondEnd = place.x < 0.0 || place.x > segmentLength;
    gl_FragDepth = gl_FragCoord.z + (beyondEnd ? 1.0 : 0.5) * lift * (1.0 - cover);
}
