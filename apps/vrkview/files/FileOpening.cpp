#include "files/FileOpening.h"

#include "files/FileStation.h"

#include <Standard_Failure.hxx>

namespace vrkview {
namespace {

/// Ends an import from within its report of progress. No std::exception, which an importer may take for a bad file.
struct Cancelled {};

} // namespace

FileOpening::FileOpening(QObject* parent) : LongWork(parent) {}

FileOpening::~FileOpening()
{
    isCancelled = true;
    if (worker.joinable())
        worker.join();
}

void FileOpening::open(Files files)
{
    if (files.empty())
        return;
    if (isRunning())
        waiting.push_back(std::move(files));
    else
        start(std::move(files));
}

void FileOpening::cancel()
{
    waiting.clear();
    isCancelled = true;
}

void FileOpening::start(Files files)
{
    isCancelled = false;
    emit started(tr("Opening"));
    worker = std::thread([this, files = std::move(files), how = reading] {
        const Result result = read(files, how);
        QMetaObject::invokeMethod(
            this, [this, files, result] { finish(files, result); }, Qt::QueuedConnection);
    });
}

FileOpening::Result FileOpening::read(const Files& files, const ReadingOptions& how)
{
    const auto report = [this](const std::string& file, std::string_view step, double fraction) {
        if (isCancelled)
            throw Cancelled();
        const QString text =
            QString::fromStdString(file) + ": " + QString::fromUtf8(step.data(), static_cast<qsizetype>(step.size()));
        QMetaObject::invokeMethod(
            this, [this, text, fraction] { emit progressed(text, fraction); }, Qt::QueuedConnection);
    };
    try {
        return {std::make_shared<Station>(importFiles(files, report, how)), {}};
    } catch (const Cancelled&) {
        return {};
    } catch (const Standard_Failure& failure) {
        return {nullptr, failure.GetMessageString()};
    } catch (const std::exception& failure) {
        return {nullptr, failure.what()};
    }
}

void FileOpening::finish(const Files& files, const Result& result)
{
    worker.join();
    if (isCancelled)
        emit cancelled();
    else if (result.station)
        emit opened(result.station, files);
    else
        emit failed(QString::fromStdString(result.failure));
    if (waiting.empty()) {
        emit finished();
        return;
    }
    Files next = std::move(waiting.front());
    waiting.erase(waiting.begin());
    start(std::move(next));
}

} // namespace vrkview
