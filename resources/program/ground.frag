#version 330 core
// A shadow on the ground.

in vec2 groundUv;

uniform sampler2D shadow; // how dark
uniform vec4 colour;

out vec4 fragColour;

void main()
{
    fragColour = vec4(colour.rgb, colour.a * texture(shadow, groundUv).r);
}
