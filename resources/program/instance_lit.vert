#version 330 core
// Lit surfaces of instances, whose places come as the three rows of a matrix that turns and scales alike in all directions.

in vec4 vertex;
in vec3 normal;
in vec4 uv0;
in vec4 uv1;
in vec4 uv2;

uniform mat4 viewProj;
uniform vec4 surface;

out vec3 worldPosition;
out vec3 worldNormal;
out vec4 surfaceColour;

void main()
{
    worldPosition = vec3(dot(uv0, vertex), dot(uv1, vertex), dot(uv2, vertex));
    worldNormal = vec3(dot(uv0.xyz, normal), dot(uv1.xyz, normal), dot(uv2.xyz, normal));
    gl_Position = viewProj * vec4(worldPosition, 1.0);
    surfaceColour = surface;
}
