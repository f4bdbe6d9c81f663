#version 330 core
// Puts the cross of axes into the lower left corner, in front of everything. Of its nodes only the turn and the size
// count, not where they stand.

in vec4 vertex;
in vec3 normal;

uniform mat4 world;
uniform vec4 viewportSize; // pixels
uniform float flipping;    // -1 where the picture is drawn upside down, as into textures
uniform vec4 place;        // xy: pixels from the left and the lower edge to the middle of the cross

const vec3 middle = vec3(0.0, 0.0, -800.0); // of the cross, in the world
const float pixelsPerUnit = 2.6;
const float depth = -0.985;                 // just behind the near plane
const float depthPerUnit = 0.0004;
const float usualPlace = 75.0;              // pixels, of a cross as a camera has it at first

const float letterLead = 4.0;               // how far letters are drawn ahead of what they may lie over

out vec3 viewNormal;

void main()
{
    vec3 p = (world * vertex).xyz - middle;
    vec2 pixel = place.xy + p.xy * pixelsPerUnit;
    vec2 position = pixel / viewportSize.xy * 2.0 - 1.0;
    viewNormal = normalize(mat3(world) * normal);
    float near = p.z * usualPlace / place.x; // a large cross takes no more depth than a small one
    float ahead = viewNormal.z > 0.9999 ? near + letterLead : near; // letters, and little else, face the viewer
    gl_Position = vec4(position.x, position.y * flipping, depth - ahead * depthPerUnit, 1.0);
}
