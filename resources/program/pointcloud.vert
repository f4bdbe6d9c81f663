#version 330 core
// Points of a scan. Their size follows the distance between neighbours, so that surfaces close from near, within limits
// that keep a point visible from far and apart from the next one from near.
//
// BY_HEIGHT: the colour tells the height within the bounding box. COLOURS: it is the vertex's own. Else it is the uniform
// `surface`.
// LIFTED: drawn nearer than it lies.
// NORMALS: lit, from both sides, since scanned normals may point either way.

in vec4 vertex;
#ifdef NORMALS
in vec3 normal;
uniform mat4 worldInverseTranspose;
uniform mat4 world;
uniform vec3 cameraPosition;
uniform vec4 ambient;
uniform vec4 lightDirection[4]; // the way towards each light
uniform vec4 lightDiffuse[4];
uniform float darkest; // the least of the colour that shade leaves
#endif
#ifdef BY_HEIGHT
uniform vec4 boxMin;
uniform vec4 boxMax;
#elif defined(COLOURS)
in vec4 colour;
#else
uniform vec4 surface;
#endif

uniform mat4 worldView;
uniform mat4 projection;
uniform vec4 viewportSize;
uniform vec4 diameter; // x: of a point, in model units
#ifdef LIFTED
uniform float lift; // how much nearer than it lies a point is drawn, as a part of the distance
#endif

// Pixels of a picture of up to 1080 rows; a finer one has as much larger points.
const float smallest = 2.0;
const float largest = 8.0;
const float darkestRim = 0.25; // of the largest

flat out vec4 pointLook; // its colour, and how much darker its rim is
flat out vec2 pointDisc; // the side of what is drawn in radii of the disc, and half of that radius in pixels

#ifdef BY_HEIGHT
// Violet over blue and teal to green in even steps of lightness: the scale "viridis" (CC0) as a polynomial, without its
// darkest end and without its yellow, the colour of selected points.
vec3 heightColour(float height)
{
    float t = mix(0.08, 0.82, height);
    const vec3 c0 = vec3(0.277727, 0.005407, 0.334100);
    const vec3 c1 = vec3(0.105093, 1.404614, 1.384590);
    const vec3 c2 = vec3(-0.330862, 0.214848, 0.095095);
    const vec3 c3 = vec3(-4.634230, -5.799101, -19.332441);
    const vec3 c4 = vec3(6.228270, 14.179933, 56.690553);
    const vec3 c5 = vec3(4.776385, -13.745145, -65.353033);
    const vec3 c6 = vec3(-5.435456, 4.645853, 26.312435);
    return clamp(c0 + t * (c1 + t * (c2 + t * (c3 + t * (c4 + t * (c5 + t * c6))))), 0.0, 1.0);
}
#endif

void main()
{
    vec4 view = worldView * vertex;
    vec4 clip = projection * view;
    float perUnit = 0.5 * viewportSize.y * abs(projection[1][1]) / max(clip.w, 1e-6);
    float scale = length(worldView[0].xyz);
    float fineness = max(1.0, viewportSize.y / 1080.0);
    float size = clamp(diameter.x * scale * perUnit, smallest * fineness, largest * fineness);
    pointLook.a = darkestRim * smoothstep(smallest, largest, size / fineness);
    // Room for the soft edge, which the many small points of a large cloud seen from far do without: it costs time.
    gl_PointSize = size + clamp(size / fineness - 3.0, 0.0, 1.0);
    pointDisc = vec2(2.0 * gl_PointSize / size, 0.25 * size);
#ifdef LIFTED
    vec4 lifted = projection * vec4(view.xyz * (1.0 - lift), view.w);
    if (clip.w > 0.0 && lifted.w > 0.0)
        clip.z = lifted.z / lifted.w * clip.w;
#endif
    gl_Position = clip;

#ifdef BY_HEIGHT
    float extent = boxMax.z - boxMin.z;
    pointLook.rgb = heightColour(extent > 0.0 ? clamp((vertex.z - boxMin.z) / extent, 0.0, 1.0) : 0.5);
#elif defined(COLOURS)
    pointLook.rgb = colour.rgb;
#else
    pointLook.rgb = surface.rgb;
#endif
#ifdef NORMALS
    vec3 n = mat3(worldInverseTranspose) * normal;
    float normalLength = length(n);
    if (normalLength > 1e-6) { // else the scan has none for this point
        n /= normalLength;
        if (dot(n, cameraPosition - (world * vertex).xyz) < 0.0)
            n = -n;
        vec3 light = ambient.rgb;
        for (int i = 0; i < 4; ++i)
            light += lightDiffuse[i].rgb * max((dot(n, lightDirection[i].xyz) + 0.15) / 1.15, 0.0);
        pointLook.rgb *= max(light, vec3(darkest));
    }
#endif
}
