#include "edit/RenameThing.h"

#include "edit/ModelPlaces.h"

#include "platform/sdf/SdfManager.h"
#include "platform/sdf/SdfObject.h"

#include <QObject>

#include <mutex>

namespace vrkview {

RenameThing::RenameThing(unsigned thing, std::string name)
    : Change(QObject::tr("Rename %1").arg(nameOfThing(thing)), Touched::Things), thing(thing),
      before(nameOfThing(thing).toStdString()), after(std::move(name))
{
}

// What the scene calls it does not matter to anybody: visuals are found by their ids.
void RenameThing::give(const std::string& name) const
{
    const std::unique_lock lock(sdf::SdfManager::inst().mutex());
    if (sdf::SdfObject* object = sdf::SdfManager::inst().find(thing))
        object->setName(name);
}

} // namespace vrkview
