#include "list/ui/AssignmentTableView.h"

#include "list/AssignmentTableModel.h"
#include "list/ColumnCatalogue.h"
#include "list/Controller.h"
#include "list/ui/AssignmentCellDelegate.h"
#include "platform/UserDefaults.h"
#include "store/PreferenceKeys.h"

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QMouseEvent>

AssignmentTableView::AssignmentTableView(Controller *controller, QWidget *parent)
    : QTableView(parent)
    , m_controller(controller)
{
    setObjectName(QStringLiteral("assignmentTable"));
    setAccessibleName(tr("Assignments"));
    setModel(controller->tableModel());
    setSelectionModel(controller->selectionModel());
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setShowGrid(false);
    setWordWrap(false);
    setSortingEnabled(false);
    setTabKeyNavigation(false);
    setItemDelegate(new AssignmentCellDelegate(this));
    verticalHeader()->hide();
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);

    QHeaderView *header = horizontalHeader();
    header->setObjectName(QStringLiteral("assignmentTableHeader"));
    header->setAccessibleName(tr("Columns"));
    header->setSectionsMovable(true);
    header->setSectionsClickable(true);
    header->setHighlightSections(false);
    header->setSortIndicatorShown(true);
    header->setStretchLastSection(true);
    header->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    header->setMinimumSectionSize(20);

    connect(header, &QHeaderView::sectionClicked, this, [this](int section) {
        m_controller->didClickTableColumn(m_controller->tableModel()->columnIdentifier(section));
        updateSortIndicator();
    });
    // The header swallows double clicks; they count as double clicks on the table, which is why a
    // click that just sorted must not add.
    connect(header, &QHeaderView::sectionDoubleClicked, this, [this] { doubleClicked(); });
    connect(header, &QHeaderView::sectionResized, this, &AssignmentTableView::onSectionResized);
    connect(header, &QHeaderView::sectionMoved, this, &AssignmentTableView::onSectionMoved);

    AssignmentTableModel *model = controller->tableModel();
    connect(model, &QAbstractItemModel::modelReset, this, &AssignmentTableView::syncColumns);
    connect(model, &QAbstractItemModel::columnsMoved, this, &AssignmentTableView::syncColumns);
    connect(model, &QAbstractItemModel::headerDataChanged, this, &AssignmentTableView::updateSortIndicator);
    syncColumns();
}

int AssignmentTableView::sectionOf(const QString &identifier) const
{
    return m_controller->tableModel()->layout().indexOf(identifier);
}

void AssignmentTableView::syncColumns()
{
    AssignmentTableModel *model = m_controller->tableModel();
    QHeaderView *header = horizontalHeader();
    m_applying = true;
    // The model's column order is the layout; the header shows it without a visual reordering.
    for (int section = 0; section < model->columnCount(); ++section)
        if (header->visualIndex(section) != section)
            header->moveSection(header->visualIndex(section), section);
    for (int section = 0; section < model->columnCount(); ++section) {
        const int minimum = model->headerData(section, Qt::Horizontal, AssignmentTableModel::MinimumWidthRole).toInt();
        const int maximum = model->headerData(section, Qt::Horizontal, AssignmentTableModel::MaximumWidthRole).toInt();
        const int width = model->headerData(section, Qt::Horizontal, AssignmentTableModel::WidthRole).toInt();
        header->setSectionResizeMode(section, minimum == maximum && maximum > 0 ? QHeaderView::Fixed
                                                                                : QHeaderView::Interactive);
        header->resizeSection(section, width > 0 ? width : minimum);
    }
    m_applying = false;
    updateSortIndicator();
}

void AssignmentTableView::updateSortIndicator()
{
    const Sorting::Order order = m_controller->sortIndicator();
    const int section = sectionOf(order.column);
    horizontalHeader()->setSortIndicator(section, order.ascending ? Qt::AscendingOrder : Qt::DescendingOrder);
    horizontalHeader()->setSortIndicatorShown(section >= 0);
}

