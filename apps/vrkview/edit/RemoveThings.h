#pragma once

#include "edit/Changes.h"

#include "platform/layout/Layout.h"
#include "platform/sdf/SdfObject.h"

#include <optional>
#include <unordered_set>

namespace vrk::task {
class DataItem;
class EdgeMfgShape;
class MoveInst;
class ToolDataItem;
} // namespace vrk::task

namespace vrkview {

/// Things of their own, and members of assemblies, leave the station. What they carry stays where it is in the world, by itself from then on.
class RemoveThings : public Changes {
public:
    /// Ids of what cannot be removed are passed over.
    explicit RemoveThings(const std::vector<unsigned>& things);

    bool isNeeded() const override { return !things.empty(); }
    void apply() override;

private:
    void remove(unsigned thing, std::unordered_set<unsigned>& left);

    std::vector<unsigned> things;
    bool isMade = false; // of steps
};

/// One thing that carries nothing leaves the station.
class RemoveThing : public Change {
public:
    explicit RemoveThing(unsigned thing);

    void apply() override;
    void revert() override;

private:
    /// What the model forgets with the thing.
    struct Memory {
        struct OfTask {
            std::shared_ptr<vrk::task::Task> task;
            unsigned manipulator = 0;
            std::vector<std::shared_ptr<vrk::task::DataItem>> items;
            std::vector<std::pair<vrk::task::MoveInst*, std::shared_ptr<vrk::task::ToolDataItem>>>
                tools; // of all moves
            std::vector<std::shared_ptr<vrk::task::EdgeMfgShape>> bands;
        };

        /// What it was in, if anything.
        struct OfAssembly {
            std::shared_ptr<vrk::layout::Assembly> owner;
            std::shared_ptr<sdf::SdfContainer> member;
            std::size_t index = 0;
        };

        vrk::layout::StationContent content;
        OfAssembly assembly;
        std::vector<std::pair<std::shared_ptr<sdf::SdfObject>, unsigned>> owners; // of what lay on it
        std::vector<OfTask> tasks;
        std::vector<unsigned> programs; // those that lie on it
        std::vector<std::pair<std::shared_ptr<vrk::layout::Group>, std::vector<unsigned>>> groups;
        std::vector<std::pair<std::shared_ptr<vrk::task::Operation>, std::vector<unsigned>>> operations;
    };

    Memory read() const;
    void restoreModel() const;
    void hidePrograms();
    void showPrograms();
    void takeFromScene() const;
    void bringToScene();

    unsigned thing;
    std::vector<std::pair<unsigned, unsigned>> parked; // what hangs on hidden programs, and on what of them
    std::optional<Memory> memory;                      // while it is removed
};

} // namespace vrkview
