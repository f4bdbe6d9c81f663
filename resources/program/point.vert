#version 330 core
// Marks of a fixed size in pixels. They are drawn a little nearer than they lie, so that a mark on a face is seen whole
// although the face, seen at a slant, cuts through it.

in vec4 vertex;

uniform mat4 worldView;
uniform mat4 projection;
uniform vec4 viewportSize;
uniform float size; // pixels of a picture of up to 1080 rows; a finer one has as much larger marks

const float slope = 2.0; // of the steepest face on which a mark is whole: depth to height in the picture

void main()
{
    vec4 view = worldView * vertex;
    vec4 clip = projection * view;
    float pixels = size * max(1.0, viewportSize.y / 1080.0);
    float lift = slope * pixels / (viewportSize.y * abs(projection[1][1])); // of the distance
    vec4 lifted = projection * vec4(view.xyz * (1.0 - lift), view.w);
    if (clip.w > 0.0 && lifted.w > 0.0)
        clip.z = lifted.z / lifted.w * clip.w;
    gl_Position = clip;
    gl_PointSize = pixels;
}
