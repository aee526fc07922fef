#include "list/DisplayLists.h"

#include "list/AssignmentTableModel.h"
#include "list/Sorting.h"

#include <algorithm>

// The precise side of the lists. A reload runs the whole pipeline and resets the table, which
// loses the selection and the scroll position and costs a pass over every record; a few records
// that came, went or changed are instead put in place in the sorted lists, and the table hears of
// exactly those rows.

bool DisplayLists::canUpdateRows() const
{
    if (!m_appliedOrder || m_displayOrder != m_appliedOrder || m_table->rows().size() != m_display.size()
        || !isCurrent())
        return false;
    return m_lastFilter
        == std::make_pair(m_filterBar.getSelectedTitleInSegment(0), m_filterBar.getSelectedTitleInSegment(1));
}

qsizetype DisplayLists::sortedPosition(const AssignmentList &list, const AssignmentRef &record,
                                       const AssignmentList &fileOrder) const
{
    const Sorting::Order &order = *m_appliedOrder;
    const auto lower = std::partition_point(list.cbegin(), list.cend(), [&](const AssignmentRef &other) {
        return Sorting::compare(*other, *record, order) < 0;
    });
    const auto upper = std::partition_point(lower, list.cend(), [&](const AssignmentRef &other) {
        return Sorting::compare(*other, *record, order) == 0;
    });
    // Records that sort equal stand in the order of the file, as the stable sort of a reload leaves
    // them.
    if (lower != upper) {
        const qsizetype at = fileOrder.indexOf(record);
        for (auto it = lower; it != upper; ++it)
            if (fileOrder.indexOf(*it) > at)
                return it - list.cbegin();
    }
    return upper - list.cbegin();
}

void DisplayLists::updateRows(const QList<RowChange> &changes, const AssignmentList &fileOrder)
{
    // Indexes into allAssignments move with every insertion.
    m_projectIndex.reset();
    const bool filteredSorted = m_filteredOrder == m_appliedOrder;
    for (const RowChange &change : changes) {
        AssignmentRef gone = change.gone;
        const AssignmentRef &came = change.came;
        // A record this list took in before the document had it moves to its place.
        if (!gone && came && m_all.contains(came))
            gone = came;
        qsizetype shownAt = -1;
        if (gone) {
            m_all.removeOne(gone);
            m_filtered.removeOne(gone);
            shownAt = m_display.indexOf(gone);
            if (shownAt >= 0)
                m_display.removeAt(shownAt);
        }
        qsizetype showAt = -1;
        if (came) {
            m_all.insert(sortedPosition(m_all, came, fileOrder), came);
            if (DisplayPipeline::passes(*came, m_lastFilter.first, m_lastFilter.second)) {
                // A filtered list the last sort did not reach keeps no order to keep.
                m_filtered.insert(filteredSorted ? sortedPosition(m_filtered, came, fileOrder) : m_filtered.size(),
                                  came);
                if (DisplayPipeline::matches(*came, m_lastSearch.first, m_lastSearch.second)) {
                    showAt = sortedPosition(m_display, came, fileOrder);
                    m_display.insert(showAt, came);
                }
            }
        }
        if (shownAt >= 0 && showAt >= 0)
            m_table->replaceRecord(int(shownAt), int(showAt), came);
        else if (shownAt >= 0) {
            // Still shown while the table's selection lets go of it.
            m_display.insert(shownAt, gone);
            m_table->removeRecord(int(shownAt), [this, shownAt] { m_display.removeAt(shownAt); });
        }
        else if (showAt >= 0)
            m_table->insertRecord(int(showAt), came);
    }
}
