#include "platform/station/import/CadNames.h"
#include "platform/station/import/OcctProgress.h"
#include "platform/station/import/XcafParts.h"

#include <BRepBndLib.hxx>
#include <BRepBuilderAPI_Sewing.hxx>
#include <BRep_Builder.hxx>
#include <Bnd_Box.hxx>
#include <IGESCAFControl_Reader.hxx>
#include <IGESData_IGESEntity.hxx>
#include <IGESData_IGESModel.hxx>
#include <Quantity_Color.hxx>
#include <TCollection_HAsciiString.hxx>
#include <TDF_LabelSequence.hxx>
#include <TDataStd_Name.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS_Compound.hxx>
#include <TransferBRep.hxx>
#include <Transfer_TransientProcess.hxx>
#include <XCAFDoc_ColorTool.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_ShapeTool.hxx>
#include <XSControl_TransferReader.hxx>
#include <XSControl_WorkSession.hxx>

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <fstream>

namespace vrk::station {
namespace {

constexpr double readShare = 0.25; // of a whole import
constexpr std::size_t sectionColumn = 72;

/// Each line says in its 73rd column of which section it is: the first begins the file, the terminate section ends it.
void checkEnds(const std::filesystem::path& file)
{
    constexpr std::streamoff window = 400;
    std::ifstream stream(file, std::ios::binary);
    std::string first;
    std::getline(stream, first);
    if (first.size() <= sectionColumn || first[sectionColumn] != 'S')
        throw ImportError(file, "not an IGES file");
    stream.clear();
    const auto size = static_cast<std::streamoff>(std::filesystem::file_size(file));
    stream.seekg(std::max<std::streamoff>(0, size - window));
    std::string last;
    for (std::string line; std::getline(stream, line);)
        if (line.find_first_not_of(" \r") != std::string::npos)
            last = line;
    if (last.size() <= sectionColumn || last[sectionColumn] != 'T')
        throw ImportError(file, "the IGES file is cut short");
}

/// How far apart edges may lie that are one: a small part of the whole, as the files have lengths of few digits.
double gapOf(const TopoDS_Shape& shape)
{
    Bnd_Box box;
    BRepBndLib::Add(shape, box);
    if (box.IsVoid() || box.IsOpen())
        return 1e-4;
    return std::clamp(box.CornerMin().Distance(box.CornerMax()) * 1e-5, 1e-4, 0.01);
}

bool findColor(const Handle(XCAFDoc_ColorTool) & colors, const TopoDS_Shape& shape, Quantity_Color& color)
{
    return colors->GetColor(shape, XCAFDoc_ColorSurf, color) || colors->GetColor(shape, XCAFDoc_ColorGen, color);
}

/// Loose faces of a file become shells where they share edges.
class Sewn {
public:
    Sewn(const Handle(TDocStd_Document) & from, const Handle(TDocStd_Document) & into)
        : colors(XCAFDoc_DocumentTool::ColorTool(from->Main())), shapes(XCAFDoc_DocumentTool::ShapeTool(from->Main())),
          newColors(XCAFDoc_DocumentTool::ColorTool(into->Main())),
          newShapes(XCAFDoc_DocumentTool::ShapeTool(into->Main()))
    {
    }

    /// Faces, curves and points that stand alone are one product, which is called as the file; others are their own.
    void fill()
    {
        TDF_LabelSequence roots;
        shapes->GetFreeShapes(roots);
        std::vector<TopoDS_Shape> alone;
        for (const TDF_Label& root : roots) {
            const TopoDS_Shape shape = XCAFDoc_ShapeTool::GetShape(root);
            if (shape.ShapeType() >= TopAbs_FACE)
                alone.push_back(shape);
            else
                add({shape}, root);
        }
        if (!alone.empty())
            add(alone, {});
    }

private:
    void add(const std::vector<TopoDS_Shape>& pieces, const TDF_Label& root);
    void paint(const std::vector<TopoDS_Shape>& pieces, const TDF_Label& product, const BRepBuilderAPI_Sewing& sewing);

