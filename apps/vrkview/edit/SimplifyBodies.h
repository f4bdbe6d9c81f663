#pragma once

#include "edit/Change.h"

#include <string>
#include <vector>

namespace vrkview {

/// A mesh body and its file, and another file that it is drawn from instead.
struct ExchangedMesh {
    unsigned body = 0;
    std::string before;
    std::string after;
};

/// Bodies of STL files are drawn from coarser files. What hangs on them stays there.
class SimplifyBodies : public Change {
public:
    /// Bodies that are gone meanwhile, or have another file, are passed over.
    explicit SimplifyBodies(std::vector<ExchangedMesh> meshes);

    bool isNeeded() const override { return !meshes.empty(); }
    void apply() override;
    void revert() override;

private:
    std::vector<ExchangedMesh> meshes;
};

/// The bodies of STL files in these things, however deep, each with its file. Takes the model's lock shared.
std::vector<ExchangedMesh> meshesIn(const std::vector<unsigned>& things);

} // namespace vrkview
