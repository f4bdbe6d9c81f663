#include "platform/station/import/StepReading.h"

#include "platform/station/import/CadNames.h"

#include <Interface_EntityIterator.hxx>
#include <Interface_Graph.hxx>
#include <Interface_InterfaceModel.hxx>
#include <Interface_Static.hxx>
#include <STEPConstruct_ExternRefs.hxx>
#include <StepBasic_Document.hxx>
#include <StepBasic_ExternalIdentificationAssignment.hxx>
#include <StepBasic_ExternalSource.hxx>
#include <StepRepr_MappedItem.hxx>
#include <StepRepr_NextAssemblyUsageOccurrence.hxx>
#include <StepRepr_ProductDefinitionShape.hxx>
#include <StepRepr_Representation.hxx>
#include <StepRepr_RepresentationItem.hxx>
#include <StepShape_Face.hxx>
#include <StepShape_FaceBasedSurfaceModel.hxx>
#include <StepShape_GeometricSet.hxx>
#include <StepShape_ShapeDefinitionRepresentation.hxx>
#include <StepShape_ShellBasedSurfaceModel.hxx>
#include <StepShape_SolidModel.hxx>
#include <StepVisual_AnnotationOccurrence.hxx>
#include <StepVisual_StyledItem.hxx>
#include <TCollection_HAsciiString.hxx>
#include <TopoDS_Iterator.hxx>
#include <TransferBRep.hxx>
#include <Transfer_TransientProcess.hxx>
#include <XCAFDoc_DataMapOfShapeLabel.hxx>
#include <XCAFDoc_ShapeTool.hxx>
#include <XSControl_TransferReader.hxx>
#include <XSControl_WorkSession.hxx>

#include <fmt/format.h>

#include <algorithm>
#include <fstream>
#include <string_view>

