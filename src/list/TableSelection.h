#pragma once

#include "store/Assignment.h"

#include <QList>
#include <QObject>

class AssignmentTableModel;
class PendingEdit;
class QItemSelectionModel;

// The selection of the assignment table, by rows of displayAssignments. Every change of selection
// first hands over the edit in progress; a row asked for is then found again by its record, since
// the edit may have sorted the rows anew.
class TableSelection : public QObject
{
    Q_OBJECT
public:
    // `rows` is displayAssignments, read as it stands at each call.
    TableSelection(AssignmentTableModel *table, const AssignmentList &rows, PendingEdit &pendingEdit,
                   QObject *parent = nullptr);

    QItemSelectionModel *model() const { return m_model; }
    QList<int> selectedRows() const;
    // The row of the only selected row, or -1 with none or several.
    int singleSelectedRow() const;
    void selectRowAlone(int row);
    void selectRows(const QList<int> &rows);
    void clear();

    // Copies of the selected records, and the rows of records equal to them once the rows were
    // made again.
    QList<AssignmentRef> rememberEqual() const;
    void reselectEqual(const QList<AssignmentRef> &records);

    // Gives the table the current rows.
    void reloadTable();

Q_SIGNALS:
    // The selection changed, a reset that dropped it included.
    void changed();

private:
    AssignmentTableModel *m_table;
    QItemSelectionModel *m_model;
    const AssignmentList &m_rows;
    PendingEdit &m_pendingEdit;
};
