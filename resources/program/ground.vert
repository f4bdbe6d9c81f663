#version 330 core
// A level rectangle with a picture on it.

in vec4 vertex;
in vec2 uv0;

uniform mat4 worldViewProj;

out vec2 groundUv;

void main()
{
    gl_Position = worldViewProj * vertex;
    groundUv = uv0;
}
