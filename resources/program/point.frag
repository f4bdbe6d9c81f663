#version 330 core
// Round marks with a smooth edge and a dark rim, which keeps a light mark visible on a light body.

uniform vec4 surface;
uniform float size; // pixels

const float rimWidth = 1.0; // pixels
const float rimShade = 0.3;

out vec4 fragColour;

void main()
{
    float fromCentre = length(gl_PointCoord - vec2(0.5)) * size;
    float radius = 0.5 * size;
    float cover = clamp(radius - fromCentre, 0.0, 1.0);
    if (cover <= 0.0)
        discard;
    float rim = clamp(fromCentre - (radius - 0.5 - rimWidth) + 0.5, 0.0, 1.0);
    fragColour = vec4(surface.rgb * mix(1.0, rimShade, rim), surface.a * cover);
}
