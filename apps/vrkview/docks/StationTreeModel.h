#pragma once

#include "canvas/ViewState.h"

#include <QAbstractItemModel>

#include <vector>

namespace vrkview {

/// The station's tree for Qt's views: a column with name and kind, and one that says whether a thing is shown.
///
/// The index of a thing holds its row of `StationTree`, so that nothing is made for things that no view asks for.
class StationTreeModel : public QAbstractItemModel {
    Q_OBJECT

public:
    enum Column { Name, Eye, ColumnCount };
    enum Role { IdRole = Qt::UserRole };

    /// @param state  outlives this.
    explicit StationTreeModel(ViewState& state, QObject* parent = nullptr);

    /// Of the thing's first column; invalid for an unknown id.
    QModelIndex indexOf(unsigned id) const;

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    /// Gives the thing another name, as a step of work.
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

private:
    const std::vector<int>& below(const QModelIndex& parent) const;
    const StationTree::Row& rowOf(const QModelIndex& index) const;
    std::vector<ViewState::Shown> readShown() const;
    void tellShown();

    ViewState& state;
    StationTree tree; // the one that the views know
    std::vector<ViewState::Shown> shown;
};

} // namespace vrkview
