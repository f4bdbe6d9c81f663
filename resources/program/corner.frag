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
    // One sees through two surfaces, the near one and the far one.
    float alpha = 1.0 - (1.0 - surface.a) * (1.0 - surface.a);
    fragColour = vec4(surface.rgb * (0.55 + 0.60 * facing), alpha);
}
