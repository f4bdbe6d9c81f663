#pragma once

#include "edit/Change.h"

#include "platform/task/Seam.h"

#include <memory>
#include <vector>

namespace vrk::task {
class DataItem;
class Path;
class Task;
} // namespace vrk::task

namespace vrkview {

/// The manufacturing shape with that id; null for any other. Takes the model's lock, shared.
std::shared_ptr<vrk::task::EdgeMfgShape> bandOf(unsigned id);
inline bool isBand(unsigned id)
{
    return bandOf(id) != nullptr;
}

/// Draws the band of the model, in place of one that is drawn. Nothing without a scene.
/// @throws what an earlier post throws.
void drawBand(unsigned id);

/// A band joins the station, in its first program or, where there is none, in a new one.
class AddBand : public Change {
public:
    /// @param edges  by their numbers, from 1, in the shape of the body.
    /// @throws std::invalid_argument  what `vrk::task::MakeSeam` refuses, or for a body without a CAD shape.
    AddBand(unsigned body, const std::vector<unsigned>& edges, const vrk::task::SeamOptions& options);

    unsigned getBand() const { return band->getId(); }
    void apply() override;
    void revert() override;

private:
    std::shared_ptr<vrk::task::EdgeMfgShape> band;
    std::shared_ptr<vrk::task::Task> program;
    bool isProgramNew = false;
};

/// A band leaves the station.
class RemoveBand : public Change {
public:
    explicit RemoveBand(unsigned band);

    bool isNeeded() const override { return program != nullptr; }
    void apply() override;
    void revert() override;

private:
    std::shared_ptr<vrk::task::Task> program;
    std::vector<std::shared_ptr<vrk::task::EdgeMfgShape>> before; // the bands of that program
    std::shared_ptr<vrk::task::EdgeMfgShape> band;
    std::vector<unsigned> hidden; // the list before
};

/// A path along a band joins the band's program, with targets in a work object on the part that has the edges.
class AddSeamPath : public Change {
public:
    /// @throws std::exception  what `vrk::task::MakeSeamPath` refuses.
    explicit AddSeamPath(unsigned band);

    bool isNeeded() const override { return path != nullptr; }
    void apply() override;
    void revert() override;

private:
    std::shared_ptr<vrk::task::Task> program;
    std::vector<std::shared_ptr<vrk::task::DataItem>> items; // a new work object among them, ahead of the targets
    std::shared_ptr<vrk::task::Path> path;
};

/// The edges that go on from these without a corner, for each of them, by their numbers in the shape of the body.
/// @throws as `vrk::task::TangentChain`.
std::vector<unsigned> tangentChainOf(unsigned body, const std::vector<unsigned>& edges);

} // namespace vrkview
