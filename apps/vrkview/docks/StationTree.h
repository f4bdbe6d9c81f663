#pragma once

#include "visual/VisualType.h"

#include <string>
#include <unordered_map>
#include <vector>

namespace vrkview {

/// The things of the station as they hang on one another in the view: what is carried stands below what carries it, and
/// what hangs on nothing stands at the top. Beside each other they stand in the model's order.
///
/// It is a picture of one moment: take another one after things were added or removed. Any thread may read it.
class StationTree {
public:
    static constexpr int none = -1;

    struct Row {
        unsigned id = 0;
        vrk::VisualType kind = vrk::VisualType::None; // of a band
        std::string name;
        int parent = none;         // always an earlier row
        int position = 0;          // among the children of its parent
        int end = 0;               // the rows from the next one up to this are below it
        bool followsParent = true; // is shown and hidden with it
        std::vector<int> children;
    };

    /// An empty station.
    StationTree() = default;
    /// @param rows  each after its parent, with what is below it next to it; position, end and children are filled here.
    explicit StationTree(std::vector<Row> rows);
    /// Of the present model and scene. Takes the model's lock shared. Render thread.
    static StationTree OfScene();

    const std::vector<Row>& getRows() const { return rows; }
    const std::vector<int>& getRoots() const { return roots; }
    /// The row of that id, or `none`.
    int find(unsigned id) const;

private:
    std::vector<Row> rows;
    std::vector<int> roots;
    std::unordered_map<unsigned, int> rowOfId;
};

} // namespace vrkview
