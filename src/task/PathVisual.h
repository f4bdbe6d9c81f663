#pragma once

#include "task/PathParts.h"
#include "visual/Visual.h"

#include <cstdint>
#include <vector>

namespace vrk::task {
class Path;
}

namespace vrk::visual {

class PathLineVisual;

/// A path of a robot program: it holds the moves and the lines between them together, and draws nothing itself. Both hang
/// under the work objects, which they follow.
///
/// Owner: the world. It owns its lines; the moves are their parents'. The path of the model is not owned and is looked at
/// whenever lines are made: what stands for it in the meantime is told by `setPath`.
/// Thread: render thread.
class VRK_EXPORT PathVisual : public Visual, public PartKeeper {
public:
    /// Registered, on the world, with its lines.
    /// @throws std::out_of_range "invalid unordered_map<K, T> key" if a work object has no visual; nothing is left then.
    static PathVisual* Build(task::Path* path);
    ~PathVisual() override;

    task::Path* getPath() const { return path; }
    void setPath(task::Path* newPath) { path = newPath; }
    const std::vector<PathLineVisual*>& getLines() const { return lines; }
    /// Makes all lines anew, or takes them away where the scene draws none. They look like the path: hidden, selected.
    /// @throws std::out_of_range as `Build`; the lines that were made by then stay.
    void buildLines();
    /// As `hashOfWays` of the moves that the lines were made of.
    std::uint64_t getHashOfWays() const { return hashOfWays; }

    // Of all moves, which must have visuals, and of the lines
    // @throws std::out_of_range "invalid unordered_map<K, T> key" for a move without.
    void setVisible(bool visible, bool recursive) override;
    void resetAppearance() override;
    void setSelected() override;
    void setHighlighted() override;
    void clearHighlightOrSelect() override;
    void forgetPart(const Visual* line) override;

private:
    explicit PathVisual(task::Path* path);
    void deleteLines();
    template <typename Call>
    void forParts(const Call& call);

    task::Path* path;
    std::vector<PathLineVisual*> lines;
    std::uint64_t hashOfWays = 0;
    bool isAtParts = false; // a call for all parts is under way
};

} // namespace vrk::visual
