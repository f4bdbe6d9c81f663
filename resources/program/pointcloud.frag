#version 330 core
// Discs whose edge is as soft as the target's samples allow, with a rim that darkens as they grow, so that near ones stand
// apart and far ones keep their colour. SEEN_THROUGH: of some opacity.

flat in vec4 pointLook; // its colour, and how much darker its rim is
flat in vec2 pointDisc; // the side of what is drawn in radii of the disc, and half of that radius in pixels

const float leastCover = 0.25; // of a pixel, which is one sample of four

#ifdef SEEN_THROUGH
uniform float opacity;
#endif

out vec4 fragColour;

void main()
{
    vec2 p = (gl_PointCoord - vec2(0.5)) * pointDisc.x;
    float fromCentre = dot(p, p);
    float cover = pointDisc.y * (1.0 - fromCentre) + 0.5; // near the edge; farther inside it only has to be more than 1
    if (cover < leastCover)
        discard;
    fragColour = vec4(pointLook.rgb * (1.0 - pointLook.a * fromCentre), cover); // which the samples are chosen by
#ifdef SEEN_THROUGH
    fragColour.a = min(cover, 1.0) * opacity;
#endif
}
