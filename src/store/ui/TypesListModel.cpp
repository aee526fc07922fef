#include "store/ui/TypesListModel.h"

#include "store/CoursesStore.h"
#include "store/ui/DragRows.h"

TypesListModel::TypesListModel(QString dragType, QObject *parent)
    : QAbstractListModel(parent)
    , m_dragType(std::move(dragType))
{
}

void TypesListModel::setTypes(const QStringList &types)
{
    beginResetModel();
    m_types = types;
    endResetModel();
}

int TypesListModel::addType()
{
    const int row = int(m_types.size());
    beginInsertRows(QModelIndex(), row, row);
    m_types.append(CourseKeys::NewType);
    endInsertRows();
    Q_EMIT typesEdited();
    return row;
}

bool TypesListModel::removeType(int row)
{
    if (row < 0 || row >= m_types.size())
        return false;
    beginRemoveRows(QModelIndex(), row, row);
    m_types.removeAt(row);
    endRemoveRows();
    Q_EMIT typesEdited();
    return true;
}

int TypesListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_types.size());
}

QVariant TypesListModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_types.size())
        return {};
    if (role == Qt::DisplayRole || role == Qt::EditRole || role == Qt::AccessibleTextRole)
        return m_types[index.row()];
    return {};
}

bool TypesListModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (role != Qt::EditRole || !index.isValid() || index.row() >= m_types.size())
        return false;
    const QString text = value.toString();
    if (text == m_types[index.row()])
        return true;
    m_types[index.row()] = text;
    Q_EMIT dataChanged(index, index);
    Q_EMIT typesEdited();
    return true;
}

Qt::ItemFlags TypesListModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::ItemIsDropEnabled;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsEditable | Qt::ItemIsDragEnabled;
}

QStringList TypesListModel::mimeTypes() const
{
    return {m_dragType};
}

QMimeData *TypesListModel::mimeData(const QModelIndexList &indexes) const
{
    QList<int> rows;
    for (const QModelIndex &index : indexes)
        rows.append(index.row());
    return DragRows::encode(m_dragType, rows);
}

bool TypesListModel::canDropMimeData(const QMimeData *data, Qt::DropAction, int, int, const QModelIndex &) const
{
    return !DragRows::decode(data, m_dragType).isEmpty();
}

bool TypesListModel::dropMimeData(const QMimeData *data, Qt::DropAction action, int row, int, const QModelIndex &parent)
{
    const QList<int> rows = DragRows::decode(data, m_dragType);
    if (action == Qt::IgnoreAction || rows.isEmpty() || rows.first() >= m_types.size())
        return false;
    // Only the first dragged row moves, as the tables have always done.
    const int from = rows.first();
    const int drop = DragRows::dropRow(row, parent, int(m_types.size()));
    beginResetModel();
    CoursesStore::moveInList(m_types, from, drop);
    endResetModel();
    Q_EMIT typesEdited();
    Q_EMIT typeMoved(drop > from ? drop - 1 : drop);
    return true;
}

Qt::DropActions TypesListModel::supportedDropActions() const
{
    return Qt::MoveAction;
}

Qt::DropActions TypesListModel::supportedDragActions() const
{
    return Qt::MoveAction;
}
