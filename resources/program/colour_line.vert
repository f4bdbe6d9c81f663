#version 330 core
// Ends of lines, each with a colour. INSTANCED: the place of an instance comes as the three rows of its matrix.

in vec4 vertex;
in vec4 colour;
#ifdef INSTANCED
in vec4 uv0;
in vec4 uv1;
in vec4 uv2;
#endif

uniform mat4 transform;

out vec4 endColour;
#ifdef INSTANCED
out float endReach; // from the place of the instance, in model units
#endif

void main()
{
#ifdef INSTANCED
    gl_Position = transform * vec4(dot(uv0, vertex), dot(uv1, vertex), dot(uv2, vertex), 1.0);
    endReach = length(vec3(dot(uv0.xyz, vertex.xyz), dot(uv1.xyz, vertex.xyz), dot(uv2.xyz, vertex.xyz)));
#else
    gl_Position = transform * vertex;
#endif
    endColour = vec4(colour.rgb, 1.0);
}
