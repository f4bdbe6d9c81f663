#pragma once

#include <memory>
#include <string>
#include <vector>

namespace vrk::layout {
class Part;
}

namespace vrkview {

struct HiddenFace {
    unsigned body; // its id in the model
    unsigned face; // from 1
};

/// What is to be shown: parts that are complete but do not stand in the model yet.
struct Station {
    std::string title;
    std::vector<std::shared_ptr<vrk::layout::Part>> parts;
    std::vector<HiddenFace> hiddenFaces;
};

} // namespace vrkview