void AssignmentTableView::onSectionResized(int section, int, int newSize)
{
    if (m_applying)
        return;
    AssignmentTableModel *model = m_controller->tableModel();
    const int minimum = model->headerData(section, Qt::Horizontal, AssignmentTableModel::MinimumWidthRole).toInt();
    const int maximum = model->headerData(section, Qt::Horizontal, AssignmentTableModel::MaximumWidthRole).toInt();
    const bool stretched = horizontalHeader()->stretchLastSection() && section == model->columnCount() - 1;
    if (!stretched && (newSize < minimum || (maximum > 0 && newSize > maximum))) {
        horizontalHeader()->resizeSection(section, std::clamp(newSize, minimum, maximum > 0 ? maximum : newSize));
        return;
    }
    m_controller->columnDidResize(section, newSize);
}

void AssignmentTableView::onSectionMoved(int, int oldVisual, int newVisual)
{
    if (m_applying)
        return;
    // The controller moves the column in its layout and model; the header then shows the model's
    // order again rather than keeping its own.
    m_applying = true;
    horizontalHeader()->moveSection(newVisual, oldVisual);
    m_applying = false;
    m_controller->columnDidMove(oldVisual, newVisual);
    syncColumns();
}

bool AssignmentTableView::doubleClickAdds() const
{
    const QVariant doubleClickAdds =
        UserDefaults().groupValue(PreferenceKeys::General, PreferenceKeys::GeneralKeys::DoubleClickCreates);
    return doubleClickAdds.toBool() && !m_controller->didJustSort() && m_controller->selectedRows().isEmpty();
}

void AssignmentTableView::doubleClicked()
{
    if (doubleClickAdds())
        Q_EMIT addRequested();
    m_controller->clearDidJustSort();
}

void AssignmentTableView::mousePressEvent(QMouseEvent *event)
{
    // What is being typed into the sidebar belongs to the row it was typed for, before the click
    // selects another one.
    m_controller->commitPendingEdit();
    QTableView::mousePressEvent(event);
}

void AssignmentTableView::mouseReleaseEvent(QMouseEvent *event)
{
    QTableView::mouseReleaseEvent(event);
    if (m_addOnRelease) {
        m_addOnRelease = false;
        Q_EMIT addRequested();
    }
}

void AssignmentTableView::mouseDoubleClickEvent(QMouseEvent *event)
{
    // A double click on a row keeps the ordinary selection handling; below the rows the first click
    // has already cleared the selection.
    QTableView::mouseDoubleClickEvent(event);
    m_addOnRelease = doubleClickAdds();
    m_controller->clearDidJustSort();
}

void AssignmentTableView::contextMenuEvent(QContextMenuEvent *event)
{
    int row = -1;
    if (event->reason() == QContextMenuEvent::Mouse) {
        row = rowAt(event->pos().y());
    } else if (!m_controller->selectedRows().isEmpty()) {
        // From the keyboard: the menu for what is selected, under the current row.
        row = currentIndex().isValid() ? currentIndex().row() : m_controller->selectedRows().first();
        if (!m_controller->selectedRows().contains(row))
            row = m_controller->selectedRows().first();
        const QRect rect = visualRect(model()->index(row, 0));
        Q_EMIT contextMenuWanted(viewport()->mapToGlobal(rect.bottomLeft()), true);
        return;
    }
    if (row >= 0)
        m_controller->selectRowAlone(row);
    else
        m_controller->clearSelection();
    Q_EMIT contextMenuWanted(event->globalPos(), row >= 0);
}

void AssignmentTableView::keyPressEvent(QKeyEvent *event)
{
    m_controller->commitPendingEdit();
    // Space on a row toggles its completion, as a click on the box does.
    if (event->key() == Qt::Key_Space && event->modifiers() == Qt::NoModifier) {
        const int row = m_controller->singleSelectedRow();
        const int column = sectionOf(ColumnCatalogue::Completed);
        if (row >= 0 && column >= 0) {
            model()->setData(model()->index(row, column), Qt::Checked, Qt::CheckStateRole);
            return;
        }
    }
    QTableView::keyPressEvent(event);
}
