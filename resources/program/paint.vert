#version 330 core
// The skin of a body that is painted. It is drawn a little nearer to the viewer than it lies: between its vertices, which are on
// the body, its triangles cut through the body's bends.

in vec4 vertex;
in vec3 normal;
in vec4 colour;

uniform mat4 worldViewProj;
uniform mat4 viewProj;
uniform mat4 world;
uniform mat4 worldInverseTranspose;
uniform vec3 cameraPosition;
uniform vec4 skin; // x: how much nearer, model units

out vec3 worldPosition;
out vec3 worldNormal;
out vec4 surfaceColour; // times its alpha: what is unpainted has no share in the colour between it and what is painted. VALUE:
                        // as it is

void main()
{
    worldPosition = (world * vertex).xyz;
    worldNormal = mat3(worldInverseTranspose) * normal;
#ifdef VALUE
    surfaceColour = colour;
#else
    float alpha = clamp(colour.a, 0.0, 1.0);
    surfaceColour = vec4(colour.rgb * alpha, alpha);
#endif

    gl_Position = worldViewProj * vertex;
    vec3 towardsEye = cameraPosition - worldPosition;
    float share = clamp(skin.x / max(length(towardsEye), 1e-6), 0.0, 0.5);
    vec4 lifted = viewProj * vec4(worldPosition + share * towardsEye, 1.0);
    if (lifted.w > 0.0)
        gl_Position.z = lifted.z / lifted.w * gl_Position.w;
}
