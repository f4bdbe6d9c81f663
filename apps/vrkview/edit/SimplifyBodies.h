#pragma once

#include "edit/Change.h"

#include "platform/geometry/LengthUnit.h"

#include <string>
#include <vector>

namespace vrkview {

/// A mesh body and its file, and another file that it is drawn from instead.
struct ExchangedMesh {
    unsigned body = 0;
    std::string before;
    std::string after;
    // Where that one was made from another file
    std::string source{};
    vrk::LengthUnit unit = vrk::LengthUnit::Millimetre;
};

/// Bodies that are meshes are drawn from other files, STL or PLY. What hangs on them stays there.
class SimplifyBodies : public Change {
public:
    /// Bodies that are gone meanwhile, or have another file, are passed over.
    /// @param text  of the step, with %1 in place of their names.
    SimplifyBodies(std::vector<ExchangedMesh> meshes, const QString& text);

    bool isNeeded() const override { return !meshes.empty(); }
    void apply() override;
    void revert() override;

private:
    std::vector<ExchangedMesh> meshes;
};

/// The bodies of STL files in these things, however deep, each with its file. Takes the model's lock shared.
std::vector<ExchangedMesh> stlMeshesIn(const std::vector<unsigned>& things);
/// The same of all that are meshes.
std::vector<ExchangedMesh> meshesIn(const std::vector<unsigned>& things);

} // namespace vrkview
