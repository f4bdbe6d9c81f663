#version 330 core
// The outline of a silhouette: a bright line between two dark ones, so that it is seen against light and dark.

in vec2 pictureUv;

uniform sampler2D mask; // alpha: whether the pixel belongs to the silhouette
uniform vec4 coreColour;
uniform vec4 fringeColour;

const int reach = 3;                // pixels: how far away the silhouette is looked for
const float coreBegin = 0.5;        // pixels from the edge of the silhouette, outwards
const float coreEnd = 2.5;
const float fringeBegin = -0.75;
const float fringeEnd = 3.5;

out vec4 fragColour;

bool covered(ivec2 texel)
{
    return texelFetch(mask, texel, 0).a > 0.0;
}

/// How much of the pixel lies between two distances from the edge.
float within(float distance, float begin, float end)
{
    return clamp(distance - begin + 0.5, 0.0, 1.0) * clamp(end - distance + 0.5, 0.0, 1.0);
}

void main()
{
    ivec2 size = textureSize(mask, 0);
    vec2 texelSize = 1.0 / vec2(size);

    // Far from any edge, which is nearly everywhere, a look at groups of four texels is enough.
    float sum = 0.0;
    for (int y = -1; y <= 1; ++y)
        for (int x = -1; x <= 1; ++x)
            sum += texture(mask, pictureUv + vec2(x, y) * 2.5 * texelSize).a;
    if (sum == 0.0)
        discard;

    ivec2 here = ivec2(pictureUv * vec2(size));
    bool inside = covered(here);
    float nearest = 100.0; // squared distance to a texel on the other side of the edge
    for (int y = -reach; y <= reach; ++y)
        for (int x = -reach; x <= reach; ++x) {
            ivec2 there = here + ivec2(x, y);
            // Beyond the picture lies nothing of either side.
            if (any(lessThan(there, ivec2(0))) || any(greaterThanEqual(there, size)))
                continue;
            if (covered(there) != inside)
                nearest = min(nearest, float(x * x + y * y));
        }
    float distance = (sqrt(nearest) - 0.5) * (inside ? -1.0 : 1.0);

    float core = within(distance, coreBegin, coreEnd);
    float fringe = within(distance, fringeBegin, fringeEnd);
    fragColour = mix(vec4(fringeColour.rgb, fringeColour.a * fringe), coreColour, core);
    if (fragColour.a < 0.01)
        discard;
}
