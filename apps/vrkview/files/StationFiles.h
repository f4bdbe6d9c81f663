#pragma once

#include "files/FileOpening.h"

#include <QObject>
#include <QStringList>

#include <functional>

namespace vrkview {

class Settings;
class ViewState;

/// Opens and saves files while the viewer runs. What is opened joins the station; a station file takes its place.
///
/// Thread: the application's, which is the render thread.
class StationFiles : public QObject {
    Q_OBJECT

public:
    /// @param state     is told of what was opened; it and `settings` outlive this.
    /// @param title     of the station at the start.
    StationFiles(ViewState& state, Settings& settings, QString title, QObject* parent = nullptr);

    const QString& getTitle() const { return title; }
    FileOpening& getOpening() { return opening; }
    /// A station file among them takes the place of what is there, after the question of `askBeforeLoss`.
    void open(const QStringList& paths);
    /// What is asked before changes that are not saved are lost: false leaves everything as it is.
    void askBeforeLoss(std::function<bool()> question) { mayLose = std::move(question); }
    /// Writes the station; the ending ".station.json" is added where it is missing. False where that fails.
    bool save(QString path);
    /// Emits `failed` where files were left out of so many, something of the others is missing, or scans seem to be in another
    /// unit. Call it when all is shown.
    void tellWhatIsAmiss(const Station& station, std::size_t files);
    /// For a file dialog.
    static QString OpenFilter();

signals:
    /// @param text  names the file, says what is wrong and what to do. The station is as before, or without that file.
    void failed(const QString& text);
    /// The station was saved there.
    void saved(const QString& path);
    /// @param isAnother  a station file took the place of what was there.
    void shown(bool isAnother);
    /// What became of the robot programs among what was opened: "weld: 7 moves, 7 placed; 9 targets".
    void programsShown(const QString& summary);

private:
    void show(const std::shared_ptr<Station>& station, const FileOpening::Files& files);

    ViewState& state;
    Settings& settings;
    QString title;
    FileOpening opening;
    std::function<bool()> mayLose;
};

} // namespace vrkview
