#pragma once

#include "edit/EditDimensions.h"
#include "measure/MeasuredThings.h"
#include "measure/NearestPlaces.h"

#include "platform/measure/Measurement.h"
#include "preview/annotation/DimensionsVisual.h"

#include <boost/signals2/signal.hpp>

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace vrkview {

/// The dimensions of the station as they are drawn, with their values: they follow the things that they measure.
///
/// What did not move is not measured again. How near bodies come to each other is measured beside the frames once they are
/// at rest; until then the old value is shown as such. Dimensions of things that are hidden are not drawn.
///
/// Thread: the application's, which is the render thread.
class StationDimensions {
public:
    /// Needs a started library. One for the process, as the station is.
    static StationDimensions& Get();

    /// What is known of one.
    struct Entry {
        DimensionPointer dimension;
        std::optional<vrk::measure::Measurement>
            measured;            ///< empty while it is not known, and where there is a failure
        std::string failure;     ///< why it cannot be measured, for the user
        bool isOutdated = false; ///< something moved since
        bool isSelected = false;
        bool isHidden = false; ///< with what it measures

        /// "100.03 mm (x 60.00, y 80.02, z 0.00)", or why there is no value.
        std::string text() const;
    };

    /// Takes over what the station has and where its things are. Call it before each frame, after the scene has worked off
    /// its posts; without dimensions it costs nothing.
    void update();
    /// The same, and waits until everything is measured: for pictures without a window.
    void updateWhole();
    /// How many pixels of the picture the user sees as one, see `DimensionsVisual`. 1 at first.
    void setPixelRatio(double ratio);
    const std::vector<Entry>& getEntries() const { return entries; }
    const NearestPlaces& getNearest() const { return nearest; }
    /// What is measured beside the frames has no value then, until something that it measures moves.
    void giveUpNearest();

    /// Those of them that there are, in place of what was selected.
    void select(const std::vector<DimensionPointer>& wanted);
    std::vector<DimensionPointer> getSelected() const;
    /// Null for none.
    void setHovered(const DimensionPointer& dimension);
    /// Whose text the last picture has there; null for none.
    /// @param x  device pixels, as `y`.
    DimensionPointer textAt(double x, double y) const;

    /// There are others, other values, or others are selected.
    boost::signals2::signal<void()> changed;

private:
    using Pose = vrk::rob::Posed;
    struct Object {
        Pose pose;
        const void* content = nullptr; // what its shape is of
        bool isVisible = true;

        bool isSame(const Object& o) const { return pose == o.pose && content == o.content; }
    };

    StationDimensions();
    bool takeList();
    const Object& objectOf(unsigned id);
    void follow(std::size_t index);
    void measure(std::size_t index);
    void takeAnswers();
    void draw(std::size_t index);
    void look(std::size_t index);

    std::vector<Entry> entries;
    std::vector<std::vector<Object>> measuredAt; // of each entry, where its ends were when it was last measured
    DimensionPointer hovered;
    std::unordered_map<unsigned, Object> objects;    // of this update
    ShapePieces pieces;                              // of this update
    vrk::visual::DimensionsVisual* visual = nullptr; // the world's; made with the first dimension
    NearestPlaces nearest;
    double pixelRatio = 1;
    bool isChanged = false; // something that is to be told
};

} // namespace vrkview
