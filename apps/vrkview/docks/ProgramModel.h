#pragma once

#include <QAbstractItemModel>

#include <memory>
#include <unordered_map>
#include <vector>

namespace sdf {
class SdfObject;
}
namespace vrk::task {
class Instruction;
class Path;
class Task;
} // namespace vrk::task

namespace vrkview {

/// The station's programs for Qt's views: tasks, below them paths, below these instructions.
///
/// An instruction costs no more than a pointer here, and its texts are made when a view asks for them: programs have
/// hundreds of thousands. What changed in the model is told as the rows that came and went, so that a view keeps what is
/// open and where it stands.
///
/// Thread: the application's, which is the only one that changes programs.
class ProgramModel : public QAbstractItemModel {
    Q_OBJECT

public:
    enum Column { Step, Target, Speed, Zone, ColumnCount };
    enum Role { IdRole = Qt::UserRole };

    explicit ProgramModel(QObject* parent = nullptr);
    ~ProgramModel() override;

    /// Takes over what was added, removed and changed in the model. Takes the model's lock shared.
    void follow();
    /// Leaves only what has this text in its words, any case, with what it lies in and what lies in it; an empty one leaves
    /// everything.
    void setFilter(const QString& text);
    /// Of the first column; invalid for what is not in a program, or filtered out.
    QModelIndex indexOf(unsigned id) const;
    /// The number of rows, over all programs.
    std::size_t count() const;

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    using Instructions = std::vector<std::shared_ptr<vrk::task::Instruction>>;
    struct Node { // what has rows below it
        Node* parent = nullptr;
        int position = 0; // among the rows of its parent
    };
    struct PathNode : Node {
        std::shared_ptr<vrk::task::Path> path;
        Instructions steps;                            // those that are shown
        mutable std::unordered_map<unsigned, int> row; // of a step by its id; made at the first question
    };
    struct TaskNode : Node {
        std::shared_ptr<vrk::task::Task> task;
        std::vector<std::unique_ptr<PathNode>> paths;
    };
    using Tasks = std::vector<std::unique_ptr<TaskNode>>;

    Tasks read() const;
    std::unique_ptr<TaskNode> readTask(const std::shared_ptr<vrk::task::Task>& task) const;
    bool matches(const sdf::SdfObject& object) const;
    template <typename List, typename Same, typename Settle>
    void followList(const QModelIndex& parent, List& have, List& wanted, const Same& isSame, const Settle& settle);
    void followPaths(TaskNode& have, TaskNode& wanted);
    void followSteps(PathNode& have, PathNode& wanted);
    QModelIndex indexOf(const Node& node) const;
    bool isTask(const QModelIndex& index) const { return !index.internalPointer(); }
    bool isPath(const QModelIndex& index) const;
    static const Node* aboveOf(const QModelIndex& index);
    const Node* nodeOf(const QModelIndex& index) const;
    const sdf::SdfObject& objectOf(const QModelIndex& index) const;

    QString filter;
    Tasks tasks;
};

} // namespace vrkview
