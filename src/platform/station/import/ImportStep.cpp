#include "platform/station/import/CadNames.h"
#include "platform/station/import/OcctProgress.h"
#include "platform/station/import/XcafParts.h"

#include <Interface_InterfaceModel.hxx>
#include <Interface_Static.hxx>
#include <STEPCAFControl_Reader.hxx>
#include <StepRepr_RepresentationItem.hxx>
#include <TCollection_HAsciiString.hxx>
#include <XSControl_WorkSession.hxx>

#include <fmt/format.h>

#include <algorithm>
#include <fstream>

namespace vrk::station {
namespace {

constexpr double readShare = 0.25; // of a whole import

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

CadContent readStep(const std::filesystem::path& file, const Progress& progress)
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
    chooseLetters(file);
    if (reader.ReadFile(file.c_str()) != IFSelect_RetDone)
        throw ImportError(file, "the STEP file is damaged");
    checkGeometry(reader, file);

    report(progress, "transferring", readShare);
    const XcafDocument document(file.stem().string());
    const Handle(OcctProgress) transfer = new OcctProgress(progress, "transferring", readShare, meshingStart);
    Handle(TDocStd_Document) target = document.document;
    const bool isTransferred = reader.Transfer(target, transfer->Start());
    transfer->rethrow();
    if (!isTransferred)
        throw ImportError(file, "the STEP file holds no geometry");
    CadContent content;
    content.parts = partsOf(document, file).parts;
    if (content.parts.empty())
        throw ImportError(file, "the STEP file holds no geometry");
    return content;
}

} // namespace vrk::station
