#pragma once

#include "files/FileStation.h"
#include "files/LongWork.h"
#include "files/Station.h"

#include <atomic>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace vrkview {

/// Reads files on a thread of its own, so that the window goes on meanwhile. Nothing is entered in the model: what was read
/// is handed over when all of it is there. One call at a time is worked on; further ones wait for it.
///
/// Thread: the application's; the signals come there.
class FileOpening : public LongWork {
    Q_OBJECT

public:
    using Files = std::vector<std::filesystem::path>;

    explicit FileOpening(QObject* parent = nullptr);
    /// Waits for the present step of the import to end; nothing is told any more.
    ~FileOpening() override;

    /// How files are read that are opened from now on.
    void setReading(const ReadingOptions& wanted) { reading = wanted; }
    const ReadingOptions& getReading() const { return reading; }
    void open(Files files);
    /// Ends the import at its next report of progress: some times a second in long steps. What waits is given up, too.
    void cancel() override;
    bool isRunning() const { return worker.joinable(); }

signals:
    void opened(const std::shared_ptr<vrkview::Station>& station, const std::vector<std::filesystem::path>& files);
    /// @param text  names the file and the cause.
    void failed(const QString& text);
    /// One of these three comes ahead of `finished`; the fraction of `progressed` is that of the present file.
    void cancelled();

private:
    struct Result {
        std::shared_ptr<Station> station; // null where it failed or was cancelled
        std::string failure;              // empty where it was cancelled
    };

    void start(Files files);
    Result read(const Files& files, const ReadingOptions& how);
    void finish(const Files& files, const Result& result);

    ReadingOptions reading;
    std::thread worker;
    std::atomic<bool> isCancelled = false;
    std::vector<Files> waiting;
};

} // namespace vrkview
