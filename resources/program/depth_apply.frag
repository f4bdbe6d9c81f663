#version 330 core
// The shade, to be multiplied onto the picture.

in vec2 pictureUv;

uniform sampler2D shade;
uniform float strength;

out vec4 fragColour;

void main()
{
    float light = texture(shade, pictureUv).r;
    if (light > 0.998)
        discard;
    fragColour = vec4(vec3(mix(1.0, light, strength)), 1.0);
}
