#pragma once

#include "edit/SimplifyBodies.h"
#include "files/LongWork.h"

#include "platform/station/SimplifyMeshes.h"

#include <optional>
#include <thread>
#include <vector>

namespace vrkview {

/// Makes the meshes of bodies coarser on a thread of its own, so that the window goes on meanwhile. The station is not touched:
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
    /// Nothing while it runs.
    /// @param tolerance  model units; empty for one that suits the size of each mesh.
    void start(std::vector<ExchangedMesh> meshes, std::optional<double> tolerance);
    /// Nothing is changed then.
    void cancel() override;

    struct Result {
        std::vector<ExchangedMesh> meshes; ///< with the files that came of it
        std::vector<vrk::station::CoarserMesh> told;
        QString failure; ///< empty where there is none, and where it was given up
        bool isWhole = false;
    };

signals:
    void simplified(const vrkview::MeshSimplifying::Result& result);
    /// @param text  names the file and the cause. One of these three comes ahead of `finished`.
    void failed(const QString& text);
    void cancelled();

private:
    Result work(const std::stop_token& stop, std::vector<ExchangedMesh> meshes, std::optional<double> tolerance);
    void finish(const Result& result);

    std::jthread worker;
};

} // namespace vrkview
