#version 330 core

uniform vec4 surface;

out vec4 fragColour;

void main()
{
    fragColour = surface;
}
