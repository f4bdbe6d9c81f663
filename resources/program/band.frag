#version 330 core
// A ribbon that is seen through, from both sides: its own colour, a little darker where it turns away from the viewer, so that
// its bends are seen. Lights would take the colour away, by which its states are told apart.

in vec3 worldPosition;
in vec3 worldNormal;
in vec4 surfaceColour;

uniform vec3 cameraPosition;

out vec4 fragColour;

const float turnedAway = 0.68; // of the brightness

void main()
{
    float normalLength = length(worldNormal);
    float facing = 1.0;
    if (normalLength > 1e-6)
        facing = abs(dot(worldNormal / normalLength, normalize(cameraPosition - worldPosition)));
    fragColour = vec4(surfaceColour.rgb * mix(turnedAway, 1.0, facing), surfaceColour.a);
}
