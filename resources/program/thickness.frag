#version 330 core
// How thick a coat lies, by colour on a scale that the eye takes for even, and told apart without colour too: dark stripes where
// it is too thin, light dots where it is too thick, and a line along the two borders of what is wanted.

in vec3 worldPosition;
in vec3 worldNormal;
in vec4 surfaceColour; // x: the thickness as a part of what is wanted; w: how much it covers

uniform vec3 cameraPosition;
uniform vec4 target; // y: too thin below, z: too thick above, as parts of what is wanted; w: times it where colours end

uniform float rowsAbove; // of the picture, above the target

out vec4 fragColour;

// Even steps of the scale; the legend has the same (ThicknessColors.cpp).
const vec3 anchors[11] = vec3[11](vec3(0.267, 0.005, 0.329), vec3(0.283, 0.141, 0.458), vec3(0.254, 0.265, 0.530),
                                  vec3(0.207, 0.372, 0.553), vec3(0.164, 0.471, 0.558), vec3(0.128, 0.567, 0.551),
                                  vec3(0.135, 0.659, 0.518), vec3(0.267, 0.749, 0.441), vec3(0.478, 0.821, 0.318),
                                  vec3(0.741, 0.873, 0.150), vec3(0.993, 0.906, 0.144));
const float stripe = 7.0;   // pixels from one to the next
const float dots = 6.0;     // the same
const float turnedAway = 0.62; // of the brightness

#include "resource://program/crease.glsl"

vec3 scaleColour(float part)
{
    float at = clamp(part, 0.0, 1.0) * 10.0;
    int first = min(int(at), 9);
    return mix(anchors[first], anchors[first + 1], at - float(first));
}

void main()
{
    float value = surfaceColour.x;
    vec3 colour = scaleColour(value / max(target.w, 1e-6));

    float slope = max(fwidth(value), 1e-9);
    float below = clamp((target.y - value) / slope + 0.5, 0.0, 1.0);
    float above = clamp((value - target.z) / slope + 0.5, 0.0, 1.0);
    vec2 at = gl_FragCoord.xy + vec2(0.0, rowsAbove);
    float across = fract((at.x + at.y) / stripe) * stripe;
    colour = mix(colour, vec3(0.04, 0.03, 0.10), 0.55 * below * clamp(2.0 - abs(across - 2.0), 0.0, 1.0));
    vec2 cell = (fract(at / dots) - 0.5) * dots;
    colour = mix(colour, vec3(1.0), 0.85 * above * clamp(2.0 - length(cell), 0.0, 1.0));
    float toBorder = min(abs(value - target.y), abs(value - target.z)) / slope;
    colour = mix(colour, vec3(0.05), 0.8 * clamp(1.6 - toBorder, 0.0, 1.0));

    float normalLength = length(worldNormal);
    if (normalLength > 1e-6) {
        vec3 n = creasedNormal(worldPosition, worldNormal / normalLength);
        colour *= mix(turnedAway, 1.0, abs(dot(n, normalize(cameraPosition - worldPosition))));
    }
    fragColour = vec4(colour, clamp(surfaceColour.w, 0.0, 1.0));
}
