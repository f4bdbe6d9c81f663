#include "edit/AddThings.h"

#include "files/StationScene.h"

#include <QObject>

namespace vrkview {

AddThings::AddThings(std::shared_ptr<const Station> things) : AddThings(std::move(things), QObject::tr("Open %1")) {}

AddThings::AddThings(std::shared_ptr<const Station> things, const QString& text)
    : Change(text.arg(QString::fromStdString(things->title)), Touched::Things), things(std::move(things))
{
}

void AddThings::apply()
{
    addToStation(*things);
}

void AddThings::revert()
{
    takeFromStation(*things);
}

} // namespace vrkview
