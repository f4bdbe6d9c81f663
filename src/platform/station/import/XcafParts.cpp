#include "platform/station/import/XcafParts.h"

#include "platform/geometry/BodyColorTool.h"
#include "platform/geometry/ColorText.h"
#include "platform/station/import/CadNames.h"

#include <Quantity_Color.hxx>
#include <TDF_LabelSequence.hxx>
#include <TDataStd_Name.hxx>
#include <TopExp.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <XCAFApp_Application.hxx>
#include <XCAFDoc_ColorTool.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_GraphNode.hxx>
#include <XCAFDoc_ShapeTool.hxx>

#include <gp_Quaternion.hxx>
#include <gp_Trsf.hxx>

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace vrk::station {
namespace {

using ColorText = std::string; // empty where there is none

/// One body of a product with the colours that the file gives to it, not those that it takes from its surroundings.
struct ProductBody {
    std::string name; // empty where there is none of its own
    std::string uri;
    TopoDS_Shape shape;
    ColorText color;
    std::map<unsigned, ColorText> faceColors;
    /// The geometry names of this body by the colours that it was seen with: a shared geometry has shared colours.
    std::map<std::pair<ColorText, std::map<unsigned, ColorText>>, std::string> uris;
};

struct Product {
    std::string name; // empty where it tells nothing
    ColorText color;
    TopLoc_Location location; // of the shape itself; it goes into the pose
    std::vector<ProductBody> bodies;
};

/// What an occurrence takes from the assemblies around it.
struct Surroundings {
    TopLoc_Location location; // in the assembly that becomes its owner
    std::uint32_t owner = 0;
    std::size_t depth = 0;
    ColorText inherited;      // of an assembly: for what has no colour of its own
    ColorText overriding;     // of an occurrence: in place of a product's own
    std::string occurrence;   // the name of the nearest one; empty where it tells nothing
    std::string above;        // the name of the assembly
    TDF_LabelSequence usages; // the occurrences from the outermost to the nearest
};

/// As UTF-8, on one line.
std::string rawNameOf(const TDF_Label& label)
{
    Handle(TDataStd_Name) name;
    if (!label.FindAttribute(TDataStd_Name::GetID(), name))
        return {};
    return oneLine(TCollection_AsciiString(name->Get()).ToCString());
}

/// Empty where the name tells nothing.
std::string nameOf(const TDF_Label& label)
{
    std::string name = tidyName(rawNameOf(label));
    return isTelling(name) ? name : std::string();
}

Handle(XCAFDoc_ColorTool) colorsOf(const XcafDocument& document)
{
    return XCAFDoc_DocumentTool::ColorTool(document.document->Main());
}

TDF_LabelSequence rootsOf(const XcafDocument& document)
{
    TDF_LabelSequence roots;
    XCAFDoc_DocumentTool::ShapeTool(document.document->Main())->GetFreeShapes(roots);
    return roots;
}

ColorText colorOf(const Handle(XCAFDoc_ColorTool) & colors, const TDF_Label& label)
{
    Quantity_Color color;
    if (!colors->GetColor(label, XCAFDoc_ColorSurf, color) && !colors->GetColor(label, XCAFDoc_ColorGen, color))
        return {};
    double r = 0, g = 0, b = 0;
    color.Values(r, g, b, Quantity_TOC_sRGB); // as the file wrote them; inside, they are linear
    return geometry::ColorToText({static_cast<float>(r), static_cast<float>(g), static_cast<float>(b)});
}

/// Gives `text` to what `shape` is of the body: the whole of it, or some faces.
void paint(ProductBody& body, const TopoDS_Shape& shape, const ColorText& text)
{
    TopTools_IndexedMapOfShape inside;
    TopExp::MapShapes(shape, inside);
    if (inside.Contains(body.shape)) {
        body.color = text;
        return;
    }
    TopTools_IndexedMapOfShape faces;
    TopExp::MapShapes(body.shape, TopAbs_FACE, faces);
    if (faces.IsEmpty())
        return; // a curve or a point, which is not the one that is painted
    for (int face = 1; face <= faces.Extent(); ++face) {
        if (inside.Contains(faces(face)))
            body.faceColors[static_cast<unsigned>(face)] = text;
    }
    // Some writers colour every face rather than the body.
    const bool alike = std::ranges::all_of(body.faceColors, [&](const auto& entry) { return entry.second == text; });
    if (body.color.empty() && alike && static_cast<int>(body.faceColors.size()) == faces.Extent()) {
        body.color = text;
        body.faceColors.clear();
    }
}

/// The geometry of one file, by names of its own: "<file>#<name>".
class GeometryNames {
public:
    explicit GeometryNames(const std::filesystem::path& file) : file(file) {}

    /// The names are told apart by a number where two things have one name, or where one name is the other with "_" and
    /// digits behind it: so the view names the meshes of bodies with hidden faces.
    std::string add(std::string name)
    {
        // The last '#' is where the file's name ends.
        if (!name.starts_with(file.string() + '#')) {
            std::ranges::replace(name, '#', '_');
            name = fmt::format("{}#{}", file.string(), name);
        }
        std::string uri = name;
        for (int i = 2; isTaken(uri); ++i)
            uri = fmt::format("{}~{}", name, i);
        taken.insert(uri);
        for (std::string stem = stemOf(uri); !stem.empty(); stem = stemOf(stem))
            stems.insert(stem);
        return uri;
    }

private:
    /// The text without the "_" and digits that it ends with; empty if it does not.
    static std::string stemOf(const std::string& text)
    {
        const std::size_t last = text.find_last_not_of("0123456789");
        const bool isNumbered = last != std::string::npos && text[last] == '_' && last + 1 < text.size();
        return isNumbered ? text.substr(0, last) : std::string();
    }

    bool isTaken(const std::string& uri) const
    {
        if (taken.contains(uri) || stems.contains(uri))
            return true;
        for (std::string stem = stemOf(uri); !stem.empty(); stem = stemOf(stem))
            if (taken.contains(stem))
                return true;
        return false;
    }

    const std::filesystem::path& file;
    std::set<std::string> taken;
    std::set<std::string> stems; // what they are without the "_" and digits that they end with
};

rob::Posed poseOf(const TopLoc_Location& location)
{
    const gp_Trsf trsf = location.Transformation();
    const gp_XYZ& p = trsf.TranslationPart();
    const gp_Quaternion q = trsf.GetRotation();
    return {rob::Posd(p.X(), p.Y(), p.Z()), rob::Rotationd(q.W(), q.X(), q.Y(), q.Z()).normalized()};
}

/// The colour of an occurrence: the one given to it on this path through the assemblies, else wherever it occurs.
ColorText usageColor(const Handle(XCAFDoc_ColorTool) & colors, const TDF_Label& label, const TDF_LabelSequence& usages)
{
    TDF_LabelSequence path = usages;
    for (; path.Length() > 1; path.Remove(1)) {
        Handle(XCAFDoc_GraphNode) special;
        if (!XCAFDoc_ShapeTool::FindSHUO(path, special))
            continue;
        if (ColorText color = colorOf(colors, special->Label()); !color.empty())
            return color;
    }
    return colorOf(colors, label);
}

/// Names and colours of solids, shells and faces; the larger ones first, so that the smaller ones win.
void readSubShapes(const Handle(XCAFDoc_ColorTool) & colors, const TDF_Label& label, Product& product)
{
    TDF_LabelSequence labels;
    XCAFDoc_ShapeTool::GetSubShapes(label, labels);
    std::vector<std::pair<TopoDS_Shape, TDF_Label>> pieces;
    for (const TDF_Label& piece : labels)
        pieces.emplace_back(XCAFDoc_ShapeTool::GetShape(piece), piece);
    std::ranges::stable_sort(pieces, {}, [](const auto& piece) { return piece.first.ShapeType(); });
    for (const auto& [shape, piece] : pieces) {
        const ColorText color = colorOf(colors, piece);
        const std::string name = nameOf(piece);
        for (ProductBody& body : product.bodies) {
            if (!color.empty())
                paint(body, shape, color);
            if (!name.empty() && body.shape.IsSame(shape))
                body.name = name;
        }
    }
}

/// Walks through documents and makes the parts of them.
class PartMaker {
public:
    explicit PartMaker(const std::filesystem::path& file) : file(file), geometry(file) {}

    XcafContent make(const XcafDocument& document)
    {
        for (const TDF_Label& root : rootsOf(document))
            visit(document, root, {});
        if (std::ranges::count(content.parts, 0u, &CadPart::owner) > 1)
            gatherAll();
        return std::move(content);
    }

private:
    void visit(const XcafDocument& document, const TDF_Label& label, Surroundings around)
    {
        TDF_Label product = label;
        if (XCAFDoc_ShapeTool::IsReference(label)) {
            XCAFDoc_ShapeTool::GetReferredShape(label, product);
            around.location = around.location * XCAFDoc_ShapeTool::GetLocation(label);
            around.occurrence = occurrenceName(nameOf(label));
            around.usages.Append(label);
            if (const ColorText color = usageColor(colorsOf(document), label, around.usages); !color.empty())
                around.overriding = color;
        }
        if (const auto other = document.references.find(product.Tag()); other != document.references.end())
            visitOther(other->second, product, around);
        else if (XCAFDoc_ShapeTool::IsAssembly(product))
            visitAssembly(document, product, around);
        else
            addPart(document, product, around);
    }

    void visitAssembly(const XcafDocument& document, const TDF_Label& assembly, Surroundings around)
    {
        if (const ColorText color = colorOf(colorsOf(document), assembly); !color.empty())
            around.inherited = color;
        TDF_LabelSequence components;
        XCAFDoc_ShapeTool::GetComponents(assembly, components);
        inAssembly(bestName({around.occurrence, nameOf(assembly), around.above, tidyName(document.title)}), around,
                   [&](const Surroundings& inside) {
                       for (const TDF_Label& component : components)
                           visit(document, component, inside);
                   });
    }

    /// What a product is in another file.
    void visitOther(const XcafDocument::Reference& other, const TDF_Label& product, Surroundings around)
    {
        if (!other.document) {
            ++content.absent[other.file];
            return;
        }
        if (around.occurrence.empty())
            around.occurrence = nameOf(product); // whoever refers to it knows it by this name
        around.usages.Clear();
        const auto visitRoots = [&](const Surroundings& inside) {
            for (const TDF_Label& root : rootsOf(*other.document))
                visit(*other.document, root, inside);
        };
        if (rootsOf(*other.document).Length() == 1)
            visitRoots(around);
        else
            inAssembly(bestName({around.occurrence, tidyName(other.document->title)}), around, visitRoots);
    }

    /// Makes an assembly of what `visitMembers` adds; none where that is nothing, or it lies too deep.
    template <typename VisitMembers>
    void inAssembly(const std::string& name, const Surroundings& around, const VisitMembers& visitMembers)
    {
        if (around.depth + 1 >= deepestAssembly)
            return visitMembers(around);
        CadPart assembly;
        assembly.isAssembly = true;
        assembly.owner = around.owner;
        assembly.pose = poseOf(around.location);
        content.parts.push_back(std::move(assembly));

        const std::size_t number = content.parts.size();
        Surroundings inside = around;
        inside.location = {};
        inside.owner = static_cast<std::uint32_t>(number);
        inside.depth = around.depth + 1;
        inside.occurrence.clear();
        inside.above = name;
        visitMembers(inside);
        if (content.parts.size() == number)
            content.parts.pop_back();
        else
            content.parts[number - 1].name = siblings[around.owner].add(name);
    }

    void addPart(const XcafDocument& document, const TDF_Label& label, const Surroundings& around)
    {
        Product& product = productOf(document, label);
        if (product.bodies.empty())
            return;
        const std::string ofBody = product.bodies.size() == 1 ? product.bodies.front().name : std::string();
        const std::string name =
            bestName({around.occurrence, product.name, ofBody, around.above, tidyName(document.title)});
        CadPart part;
        part.name = siblings[around.owner].add(name);
        part.owner = around.owner;
        part.pose = poseOf(around.location * product.location);
        const std::string& bodyName = product.name.empty() ? name : product.name;
        for (std::size_t i = 0; i < product.bodies.size(); ++i) {
            addBody(part, product.bodies[i], product, around);
            if (part.bodies.back().name.empty())
                part.bodies.back().name = product.bodies.size() == 1 ? bodyName : fmt::format("{}.{}", bodyName, i + 1);
        }
        content.parts.push_back(std::move(part));
    }

    void addBody(CadPart& part, ProductBody& source, const Product& product, const Surroundings& around)
    {
        ColorText color = ColorInfo().bodyColor;
        // The last one that there is wins.
        for (const ColorText& candidate : {around.inherited, product.color, source.color, around.overriding}) {
            if (!candidate.empty())
                color = candidate;
        }
        std::map<unsigned, ColorText> faceColors = source.faceColors;
        std::erase_if(faceColors, [&color](const auto& entry) { return entry.second == color; });

        std::string& uri = source.uris[{color, faceColors}];
        if (uri.empty())
            uri = source.uris.size() == 1 ? source.uri : geometry.add(source.uri);
        part.bodies.push_back({source.name, uri, color, std::move(faceColors), source.shape});
    }

    Product& productOf(const XcafDocument& document, const TDF_Label& label)
    {
        const auto [entry, isNew] = products.try_emplace({&document, label.Tag()});
        Product& product = entry->second;
        if (!isNew)
            return product;

        product.name = nameOf(label);
        const TopoDS_Shape whole = XCAFDoc_ShapeTool::GetShape(label);
        const std::vector<TopoDS_Shape> found = bodyShapesOf(whole);
        // Geometry keeps the name that it has in the file, whatever that is: stations know it by this one.
        std::string name = rawNameOf(label);
        if (name.empty())
            name = document.title;
        for (std::size_t i = 0; i < found.size(); ++i) {
            ProductBody body;
            body.uri = geometry.add(found.size() == 1 ? name : fmt::format("{}.{}", name, i + 1));
            body.shape = found[i];
            product.bodies.push_back(std::move(body));
        }
        const Handle(XCAFDoc_ColorTool) colors = colorsOf(document);
        product.color = colorOf(colors, label);
        readSubShapes(colors, label, product);
        // Into the product's own coordinates, after the sub-shapes were compared where the document has them.
        product.location = whole.Location();
        for (ProductBody& body : product.bodies)
            body.shape.Move(product.location.Inverted());
        return product;
    }

    /// Puts all that there is into an assembly of the file's name.
    void gatherAll()
    {
        for (CadPart& part : content.parts)
            ++part.owner;
        CadPart head;
        head.name = tidyName(file.stem().string());
        head.isAssembly = true;
        content.parts.insert(content.parts.begin(), std::move(head));
    }

    const std::filesystem::path& file;
    GeometryNames geometry;
    std::map<std::pair<const XcafDocument*, int>, Product> products; // by the tag of the product's label
    std::map<std::uint32_t, SiblingNames> siblings;                  // by their owner
    XcafContent content;
};

} // namespace

XcafDocument::XcafDocument(std::string title) : title(std::move(title))
{
    XCAFApp_Application::GetApplication()->NewDocument("MDTV-XCAF", document);
}

XcafDocument::~XcafDocument()
{
    XCAFApp_Application::GetApplication()->Close(document);
}

XcafContent partsOf(const XcafDocument& document, const std::filesystem::path& file)
{
    return PartMaker(file).make(document);
}

} // namespace vrk::station
