#version 330 core
// Points of lines. VERTEX_COLOUR: each has its own colour, else all have the uniform `surface`.

in vec4 vertex;
#ifdef VERTEX_COLOUR
in vec4 colour;
#else
uniform vec4 surface;
#endif

uniform mat4 worldViewProj;
uniform float pull; // how much nearer to the eye the line is drawn, as a part of its distance

// A few steps of a depth buffer of 24 bits: far away these are more than the pull.
const float depthSteps = 3e-7;

out vec4 pointColour;

void main()
{
    vec4 p = worldViewProj * vertex;
    // A line on a face is to be seen over it, but not through a wall. w - z is what is left to the far plane, and goes with
    // one over the distance: a part of it is that part of the distance. What lies behind the near plane is left alone.
    if (p.z > -p.w)
        p.z = max(p.z - pull * (p.w - p.z) - depthSteps * p.w, -p.w);
    gl_Position = p;
#ifdef VERTEX_COLOUR
    pointColour = vec4(colour.rgb, 1.0);
#else
    pointColour = surface;
#endif
}
