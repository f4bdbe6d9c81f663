#version 330 core
// Where outlines of bodies are: places from which the depth falls off to one side, and not as it does on a plane or on a bend.
// They are as wide as other lines, and lie within what they go around.

in vec2 pictureUv;

uniform sampler2D depth; // one over the distance; negative for clouds; 0 where there is nothing
uniform float fov;       // from the lower to the upper edge, radians

out vec4 fragColour;

const vec2 sides[4] = vec2[](vec2(1.0, 0.0), vec2(0.0, 1.0), vec2(0.7071, 0.7071), vec2(0.7071, -0.7071));
// How far it falls, in parts of the distance between the places that are compared.
const float fallBegin = 4.0;
const float fallEnd = 8.0;
// How many times as far as on either side of it, at least: a plane goes on as it came, and from a bend on it goes on falling.
const float atBend = 4.0;
const float onPlane = 1.5;

/// Whether there is a step to what lies ahead.
/// @param all  one over the distance: of what lies behind, here, ahead, and beyond that.
bool isStep(vec4 all)
{
    float step = all.y - all.z;
    float before = max(all.x - all.y, 0.0);
    float after = max(all.z - all.w, 0.0);
    return step > atBend * before || (step > onPlane * before && step > atBend * after);
}

/// @param unit  the distance between the places, as a part of their distance.
float fall(vec4 all, float unit)
{
    if (!isStep(all))
        return 0.0;
    return all.z > 0.0 ? smoothstep(fallBegin, fallEnd, (all.y / all.z - 1.0) / unit) : 1.0;
}

float depthAt(ivec2 place)
{
    return abs(texelFetch(depth, clamp(place, ivec2(0), textureSize(depth, 0) - 1), 0).r);
}

void main()
{
    ivec2 size = textureSize(depth, 0);
    ivec2 here = ivec2(pictureUv * vec2(size));
    float own = texelFetch(depth, here, 0).r;
    fragColour = vec4(0.0);
    if (own <= 0.0)
        return;
    float reach = max(1.0, round(1.25 * float(size.y) / 1080.0));
    float pixel = 2.0 * tan(0.5 * fov) / float(size.y); // at the distance 1
    float found = 0.0;
    for (int i = 0; i < 4; ++i) {
        ivec2 offset = ivec2(round(sides[i] * reach));
        float a = depthAt(here + offset);
        float b = depthAt(here - offset);
        float unit = length(vec2(offset)) * pixel;
        if (a < own)
            found = max(found, fall(vec4(b, own, a, depthAt(here + 2 * offset)), unit));
        if (b < own)
            found = max(found, fall(vec4(a, own, b, depthAt(here - 2 * offset)), unit));
    }
    fragColour = vec4(found);
}
