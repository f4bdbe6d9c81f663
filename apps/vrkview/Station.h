#pragma once

#include <memory>
#include <string>
#include <vector>

namespace sdf {
class SdfNode;
}
namespace vrk::layout {
class Part;
class PointCloud;
} // namespace vrk::layout

namespace vrkview {

struct HiddenFace {
    unsigned body; // its id in the model
    unsigned face; // from 1
};

/// What is to be shown: things that are complete but do not stand in the model yet.
struct Station {
    std::string title;
    std::vector<std::shared_ptr<vrk::layout::Part>> parts;
    std::vector<std::shared_ptr<vrk::layout::PointCloud>> clouds;
    std::vector<std::shared_ptr<sdf::SdfNode>> frames;
    std::vector<HiddenFace> hiddenFaces;
    std::vector<unsigned> arrowedCurves; // ids of bodies that are wires or edges; an arrow at either end
};

} // namespace vrkview
