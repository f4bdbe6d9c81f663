#version 330 core
// Plain colour, the same everywhere.

in vec4 vertex;

uniform mat4 worldViewProj;

void main()
{
    gl_Position = worldViewProj * vertex;
}
