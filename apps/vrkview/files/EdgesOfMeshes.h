#pragma once

#include <QObject>

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <unordered_map>
#include <vector>

namespace vrk::geometry {
struct MeshEdges;
}
namespace vrk::visual {
class Mesh;
}

namespace vrkview {

/// Posts that the bodies of a thing that are meshes, or those of the whole station for 0, are drawn with their edges, behind the
/// posts that build their visuals. Bodies that have theirs are passed over. The edges of a mesh are found once for all its bodies,
/// at once; those of large ones later, while there is an `EdgesInBackground`.
void addEdgesOfMeshes(unsigned thing);

/// While one lives, a window does not wait for the edges of large meshes: they are found on a thread of its own, one mesh after
/// the other, and drawn when they have been.
///
/// Owner: who opens the window, one at a time. Thread: the render thread, whose events are run.
class EdgesInBackground : public QObject {
    Q_OBJECT

public:
    /// @param atOnce  so many triangles are not left to the thread, in one go.
    explicit EdgesInBackground(std::size_t atOnce = 500'000); // which takes a tenth of a second
    /// What was not drawn yet is not drawn any more.
    ~EdgesInBackground() override;

    /// @param bodies  ids of those that draw the mesh now; those that draw another one by then are passed over.
    void start(vrk::visual::Mesh* mesh, const std::vector<unsigned>& bodies);
    bool isWaitedFor(vrk::visual::Mesh* mesh) const { return waiting.contains(mesh); }
    std::size_t getAtOnce() const { return atOnce; }

signals:
    /// Edges were posted; a display mode may want them hidden.
    void came();

private:
    void work(const std::stop_token& stop);
    void finish(vrk::visual::Mesh* mesh, const std::shared_ptr<const vrk::geometry::MeshEdges>& edges);

    std::size_t atOnce;
    std::unordered_map<vrk::visual::Mesh*, std::vector<unsigned>> waiting; // the bodies of each mesh, which is held
    std::mutex mutex;
    std::condition_variable_any added;
    std::deque<vrk::visual::Mesh*> queue; // shared with the thread
    std::jthread worker;                  // last: it uses the others
};

} // namespace vrkview
