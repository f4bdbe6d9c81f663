#version 330 core
// Corners of letters, and of the grounds of texts: pixels about a place of the scene, which is a whole pixel, so that
// letters are as sharp as they were drawn.

in vec4 vertex;
in vec4 uv0;             // xy: pixels from the place, to the right and up; zw: place in the texture of the letters
in vec4 uv1;             // xy: of grounds, pixels from the middle; zw: half of their size, 0 for letters
in vec4 colour;
in vec4 secondary_colour;

uniform mat4 worldViewProj;
uniform vec4 viewportSize; // pixels
uniform float flipping;    // -1 where the picture is drawn upside down, as into textures

noperspective out vec2 texel;
noperspective out vec2 inBox;
flat out vec2 halfSize;
flat out vec4 fillColour;
flat out vec4 rimColour;

void main()
{
    texel = uv0.zw;
    inBox = uv1.xy;
    halfSize = uv1.zw;
    fillColour = colour;
    rimColour = secondary_colour;
    vec4 place = worldViewProj * vertex;
    if (place.z < -place.w || place.w <= 0.0) { // behind the eye
        gl_Position = vec4(2.0, 2.0, 2.0, 1.0);
        return;
    }
    vec2 middle = 0.5 * viewportSize.xy;
    vec2 pixel = floor(place.xy / place.w * middle + middle) + vec2(uv0.x, uv0.y * flipping);
    gl_Position = vec4(pixel / middle - 1.0, 0.0, 1.0);
}
