#version 330 core
// The outlines that were found, with their steps smoothed.

in vec2 pictureUv;

uniform sampler2D outlines;
uniform vec4 ink;

out vec4 fragColour;

const float palest = 0.65; // in however coarse a picture, as of edges
const float gain = 1.7; // smoothing leaves half of a line that is one pixel wide

void main()
{
    vec2 texel = 1.0 / vec2(textureSize(outlines, 0));
    // 1 2 1 in both directions, by four looks between texels
    float cover = 0.25 * (texture(outlines, pictureUv + vec2(-0.5, -0.5) * texel).r +
                          texture(outlines, pictureUv + vec2(0.5, -0.5) * texel).r +
                          texture(outlines, pictureUv + vec2(-0.5, 0.5) * texel).r +
                          texture(outlines, pictureUv + vec2(0.5, 0.5) * texel).r);
    if (cover < 0.01)
        discard;
    float weight = clamp(1.25 * float(textureSize(outlines, 0).y) / 1080.0, palest, 1.0);
    fragColour = vec4(ink.rgb, ink.a * weight * min(gain * cover, 1.0));
}
