#version 330 core
// Points of lines. VERTEX_COLOUR: each has its own colour, else all have the uniform `surface`.

in vec4 vertex;
#ifdef VERTEX_COLOUR
in vec4 colour;
#else
uniform vec4 surface;
#endif

uniform mat4 worldViewProj;

out vec4 pointColour;

void main()
{
    gl_Position = worldViewProj * vertex;
#ifdef VERTEX_COLOUR
    pointColour = vec4(colour.rgb, 1.0);
#else
    pointColour = surface;
#endif
}
