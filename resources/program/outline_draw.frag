#version 330 core
// The outlines that were found, with their steps smoothed.

in vec2 pictureUv;

uniform sampler2D outlines;
uniform vec4 ink;

out vec4 fragColour;

const float palest = 0.6;  // in however coarse a picture
const float beside = 0.35; // texels
const float gain = 1.3;    // for what smoothing takes of a line that is one pixel wide

void main()
{
    vec2 size = vec2(textureSize(outlines, 0));
    vec2 step = beside / size;
    // By four looks between texels: little more than what it takes to hide the steps, so that the line stays thin.
    float cover = 0.25 * (texture(outlines, pictureUv - step).r + texture(outlines, pictureUv + step).r +
                          texture(outlines, pictureUv + vec2(step.x, -step.y)).r +
                          texture(outlines, pictureUv + vec2(-step.x, step.y)).r);
    if (cover < 0.01)
        discard;
    float weight = clamp(1.25 * size.y / 1080.0, palest, 1.0);
    fragColour = vec4(ink.rgb, ink.a * weight * min(gain * cover, 1.0));
}
