// Writes the glyph table of text meshes, src/mesh/GlyphTable.cpp, from a font file. See README.md beside this file.

#include <BRepMesh_IncrementalMesh.hxx>
#include <BRep_Tool.hxx>
#include <Font_BRepFont.hxx>
#include <Poly_Triangulation.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <limits>
#include <map>
#include <numeric>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr char firstCharacter = '!';
constexpr char lastCharacter = '~';
// Where "A" stands once the font is scaled.
constexpr double bottomOfA = -0.07;
constexpr double topOfA = 1.03;
constexpr double deflection = 0.006;      // how far a chord may lie from its curve, in the units of the table
constexpr double angularDeflection = 0.9; // radians between the chords of a curve
constexpr double fontPoints = 100; // the size at which the outlines are taken; no figure in the table depends on it

struct Glyph {
    std::vector<std::array<double, 2>> vertices;
    std::vector<std::array<unsigned, 3>> triangles;
    double advance = 0;
};

double turnOf(const Glyph& glyph, const std::array<unsigned, 3>& triangle)
{
    const auto& [a, b, c] = triangle;
    const auto& v = glyph.vertices;
    return (v[b][0] - v[a][0]) * (v[c][1] - v[a][1]) - (v[b][1] - v[a][1]) * (v[c][0] - v[a][0]);
}

/// The number of the vertex at this place, which is entered if it is new: faces of one glyph share no nodes.
unsigned enter(Glyph& glyph, std::map<std::pair<long, long>, unsigned>& known, double x, double y)
{
    const std::pair<long, long> place{std::lround(x * 1e4), std::lround(y * 1e4)};
    const auto [entry, isNew] = known.try_emplace(place, static_cast<unsigned>(glyph.vertices.size()));
    if (isNew)
        glyph.vertices.push_back({x, y});
    return entry->second;
}

/// The same glyph in one order, since that of the mesher differs from run to run: vertices from left to right, triangles
/// by their vertices.
Glyph sorted(const Glyph& glyph)
{
    std::vector<unsigned> order(glyph.vertices.size());
    std::iota(order.begin(), order.end(), 0u);
    std::sort(order.begin(), order.end(),
              [&](unsigned a, unsigned b) { return glyph.vertices[a] < glyph.vertices[b]; });
    Glyph result;
    std::vector<unsigned> newNumber(order.size());
    for (unsigned i = 0; i < order.size(); ++i) {
        newNumber[order[i]] = i;
        result.vertices.push_back(glyph.vertices[order[i]]);
    }
    for (std::array<unsigned, 3> triangle : glyph.triangles) {
        for (unsigned& vertex : triangle)
            vertex = newNumber[vertex];
        std::rotate(triangle.begin(), std::min_element(triangle.begin(), triangle.end()), triangle.end());
        result.triangles.push_back(triangle);
    }
    std::sort(result.triangles.begin(), result.triangles.end());
    return result;
}

Glyph triangulated(const TopoDS_Shape& outline, double scale, double lift)
{
    const BRepMesh_IncrementalMesh mesher(outline, deflection / scale, false, angularDeflection, false);
    Glyph glyph;
    std::map<std::pair<long, long>, unsigned> known;
    for (TopExp_Explorer faces(mesher.Shape(), TopAbs_FACE); faces.More(); faces.Next()) {
        TopLoc_Location location;
        const Handle(Poly_Triangulation) mesh = BRep_Tool::Triangulation(TopoDS::Face(faces.Current()), location);
        if (mesh.IsNull())
            throw std::runtime_error("an outline could not be triangulated");
        std::vector<unsigned> numbers;
        for (int i = 1; i <= mesh->NbNodes(); ++i) {
            const gp_Pnt p = mesh->Node(i).Transformed(location);
            numbers.push_back(enter(glyph, known, p.X() * scale, p.Y() * scale + lift));
        }
        for (int i = 1; i <= mesh->NbTriangles(); ++i) {
            int a, b, c;
            mesh->Triangle(i).Get(a, b, c);
            std::array<unsigned, 3> triangle{numbers[a - 1], numbers[b - 1], numbers[c - 1]};
            if (turnOf(glyph, triangle) < 0) // all face +z
                std::swap(triangle[1], triangle[2]);
            glyph.triangles.push_back(triangle);
        }
    }
    return sorted(glyph);
}

