#include "StepFiles.h"

#include "platform/geometry/ColorText.h"

#include <IGESCAFControl_Writer.hxx>
#include <IGESControl_Controller.hxx>
#include <Interface_Static.hxx>
#include <Message.hxx>
#include <Message_Messenger.hxx>
#include <Quantity_Color.hxx>
#include <STEPCAFControl_Writer.hxx>
#include <TDataStd_Name.hxx>
#include <XCAFApp_Application.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_GraphNode.hxx>
#include <gp_Ax1.hxx>
#include <gp_Trsf.hxx>

#include <cmath>
#include <stdexcept>

namespace vrk::test {
namespace {

void setName(const TDF_Label& label, const std::string& name)
{
    TDataStd_Name::Set(label, TCollection_ExtendedString(name.c_str(), true));
}

Quantity_Color colorOf(const std::string& text)
{
    const rob::Colorf color = geometry::ParseColorText(text);
    return {color.r, color.g, color.b, Quantity_TOC_sRGB};
}

} // namespace

StepDocument::StepDocument()
{
    XCAFApp_Application::GetApplication()->NewDocument("MDTV-XCAF", document);
    shapes = XCAFDoc_DocumentTool::ShapeTool(document->Main());
    colors = XCAFDoc_DocumentTool::ColorTool(document->Main());
}

StepDocument::~StepDocument()
{
    XCAFApp_Application::GetApplication()->Close(document);
}

TDF_Label StepDocument::addProduct(const TopoDS_Shape& shape, const std::string& name)
{
    const TDF_Label label = shapes->AddShape(shape, false);
    setName(label, name);
    return label;
}

TDF_Label StepDocument::addAssembly(const std::string& name)
{
    const TDF_Label label = shapes->NewShape();
    setName(label, name);
    return label;
}

TDF_Label StepDocument::addComponent(const TDF_Label& assembly, const TDF_Label& product, const TopLoc_Location& place,
                                     const std::string& name)
{
    const TDF_Label component = shapes->AddComponent(assembly, product, place);
    setName(component, name);
    return component;
}

void StepDocument::setColor(const TDF_Label& label, const std::string& text)
{
    colors->SetColor(label, colorOf(text), XCAFDoc_ColorSurf);
}

void StepDocument::setSubShapeColor(const TDF_Label& product, const TopoDS_Shape& subShape, const std::string& text)
{
    colors->SetColor(shapes->AddSubShape(product, subShape), colorOf(text), XCAFDoc_ColorSurf);
}

void StepDocument::setOccurrenceColor(const TDF_LabelSequence& path, const std::string& text)
{
    Handle(XCAFDoc_GraphNode) occurrence;
    if (!shapes->SetSHUO(path, occurrence))
        throw std::runtime_error("the test's occurrence cannot be made");
    colors->SetColor(occurrence->Label(), colorOf(text), XCAFDoc_ColorSurf);
}

void StepDocument::write(const std::filesystem::path& file)
{
    write(file, nullptr);
}

void StepDocument::writeInPieces(const std::filesystem::path& file)
{
    write(file, "part_");
}

void StepDocument::write(const std::filesystem::path& file, const char* prefix)
{
    shapes->UpdateAssemblies();
    const Message_SequenceOfPrinters printers = Message::DefaultMessenger()->Printers();
    Message::DefaultMessenger()->ChangePrinters().Clear();
    STEPCAFControl_Writer writer;
    const bool written =
        writer.Transfer(document, STEPControl_AsIs, prefix) && writer.Write(file.c_str()) == IFSelect_RetDone;
    Message::DefaultMessenger()->ChangePrinters() = printers;
    if (!written)
        throw std::runtime_error("the test's STEP file cannot be written");
}

void StepDocument::writeIges(const std::filesystem::path& file, bool asSolids)
{
    shapes->UpdateAssemblies();
    const Message_SequenceOfPrinters printers = Message::DefaultMessenger()->Printers();
    Message::DefaultMessenger()->ChangePrinters().Clear();
    IGESControl_Controller::Init();
    Interface_Static::SetIVal("write.iges.brep.mode", asSolids ? 1 : 0);
    IGESCAFControl_Writer writer;
    const bool written = writer.Transfer(document) && writer.Write(file.c_str());
    Message::DefaultMessenger()->ChangePrinters() = printers;
    if (!written)
        throw std::runtime_error("the test's IGES file cannot be written");
}

TopLoc_Location moved(double x, double y, double z)
{
    gp_Trsf place;
    place.SetTranslation(gp_Vec(x, y, z));
    return TopLoc_Location(place);
}

TopLoc_Location turnedAndMoved(double x, double y, double z)
{
    gp_Trsf turn;
    turn.SetRotation(gp_Ax1(gp_Pnt(0, 0, 0), gp_Dir(0, 0, 1)), std::acos(-1) / 2);
    return moved(x, y, z) * TopLoc_Location(turn);
}

} // namespace vrk::test
