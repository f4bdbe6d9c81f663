#include "edit/MoveJoints.h"

#include "edit/ChangeIds.h"
#include "edit/ModelPlaces.h"

#include "platform/layout/Mechanism.h"
#include "platform/sdf/SdfManager.h"

#include <QObject>

#include <shared_mutex>

namespace vrkview {

using vrk::layout::Mechanism;

MoveJoints::MoveJoints(std::shared_ptr<Mechanism> moved, std::vector<double> values, int gesture)
    : Change(QObject::tr("Move joints of %1").arg(nameOfThing(moved->getId())), Touched::Nothing),
      mechanism(std::move(moved)), after(std::move(values)), gesture(gesture)
{
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    before = mechanism->getJointValues();
}

// Scene and docks follow `Mechanism::OnLinksMoved`.
void MoveJoints::apply()
{
    mechanism->setJointValues(after);
}

void MoveJoints::revert()
{
    mechanism->setJointValues(before);
}

int MoveJoints::id() const
{
    return static_cast<int>(MergingChange::MoveJoints);
}

bool MoveJoints::mergeWith(const QUndoCommand* next)
{
    const auto& move = static_cast<const MoveJoints&>(*next);
    if (gesture == 0 || move.gesture != gesture || move.mechanism != mechanism)
        return false;
    after = move.after;
    return true;
}

} // namespace vrkview
