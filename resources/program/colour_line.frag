#version 330 core
// The pixels of a line: its own colour in the middle, the halo's beside it, both with soft edges.

in vec4 lineColour;
noperspective in vec2 place;
flat in float lineLength;
flat in vec2 radii;

uniform vec4 haloColour;

out vec4 fragColour;

void main()
{
    vec2 fromLine = vec2(place.x - clamp(place.x, 0.0, lineLength), place.y);
    float distance = length(fromLine);
    float inLine = clamp(radii.x + 0.5 - distance, 0.0, 1.0);
    float inHalo = clamp(radii.y + 0.5 - distance, 0.0, 1.0);
    if (inHalo < 0.02)
        discard; // nothing to be seen must not hide what lies behind
    vec3 rgb = radii.y > radii.x ? mix(haloColour.rgb, lineColour.rgb, inLine) : lineColour.rgb;
    fragColour = vec4(rgb, lineColour.a * inHalo);
}
