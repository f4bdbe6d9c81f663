#include "platform/process/SprayGun.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <stdexcept>
#include <utility>

namespace vrk::process {

void SprayGun::check() const
{
    if (!(halfAngle > 0 && halfAngle < std::numbers::pi / 2))
        throw std::invalid_argument("the half angle of a spray must lie between 0 and a quarter of a turn");
    if (!(flow >= 0) || !std::isfinite(flow))
        throw std::invalid_argument("the flow of a spray must be 0 or more");
    if (!(profile >= 1) || !std::isfinite(profile))
        throw std::invalid_argument("the profile of a spray must be 1 or more");
    if (!(reach > 0) || !std::isfinite(reach))
        throw std::invalid_argument("the reach of a spray must be above 0");
}

double SprayGun::rateAt(const rob::Vec3d& fromNozzle, const rob::Vec3d& axis, const rob::Vec3d& normal) const
{
    const double depth = fromNozzle.dot(axis);
    const double distance = fromNozzle.length();
    if (!(depth > 0) || distance > reach)
        return 0;
    const double facing = -fromNozzle.dot(normal); // times the distance, as the depth below is
    if (!(facing > 0))
        return 0;
    const double radius = depth * std::tan(halfAngle);
    const double inside = 1 - (distance * distance - depth * depth) / (radius * radius);
    if (!(inside > 0))
        return 0;
    const double across =
        flow * profile / (std::numbers::pi * radius * radius) * (profile == 2 ? inside : std::pow(inside, profile - 1));
    return across * facing / depth;
}

SprayWay::SprayWay(std::vector<SprayPlace> givenPlaces, double givenSpeed)
    : places(std::move(givenPlaces)), speed(givenSpeed)
{
    if (places.empty())
        throw std::invalid_argument("the way of a spray needs a place");
    if (!(speed > 0) || !std::isfinite(speed))
        throw std::invalid_argument("the speed of a spray must be above 0");
    begins.reserve(places.size());
    double way = 0;
    for (std::size_t i = 0; i < places.size(); ++i) {
        if (!places[i].nozzle.isFinite() || !places[i].axis.isFinite())
            throw std::invalid_argument("the way of a spray is not finite");
        places[i].axis = rob::normalized(places[i].axis);
        if (i > 0)
            way += (places[i].nozzle - places[i - 1].nozzle).length();
        begins.push_back(way);
    }
}

SprayPlace SprayWay::at(double way) const
{
    const auto next = std::upper_bound(begins.begin(), begins.end(), way);
    if (next == begins.begin())
        return places.front();
    if (next == begins.end())
        return places.back();
    const auto i = static_cast<std::size_t>(next - begins.begin());
    const SprayPlace &a = places[i - 1], &b = places[i];
    const double part = (way - begins[i - 1]) / (begins[i] - begins[i - 1]);
    const double cosine = std::clamp(a.axis.dot(b.axis), -1.0, 1.0);
    const double turn = std::acos(cosine);
    const double sine = std::sin(turn);
    SprayPlace place{a.nozzle + (b.nozzle - a.nozzle) * part, a.axis};
    // Of two axes that are opposite no turn is the shorter one: the first stays until the end.
    if (sine > 1e-9)
        place.axis =
            rob::normalized(a.axis * (std::sin((1 - part) * turn) / sine) + b.axis * (std::sin(part * turn) / sine));
    return place;
}

} // namespace vrk::process
