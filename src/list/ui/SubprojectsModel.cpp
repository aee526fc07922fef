#include "list/ui/SubprojectsModel.h"

#include "list/ColumnCatalogue.h"
#include "list/Controller.h"
#include "list/Editing.h"

SubprojectsModel::SubprojectsModel(Controller *controller, QObject *parent)
    : QAbstractTableModel(parent)
    , m_controller(controller)
{
    m_rows = int(m_controller->subprojectRows().size());
}

void SubprojectsModel::reload()
{
    beginResetModel();
    m_rows = int(m_controller->subprojectRows().size());
    endResetModel();
}

QString SubprojectsModel::keyOf(int column)
{
    switch (column) {
    case CompletedColumn:
        return ColumnCatalogue::Completed;
    case NameColumn:
        return ColumnCatalogue::Name;
    case DateColumn:
        return ColumnCatalogue::Date;
    default:
        return QString();
    }
}

int SubprojectsModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_rows;
}

int SubprojectsModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant SubprojectsModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_rows)
        return {};
    const QVariant value = m_controller->editing().subprojectCell(index.row(), keyOf(index.column()));
    if (index.column() == CompletedColumn)
        return role == Qt::CheckStateRole ? QVariant(value.toBool() ? Qt::Checked : Qt::Unchecked) : QVariant();
    if (role == Qt::DisplayRole || role == Qt::EditRole)
        return value.toString();
    if (role == Qt::AccessibleTextRole)
        return value.toString();
    return {};
}

QVariant SubprojectsModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    switch (section) {
    case NameColumn:
        return tr("Name");
    case DateColumn:
        return tr("Due Date");
    default:
        return QString();
    }
}

Qt::ItemFlags SubprojectsModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (index.column() == CompletedColumn)
        flags |= Qt::ItemIsUserCheckable;
    else
        flags |= Qt::ItemIsEditable;
    return flags;
}

bool SubprojectsModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (!index.isValid() || index.row() >= m_rows)
        return false;
    if (index.column() == CompletedColumn) {
        if (role != Qt::CheckStateRole)
            return false;
        m_controller->editing().setSubprojectValue(index.row(), keyOf(index.column()),
                                                   value.toInt() == Qt::Checked);
        return true;
    }
    if (role != Qt::EditRole)
        return false;
    m_controller->editing().setSubprojectValue(index.row(), keyOf(index.column()), value.toString());
    return true;
}
