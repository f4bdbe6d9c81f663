#pragma once

#include "scene/math/Pose.h"
#include "visual/VisualType.h"

#include <QString>

#include <cstdint>
#include <span>
#include <vector>

namespace vrkview {

class StationTree;

/// What is told of things of the station, ready to be read.
struct Properties {
    struct Line {
        QString name;
        QString value;      // empty for a heading
        QString secondName; // of another value in the same line; often empty
        QString secondValue;
        bool operator==(const Line&) const = default;
    };

    vrk::VisualType kind = vrk::VisualType::None; // of one thing
    QString title;
    QString subtitle;
    std::vector<Line> lines;
    bool canBePainted = false; // holds bodies that take a colour

    bool operator==(const Properties&) const = default;

    void addHeading(const QString& text) { lines.push_back({text, {}, {}, {}}); }
    /// Nothing without a value.
    void addValue(const QString& name, const QString& value);
    void addCount(const QString& name, std::uint64_t count);
    /// With its heading: millimetres and degrees.
    void addPose(const QString& heading, const vrk::rob::Posed& pose);
};

/// Without the minus of what rounds to zero.
QString fixedNumber(double value, int decimals);

/// Of one thing its kind, id, place, counts and file, of what is in a program what `propertiesOfProgram` tells; of several,
/// or of the whole station where there are no ids, the counts. Ids of nothing are passed over. Takes the model's lock shared. Render thread.
Properties propertiesOf(std::span<const unsigned> ids, const StationTree& tree);

} // namespace vrkview
