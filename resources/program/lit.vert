#version 330 core
// Lit surfaces. VERTEX_COLOUR: the surface colour is the vertex's own, else the uniform `surface`.

in vec4 vertex;
in vec3 normal;
#ifdef VERTEX_COLOUR
in vec4 colour;
#else
uniform vec4 surface;
#endif

uniform mat4 worldViewProj;
uniform mat4 world;
uniform mat4 worldInverseTranspose;

out vec3 worldPosition;
out vec3 worldNormal;
out vec4 surfaceColour;

void main()
{
    gl_Position = worldViewProj * vertex;
    worldPosition = (world * vertex).xyz;
    worldNormal = mat3(worldInverseTranspose) * normal;
#ifdef VERTEX_COLOUR
    surfaceColour = vec4(colour.rgb, 1.0);
#else
    surfaceColour = surface;
#endif
}
