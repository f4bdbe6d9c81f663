#version 330 core
// One over the distance along the view, which is linear across the picture of a plane; of points of clouds, its negative.

uniform float kind; // 1 or -1

out vec4 fragColour;

void main()
{
    fragColour = vec4(kind * gl_FragCoord.w, 0.0, 0.0, 1.0);
}
