#pragma once

#include "edit/Change.h"

#include "platform/layout/Dimension.h"

#include <memory>
#include <vector>

namespace vrkview {

using DimensionPointer = std::shared_ptr<const vrk::layout::Dimension>;

/// The dimensions of the station, in its order. Takes the model's lock shared.
std::vector<DimensionPointer> dimensionsOfStation();

/// The station has other dimensions than before. What draws them compares the model's list with what it shows.
class EditDimensions : public Change {
public:
    /// @param text  as of Change.
    EditDimensions(const QString& text, std::vector<DimensionPointer> after);

    bool isNeeded() const override { return after != before; }
    void apply() override { put(after); }
    void revert() override { put(before); }

private:
    static void put(const std::vector<DimensionPointer>& dimensions);

    std::vector<DimensionPointer> before, after;
};

/// One more, at the end.
/// @throws std::invalid_argument as `Layout::addDimension`.
std::unique_ptr<Change> addDimension(const DimensionPointer& dimension);
/// Those of them that there are.
std::unique_ptr<Change> removeDimensions(const std::vector<DimensionPointer>& dimensions);
/// The same dimension under another name.
std::unique_ptr<Change> renameDimension(const DimensionPointer& dimension, const std::string& name);

} // namespace vrkview
