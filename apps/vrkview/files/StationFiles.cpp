#include "files/StationFiles.h"

#include "canvas/ViewState.h"
#include "edit/AddThings.h"
#include "edit/History.h"
#include "files/FileStation.h"
#include "files/StationScene.h"
#include "files/UnitAdvice.h"
#include "window/Settings.h"

#include "platform/layout/Layout.h"
#include "platform/sdf/SdfManager.h"
#include "platform/station/FileKinds.h"
#include "platform/station/StationFile.h"
#include "view/Camera.h"

#include <Standard_Failure.hxx>

#include <algorithm>
#include <mutex>

namespace vrkview {
namespace {

using vrk::station::FileKind;

constexpr const char* stationEnding = ".station.json";

std::filesystem::path toPath(const QString& text)
{
    return text.toStdString();
}

/// The first few of them; the others are as many lines on standard error.
void append(QStringList& lines, const std::vector<std::string>& causes)
{
    constexpr std::size_t most = 3;
    for (std::size_t i = 0; i < std::min(causes.size(), most); ++i)
        lines << QString::fromStdString(causes[i]);
    if (causes.size() > most)
        lines << StationFiles::tr("and %1 more").arg(causes.size() - most);
}

/// Empty where nothing is missing.
QString textOfLeftOut(const Station& station, std::size_t all)
{
    QStringList lines;
    if (!station.failures.empty())
        lines << StationFiles::tr("%1 of %2 files could not be opened, the others are shown:")
                     .arg(station.failures.size())
                     .arg(all);
    append(lines, station.failures);
    if (!station.notes.empty())
        lines << StationFiles::tr("Some of what the files hold is missing:");
    append(lines, station.notes);
    return lines.join('\n');
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
    const auto filter = [](const QString& name, bool (*isWanted)(FileKind)) {
        const QString endings = QString::fromStdString(vrk::station::endingsOf(isWanted));
        return QString("%1 (*%2)").arg(name, QString(endings).replace(", ", " *"));
    };
    return QStringList{
        filter(tr("All that can be shown"), [](FileKind) { return true; }),
        filter(tr("CAD and meshes"),
               [](FileKind kind) { return vrk::station::isShapeKind(kind) || vrk::station::isMeshKind(kind); }),
        filter(tr("Robots"), [](FileKind kind) { return kind == FileKind::Urdf; }),
        filter(tr("Point clouds"), vrk::station::isPointCloudKind),
        filter(tr("Robot programs"), [](FileKind kind) { return kind == FileKind::Program; }),
        filter(tr("Stations"), [](FileKind kind) { return kind == FileKind::Station; }),
        tr("All files (*)")}
        .join(";;");
}

void StationFiles::open(const QStringList& paths)
{
    FileOpening::Files files;
    for (const QString& path : paths)
        files.push_back(toPath(path));
    if (std::ranges::any_of(files, vrk::station::isStationFile) && mayLose && !mayLose())
        return;
    opening.open(std::move(files));
}

void StationFiles::show(const std::shared_ptr<Station>& station, const FileOpening::Files& files)
{
    const bool isAnother = station->whole.has_value() || state.getTree().getRows().empty();
    if (isAnother)
        bringCloudsNear(*station);
    try {
        state.clear(); // nothing of what may go stays selected
        if (station->whole)
            addToStation(*station);
        else
            state.getHistory().push(std::make_unique<AddThings>(station));
    } catch (const Standard_Failure& failure) {
        emit failed(tr("%1: %2\nThe station is as before.")
                        .arg(QString::fromStdString(station->title), failure.GetMessageString()));
        return;
    } catch (const std::exception& failure) {
        emit failed(
            tr("%1: %2\nThe station is as before.").arg(QString::fromStdString(station->title), failure.what()));
        return;
    }
    if (isAnother)
        title = QString::fromStdString(station->title);
    if (station->whole)
        state.stationWasReplaced(station->hiddenFaces);
    for (const std::filesystem::path& file : files)
        settings.addRecentFile(QString::fromStdString(file.string()));
    emit shown(isAnother);
    tellWhatIsAmiss(*station, files.size());
    QStringList summaries;
    for (const std::string& summary : station->summaries)
        summaries << QString::fromStdString(summary);
    if (!summaries.isEmpty())
        emit programsShown(summaries.join(QStringLiteral("   ")));
}

void StationFiles::tellWhatIsAmiss(const Station& station, std::size_t files)
{
    QStringList texts;
    if (const QString text = textOfLeftOut(station, files); !text.isEmpty())
        texts << text;
    if (!opening.getReading().unit) {
        const std::string advice =
            tr("choose the unit in the menu File, remove the scan and open it again").toStdString();
        for (const std::string& line : unitAdvice(station, advice))
            texts << QString::fromStdString(line);
    }
    if (!texts.isEmpty())
        emit failed(texts.join('\n'));
}

bool StationFiles::save(QString path)
{
    if (!path.endsWith(stationEnding, Qt::CaseInsensitive))
        path += stationEnding;
    {
        const std::unique_lock lock(sdf::SdfManager::inst().mutex());
        vrk::layout::Layout::inst().lastViewPointPose = vrk::rob::Posed(vrk::visual::Camera::Get()->getWorldPose());
    }
    try {
        vrk::station::SaveStationFile(toPath(path));
    } catch (const std::exception& failure) {
        emit failed(tr("%1\nThe station was not saved. Choose another folder or name.").arg(failure.what()));
        return false;
    }
    state.getHistory().noteSaved();
    settings.addRecentFile(path);
    emit saved(path);
    return true;
}

} // namespace vrkview