namespace vrk::station {
namespace {

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

/// Letters outside ASCII are UTF-8 by today's rule. Programs that know no rule write those of their own system.
void chooseLetters(const std::filesystem::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    std::string text(std::size_t(1) << 20, '\0');
    std::string rest; // the beginning of a letter that goes on in the next piece
    bool isUtf8 = true;
    while (isUtf8 && stream) {
        stream.read(text.data(), static_cast<std::streamsize>(text.size()));
        rest.append(text, 0, static_cast<std::size_t>(stream.gcount()));
        const std::size_t good = utf8Length(rest);
        isUtf8 = rest.size() - good < 4;
        rest.erase(0, good);
    }
    Interface_Static::SetCVal("read.step.codepage", isUtf8 && rest.empty() ? "UTF8" : "CP1252");
}

bool isEmpty(const TopoDS_Shape& shape)
{
    return shape.IsNull() || (shape.ShapeType() != TopAbs_VERTEX && !TopoDS_Iterator(shape).More());
}

/// What becomes a body, or a place for one.
bool isShape(const Handle(StepRepr_RepresentationItem) & item)
{
    return item->IsKind(STANDARD_TYPE(StepShape_SolidModel)) ||
           item->IsKind(STANDARD_TYPE(StepShape_ShellBasedSurfaceModel)) ||
           item->IsKind(STANDARD_TYPE(StepShape_FaceBasedSurfaceModel)) ||
           item->IsKind(STANDARD_TYPE(StepShape_GeometricSet)) || item->IsKind(STANDARD_TYPE(StepRepr_MappedItem));
}

bool holdsShapes(const Handle(StepRepr_Representation) & representation)
{
    for (int i = 1; i <= representation->NbItems(); ++i) {
        const Handle(StepRepr_RepresentationItem) item = representation->ItemsValue(i);
        if (!item.IsNull() && isShape(item))
            return true;
    }
    return false;
}

/// Texts, symbols and what else is drawn beside the shapes. Nothing of it is read but the colours of shapes.
bool isAnnotation(const Handle(Standard_Transient) & entity)
{
    return std::string_view(entity->DynamicType()->Name()).starts_with("StepVisual_") &&
           (!entity->IsKind(STANDARD_TYPE(StepVisual_StyledItem)) ||
            entity->IsKind(STANDARD_TYPE(StepVisual_AnnotationOccurrence)));
}

/// Empty where nothing is lost.
std::string lossOf(const char* what, std::size_t all, const std::vector<std::string>& lost)
{
    return lost.empty() ? std::string() : fmt::format("{} of {} {}: {}", lost.size(), all, what, listed(lost));
}

} // namespace

StepReading::StepReading(const std::filesystem::path& file) : file(file)
{
    checkEnds(file);
    reader.SetColorMode(true);
    reader.SetNameMode(true);
    reader.SetSHUOMode(true); // colours of single occurrences deep in an assembly
    reader.SetLayerMode(false);
    reader.SetPropsMode(false);
    reader.SetGDTMode(false);
    reader.SetMatMode(false);
    reader.SetViewMode(false);
    chooseLetters(file);
    if (reader.ReadFile(file.c_str()) != IFSelect_RetDone)
        throw ImportError(file, "the STEP file is damaged");
    checkGeometry();
    takeReferences();
}

/// Open CASCADE follows the references of a faulty point or curve unseen and crashes. Faults of other entities, such as
/// dates and approvals, are common and do no harm.
void StepReading::checkGeometry() const
{
    const Handle(Interface_InterfaceModel) model = reader.Reader().WS()->Model();
    for (int i = 1; i <= model->NbEntities(); ++i) {
        const Handle(Standard_Transient) entity = model->Value(i);
        if (model->IsErrorEntity(i) && entity->IsKind(STANDARD_TYPE(StepRepr_RepresentationItem)) &&
            !isAnnotation(entity))
            throw ImportError(file, fmt::format("the STEP file is damaged at {}", labelOf(entity)));
    }
}

/// Notes which products are in which files, and takes these names out of the model: Open CASCADE would read the files in its
/// own way, in a ring for ever, and without a word of those that are missing.
void StepReading::takeReferences()
{
    const Handle(XSControl_WorkSession) session = reader.Reader().WS();
    STEPConstruct_ExternRefs found(session);
    found.LoadExternRefs();
    for (int i = 1; i <= found.NbExternRefs(); ++i) {
        const char* const name = found.FileName(i);
        const Handle(StepBasic_ProductDefinition) product = found.ProdDef(i);
        if (name != nullptr && *name != '\0' && !product.IsNull())
            references.push_back({name, product});
    }
    const Handle(TCollection_HAsciiString) none = new TCollection_HAsciiString("");
    const Handle(Interface_InterfaceModel) model = session->Model();
    for (int i = 1; i <= model->NbEntities(); ++i) {
        const Handle(Standard_Transient) entity = model->Value(i);
        if (const auto document = Handle(StepBasic_Document)::DownCast(entity); !document.IsNull()) {
            document->SetId(none);
            document->SetName(none);
        }
        if (const auto id = Handle(StepBasic_ExternalIdentificationAssignment)::DownCast(entity); !id.IsNull()) {
            id->SetAssignedId(none);
            id->SetSource(nullptr);
        }
    }
}

bool StepReading::transfer(XcafDocument& document, const Progress& progress, double from, double to)
{
    const Handle(OcctProgress) transfer = new OcctProgress(progress, "transferring", from, to);
    const bool isTransferred = reader.Transfer(document.document, transfer->Start());
    transfer->rethrow();
    return isTransferred;
}

std::vector<StepReading::Elsewhere> StepReading::elsewhere() const
{
    std::vector<Elsewhere> found;
    const XCAFDoc_DataMapOfShapeLabel& labels = reader.GetShapeLabelMap();
    for (const Reference& reference : references) {
        TopoDS_Shape shape = resultOf(reference.product);
        TDF_Label label;
        if (isEmpty(shape) && !shape.IsNull() && labels.Find(shape, label) && !XCAFDoc_ShapeTool::IsAssembly(label))
            found.push_back({reference.file, label.Tag()});
    }
    return found;
}

std::vector<std::string> StepReading::losses()
{
    std::vector<std::string> lines;
    for (std::string line : {lostRoots(), lostFaces(), lostComponents()})
        if (!line.empty())
            lines.push_back(std::move(line));
    return lines;
}

std::string StepReading::lostRoots()
{
    std::vector<std::string> lost;
    const int roots = reader.NbRootsForTransfer();
    for (int i = 1; i <= roots; ++i) {
        const Handle(Standard_Transient) root = reader.ChangeReader().RootForTransfer(i);
        const TopoDS_Shape result = resultOf(root);
        if ((result.IsNull() || bodyShapesOf(result).empty()) && holdsShapes(root))
            lost.push_back(labelOf(root));
    }
    return lossOf("roots could not be transferred", static_cast<std::size_t>(roots), lost);
}

std::string StepReading::lostFaces() const
{
    std::vector<std::string> lost;
    std::size_t faces = 0;
    const Handle(Interface_InterfaceModel) model = reader.Reader().WS()->Model();
    const Handle(Transfer_TransientProcess) process = reader.Reader().WS()->TransferReader()->TransientProcess();
    for (int i = 1; i <= model->NbEntities(); ++i) {
        const Handle(Standard_Transient) face = model->Value(i);
        if (!face->IsKind(STANDARD_TYPE(StepShape_Face)) || process->MapIndex(face) == 0)
            continue; // or a face of what nobody wants, such as construction geometry
        ++faces;
        if (isEmpty(resultOf(face)))
            lost.push_back(labelOf(face));
    }
    return lossOf("faces could not be transferred", faces, lost);
}

/// Those of products that have a shape, here or in another file, but for which the file has no place.
std::string StepReading::lostComponents() const
{
    std::vector<std::string> lost;
    std::size_t components = 0;
    const Handle(Interface_InterfaceModel) model = reader.Reader().WS()->Model();
    for (int i = 1; i <= model->NbEntities(); ++i) {
        const auto component = Handle(StepRepr_NextAssemblyUsageOccurrence)::DownCast(model->Value(i));
        if (component.IsNull())
            continue;
        ++components;
        const Handle(StepBasic_ProductDefinition) product = component->RelatedProductDefinition();
        if (product.IsNull() || !resultOf(component).IsNull())
            continue;
        const auto other = std::ranges::find(references, product, &Reference::product);
        if (other != references.end())
            lost.push_back(fmt::format("{} ({})", labelOf(component), tidyName(other->file)));
        else if (holdsShapes(product))
            lost.push_back(labelOf(component));
    }
    return lossOf("components have no place in it", components, lost);
}

/// Of a product these are in the representations of its shape.
bool StepReading::holdsShapes(const Handle(Standard_Transient) & root) const
{
    if (const auto representation = Handle(StepRepr_Representation)::DownCast(root); !representation.IsNull())
        return station::holdsShapes(representation);
    const Interface_Graph& graph = reader.Reader().WS()->Graph();
    Interface_EntityIterator shapes = graph.Sharings(root);
    for (shapes.Start(); shapes.More(); shapes.Next()) {
        if (!shapes.Value()->IsKind(STANDARD_TYPE(StepRepr_ProductDefinitionShape)))
            continue;
        Interface_EntityIterator definitions = graph.Sharings(shapes.Value());
        for (definitions.Start(); definitions.More(); definitions.Next()) {
            const auto definition = Handle(StepShape_ShapeDefinitionRepresentation)::DownCast(definitions.Value());
            if (!definition.IsNull() && !definition->UsedRepresentation().IsNull() &&
                station::holdsShapes(definition->UsedRepresentation()))
                return true;
        }
    }
    return false;
}

TopoDS_Shape StepReading::resultOf(const Handle(Standard_Transient) & entity) const
{
    return TransferBRep::ShapeResult(reader.Reader().WS()->TransferReader()->TransientProcess(), entity);
}

std::string StepReading::labelOf(const Handle(Standard_Transient) & entity) const
{
    return oneLine(reader.Reader().WS()->Model()->StringLabel(entity)->ToCString());
}

} // namespace vrk::station