    Handle(XCAFDoc_ColorTool) colors;
    Handle(XCAFDoc_ShapeTool) shapes;
    Handle(XCAFDoc_ColorTool) newColors;
    Handle(XCAFDoc_ShapeTool) newShapes;
};

/// @param root  gives its name; null for none.
void Sewn::add(const std::vector<TopoDS_Shape>& pieces, const TDF_Label& root)
{
    TopoDS_Compound whole;
    const BRep_Builder builder;
    builder.MakeCompound(whole);
    for (const TopoDS_Shape& piece : pieces)
        builder.Add(whole, piece);
    BRepBuilderAPI_Sewing sewing(gapOf(whole));
    TopoDS_Compound product;
    builder.MakeCompound(product);
    bool anyLoose = false;
    for (TopExp_Explorer face(whole, TopAbs_FACE, TopAbs_SHELL); face.More(); face.Next(), anyLoose = true)
        sewing.Add(face.Current());
    if (anyLoose) {
        sewing.Perform();
        if (!sewing.SewedShape().IsNull())
            builder.Add(product, sewing.SewedShape());
    }
    for (const TopoDS_Shape& body : bodyShapesOf(whole))
        if (body.ShapeType() != TopAbs_COMPOUND) // which is that of the loose faces
            builder.Add(product, body);

    const TDF_Label label = newShapes->AddShape(product, false);
    Handle(TDataStd_Name) name;
    TDataStd_Name::Set(label, !root.IsNull() && root.FindAttribute(TDataStd_Name::GetID(), name)
                                  ? name->Get()
                                  : TCollection_ExtendedString());
    paint(pieces, label, sewing);
}

void Sewn::paint(const std::vector<TopoDS_Shape>& pieces, const TDF_Label& product, const BRepBuilderAPI_Sewing& sewing)
{
    constexpr std::array<TopAbs_ShapeEnum, 4> kinds{TopAbs_COMPOUND, TopAbs_SOLID, TopAbs_SHELL, TopAbs_FACE};
    for (const TopoDS_Shape& piece : pieces) {
        for (const TopAbs_ShapeEnum kind : kinds) {
            for (TopExp_Explorer part(piece, kind); part.More(); part.Next()) {
                Quantity_Color color;
                if (!findColor(colors, part.Current(), color))
                    continue;
                for (TopExp_Explorer face(part.Current(), TopAbs_FACE); face.More(); face.Next()) {
                    const TopoDS_Shape now = sewing.IsModifiedSubShape(face.Current())
                                                 ? sewing.ModifiedSubShape(face.Current())
                                                 : face.Current();
                    newColors->SetColor(newShapes->AddSubShape(product, now), color, XCAFDoc_ColorSurf);
                }
            }
        }
    }
}

/// Curves, surfaces and solids that became nothing; what else a file has, such as views and texts, is no shape.
std::string lossOf(IGESCAFControl_Reader& reader)
{
    constexpr int lastShape = 199; // of the numbers of types
    std::vector<std::string> lost;
    std::size_t all = 0;
    const Handle(Transfer_TransientProcess) process = reader.WS()->TransferReader()->TransientProcess();
    for (int i = 1; i <= reader.NbRootsForTransfer(); ++i) {
        const auto root = Handle(IGESData_IGESEntity)::DownCast(reader.RootForTransfer(i));
        if (root.IsNull() || root->TypeNumber() < 100 || root->TypeNumber() > lastShape)
            continue;
        ++all;
        const TopoDS_Shape shape = TransferBRep::ShapeResult(process, root);
        if (shape.IsNull() || bodyShapesOf(shape).empty())
            lost.push_back(oneLine(reader.WS()->Model()->StringLabel(root)->ToCString()));
    }
    return lost.empty() ? std::string()
                        : fmt::format("{} of {} roots could not be transferred: {}", lost.size(), all, listed(lost));
}

} // namespace

CadContent readIges(const std::filesystem::path& file, const Progress& progress)
{
    checkEnds(file);
    report(progress, "reading", 0);
    IGESCAFControl_Reader reader;
    reader.SetColorMode(true);
    reader.SetNameMode(true);
    reader.SetLayerMode(false);
    if (reader.ReadFile(file.c_str()) != IFSelect_RetDone)
        throw ImportError(file, "the IGES file is damaged");

    report(progress, "transferring", readShare);
    const XcafDocument asWritten(file.stem().string());
    Handle(TDocStd_Document) target = asWritten.document;
    const Handle(OcctProgress) transfer = new OcctProgress(progress, "transferring", readShare, meshingStart);
    const bool isTransferred = reader.Transfer(target, transfer->Start());
    transfer->rethrow();
    CadContent content;
    if (isTransferred) {
        const XcafDocument document(file.stem().string());
        Sewn(asWritten.document, document.document).fill();
        content.parts = partsOf(document, file).parts;
        if (std::string loss = lossOf(reader); !loss.empty())
            content.notes.push_back(std::move(loss));
    }
    if (content.parts.empty())
        throw ImportError(file, content.notes.empty() ? "the IGES file holds no shapes"
                                                      : "nothing of it can be shown: " + listed(content.notes));
    return content;
}

} // namespace vrk::station
