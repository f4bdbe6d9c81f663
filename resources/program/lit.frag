#version 330 core
// Lit surfaces, seen from both sides: a diffuse term for each of four directional lights, a tight highlight that follows
// curvature, a wide sheen that keeps large radii from looking flat, a faint lamp that goes with the viewer, and a slight
// darkening where the surface turns away.
//
// A light's direction is the way towards it. PAINT: the surface colour comes times its alpha, and where the normals of vertices
// run around a sharp edge of the surface the triangle's own normal counts.

in vec3 worldPosition;
in vec3 worldNormal;
in vec4 surfaceColour;

uniform vec4 ambient;
uniform vec4 lightDirection[4];
uniform vec4 lightDiffuse[4];
uniform vec4 lightSpecular[4];
uniform vec3 cameraPosition;
uniform mat4 view;     // the rows of its rotation are the camera's axes
uniform vec4 tint;     // rgb: colour of the state; a: how much of it
uniform vec4 finish;   // strengths of x: the highlight, y: the sheen, z: the darkening at the rim
uniform float opacity; // times the alpha of the surface colour
uniform float rimOpacity; // how much more where the surface turns away: a glass shell has its outline so

out vec4 fragColour;

const float shoulder = 0.62; // where the bright part begins
const float exposure = 1.06; // the sides of a grey body must stand out from the grey behind it

#include "resource://program/crease.glsl"

void main()
{
#ifdef PAINT
    vec3 own = surfaceColour.rgb / max(surfaceColour.a, 1e-4);
#else
    vec3 own = surfaceColour.rgb;
#endif
    vec3 base = mix(own, tint.rgb, tint.a);
    float alpha = surfaceColour.a * opacity;

    // Where a mesh has no normal its triangle's own counts. A line that was given this material lies across no surface: its
    // places beside each other lie in one direction, and it has its plain colour.
    float normalLength = length(worldNormal);
    vec3 n = worldNormal / max(normalLength, 1e-12);
    vec3 acrossX = dFdx(worldPosition);
    vec3 acrossY = dFdy(worldPosition);
    if (normalLength < 1e-6) {
        vec3 side = cross(acrossX, acrossY);
        float area = length(side);
        if (!(area > 1e-3 * length(acrossX) * length(acrossY))) {
            fragColour = vec4(base, alpha);
            return;
        }
        n = side / area;
    }
#ifdef PAINT
    n = creasedNormal(worldPosition, n);
#endif
    vec3 v = normalize(cameraPosition - worldPosition);
    if (dot(n, v) < 0.0)
        n = -n;

    float towardsEye = max(dot(n, v), 0.0);
    vec3 diffuse = vec3(0.0);
    vec3 specular = vec3(0.0);
    for (int i = 0; i < 4; ++i) {
        vec3 l = lightDirection[i].xyz;
        float facing = dot(n, l);
        // Softened terminator: light wraps a little around the edge, so that round bodies have no hard dark half.
        diffuse += lightDiffuse[i].rgb * max((facing + 0.15) / 1.15, 0.0);
        if (lightSpecular[i].rgb == vec3(0.0))
            continue;
        float h = max(dot(n, normalize(l + v)), 0.0);
        float h2 = h * h;
        float h8 = h2 * h2 * h2 * h2;
        float h16 = h8 * h8;
        float seen = smoothstep(-0.05, 0.15, facing);
        specular += lightSpecular[i].rgb * seen * (finish.x * h16 * h16 * h16 + finish.y * h8);
    }
    // A lamp over the viewer's right shoulder, the stronger the less the four lights reach: whatever side is looked at, no
    // face of it lies in the dark, and two that stand at the same angle to the eye differ.
    vec3 right = vec3(view[0][0], view[1][0], view[2][0]);
    vec3 up = vec3(view[0][1], view[1][1], view[2][1]);
    float shade = max(0.45 - dot(diffuse, vec3(1.0 / 3.0)), 0.0);
    diffuse += ambient.rgb + (0.22 + 0.7 * shade) * max(dot(n, normalize(v + 0.35 * right + 0.2 * up)), 0.0);

    float away = 1.0 - towardsEye;
    if (rimOpacity > 0.0)
        alpha = min(alpha + surfaceColour.a * rimOpacity * away * away * sqrt(away), 1.0);
    float rim = 1.0 - finish.z * away * away * away;
    vec3 lit = exposure * base * diffuse * rim + specular;
    // What is bright is pressed together, the hue kept, so that a highlight on a white face still shows its shape.
    float brightest = max(max(lit.r, lit.g), lit.b);
    float above = max(brightest - shoulder, 0.0);
    float pressed = min(brightest, shoulder) + (1.0 - shoulder) * (1.0 - exp(-above / (1.0 - shoulder)));
    fragColour = vec4(lit * (pressed / max(brightest, 1e-6)), alpha);
}
