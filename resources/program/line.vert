#version 330 core
// Points of lines. VERTEX_COLOUR: each has its own colour, INK: all have that of lines without one, else the uniform `surface`.

in vec4 vertex;
#ifdef VERTEX_COLOUR
in vec4 colour;
#elif defined(INK)
uniform vec4 ink;
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
#elif defined(INK)
    pointColour = ink;
#else
    pointColour = surface;
#endif
}
