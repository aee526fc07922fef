#pragma once

#include <QColor>
#include <QString>
#include <QStringList>
#include <QVariantList>

// What the Main Window preference pane edits: which assignment-table columns are shown (with their
// left-to-right order and widths) and the row colours ("Preferences - Color Format" and
// "Preferences - Colors"). The pane renders these; the rules live here so they can be tested
// without a window.
namespace MainWindowSettings {

// Every column the assignment table knows, in the order the pane lists them.
const QStringList &columnIdentifiers();
// The width a column gets when it is first shown.
qint64 initialWidth(const QString &identifier);

// "Preferences - User Columns"
QStringList shownColumns();
// Writes "Preferences - User Columns" (the shown identifiers in catalogue order) and
// "Preferences - User Columns Ordering": columns that stay shown keep their place and width,
// newly shown ones are appended at their initial width, hidden ones leave.
void saveColumns(const QStringList &shown);
// The ordering that saveColumns() writes, from the ordering stored before.
QVariantList orderingFor(const QStringList &shown, const QVariantList &previousOrdering);
// The default columns, ordering and widths.
void resetColumns();

// "Preferences - Color Format": 0 by due date, 1 by course, 2 by type, 3 by priority.
enum ColorScheme { ByDueDate = 0, ByCourse = 1, ByType = 2, ByPriority = 3 };
int colorFormat();
void setColorFormat(int format);
// The titles of the colour-format pop-up, in index order.
const QStringList &colorFormatTitles();

// The pane has room for this many category rows.
inline constexpr int MaxCategoryRows = 20;
// The labels of the category rows for a format, at most MaxCategoryRows: the four due-date rows; the
// course names of "Courses and Textbooks.plist"; the types of every course and then the universal
// types (a name given twice gets one row, as it has one colour); or "1" to "5".
QStringList categoryRows(int format);

// The stored colour text under a key of "Preferences - Colors"; a null string when none is stored.
QString colorText(const QString &key);
// Stores the text exactly as given under the key, leaving the other colours alone.
void setColorText(const QString &key, const QString &text);
// What the "All Others" and "Completed" wells show when nothing is stored under them.
QColor fallbackColor(const QString &key);

} // namespace MainWindowSettings
