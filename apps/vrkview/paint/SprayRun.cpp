#include "paint/SprayRun.h"

#include "edit/Attempt.h"
#include "edit/History.h"
#include "edit/ModelPlaces.h"
#include "paint/SprayStroke.h"

#include "scene/Scene.h"

#include <QPointer>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <ranges>
#include <utility>

namespace vrkview {
namespace {

using vrk::process::SprayPlace;
using vrk::process::SprayWay;
using vrk::rob::Posd;
using vrk::rob::Posf;
using vrk::rob::Vec3d;
using vrk::visual::Scene;

constexpr int tick = 16; // milliseconds between two strokes of a run

/// A line from the nozzle to the edge of the spot, and the spot's edge.
std::vector<std::vector<Posf>> linesOfCone(const SprayPlace& at, double distance, double halfAngle)
{
    constexpr int corners = 48, rays = 8;
    const Vec3d axis(at.axis);
    const Vec3d other = std::abs(axis.x) < 0.7 ? Vec3d(1, 0, 0) : Vec3d(0, 1, 0);
    const Vec3d u = Vec3d(normalized(axis.cross(other)));
    const Vec3d v = axis.cross(u);
    const double radius = distance * std::tan(halfAngle);
    const auto onSpot = [&](double turn) {
        return Posf(Posd(at.nozzle + axis * distance + u * (radius * std::cos(turn)) + v * (radius * std::sin(turn))));
    };
    std::vector<std::vector<Posf>> lines(1);
    for (int i = 0; i <= corners; ++i)
        lines.front().push_back(onSpot(2 * std::numbers::pi * i / corners));
    for (int i = 0; i < rays; ++i)
        lines.push_back({Posf(at.nozzle), onSpot(2 * std::numbers::pi * i / rays)});
    return lines;
}

} // namespace

SprayRun::SprayRun(BodyCoats& coats, History& history, QObject* parent)
    : QObject(parent), coats(coats), history(history)
{
    timer.setInterval(tick);
    timer.setTimerType(Qt::PreciseTimer);
    connect(&timer, &QTimer::timeout, this, &SprayRun::advance);
}

SprayRun::~SprayRun() = default;

void SprayRun::begin(unsigned wantedPath, std::vector<unsigned> wantedBodies)
{
    timer.stop();
    path = wantedPath;
    bodies = std::move(wantedBodies);
    place = 0;
    readWays();
    drawCone();
    emit changed();
}

void SprayRun::end()
{
    timer.stop();
    path = 0;
    bodies.clear();
    ways.clear();
    begins.clear();
    place = 0;
    hideCone();
    emit changed();
}

/// As they lie now: targets and bodies may have been moved.
void SprayRun::readWays()
{
    const auto read = [this] {
        const SprayWays found = sprayWaysOf(path, settings.distance);
        for (const auto& way : found)
            begins.push_back(begins.back() + SprayWay(way, settings.speed).length());
        ways = found;
    };
    ways.clear();
    begins = {0};
    attempt(read, [this](const QString& text) { emit failed(text); });
    if (ways.empty())
        begins = {0};
    place = std::min(place, length());
}

void SprayRun::setSettings(const SpraySettings& wanted)
{
    settings = wanted;
    settings.gun.reach = 2 * settings.distance;
    if (path != 0) {
        const double part = length() > 0 ? place / length() : 0;
        readWays();
        place = part * length(); // another distance makes the ways of other lengths
        drawCone();
    }
    emit changed();
}

double SprayRun::length() const
{
    return begins.empty() ? 0 : begins.back();
}

void SprayRun::setPlace(double wanted)
{
    place = std::clamp(wanted, 0.0, length());
    drawCone();
    emit changed();
}

// Painting

void SprayRun::play()
{
    if (path == 0 || isPlaying())
        return;
    readWays();
    if (place >= length())
        place = 0;
    ++gesture;
    playedFrom = place;
    clock.start();
    timer.start();
    emit changed();
}

void SprayRun::pause()
{
    timer.stop();
    emit changed();
}

void SprayRun::advance()
{
    constexpr double second = 1000;
    const double to = playedFrom + settings.speed * static_cast<double>(clock.elapsed()) / second;
    if (to >= length())
        timer.stop();
    stroke(std::min(to, length()), gesture);
}

void SprayRun::step(double length)
{
    if (path == 0)
        return;
    pause();
    readWays();
    stroke(std::min(place + length, this->length()), 0);
}

void SprayRun::stroke(double to, int ofGesture)
{
    std::vector<BodyCoats::Patch> patches;
    try {
        for (std::size_t i = 0; i < ways.size(); ++i) {
            const double from = std::max(place, begins[i]), until = std::min(to, begins[i + 1]);
            if (from >= until)
                continue;
            auto made = coats.spray(bodies, settings.gun, ways[i], settings.speed, from - begins[i], until - begins[i]);
            patches.insert(patches.end(), std::make_move_iterator(made.begin()), std::make_move_iterator(made.end()));
        }
    } catch (const std::exception& failure) {
        for (const BodyCoats::Patch& patch : std::views::reverse(patches))
            coats.put(patch.body, patch.vertices, patch.before);
        timer.stop();
        emit failed(QString::fromUtf8(failure.what()));
        return;
    }
    const double before = std::exchange(place, to);
    // The step outlives what it was made on: by then there may be another path.
    const auto goTo = [run = QPointer(this), ofPath = path](double wanted) {
        if (run && run->path == ofPath)
            run->setPlace(wanted);
    };
    history.push(std::make_unique<SprayStroke>(tr("Spray along %1").arg(nameOfThing(path)), coats, std::move(patches),
                                               before, to, goTo, ofGesture));
}

// The cone

void SprayRun::drawCone()
{
    if (ways.empty()) {
        hideCone();
        return;
    }
    const auto next = std::ranges::upper_bound(begins, place);
    const std::size_t way = std::min(static_cast<std::size_t>(next - begins.begin()), ways.size()) - 1;
    const SprayPlace at = SprayWay(ways[way], settings.speed).at(place - begins[way]);
    Scene::Get()->removePolylines();
    Scene::Get()->drawPolylines(linesOfCone(at, settings.distance, settings.gun.halfAngle), 0, false);
    isConeShown = true;
}

void SprayRun::hideCone()
{
    if (std::exchange(isConeShown, false))
        Scene::Get()->removePolylines();
}

} // namespace vrkview
