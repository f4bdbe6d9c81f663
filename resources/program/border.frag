#version 330 core
// The outline of a silhouette: a bright line between two dark ones, so that it is seen against light and dark.

in vec2 pictureUv;

uniform sampler2D mask; // alpha: how much of the pixel belongs to the silhouette
uniform vec4 coreColour;
uniform vec4 fringeColour;

const int reach = 3;            // pixels: how far away the silhouette is looked for
const float coreBegin = 0.4;    // pixels from the edge of the silhouette, outwards
const float fringeBegin = -0.8;
uniform float coreEnd;
uniform float fringeEnd;

out vec4 fragColour;

/// How much of the pixel lies between two distances from the edge.
float within(float distance, float begin, float end)
{
    return clamp(distance - begin + 0.5, 0.0, 1.0) * clamp(end - distance + 0.5, 0.0, 1.0);
}

/// The silhouette with its steps smoothed: 1 2 1 in both directions, by four looks between texels.
float covered(vec2 uv, vec2 texel)
{
    return 0.25 * (texture(mask, uv + vec2(-0.5, -0.5) * texel).a + texture(mask, uv + vec2(0.5, -0.5) * texel).a +
                   texture(mask, uv + vec2(-0.5, 0.5) * texel).a + texture(mask, uv + vec2(0.5, 0.5) * texel).a);
}

void main()
{
    vec2 texel = 1.0 / vec2(textureSize(mask, 0));

    // Far from any edge, which is nearly everywhere, a look at groups of four texels is enough.
    float sum = 0.0;
    for (int y = -2; y <= 2; ++y)
        for (int x = -2; x <= 2; ++x)
            sum += texture(mask, pictureUv + (vec2(x, y) * 2.0 + 0.5) * texel).a;
    if (sum == 0.0 || sum == 25.0)
        discard;

    // The edge of the smoothed silhouette is two pixels wide. So a pixel of which a part is covered tells how far the
    // edge is from its middle, and the nearest edge of all pixels around is the one that counts.
    float toInside = 100.0;
    float toOutside = 100.0;
    for (int y = -reach; y <= reach; ++y)
        for (int x = -reach; x <= reach; ++x) {
            float there = covered(pictureUv + vec2(x, y) * texel, texel);
            float away = length(vec2(x, y));
            if (there > 0.0)
                toInside = min(toInside, away + 1.0 - 2.0 * there);
            if (there < 1.0)
                toOutside = min(toOutside, away - 1.0 + 2.0 * there);
        }
    float distance = toInside > 0.0 ? toInside : -toOutside;

    float core = within(distance, coreBegin, coreEnd);
    float fringe = within(distance, fringeBegin, fringeEnd);
    fragColour = mix(vec4(fringeColour.rgb, fringeColour.a * fringe), coreColour, core);
    if (fragColour.a < 0.01)
        discard;
}
