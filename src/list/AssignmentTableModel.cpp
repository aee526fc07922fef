#include "list/AssignmentTableModel.h"

#include "list/CellPresentation.h"
#include "list/ColumnCatalogue.h"

#include <QItemSelectionModel>
#include <QTimer>

AssignmentTableModel::AssignmentTableModel(QObject *parent)
    : QAbstractTableModel(parent)
    , m_layout(ColumnLayout::initial())
{
}

void AssignmentTableModel::setRows(const AssignmentList &rows)
{
    beginResetModel();
    m_rows = rows;
    forgetSettings();
    endResetModel();
}

void AssignmentTableModel::insertRecord(int row, const AssignmentRef &record)
{
    beginInsertRows(QModelIndex(), row, row);
    m_rows.insert(row, record);
    m_bands.reset();
    endInsertRows();
    rowsChangedFrom(row);
}

void AssignmentTableModel::removeRecord(int row, const std::function<void()> &alongside)
{
    beginRemoveRows(QModelIndex(), row, row);
    m_rows.removeAt(row);
    if (alongside)
        alongside();
    m_bands.reset();
    endRemoveRows();
    rowsChangedFrom(row);
}

void AssignmentTableModel::replaceRecord(int from, int to, const AssignmentRef &record)
{
    if (from != to) {
        beginMoveRows(QModelIndex(), from, from, QModelIndex(), to > from ? to + 1 : to);
        m_rows.move(from, to);
        endMoveRows();
    }
    m_rows[to] = record;
    m_bands.reset();
    rowsChangedFrom(std::min(from, to));
    if (from != to)
        rowsChangedFrom(std::max(from, to));
}

void AssignmentTableModel::rowsChangedFrom(int row)
{
    const int last = rowCount() - 1;
    if (last < 0 || columnCount() == 0 || row > last)
        return;
    const int right = columnCount() - 1;
    Q_EMIT dataChanged(index(row, 0), index(std::min(row + 1, last), right));
    if (row + 2 <= last && settings().alternateRowColors)
        Q_EMIT dataChanged(index(row + 2, 0), index(last, right), {Qt::BackgroundRole, DayBandRole});
}

void AssignmentTableModel::setLayout(const ColumnLayout &layout)
{
    if (layout == m_layout)
        return;
    beginResetModel();
    m_layout = layout;
    endResetModel();
}

void AssignmentTableModel::moveColumnTo(int from, int to)
{
    if (from < 0 || from >= m_layout.count() || to < 0 || to >= m_layout.count() || from == to)
        return;
    beginMoveColumns(QModelIndex(), from, from, QModelIndex(), to > from ? to + 1 : to);
    m_layout.move(from, to);
    endMoveColumns();
}

void AssignmentTableModel::setColumnWidth(int column, int width)
{
    if (column < 0 || column >= m_layout.count())
        return;
    m_layout.setWidth(column, width);
    Q_EMIT headerDataChanged(Qt::Horizontal, column, column);
}

void AssignmentTableModel::setSelectionModel(QItemSelectionModel *selection)
{
    m_selection = selection;
    if (!selection)
        return;
    connect(selection, &QItemSelectionModel::selectionChanged, this,
            [this](const QItemSelection &selected, const QItemSelection &deselected) {
                // Selected rows draw white: the rows that changed are drawn again.
                for (const QItemSelection &changes : {selected, deselected})
                    for (const QItemSelectionRange &range : changes)
                        if (range.isValid() && columnCount() > 0)
                            Q_EMIT dataChanged(this->index(range.top(), 0),
                                               this->index(range.bottom(), columnCount() - 1),
                                               {Qt::ForegroundRole});
            });
}

void AssignmentTableModel::refreshPresentation()
{
    forgetSettings();
    if (!m_rows.isEmpty() && columnCount() > 0)
        Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
}

void AssignmentTableModel::forgetSettings()
{
    m_settings.reset();
    m_bands.reset();
}

const PresentationSettings &AssignmentTableModel::settings() const
{
    if (!m_settings) {
        m_settings = PresentationSettings::load();
        m_bands.reset();
        // One redraw happens within one turn of the event loop; the next one reads afresh.
        if (!m_forgetQueued) {
            m_forgetQueued = true;
            QTimer::singleShot(0, this, [this] {
                m_forgetQueued = false;
                m_settings.reset();
            });
        }
    }
    return *m_settings;
}

int AssignmentTableModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

int AssignmentTableModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_layout.count();
}

bool AssignmentTableModel::isRowSelected(int row) const
{
    return m_selection && m_selection->model() == this && m_selection->isRowSelected(row, QModelIndex());
}

