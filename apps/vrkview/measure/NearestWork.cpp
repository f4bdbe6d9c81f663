#include "measure/NearestWork.h"

#include "measure/StationDimensions.h"

#include <utility>

namespace vrkview {
namespace {

constexpr int interval = 100; // milliseconds: what is measured within it is not told

} // namespace

NearestWork::NearestWork(QObject* parent) : LongWork(parent)
{
    timer.setInterval(interval);
    connect(&timer, &QTimer::timeout, this, &NearestWork::look);
    following = StationDimensions::Get().changed.connect([this] {
        if (!timer.isActive() && StationDimensions::Get().getNearest().isBusy())
            timer.start();
    });
}

void NearestWork::look()
{
    const NearestPlaces& nearest = StationDimensions::Get().getNearest();
    if (const auto current = nearest.current()) {
        const QString text = tr("Measuring %1").arg(QString::fromStdString(current->first->name));
        if (!std::exchange(isTold, true))
            emit started(text);
        emit progressed(text, current->second);
    } else if (!nearest.isBusy()) {
        timer.stop();
        if (std::exchange(isTold, false))
            emit finished();
    }
}

void NearestWork::cancel()
{
    StationDimensions::Get().giveUpNearest();
}

} // namespace vrkview
