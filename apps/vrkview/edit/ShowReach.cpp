#include "edit/ShowReach.h"

#include "edit/ModelPlaces.h"

#include "platform/layout/Layout.h"
#include "platform/layout/Mechanism.h"
#include "platform/sdf/SdfManager.h"

#include <QObject>

#include <algorithm>
#include <mutex>
#include <shared_mutex>

namespace vrkview {

using vrk::layout::Layout;

ShowReach::ShowReach(const std::vector<unsigned>& robots, bool shown)
    : Change((shown ? QObject::tr("Show reach of %1") : QObject::tr("Hide reach of %1")).arg(nameOfThings(robots)),
             Touched::Reach)
{
    const std::vector<unsigned> known = robotsOf(robots);
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    after = before = Layout::inst().reaches;
    for (const unsigned robot : known) {
        const auto listed = std::ranges::find(after, robot);
        if (shown && listed == after.end())
            after.push_back(robot);
        else if (!shown && listed != after.end())
            after.erase(listed);
    }
}

void ShowReach::note(const std::vector<unsigned>& robots)
{
    const std::unique_lock lock(sdf::SdfManager::inst().mutex());
    Layout::inst().reaches = robots;
}

std::vector<unsigned> robotsOf(const std::vector<unsigned>& ids)
{
    std::vector<unsigned> robots;
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    for (const unsigned id : ids)
        if (std::ranges::any_of(Layout::inst().manipulators, [id](const auto& arm) { return arm->getId() == id; }))
            robots.push_back(id);
    return robots;
}

bool isReachShown(unsigned robot)
{
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    const std::vector<unsigned>& shown = Layout::inst().reaches;
    return std::ranges::find(shown, robot) != shown.end();
}

} // namespace vrkview