QVariant AssignmentTableModel::cellText(int row, const QString &column) const
{
    if (row < 0 || row >= m_rows.size())
        return {};
    const Assignment &record = *m_rows[row];
    const Assignment *previous = row > 0 ? m_rows[row - 1].get() : nullptr;
    if (column == ColumnCatalogue::Date)
        return CellPresentation::dateCellText(record, previous, settings());
    if (column == ColumnCatalogue::DaysLeft)
        return CellPresentation::daysLeftCellText(record, previous, settings());
    if (column == ColumnCatalogue::Completed || ColumnCatalogue::isImageColumn(column))
        return {};
    if (column == ColumnCatalogue::Name && record.isSubproject() && m_projectLookup) {
        if (const AssignmentRef project = m_projectLookup(record.string(AssignmentField::Subproject)))
            return CellPresentation::subprojectTitle(settings().subprojectTitleFormat,
                                                     project->string(AssignmentField::Name),
                                                     record.string(AssignmentField::Name));
    }
    if (column == ColumnCatalogue::Priority && record.has(column))
        return QString::number(record.value(column).toDouble());
    return record.value(column);
}

std::optional<QColor> AssignmentTableModel::cellColor(int row, const QString &column) const
{
    if (row < 0 || row >= m_rows.size())
        return std::nullopt;
    return CellPresentation::textColor(*m_rows[row], column, isRowSelected(row), settings());
}

const std::vector<bool> &AssignmentTableModel::bands() const
{
    if (!m_bands) {
        // Alternate due days are banded; the first day is not, rows without a date form one group.
        std::vector<bool> bands(size_t(m_rows.size()), false);
        if (settings().alternateRowColors) {
            std::optional<std::optional<QDate>> previous;
            bool on = true;
            for (qsizetype row = 0; row < m_rows.size(); ++row) {
                const std::optional<QDate> day = CellPresentation::dueDay(*m_rows[row]);
                if (!previous || *previous != day) {
                    on = !on;
                    previous = day;
                }
                bands[size_t(row)] = on;
            }
        }
        m_bands = std::move(bands);
    }
    return *m_bands;
}

bool AssignmentTableModel::isRowBanded(int row) const
{
    if (row < 0 || row >= m_rows.size())
        return false;
    settings(); // the bands follow the current setting
    return bands()[size_t(row)];
}

QVariant AssignmentTableModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const QString column = m_layout.identifierAt(index.column());
    const Assignment &record = *m_rows[index.row()];
    switch (role) {
    case Qt::DisplayRole:
        return cellText(index.row(), column);
    case Qt::AccessibleTextRole:
        // An image column shows only a picture when the record has the field; its name says so.
        // Other cells are read as they are shown.
        if (ColumnCatalogue::isImageColumn(column))
            return record.has(column) ? column : QString();
        return {};
    case Qt::CheckStateRole:
        if (column == ColumnCatalogue::Completed)
            return record.isCompleted() ? Qt::Checked : Qt::Unchecked;
        return {};
    case Qt::ForegroundRole:
        if (const std::optional<QColor> color = cellColor(index.row(), column))
            return *color;
        return {};
    case Qt::BackgroundRole:
        if (isRowBanded(index.row()))
            return CellPresentation::bandColor();
        return {};
    case Qt::TextAlignmentRole:
        if (ColumnCatalogue::isImageColumn(column) || column == ColumnCatalogue::Completed)
            return int(Qt::AlignCenter);
        return {};
    case ImageNameRole:
        if (ColumnCatalogue::isImageColumn(column) && record.has(column))
            return ColumnCatalogue::imageName(column);
        return {};
    case DayBandRole:
        return isRowBanded(index.row());
    default:
        return {};
    }
}

QVariant AssignmentTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= m_layout.count())
        return QAbstractTableModel::headerData(section, orientation, role);
    const QString identifier = m_layout.identifierAt(section);
    const ColumnCatalogue::Column *column = ColumnCatalogue::find(identifier);
    switch (role) {
    case Qt::DisplayRole:
        return ColumnCatalogue::headerText(identifier);
    case Qt::AccessibleTextRole: {
        // Columns headed by a picture (or nothing) are still named for a screen reader.
        const QString text = ColumnCatalogue::headerText(identifier);
        return text.isEmpty() ? identifier : text;
    }
    case Qt::TextAlignmentRole:
        return int(Qt::AlignLeft | Qt::AlignVCenter);
    case ColumnIdentifierRole:
        return identifier;
    case MinimumWidthRole:
        return column ? column->minimumWidth : 0;
    case MaximumWidthRole:
        return column ? column->maximumWidth : 0;
    case WidthRole:
        return m_layout.widthAt(section);
    default:
        return {};
    }
}

Qt::ItemFlags AssignmentTableModel::flags(const QModelIndex &index) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return Qt::NoItemFlags;
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (m_layout.identifierAt(index.column()) == ColumnCatalogue::Completed)
        flags |= Qt::ItemIsUserCheckable;
    return flags;
}

bool AssignmentTableModel::setData(const QModelIndex &index, const QVariant &, int role)
{
    // No cell is edited in place; a click on the completed box is a command for the controller.
    if (role != Qt::CheckStateRole
        || !checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid)
        || m_layout.identifierAt(index.column()) != ColumnCatalogue::Completed)
        return false;
    Q_EMIT completedToggled(index.row());
    return true;
}
