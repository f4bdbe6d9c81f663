#version 330 core
// From one colour to another, from the upper edge of the picture to its lower one. Below the step of a colour value neighbouring
// pixels take turns, in a fixed order, so that there are no bands.

in vec2 pictureUv;

uniform vec4 top;
uniform vec4 bottom;
uniform float rowsAbove; // of the picture, above the target

out vec4 fragColour;

void main()
{
    vec3 colour = mix(top.rgb, bottom.rgb, smoothstep(0.0, 1.0, pictureUv.y));
    float turn = fract(52.9829189 * fract(dot(gl_FragCoord.xy + vec2(0.0, rowsAbove), vec2(0.06711056, 0.00583715))));
    fragColour = vec4(colour + (turn - 0.5) / 255.0, 1.0);
}
