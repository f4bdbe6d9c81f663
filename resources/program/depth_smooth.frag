#version 330 core
// The mean of nine texels.

in vec2 pictureUv;

uniform sampler2D rough;

out vec4 fragColour;

void main()
{
    ivec2 size = textureSize(rough, 0);
    ivec2 here = ivec2(pictureUv * vec2(size));
    float sum = 0.0;
    for (int y = -1; y <= 1; ++y)
        for (int x = -1; x <= 1; ++x)
            sum += texelFetch(rough, clamp(here + ivec2(x, y), ivec2(0), size - 1), 0).r;
    fragColour = vec4(vec3(sum / 9.0), 1.0);
}
