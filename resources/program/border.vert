#version 330 core
// A rectangle over the whole picture, or with PART over a part of it.

in vec4 vertex;
in vec2 uv0;

uniform mat4 worldViewProj;

#ifdef PART
uniform vec4 part; // left, upper, right, lower edge, from 0 to 1
#endif

out vec2 pictureUv;

void main()
{
#ifdef PART
    pictureUv = mix(part.xy, part.zw, uv0);
    gl_Position = worldViewProj * vec4(2.0 * pictureUv.x - 1.0, 1.0 - 2.0 * pictureUv.y, vertex.zw);
#else
    gl_Position = worldViewProj * vertex;
    pictureUv = uv0;
#endif
}
