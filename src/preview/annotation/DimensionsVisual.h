#pragma once

#include "visual/Visual.h"

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vrk::visual {

class LabelBatch;
class SlotBatch;

/// One dimension as it is drawn. Places are in the frame of the visual's parent, in model units.
struct DimensionDrawing {
    enum class Look {
        Plain,
        Hovered,
        Selected,
        Outdated, ///< what it tells was so before something moved
    };

    std::vector<std::array<rob::Posf, 2>> lines;
    std::vector<rob::Posf> marks; ///< round ones, at the ends of what is measured
    std::string text;             ///< UTF-8; lines end with "\n"
    rob::Posf textPlace;          ///< the middle of the text
    Look look = Look::Plain;
};

/// Any number of dimensions with their numbers: all lines are one batch, all texts are another. Lines are seen faintly through
/// what lies before them; texts always face the viewer, have one size on the screen and lie over the bodies. A text that
/// would cover another is left out: what is hovered or selected comes first, then what is nearer. They are not picked, and
/// fits of the view pass them over.
///
/// It stands beside the list of prescribed dimensions, which are lines alone, one visual each.
///
/// A change of one dimension costs what that one takes; texts are laid out anew where the picture has another fineness.
///
/// Owner: the parent visual. Thread: render thread.
class VRK_EXPORT DimensionsVisual : public Visual {
public:
    explicit DimensionsVisual(Visual* parent);
    ~DimensionsVisual() override;

    std::size_t getCount() const { return drawings.size(); }
    /// New ones draw nothing.
    void setCount(std::size_t count);
    /// Coordinates that are no finite numbers draw nothing.
    void set(std::size_t index, DimensionDrawing drawing);
    void setLook(std::size_t index, DimensionDrawing::Look look);
    const DimensionDrawing& get(std::size_t index) const { return drawings.at(index); }

    /// The dimension whose text is there in the main camera's last picture.
    /// @param x  device pixels from the left upper corner, as `y`.
    std::optional<std::size_t> textAt(double x, double y) const;
    /// How many pixels of the picture the user sees as one: of a dense screen, or of a picture that is made smaller. 1 at
    /// first. Texts are as much larger, if they are not for the picture's rows already.
    void setPixelRatio(float ratio);
    /// Of the last picture that brought anything, for measurements.
    std::size_t getUploadedBytes() const;

private:
    void draw(std::size_t index);

    std::vector<DimensionDrawing> drawings;
    std::unique_ptr<SlotBatch> lines;
    std::unique_ptr<LabelBatch> labels;
};

} // namespace vrk::visual
