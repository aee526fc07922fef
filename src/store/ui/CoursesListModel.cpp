#include "store/ui/CoursesListModel.h"

#include "store/CoursesStore.h"
#include "store/ui/DragRows.h"

#include <QFont>

CoursesListModel::CoursesListModel(CoursesStore *store, QObject *parent)
    : QAbstractListModel(parent)
    , m_store(store)
{
}

void CoursesListModel::reload()
{
    beginResetModel();
    endResetModel();
}

int CoursesListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_store->getCombined().size());
}

QVariant CoursesListModel::data(const QModelIndex &index, int role) const
{
    const QVariantMap record = m_store->recordAt(index.row());
    if (record.isEmpty())
        return {};
    switch (role) {
    case Qt::DisplayRole:
    case Qt::AccessibleTextRole:
        return record.value(CourseKeys::DisplayName).toString();
    case Qt::FontRole:
        if (CoursesStore::isCourse(record)) {
            QFont bold;
            bold.setBold(true);
            return bold;
        }
        return {};
    default:
        return {};
    }
}

Qt::ItemFlags CoursesListModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::ItemIsDropEnabled;
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (CoursesStore::isCourse(m_store->recordAt(index.row())))
        flags |= Qt::ItemIsDragEnabled;
    return flags;
}

QStringList CoursesListModel::mimeTypes() const
{
    return {DragRows::CoursesDragType};
}

QMimeData *CoursesListModel::mimeData(const QModelIndexList &indexes) const
{
    QList<int> rows;
    for (const QModelIndex &index : indexes) {
        if (CoursesStore::isCourse(m_store->recordAt(index.row())))
            rows.append(index.row());
    }
    return DragRows::encode(DragRows::CoursesDragType, rows);
}

bool CoursesListModel::canDropMimeData(const QMimeData *data, Qt::DropAction, int, int, const QModelIndex &) const
{
    return !DragRows::decode(data, DragRows::CoursesDragType).isEmpty();
}

bool CoursesListModel::dropMimeData(const QMimeData *data, Qt::DropAction action, int row, int,
                                    const QModelIndex &parent)
{
    const QList<int> rows = DragRows::decode(data, DragRows::CoursesDragType);
    if (action == Qt::IgnoreAction || rows.isEmpty())
        return false;
    const int from = rows.first();
    if (!CoursesStore::isCourse(m_store->recordAt(from)))
        return false;
    Q_EMIT courseDropped(from, DragRows::dropRow(row, parent, rowCount()));
    return true;
}

Qt::DropActions CoursesListModel::supportedDropActions() const
{
    return Qt::MoveAction;
}

Qt::DropActions CoursesListModel::supportedDragActions() const
{
    return Qt::MoveAction;
}
