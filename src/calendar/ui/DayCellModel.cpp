#include "calendar/ui/DayCellModel.h"

#include "calendar/CalendarData.h"

DayCellModel::DayCellModel(const CalendarData &data, QObject *parent)
    : QAbstractListModel(parent)
    , m_data(data)
{
}

void DayCellModel::reload(const QDate &date)
{
    beginResetModel();
    m_date = date;
    endResetModel();
}

int DayCellModel::rowCount(const QModelIndex &parent) const
{
    if (parent.isValid() || !m_date.isValid())
        return 0;
    return int(m_data.count(m_date)) + 1;
}

QVariant DayCellModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount())
        return QVariant();
    const int row = index.row();
    switch (role) {
    case Qt::DisplayRole:
    case Qt::AccessibleTextRole:
        if (row == 0)
            return QString::number(m_date.day());
        return m_data.entries(m_date).at(row - 1).title;
    case Qt::TextAlignmentRole:
        return row == 0 ? int(Qt::AlignRight | Qt::AlignVCenter) : int(Qt::AlignLeft | Qt::AlignVCenter);
    default:
        return QVariant();
    }
}

Qt::ItemFlags DayCellModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    if (index.row() == 0)
        return Qt::ItemIsEnabled;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled;
}
