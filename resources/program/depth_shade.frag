#version 330 core
// How much light a place keeps whose surroundings in the picture rise around it. Pairs of places opposite each other are
// looked at, at distances that go with the height of the picture: on a plane, however it is inclined, the middle of each pair
// lies in the place itself, above a hollow, and below an edge.
//
// After V. Shanmugam, O. Arikan: "Hardware Accelerated Ambient Occlusion Techniques on GPUs" (2007) for what shades, and
// C. Boucheny: "Interactive Scientific Visualization of Large Datasets" (2009) for clouds.

in vec2 pictureUv;

uniform sampler2D depth; // one over the distance; negative for clouds; 0 where there is nothing
uniform float fov;       // from the lower to the upper edge, radians

out vec4 fragColour;

// Half of the places, across and upwards, in pixels of a picture of 1080 rows; the others lie opposite. A spiral of golden
// angles: no two of them repeat an edge at one distance.
const int pairs = 16;
const vec2 places[pairs] = vec2[]( //
    vec2(2.5, 0.0), vec2(-2.2, 2.0), vec2(0.3, -3.6), vec2(2.6, 3.4), //
    vec2(-5.0, -0.9), vec2(5.1, -3.3), vec2(-1.9, 7.0), vec2(-4.0, -7.7), //
    vec2(9.7, 3.6), vec2(-11.4, 4.7), vec2(6.3, -13.4), vec2(5.3, 16.9), //
    vec2(-18.3, -10.6), vec2(24.6, -5.4), vec2(-17.3, 24.7), vec2(-4.6, -35.7));

void main()
{
    ivec2 size = textureSize(depth, 0);
    // The middle of each pixel lies between two of the depths: always the same one, however the driver rounds.
    ivec2 here = ivec2(pictureUv * vec2(size) + 0.0625);
    float signedHere = texelFetch(depth, here, 0).r;
    if (signedHere == 0.0) {
        fragColour = vec4(1.0, 0.0, 0.0, 1.0);
        return;
    }
    bool isCloud = signedHere < 0.0;
    float own = abs(signedHere);
    float fineness = float(size.y) / 1080.0;
    float pixel = 2.0 * tan(0.5 * fov) / float(size.y); // at the distance 1

    float hidden = 0.0;
    for (int i = 0; i < pairs; ++i) {
        ivec2 offset = ivec2(round(places[i] * fineness));
        if (offset == ivec2(0))
            offset = ivec2(i % 2, 1);
        ivec2 a = here + offset;
        ivec2 b = here - offset;
        if (any(lessThan(min(a, b), ivec2(0))) || any(greaterThanEqual(max(a, b), size)))
            continue;
        float atA = abs(texelFetch(depth, a, 0).r);
        float atB = abs(texelFetch(depth, b, 0).r);
        // How far both rise towards the eye, as parts of their distance in the picture's plane.
        float unit = own / (length(vec2(offset)) * pixel);
        float upA = atA > 0.0 ? (1.0 / own - 1.0 / atA) * unit : -8.0;
        float upB = atB > 0.0 ? (1.0 / own - 1.0 / atB) * unit : -8.0;
        float hollow;
        if (isCloud) {
            hollow = 0.5 * (clamp(upA, 0.0, 2.0) + clamp(upB, 0.0, 2.0));
        } else {
            float middle = 0.5 * (atA + atB);
            hollow = clamp((middle - own) / (max(middle, 1e-20) * length(vec2(offset)) * pixel), 0.0, 1.5);
            // What stands far in front is another thing, which takes no light from here: on both sides, as the bars of a
            // fence, less than on one only, as what is no hole.
            float more = max(upA, upB);
            float less = max(min(upA, upB), 0.0);
            hollow *= (1.0 - smoothstep(1.5, 4.0, more - 2.0 * less)) * (1.0 - smoothstep(3.0, 8.0, more));
        }
        hidden += hollow / float(pairs);
    }
    float light = 1.0 / (1.0 + 2.2 * hidden);
    fragColour = vec4(light, own, 0.0, 1.0); // for the smoothing, which ends at edges of depth
}
