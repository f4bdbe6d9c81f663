#version 330 core
// Round points that darken a little towards their edge, so that near ones stand apart; a few pixels wide ones stay square.

flat in vec3 pointColour;
flat in float pointSize;

const float roundFrom = 4.0; // pixels

out vec4 fragColour;

void main()
{
    vec2 p = 2.0 * gl_PointCoord - 1.0;
    float fromCentre = pointSize > roundFrom ? dot(p, p) : 0.0;
    if (fromCentre > 1.0)
        discard;
    fragColour = vec4(pointColour * (1.0 - 0.25 * fromCentre), 1.0);
}
