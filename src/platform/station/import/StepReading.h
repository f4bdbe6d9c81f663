#pragma once

#include "platform/station/import/OcctProgress.h"
#include "platform/station/import/XcafParts.h"

#include <STEPCAFControl_Reader.hxx>
#include <StepBasic_ProductDefinition.hxx>
#include <TopoDS_Shape.hxx>

#include <string>
#include <vector>

/// Not installed.
namespace vrk::station {

/// One STEP file on its way into a document, without the other files that it refers to.
class StepReading {
public:
    /// A product that is in another file.
    struct Elsewhere {
        std::string file;
        int product = 0; // the tag of its label in the document
    };

    /// Reads the file. @throws ImportError where it is damaged.
    explicit StepReading(const std::filesystem::path& file);

    /// Transfers what there is into an empty document. @return whether it is anything.
    bool transfer(XcafDocument& document, const Progress& progress, double from, double to);
    /// Once it is transferred: what is of other files, and of no shape here.
    std::vector<Elsewhere> elsewhere() const;
    /// Once it is transferred: the shapes of the file that it lost, a line for each kind.
    std::vector<std::string> losses();

private:
    struct Reference {
        std::string file;
        Handle(StepBasic_ProductDefinition) product;
    };

    void checkGeometry() const;
    void takeReferences();
    bool holdsShapes(const Handle(Standard_Transient) & root) const;
    TopoDS_Shape resultOf(const Handle(Standard_Transient) & entity) const;
    std::string labelOf(const Handle(Standard_Transient) & entity) const;
    std::string lostRoots();
    std::string lostFaces() const;
    std::string lostComponents() const;

    const std::filesystem::path& file;
    STEPCAFControl_Reader reader;
    std::vector<Reference> references;
};

} // namespace vrk::station
