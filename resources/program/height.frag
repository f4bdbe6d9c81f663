#version 330 core
// How far away it is, between the nearest and the farthest that is seen: linear, as the camera has no perspective.

out vec4 fragColour;

void main()
{
    fragColour = vec4(gl_FragCoord.z, 0.0, 0.0, 1.0);
}