std::pair<double, double> heightRange(const TopoDS_Shape& outline)
{
    const Glyph glyph = triangulated(outline, 1, 0);
    double low = std::numeric_limits<double>::max();
    double high = std::numeric_limits<double>::lowest();
    for (const auto& [x, y] : glyph.vertices) {
        low = std::min(low, y);
        high = std::max(high, y);
    }
    return {low, high};
}

std::vector<Glyph> readGlyphs(const std::string& fontFile)
{
    Font_BRepFont font;
    if (!font.Init(fontFile.c_str(), fontPoints, 0))
        throw std::runtime_error("cannot read the font " + fontFile);
    const auto [low, high] = heightRange(font.RenderGlyph('A'));
    const double scale = (topOfA - bottomOfA) / (high - low);
    const double lift = bottomOfA - low * scale;

    std::vector<Glyph> glyphs;
    for (char c = firstCharacter; c <= lastCharacter; ++c) {
        const auto character = static_cast<Standard_Utf32Char>(c);
        Glyph glyph = triangulated(font.RenderGlyph(character), scale, lift);
        glyph.advance = font.AdvanceX(character, 0) * scale;
        glyphs.push_back(std::move(glyph));
    }
    return glyphs;
}

/// Writes the entries with as many on a line as fit.
void writeRows(std::ostream& out, const std::string& head, const std::vector<std::string>& entries)
{
    out << "const " << head << " = {\n";
    std::string line = "   ";
    for (const std::string& entry : entries) {
        if (line.size() + entry.size() + 2 > 118) {
            out << line << "\n";
            line = "   ";
        }
        line += " " + entry + ",";
    }
    out << line << "\n};\n";
}

void write(std::ostream& out, const std::vector<Glyph>& glyphs, const std::string& fontName)
{
    fmt::print(out,
               "// Made by tools/make_glyph_table from {} (package fonts-dejavu-core); not edited by hand:\n"
               "//\n"
               "//     make_glyph_table /usr/share/fonts/truetype/dejavu/{} src/mesh/GlyphTable.cpp\n"
               "//\n"
               "// Licence of the outlines: Copyright (c) 2003 by Bitstream, Inc.; DejaVu changes are in public "
               "domain. Free to\n"
               "// use, change and pass on, under a name of its own; the whole text stands in tools/README.md.\n"
               "// clang-format off\n"
               "#include \"mesh/GlyphTable.h\"\n\nnamespace vrk::visual {{\nnamespace {{\n",
               fontName, fontName);
    for (std::size_t i = 0; i < glyphs.size(); ++i) {
        const int code = firstCharacter + static_cast<int>(i);
        std::vector<std::string> vertices;
        for (const auto& [x, y] : glyphs[i].vertices)
            vertices.push_back(fmt::format("{{{:.4f}f, {:.4f}f}}", x, y));
        std::vector<std::string> triangles;
        for (const auto& [a, b, c] : glyphs[i].triangles)
            triangles.push_back(fmt::format("{{{}, {}, {}}}", a, b, c));
        out << "\n";
        writeRows(out, fmt::format("float vertices{}[][2]", code), vertices);
        writeRows(out, fmt::format("unsigned triangles{}[][3]", code), triangles);
    }
    out << "\n} // namespace\n\nconst Glyph glyphTable[glyphCount] = {\n";
    for (std::size_t i = 0; i < glyphs.size(); ++i) {
        const int code = firstCharacter + static_cast<int>(i);
        // The quotes keep the backslash from standing at the end of its line, where it would swallow the next row.
        fmt::print(out, "    {{vertices{0}, triangles{0}, {1:.4f}f, {2}, {3}}}, // '{4}'\n", code, glyphs[i].advance,
                   glyphs[i].vertices.size(), glyphs[i].triangles.size(), static_cast<char>(code));
    }
    out << "};\n\n} // namespace vrk::visual\n";
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::cerr << "usage: make_glyph_table FONT.ttf GlyphTable.cpp\n";
        return 2;
    }
    try {
        const std::vector<Glyph> glyphs = readGlyphs(argv[1]);
        std::ofstream out(argv[2]);
        write(out, glyphs, std::filesystem::path(argv[1]).filename().string());
        std::size_t vertices = 0;
        std::size_t triangles = 0;
        for (const Glyph& glyph : glyphs) {
            vertices += glyph.vertices.size();
            triangles += glyph.triangles.size();
        }
        fmt::print("{} glyphs, {} vertices, {} triangles\n", glyphs.size(), vertices, triangles);
        return out.good() ? 0 : 1;
    } catch (const std::exception& failure) {
        std::cerr << failure.what() << "\n";
        return 1;
    }
}
