#version 330 core
// A rectangle over the whole picture.

in vec4 vertex;
in vec2 uv0;

uniform mat4 worldViewProj;

out vec2 pictureUv;

void main()
{
    gl_Position = worldViewProj * vertex;
    pictureUv = uv0;
}
