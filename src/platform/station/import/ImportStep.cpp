#include "platform/station/import/CadParts.h"

#include "platform/geometry/BodyColorTool.h"
#include "platform/geometry/ColorText.h"
#include "platform/station/import/OcctProgress.h"

#include <Interface_InterfaceModel.hxx>
#include <Quantity_Color.hxx>
#include <STEPCAFControl_Reader.hxx>
#include <StepRepr_RepresentationItem.hxx>
#include <TCollection_HAsciiString.hxx>
#include <TDF_LabelSequence.hxx>
#include <TDataStd_Name.hxx>
#include <TDocStd_Document.hxx>
#include <TopExp.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <XCAFApp_Application.hxx>
#include <XCAFDoc_ColorTool.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_GraphNode.hxx>
#include <XCAFDoc_ShapeTool.hxx>
#include <XSControl_WorkSession.hxx>

#include <gp_Quaternion.hxx>
#include <gp_Trsf.hxx>

#include <fmt/format.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <optional>
#include <set>

namespace vrk::station {
namespace {

constexpr double readShare = 0.25; // of a whole import

using ColorText = std::string; // empty where there is none

/// One body of a product with the colours that the file gives to it, not those that it takes from its surroundings.
struct ProductBody {
    std::string name;
    std::string uri;
    TopoDS_Shape shape;
    ColorText color;
    std::map<unsigned, ColorText> faceColors;
    /// The geometry names of this body by the colours that it was seen with: a shared geometry has shared colours.
    std::map<std::pair<ColorText, std::map<unsigned, ColorText>>, std::string> uris;
};

struct Product {
    ColorText color;
    TopLoc_Location location; // of the shape itself; it goes into the pose
    std::vector<ProductBody> bodies;
};

/// What an occurrence takes from the assemblies around it.
struct Surroundings {
    TopLoc_Location location;
    ColorText inherited;      // of an assembly: for what has no colour of its own
    ColorText overriding;     // of an occurrence: in place of a product's own
    std::string name;         // of the nearest occurrence
    TDF_LabelSequence usages; // the occurrences from the outermost to the nearest
};

std::string nameOf(const TDF_Label& label)
{
    Handle(TDataStd_Name) name;
    if (!label.FindAttribute(TDataStd_Name::GetID(), name))
        return {};
    // Converted to UTF-8; control characters have no place in a name that is shown.
    return oneLine(TCollection_AsciiString(name->Get()).ToCString());
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

/// Walks a document and makes the parts of it.
class DocumentReader {
public:
    DocumentReader(const std::filesystem::path& file, const Handle(TDocStd_Document) & document)
        : file(file), shapes(XCAFDoc_DocumentTool::ShapeTool(document->Main())),
          colors(XCAFDoc_DocumentTool::ColorTool(document->Main()))
    {
    }

    CadParts read()
    {
        TDF_LabelSequence roots;
        shapes->GetFreeShapes(roots);
        for (const TDF_Label& root : roots)
            visit(root, {});
        return std::move(parts);
    }

private:
    void visit(const TDF_Label& label, Surroundings around)
    {
        TDF_Label product = label;
        if (XCAFDoc_ShapeTool::IsReference(label)) {
            XCAFDoc_ShapeTool::GetReferredShape(label, product);
            around.location = around.location * XCAFDoc_ShapeTool::GetLocation(label);
            around.name = nameOf(label);
            around.usages.Append(label);
            if (const ColorText color = usageColor(label, around.usages); !color.empty())
                around.overriding = color;
        }
        if (!XCAFDoc_ShapeTool::IsAssembly(product)) {
            addPart(product, around);
            return;
        }
        if (const ColorText color = colorOf(colors, product); !color.empty())
            around.inherited = color;
        TDF_LabelSequence components;
        XCAFDoc_ShapeTool::GetComponents(product, components);
        for (const TDF_Label& component : components)
            visit(component, around);
    }

    /// The colour of an occurrence: the one given to it on this path through the assemblies, else wherever it occurs.
    ColorText usageColor(const TDF_Label& label, const TDF_LabelSequence& usages) const
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

    void addPart(const TDF_Label& label, const Surroundings& around)
    {
        Product& product = productOf(label);
        if (product.bodies.empty())
            return;
        const std::string productName = nameOf(label);
        const std::string& partName = around.name.empty() ? productName : around.name;
        CadPart part;
        part.name = partName.empty() ? file.stem().string() : partName;
        part.pose = poseOf(around.location * product.location);
        for (ProductBody& body : product.bodies)
            addBody(part, body, product, around);
        parts.push_back(std::move(part));
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
            uri = source.uris.size() == 1 ? source.uri : uniqueUri(source.uri);
        part.bodies.push_back({source.name, uri, color, std::move(faceColors), source.shape});
    }

    Product& productOf(const TDF_Label& label)
    {
        const auto [entry, isNew] = products.try_emplace(label.Tag());
        Product& product = entry->second;
        if (!isNew)
            return product;

        const TopoDS_Shape whole = XCAFDoc_ShapeTool::GetShape(label);
        const std::vector<TopoDS_Shape> found = bodyShapesOf(whole);
        std::string name = nameOf(label);
        if (name.empty())
            name = file.stem().string();
        for (std::size_t i = 0; i < found.size(); ++i) {
            ProductBody body;
            body.name = found.size() == 1 ? name : fmt::format("{}.{}", name, i + 1);
            body.uri = uniqueUri(body.name);
            body.shape = found[i];
            product.bodies.push_back(std::move(body));
        }
        product.color = colorOf(colors, label);
        readSubShapes(label, product);
        // Into the product's own coordinates, after the sub-shapes were compared where the document has them.
        product.location = whole.Location();
        for (ProductBody& body : product.bodies)
            body.shape.Move(product.location.Inverted());
        return product;
    }

    /// Names and colours of solids, shells and faces; the larger ones first, so that the smaller ones win.
    void readSubShapes(const TDF_Label& label, Product& product) const
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

    /// "<file>#<name>", told apart by a number where two things have one name, or where one name is the other with "_" and
    /// digits behind it: so the view names the meshes of bodies with hidden faces.
    std::string uniqueUri(std::string name)
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

    static rob::Posed poseOf(const TopLoc_Location& location)
    {
        const gp_Trsf trsf = location.Transformation();
        const gp_XYZ& p = trsf.TranslationPart();
        const gp_Quaternion q = trsf.GetRotation();
        return {rob::Posd(p.X(), p.Y(), p.Z()), rob::Rotationd(q.W(), q.X(), q.Y(), q.Z()).normalized()};
    }

    const std::filesystem::path& file;
    Handle(XCAFDoc_ShapeTool) shapes;
    Handle(XCAFDoc_ColorTool) colors;
    std::map<int, Product> products; // by the tag of the product's label
    std::set<std::string> taken;     // geometry names
    std::set<std::string> stems;     // what they are without the "_" and digits that they end with
    CadParts parts;
};

/// A document of the one application, which must be closed to be freed.
class Document {
public:
    Document() { XCAFApp_Application::GetApplication()->NewDocument("MDTV-XCAF", document); }
    ~Document() { XCAFApp_Application::GetApplication()->Close(document); }
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    Handle(TDocStd_Document) document;
};

/// The reader takes what it can of a damaged file without a word, so the two ends of the file are looked at first.
void checkEnds(const std::filesystem::path& file)
{
    constexpr std::streamoff window = 4096; // white space and comments may stand around the two words
    std::ifstream stream(file, std::ios::binary);
    std::string text(window, '\0');
    stream.read(text.data(), window);
    if (text.find("ISO-10303-21;") == std::string::npos)
        throw ImportError(file, "not a STEP file");

    stream.clear();
    const auto size = static_cast<std::streamoff>(std::filesystem::file_size(file));
    stream.seekg(std::max<std::streamoff>(0, size - window));
    text.assign(window, '\0');
    stream.read(text.data(), window);
    if (text.find("END-ISO-10303-21;") == std::string::npos)
        throw ImportError(file, "the STEP file is cut short");
}

/// Open CASCADE follows the references of a faulty point or curve unseen and crashes. Faults of other entities, such as
/// dates and approvals, are common and do no harm.
void checkGeometry(const STEPCAFControl_Reader& reader, const std::filesystem::path& file)
{
    const Handle(Interface_InterfaceModel) model = reader.Reader().WS()->Model();
    for (int i = 1; i <= model->NbEntities(); ++i) {
        if (model->IsErrorEntity(i) && model->Value(i)->IsKind(STANDARD_TYPE(StepRepr_RepresentationItem)))
            throw ImportError(file, fmt::format("the STEP file is damaged at {}",
                                                oneLine(model->StringLabel(model->Value(i))->ToCString())));
    }
}

} // namespace

CadParts readStep(const std::filesystem::path& file, const Progress& progress)
{
    checkEnds(file);
    report(progress, "reading", 0);
    STEPCAFControl_Reader reader;
    reader.SetColorMode(true);
    reader.SetNameMode(true);
    reader.SetSHUOMode(true); // colours of single occurrences deep in an assembly
    reader.SetLayerMode(false);
    reader.SetPropsMode(false);
    reader.SetGDTMode(false);
    reader.SetMatMode(false);
    reader.SetViewMode(false);
    if (reader.ReadFile(file.c_str()) != IFSelect_RetDone)
        throw ImportError(file, "the STEP file is damaged");
    checkGeometry(reader, file);

    report(progress, "transferring", readShare);
    Document document;
    const Handle(OcctProgress) transfer = new OcctProgress(progress, "transferring", readShare, meshingStart);
    const bool isTransferred = reader.Transfer(document.document, transfer->Start());
    transfer->rethrow();
    if (!isTransferred)
        throw ImportError(file, "the STEP file holds no geometry");
    CadParts parts = DocumentReader(file, document.document).read();
    if (parts.empty())
        throw ImportError(file, "the STEP file holds no geometry");
    return parts;
}

} // namespace vrk::station
