#include "list/TableSelection.h"

#include "list/AssignmentTableModel.h"
#include "list/PendingEdit.h"

#include <QItemSelectionModel>

#include <algorithm>

TableSelection::TableSelection(AssignmentTableModel *table, const AssignmentList &rows, PendingEdit &pendingEdit,
                               QObject *parent)
    : QObject(parent)
    , m_table(table)
    , m_model(new QItemSelectionModel(table, this))
    , m_rows(rows)
    , m_pendingEdit(pendingEdit)
{
    m_table->setSelectionModel(m_model);
    connect(m_model, &QItemSelectionModel::selectionChanged, this, &TableSelection::changed);
}

QList<int> TableSelection::selectedRows() const
{
    QList<int> rows;
    for (const QModelIndex &index : m_model->selectedRows())
        rows.append(index.row());
    std::sort(rows.begin(), rows.end());
    return rows;
}

int TableSelection::singleSelectedRow() const
{
    const QModelIndexList rows = m_model->selectedRows();
    return rows.size() == 1 ? rows.first().row() : -1;
}

void TableSelection::selectRowAlone(int row)
{
    // The pending edit may sort the rows again; the row asked for is found again by its record (the
    // edited record, replaced by the edit, stays selected).
    if (const AssignmentRef wanted = m_rows.value(row); wanted && m_pendingEdit.mayCommit()) {
        const int selected = singleSelectedRow();
        const bool wantedSelected = selected == row;
        m_pendingEdit.commit();
        row = int(m_rows.indexOf(wanted));
        if (row < 0 && wantedSelected)
            row = singleSelectedRow();
    }
    if (row < 0 || row >= m_table->rowCount() || m_table->columnCount() == 0)
        return;
    m_model->select(m_table->index(row, 0), QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

void TableSelection::selectRows(const QList<int> &requested)
{
    QList<int> rows = requested;
    if (m_pendingEdit.mayCommit()) {
        AssignmentList wanted;
        for (int row : requested)
            if (const AssignmentRef record = m_rows.value(row))
                wanted.append(record);
        m_pendingEdit.commit();
        rows.clear();
        for (const AssignmentRef &record : std::as_const(wanted))
            if (const qsizetype row = m_rows.indexOf(record); row >= 0)
                rows.append(int(row));
    }
    QItemSelection selection;
    for (int row : rows)
        if (row >= 0 && row < m_table->rowCount() && m_table->columnCount() > 0)
            selection.select(m_table->index(row, 0), m_table->index(row, m_table->columnCount() - 1));
    m_model->select(selection, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

void TableSelection::clear()
{
    m_pendingEdit.commit();
    m_model->clearSelection();
}

QList<AssignmentRef> TableSelection::rememberEqual() const
{
    QList<AssignmentRef> records;
    for (int row : selectedRows())
        records.append(Assignments::copy(m_rows[row]));
    return records;
}

void TableSelection::reselectEqual(const QList<AssignmentRef> &records)
{
    QList<int> rows;
    for (const AssignmentRef &record : records) {
        const qsizetype row = Assignments::indexOfEqual(m_rows, *record);
        if (row >= 0)
            rows.append(int(row));
    }
    if (!rows.isEmpty())
        selectRows(rows);
}

void TableSelection::reloadTable()
{
    const bool hadSelection = m_model->hasSelection();
    m_table->setRows(m_rows);
    // A reset drops the selection without a signal; the sidebar must still hear of it.
    if (hadSelection)
        Q_EMIT changed();
}
