#version 330 core
// A picture whose colours are multiplied by its alpha already.

in vec2 pictureUv;

uniform sampler2D picture;

out vec4 fragColour;

void main()
{
    fragColour = texture(picture, pictureUv);
}
