#version 330 core
// A rectangle over the whole picture, whatever the camera, in the coordinates of the picture already.

in vec4 vertex;
in vec2 uv0;

uniform float flipping; // -1 where the picture is drawn upside down

out vec2 pictureUv;

void main()
{
    gl_Position = vec4(vertex.x, vertex.y * flipping, 0.0, 1.0);
    pictureUv = uv0;
}
