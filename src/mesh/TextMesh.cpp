#include "mesh/TextMesh.h"

#include "mesh/GlyphTable.h"

#include <utility>

namespace vrk::visual {
namespace {

constexpr float lineHeight = 1.4f;
constexpr float spaceWidth = 0.4f;

void place(Mesh& mesh, const Glyph& glyph, float x, float y)
{
    const auto base = static_cast<unsigned>(mesh.vertices.size());
    for (int i = 0; i < glyph.vertexCount; ++i) {
        mesh.vertices.emplace_back(x + glyph.vertices[i][0], y + glyph.vertices[i][1], 0.0f);
        mesh.normals.emplace_back(0.0f, 0.0f, 1.0f);
    }
    for (int i = 0; i < glyph.triangleCount; ++i)
        for (const unsigned index : glyph.triangles[i])
            mesh.indices.push_back(base + index);
}

} // namespace

std::unique_ptr<Mesh> makeTextMesh(std::string text)
{
    auto mesh = std::make_unique<Mesh>(std::move(text));
    float x = 0;
    float y = 0;
    for (const char c : mesh->name) {
        if (c == '\n') {
            x = 0;
            y -= lineHeight;
        } else if (c == ' ') {
            x += spaceWidth;
        } else if (c >= firstGlyph && c <= lastGlyph) {
            const Glyph& glyph = glyphTable[c - firstGlyph];
            place(*mesh, glyph, x, y);
            x += glyph.advance;
        }
    }
    return mesh;
}

} // namespace vrk::visual
