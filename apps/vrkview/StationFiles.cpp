#include "StationFiles.h"

#include "FileStation.h"
#include "Settings.h"
#include "StationScene.h"
#include "ViewState.h"

#include "platform/station/StationFile.h"
#include "scene/Scene.h"

#include <Standard_Failure.hxx>

namespace vrkview {
namespace {

constexpr const char* stationEnding = ".station.json";

std::filesystem::path toPath(const QString& text)
{
    return text.toStdString();
}

} // namespace

StationFiles::StationFiles(ViewState& state, Settings& settings, QString title, QObject* parent)
    : QObject(parent), state(state), settings(settings), title(std::move(title))
{
    connect(&opening, &FileOpening::opened, this, &StationFiles::show);
    connect(&opening, &FileOpening::failed, this, [this](const QString& text) {
        emit failed(tr("%1\nNothing was added. Mend or convert the file, and open it again.").arg(text));
    });
}

QString StationFiles::OpenFilter()
{
    return tr("All that can be shown (*.step *.stp *.brep *.stl *.urdf *.ply *.pcd *.xyz *.mod *.src *.ls *.LS "
              "*.station.json);;"
              "CAD and meshes (*.step *.stp *.brep *.stl);;Robots (*.urdf);;Point clouds (*.ply *.pcd *.xyz);;"
              "Robot programs (*.mod *.src *.ls *.LS);;Stations (*.station.json);;All files (*)");
}

void StationFiles::open(const QStringList& paths)
{
    FileOpening::Files files;
    for (const QString& path : paths)
        files.push_back(toPath(path));
    opening.open(std::move(files));
}

void StationFiles::show(const std::shared_ptr<Station>& station, const FileOpening::Files& files)
{
    const bool isAnother = station->whole.has_value() || state.getTree().getRows().empty();
    if (isAnother)
        bringCloudsNear(*station);
    try {
        state.clear(); // nothing of what may go stays selected
        addToStation(*station);
    } catch (const Standard_Failure& failure) {
        emit failed(tr("%1: %2\nThe station is as before.")
                        .arg(QString::fromStdString(station->title), failure.GetMessageString()));
        return;
    } catch (const std::exception& failure) {
        emit failed(
            tr("%1: %2\nThe station is as before.").arg(QString::fromStdString(station->title), failure.what()));
        return;
    }
    if (isAnother) {
        title = QString::fromStdString(station->title);
        state.stationWasReplaced(station->hiddenFaces);
    } else {
        state.stationHasChanged();
    }
    for (const std::filesystem::path& file : files)
        settings.addRecentFile(QString::fromStdString(file.string()));
    emit shown(isAnother);
}

void StationFiles::save(QString path)
{
    if (!path.endsWith(stationEnding, Qt::CaseInsensitive))
        path += stationEnding;
    try {
        vrk::station::SaveStationFile(toPath(path));
    } catch (const std::exception& failure) {
        emit failed(tr("%1\nThe station was not saved. Choose another folder or name.").arg(failure.what()));
        return;
    }
    settings.addRecentFile(path);
    emit saved(path);
}

} // namespace vrkview
