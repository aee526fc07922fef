#pragma once

#include "list/ColumnLayout.h"
#include "list/PresentationSettings.h"
#include "store/Assignment.h"

#include <QAbstractTableModel>

#include <functional>
#include <optional>
#include <vector>

class QItemSelectionModel;

// The rows of the assignment table: displayAssignments, one record per row, and the shown columns
// of the catalogue. Serves the text of every cell as it is drawn (formatted due dates, days left,
// blanks under a repeated date, subproject titles), the attachment images by name, the completed
// check box, the text colour of each cell and the day band of each row.
//
// The preferences behind the presentation are read once per redraw: the first cell asked for after
// a change of rows, or after the event loop turned, reads them, and every later cell of the same
// pass reuses them.
class AssignmentTableModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Role {
        ImageNameRole = Qt::UserRole + 1, // the small image of an attachment cell, by name
        DayBandRole,                      // bool: the row lies on a banded day
        ColumnIdentifierRole,             // header: the column's identifier
        MinimumWidthRole,                 // header: the column's limits
        MaximumWidthRole,                 // header: 0 when there is none
        WidthRole,                        // header: the width in the layout
    };

    explicit AssignmentTableModel(QObject *parent = nullptr);

    void setRows(const AssignmentList &rows);
    // One row came, went, or changed (and moved from `from` to `to`, counted without it): the view
    // keeps its selection, current row and scroll position, and draws again only what changed.
    void insertRecord(int row, const AssignmentRef &record);
    // The view's selection reads the rows it shows while a row is about to go, so the caller's own
    // list of them loses the row in `alongside`, together with the model, not before.
    void removeRecord(int row, const std::function<void()> &alongside = {});
    void replaceRecord(int from, int to, const AssignmentRef &record);
    const AssignmentList &rows() const { return m_rows; }
    void setLayout(const ColumnLayout &layout);
    const ColumnLayout &layout() const { return m_layout; }
    // A column dragged to another place.
    void moveColumnTo(int from, int to);
    // Only the width changed: no reset.
    void setColumnWidth(int column, int width);
    // The selection decides the white text of selected rows.
    void setSelectionModel(QItemSelectionModel *selection);
    // Finds the parent of a subproject for its title (the first record whose "Project" matches).
    void setProjectLookup(std::function<AssignmentRef(const QString &)> lookup) { m_projectLookup = std::move(lookup); }
    // Asks for the cells to be drawn again with freshly read preferences.
    void refreshPresentation();

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;

    // The cell text as drawn, for a column identifier (also used by the benchmark and the tests).
    QVariant cellText(int row, const QString &column) const;
    std::optional<QColor> cellColor(int row, const QString &column) const;
    bool isRowBanded(int row) const;
    QString columnIdentifier(int column) const { return m_layout.identifierAt(column); }
    const PresentationSettings &settings() const;

Q_SIGNALS:
    // The completed check box of a row was clicked.
    void completedToggled(int row);

private:
    void forgetSettings();
    // A row at `row` came, went or changed: that row and the next (whose date cell may be blanked
    // under a repeat of it) are drawn again, and with day bands on the bands of every later row.
    void rowsChangedFrom(int row);
    bool isRowSelected(int row) const;
    const std::vector<bool> &bands() const;

    AssignmentList m_rows;
    ColumnLayout m_layout;
    QItemSelectionModel *m_selection = nullptr;
    std::function<AssignmentRef(const QString &)> m_projectLookup;

    mutable std::optional<PresentationSettings> m_settings;
    mutable std::optional<std::vector<bool>> m_bands;
    mutable bool m_forgetQueued = false;
};
