#include "canvas/CoarseFrames.h"

#include "scene/ViewLook.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace vrkview {
namespace {

using vrk::visual::Coarseness;
using Clock = vrk::visual::CoarseWhileMoving::Clock;

bool coarserWanted = true; // of the one scene

} // namespace

bool isCoarserWhileMoving()
{
    return coarserWanted;
}

void setCoarserWhileMoving(bool coarser)
{
    coarserWanted = coarser;
}

QString textOf(Coarseness coarseness)
{
    switch (coarseness) {
    case Coarseness::NoEdges:
        return CoarseFrames::tr("Coarser while moving: no edges");
    case Coarseness::FewerSamples:
        return CoarseFrames::tr("Coarser while moving: no edges, unsmoothed");
    case Coarseness::FewerBodies:
        return CoarseFrames::tr("Coarser while moving: no edges, unsmoothed, fewer bodies");
    default:
        return {};
    }
}

CoarseFrames::CoarseFrames(QObject* parent) : QObject(parent)
{
    rest.setSingleShot(true);
    rest.setTimerType(Qt::PreciseTimer);
    connect(&rest, &QTimer::timeout, this, &CoarseFrames::look);
}

void CoarseFrames::begin()
{
    const Coarseness coarseness = levels.begin(Clock::now());
    apply(coarserWanted ? coarseness : Coarseness::Whole);
}

void CoarseFrames::end()
{
    levels.end(Clock::now());
    look();
}

void CoarseFrames::noteMove()
{
    levels.noteMove(Clock::now());
}

/// The camera may have moved since the timer was set.
void CoarseFrames::look()
{
    const auto due = levels.getWholeDue();
    if (!due || applied == Coarseness::Whole) {
        rest.stop();
        return;
    }
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*due - Clock::now());
    if (left.count() > 0)
        rest.start(left);
    else
        emit rested();
}

void CoarseFrames::apply(Coarseness coarseness)
{
    vrk::visual::SetCoarseness(coarseness);
    if (std::exchange(applied, coarseness) != coarseness)
        emit changed(coarseness);
}

} // namespace vrkview
