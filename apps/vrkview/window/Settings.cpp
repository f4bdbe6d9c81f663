#include "window/Settings.h"

#include <QFileInfo>

#include <algorithm>

namespace vrkview {
namespace {

constexpr const char* geometryKey = "window/geometry";
constexpr const char* stateKey = "window/state";
constexpr const char* closedKey = "window/closed";
constexpr const char* recentKey = "files/recent";
constexpr const char* drawModeKey = "view/display";
constexpr const char* gridKey = "view/grid";
constexpr const char* depthShadeKey = "view/depthShade";
constexpr const char* groundShadowKey = "view/groundShadow";
constexpr const char* coarserKey = "view/coarserWhileMoving";
constexpr const char* mouseKey = "input/orbit";
constexpr const char* lengthStepKey = "move/length-step";
constexpr const char* angleStepKey = "move/angle-step";

constexpr const char* withLeft = "left";
constexpr const char* withMiddle = "middle";

QString keyOf(ProgramPart part)
{
    return QStringLiteral("programs/") + std::ranges::find(allProgramParts(), part, &ProgramPartName::part)->name;
}

/// One of these, for whoever edits the file may write anything.
double choiceOf(const QVariant& kept, const std::array<double, 3>& choices, double usual)
{
    return std::ranges::find(choices, kept.toDouble()) == choices.end() ? usual : kept.toDouble();
}

} // namespace

Settings::Settings(QObject* parent)
    : QObject(parent), store(QSettings::IniFormat, QSettings::UserScope, "vrkview", "vrkview")
{
}

QByteArray Settings::windowGeometry() const
{
    return store.value(geometryKey).toByteArray();
}

QByteArray Settings::windowState() const
{
    return store.value(stateKey).toByteArray();
}

void Settings::setWindow(const QByteArray& geometry, const QByteArray& state)
{
    store.setValue(geometryKey, geometry);
    store.setValue(stateKey, state);
}

QStringList Settings::closedDocks() const
{
    return store.value(closedKey).toStringList();
}

void Settings::setClosedDocks(const QStringList& names)
{
    store.setValue(closedKey, names);
}

QStringList Settings::recentFiles() const
{
    return store.value(recentKey).toStringList();
}

void Settings::addRecentFile(const QString& path)
{
    const QString absolute = QFileInfo(path).absoluteFilePath();
    QStringList files = recentFiles();
    files.removeAll(absolute);
    files.prepend(absolute);
    store.setValue(recentKey, files.mid(0, mostRecentFiles));
    emit recentFilesChanged();
}

void Settings::forgetRecentFiles()
{
    store.remove(recentKey);
    emit recentFilesChanged();
}

QString Settings::drawMode() const
{
    return store.value(drawModeKey).toString();
}

void Settings::setDrawMode(const QString& name)
{
    store.setValue(drawModeKey, name);
}

bool Settings::isGridShown(bool fallback) const
{
    return store.value(gridKey, fallback).toBool();
}

void Settings::setGridShown(bool shown)
{
    store.setValue(gridKey, shown);
}

bool Settings::isDrawn(ProgramPart part) const
{
    return store.value(keyOf(part), part != ProgramPart::ZAxesOnly).toBool();
}

void Settings::setDrawn(ProgramPart part, bool drawn)
{
    store.setValue(keyOf(part), drawn);
}

bool Settings::isDepthShaded() const
{
    return store.value(depthShadeKey, true).toBool();
}

void Settings::setDepthShaded(bool shaded)
{
    store.setValue(depthShadeKey, shaded);
}

bool Settings::isGroundShadowed() const
{
    return store.value(groundShadowKey, true).toBool();
}

void Settings::setGroundShadowed(bool shadowed)
{
    store.setValue(groundShadowKey, shadowed);
}

bool Settings::isCoarserWhileMoving() const
{
    return store.value(coarserKey, true).toBool();
}

void Settings::setCoarserWhileMoving(bool coarser)
{
    store.setValue(coarserKey, coarser);
}

Settings::MouseStyle Settings::mouseStyle() const
{
    return store.value(mouseKey).toString() == withLeft ? MouseStyle::OrbitWithLeft : MouseStyle::OrbitWithMiddle;
}

void Settings::setMouseStyle(MouseStyle style)
{
    if (style == mouseStyle())
        return;
    store.setValue(mouseKey, style == MouseStyle::OrbitWithLeft ? withLeft : withMiddle);
    emit mouseStyleChanged();
}

MoveSteps Settings::moveSteps() const
{
    const MoveSteps usual;
    return {choiceOf(store.value(lengthStepKey), MoveSteps::lengths, usual.length),
            choiceOf(store.value(angleStepKey), MoveSteps::angles, usual.angle)};
}

void Settings::setMoveSteps(const MoveSteps& steps)
{
    store.setValue(lengthStepKey, steps.length);
    store.setValue(angleStepKey, steps.angle);
}

} // namespace vrkview
