#pragma once

#include "platform/layout/Layout.h"
#include "platform/program/Program.h"
#include "platform/station/SimplifyMeshes.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vrkview {

struct HiddenFace {
    unsigned body; // its id in the model
    unsigned face; // from 1
};

/// What is to be shown: things that are complete but do not stand in the model yet.
struct Station {
    std::string title;
    std::optional<vrk::layout::StationContent> whole;               // what a station file holds; the rest joins it
    std::vector<std::shared_ptr<vrk::layout::Assembly>> assemblies; // with what is in them
    std::vector<std::shared_ptr<vrk::layout::Part>> parts;
    std::vector<std::shared_ptr<vrk::layout::Mechanism>> mechanisms;
    std::vector<std::shared_ptr<vrk::layout::PointCloud>> clouds;
    std::vector<std::shared_ptr<vrk::layout::Frame>> frames;
    std::vector<vrk::program::Program> programs; // run by the station's first robot, found when they are entered
    // Made of the programs when these are first entered; taking the step back and making it again enters the same objects.
    mutable std::vector<std::shared_ptr<vrk::task::Task>> tasks;
    mutable std::vector<std::string> summaries; // of these, in their order: "weld: 7 moves, 7 placed; 9 targets"
    std::vector<vrk::station::SimplifiedMesh> simplified; // what became of meshes that were to be coarser
    std::vector<std::string> failures; // of files that could not be taken in, beside those that could: a line each
    std::vector<std::string> notes;    // what is missing of files that could: a line each, with the file's name
    std::vector<HiddenFace> hiddenFaces;
    std::vector<unsigned> arrowedCurves; // ids of bodies that are wires or edges; an arrow at either end
};

} // namespace vrkview
