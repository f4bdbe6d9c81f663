#version 330 core
// Letters, and what is under them: a box with round corners and a thin rim, or a disc where that is as high as its corners.

noperspective in vec2 texel;
noperspective in vec2 inBox;
flat in vec2 halfSize;
flat in vec4 fillColour;
flat in vec4 rimColour;

uniform sampler2D letters;
uniform vec4 fineness; // x: pixels of this picture for one of a usual one

out vec4 fragColour;

void main()
{
    if (halfSize.x == 0.0) {
        float cover = texelFetch(letters, ivec2(floor(texel)), 0).r;
        fragColour = vec4(fillColour.rgb, cover);
        return;
    }
    float corner = min(min(halfSize.x, halfSize.y), 4.0 * fineness.x);
    vec2 beyond = abs(inBox) - halfSize + corner;
    float outside = length(max(beyond, 0.0)) + min(max(beyond.x, beyond.y), 0.0) - corner;
    float cover = clamp(0.5 - outside, 0.0, 1.0);
    float inside = clamp(-0.5 - outside, 0.0, fineness.x) / fineness.x; // 0 on the rim
    fragColour = vec4(mix(rimColour.rgb, fillColour.rgb, inside), cover);
}
