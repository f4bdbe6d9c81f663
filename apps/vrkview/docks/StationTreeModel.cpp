#include "docks/StationTreeModel.h"

#include "edit/History.h"
#include "edit/RenameThing.h"
#include "files/ObjectNames.h"
#include "window/Glyphs.h"

#include <QGuiApplication>
#include <QPalette>

namespace vrkview {

StationTreeModel::StationTreeModel(ViewState& state, QObject* parent)
    : QAbstractItemModel(parent), state(state), tree(state.getTree()), shown(readShown())
{
    connect(&state, &ViewState::visibilityChanged, this, &StationTreeModel::tellShown);
    connect(&state, &ViewState::stationChanged, this, [this] {
        beginResetModel();
        tree = this->state.getTree();
        shown = readShown();
        endResetModel();
    });
}

QModelIndex StationTreeModel::indexOf(unsigned id) const
{
    const int row = tree.find(id);
    if (row == StationTree::none)
        return {};
    return createIndex(tree.getRows()[static_cast<std::size_t>(row)].position, Name, static_cast<quintptr>(row));
}

QModelIndex StationTreeModel::index(int row, int column, const QModelIndex& parent) const
{
    if (!hasIndex(row, column, parent))
        return {};
    return createIndex(row, column, static_cast<quintptr>(below(parent)[static_cast<std::size_t>(row)]));
}

QModelIndex StationTreeModel::parent(const QModelIndex& child) const
{
    if (!child.isValid())
        return {};
    const int above = rowOf(child).parent;
    if (above == StationTree::none)
        return {};
    return createIndex(tree.getRows()[static_cast<std::size_t>(above)].position, Name, static_cast<quintptr>(above));
}

int StationTreeModel::rowCount(const QModelIndex& parent) const
{
    return parent.column() > Name ? 0 : static_cast<int>(below(parent).size());
}

int StationTreeModel::columnCount(const QModelIndex&) const
{
    return ColumnCount;
}

QVariant StationTreeModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    const StationTree::Row& row = rowOf(index);
    const ViewState::Shown howMuch = shown[static_cast<std::size_t>(index.internalId())];
    if (role == IdRole)
        return row.id;
    if (index.column() == Eye) {
        if (role == Qt::DecorationRole)
            return howMuch == ViewState::Shown::Not      ? glyph(Glyph::EyeClosed)
                   : howMuch == ViewState::Shown::Partly ? glyph(Glyph::EyeHalf)
                                                         : glyph(Glyph::EyeOpen);
        if (role == Qt::ToolTipRole)
            return howMuch == ViewState::Shown::Not ? tr("Hidden: click to show") : tr("Shown: click to hide");
        return {};
    }
    switch (role) {
    case Qt::EditRole:
    case Qt::DisplayRole:
        return QString::fromStdString(row.name);
    case Qt::DecorationRole:
        return kindIcon(row.kind);
    case Qt::ToolTipRole:
        return tr("%1, %2 %3").arg(QString::fromStdString(row.name).toHtmlEscaped(), typeName(row.kind)).arg(row.id);
    case Qt::ForegroundRole:
        if (howMuch == ViewState::Shown::Not)
            return QGuiApplication::palette().brush(QPalette::Disabled, QPalette::Text);
        return {};
    default:
        return {};
    }
}

bool StationTreeModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (!index.isValid() || role != Qt::EditRole || index.column() != Name)
        return false;
    // Behind the end of the editor, since the rows are made anew then.
    QMetaObject::invokeMethod(
        this,
        [this, id = rowOf(index).id, name = value.toString().trimmed().toStdString()] {
            state.getHistory().push(std::make_unique<RenameThing>(id, name));
        },
        Qt::QueuedConnection);
    return true;
}

QVariant StationTreeModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole && section == Name)
        return tr("Name");
    return {};
}

Qt::ItemFlags StationTreeModel::flags(const QModelIndex& index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    const Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    return index.column() == Name ? flags | Qt::ItemIsEditable : flags;
}

const std::vector<int>& StationTreeModel::below(const QModelIndex& parent) const
{
    return parent.isValid() ? rowOf(parent).children : tree.getRoots();
}

const StationTree::Row& StationTreeModel::rowOf(const QModelIndex& index) const
{
    return tree.getRows()[static_cast<std::size_t>(index.internalId())];
}

std::vector<ViewState::Shown> StationTreeModel::readShown() const
{
    std::vector<ViewState::Shown> all;
    all.reserve(tree.getRows().size());
    for (const StationTree::Row& row : tree.getRows())
        all.push_back(state.shownOf(row.id));
    return all;
}

void StationTreeModel::tellShown()
{
    const std::vector<ViewState::Shown> before = std::exchange(shown, readShown());
    for (std::size_t i = 0; i < shown.size(); ++i)
        if (shown[i] != before[i]) {
            const int position = tree.getRows()[i].position;
            emit dataChanged(createIndex(position, Name, static_cast<quintptr>(i)),
                             createIndex(position, Eye, static_cast<quintptr>(i)),
                             {Qt::DecorationRole, Qt::ForegroundRole});
        }
}

} // namespace vrkview
