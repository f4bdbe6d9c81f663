#pragma once

#include "edit/SimplifyBodies.h"
#include "files/LongWork.h"

#include "platform/station/SimplifyMeshes.h"

#include <filesystem>
#include <functional>
#include <thread>
#include <vector>

namespace vrkview {

/// Makes other files of the meshes of bodies, coarser ones or smoother ones, on a thread of its own, so that the window goes on meanwhile. The station is not touched:
/// what came of it is handed over when all of it is there.
///
/// Thread: the application's; the signals come there.
class MeshSimplifying : public LongWork {
    Q_OBJECT

public:
    explicit MeshSimplifying(QObject* parent = nullptr);
    /// Waits for the present step to end; nothing is told any more.
    ~MeshSimplifying() override;

    bool isRunning() const { return worker.joinable(); }
    /// What is to be done with each file. Runs on the other thread; what it throws ends the work.
    using MeshWork =
        std::function<vrk::station::CoarserMesh(const std::filesystem::path& file, const vrk::station::Progress&)>;

    /// Nothing while it runs.
    /// @param title  what is done, as in "Simplifying".
    void start(std::vector<ExchangedMesh> meshes, const QString& title, MeshWork make);
    /// Nothing is changed then.
    void cancel() override;

    struct Result {
        std::vector<ExchangedMesh> meshes; ///< with the files that came of it
        std::vector<vrk::station::CoarserMesh> told;
        QString failure; ///< empty where there is none, and where it was given up
        bool isWhole = false;
    };

signals:
    void made(const vrkview::MeshSimplifying::Result& result);
    /// @param text  names the file and the cause. One of these three comes ahead of `finished`.
    void failed(const QString& text);
    void cancelled();

private:
    Result work(const std::stop_token& stop, std::vector<ExchangedMesh> meshes, const MeshWork& make);
    void finish(const Result& result);

    std::jthread worker;
};

} // namespace vrkview
