#pragma once

#include "scene/math/Vec.h"

#include <QPointF>

#include <algorithm>
#include <iterator>
#include <vector>

namespace vrkview {

/// A place of the view as the library takes it.
inline vrk::rob::Vec2Template<double> toPlace(const QPointF& place)
{
    return {place.x(), place.y()};
}

inline std::vector<vrk::rob::Vec2Template<double>> toPlaces(const std::vector<QPointF>& places)
{
    std::vector<vrk::rob::Vec2Template<double>> all;
    std::ranges::transform(places, std::back_inserter(all), toPlace);
    return all;
}

} // namespace vrkview
