#pragma once

#include "scene/math/Pose.h"

#include <QDialog>

#include <array>

class QDoubleSpinBox;

namespace vrkview {

/// Asks for a place: three lengths in millimetres and three angles in degrees, which make up the rotation Rx * Ry * Rz.
class PlaceDialog : public QDialog {
    Q_OBJECT

public:
    /// @param name   of the thing that gets the place, and `base` of what it is relative to.
    PlaceDialog(const QString& name, const QString& base, const vrk::rob::Posed& pose, QWidget* parent = nullptr);

    /// The pose that was given as long as no number was changed.
    vrk::rob::Posed getPose() const;
    QDoubleSpinBox& getBox(std::size_t index) const { return *boxes[index]; }

private:
    vrk::rob::Posed given;
    std::array<QDoubleSpinBox*, 6> boxes{}; // x, y, z, Rx, Ry, Rz
    std::array<double, 6> shown{};
};

} // namespace vrkview
