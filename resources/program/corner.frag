#version 330 core
// The cross is lit from behind the viewer's left shoulder, whatever the lights of the scene.

in vec3 viewNormal;

uniform vec4 surface;

const vec3 light = vec3(-0.35, 0.50, 0.79);

out vec4 fragColour;

void main()
{
    vec3 n = normalize(viewNormal);
    float facing = max(dot(n, light), 0.0);
    // What faces the viewer, and that is all of a letter, is brighter and denser than the arrows beside it.
    float letter = smoothstep(0.99, 1.0, n.z);
    float brightness = mix(0.45 + 0.50 * facing, 1.1, letter);
    // One sees through two surfaces, the near one and the far one.
    float alpha = 1.0 - (1.0 - surface.a) * (1.0 - surface.a);
    fragColour = vec4(min(surface.rgb * brightness, vec3(1.0)), mix(alpha, 1.0, 0.5 * letter));
}
