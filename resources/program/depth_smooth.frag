#version 330 core
// The mean of the texels around that lie as deep, so that it ends at edges. What is looked at goes with the height of the
// picture, as the places do that the shade was measured at.

in vec2 pictureUv;

uniform sampler2D rough; // x: light, y: one over the distance

out vec4 fragColour;

const float likeness = 0.04; // of the distance
const vec4 steps = vec4(-3.0, -1.0, 1.0, 3.0);

void main()
{
    vec2 size = vec2(textureSize(rough, 0));
    vec2 here = texture(rough, pictureUv).xy;
    vec2 step = 0.8 * max(1.0, size.y / 540.0) / size;
    float sum = here.x;
    float weights = 1.0;
    // None where there is nothing, since all that lies as deep there is light. A software driver runs
    // through both sides of a branch, but not through a loop that none of the places beside each other is in.
    int rows = here.y == 0.0 ? 0 : 4;
    for (int y = 0; y < rows; ++y)
        for (int x = 0; x < 4; ++x) {
            vec2 there = texture(rough, pictureUv + vec2(steps[x], float(2 * y - 3)) * step).xy;
            float weight = clamp(1.0 - abs(there.y - here.y) / (likeness * here.y + 1e-20), 0.0, 1.0);
            sum += weight * there.x;
            weights += weight;
        }
    fragColour = vec4(vec3(sum / weights), 1.0);
}
