#version 330 core
// Lit surfaces, seen from both sides: a diffuse term for each of four directional lights, a tight highlight that follows
// curvature, a wide sheen that keeps large radii from looking flat, and a slight darkening where the surface turns away.
//
// A light's direction is the way towards it.

in vec3 worldPosition;
in vec3 worldNormal;
in vec4 surfaceColour;

uniform vec4 ambient;
uniform vec4 lightDirection[4];
uniform vec4 lightDiffuse[4];
uniform vec4 lightSpecular[4];
uniform vec3 cameraPosition;
uniform vec4 tint;     // rgb: colour of the state; a: how much of it
uniform vec4 finish;   // x: strength and y: exponent of the highlight, z: strength of the sheen, w: darkening at the rim
uniform float opacity; // times the alpha of the surface colour

out vec4 fragColour;

void main()
{
    vec3 base = mix(surfaceColour.rgb, tint.rgb, tint.a);
    float alpha = surfaceColour.a * opacity;

    // A surface without normals, such as a line that was given this material, has its plain colour.
    float normalLength = length(worldNormal);
    if (normalLength < 1e-6) {
        fragColour = vec4(base, alpha);
        return;
    }
    vec3 n = worldNormal / normalLength;
    vec3 v = normalize(cameraPosition - worldPosition);
    if (dot(n, v) < 0.0)
        n = -n;

    vec3 diffuse = ambient.rgb;
    vec3 specular = vec3(0.0);
    for (int i = 0; i < 4; ++i) {
        vec3 l = lightDirection[i].xyz;
        float facing = dot(n, l);
        // Softened terminator: light wraps a little around the edge, so that round bodies have no hard dark half.
        diffuse += lightDiffuse[i].rgb * max((facing + 0.15) / 1.15, 0.0);
        float h = max(dot(n, normalize(l + v)), 0.0);
        float lit = smoothstep(-0.05, 0.15, facing);
        specular += lightSpecular[i].rgb * lit * (finish.x * pow(h, finish.y) + finish.z * pow(h, 8.0));
    }
    float rim = 1.0 - finish.w * pow(1.0 - max(dot(n, v), 0.0), 3.0);
    fragColour = vec4(base * diffuse * rim + specular, alpha);
}
