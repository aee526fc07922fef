#pragma once

#include <QList>
#include <QString>

class QMimeData;
class QModelIndex;

// The dragged rows of our own tables travel as a list of row numbers under a private type
// ("CoursesDragType", "CourseTypesDragType", "UniversalTypesDragType"), so a drag from one table
// is never taken by another.
namespace DragRows {

inline const QString CoursesDragType = QStringLiteral("CoursesDragType");
inline const QString CourseTypesDragType = QStringLiteral("CourseTypesDragType");
inline const QString UniversalTypesDragType = QStringLiteral("UniversalTypesDragType");

QMimeData *encode(const QString &type, const QList<int> &rows);
// The rows carried under `type`, sorted; empty when the data is not ours.
QList<int> decode(const QMimeData *data, const QString &type);
// The row a drop lands before: a drop between rows gives that row, a drop on a row gives the row,
// and a drop on the empty space below the rows gives `rowCount`.
int dropRow(int row, const QModelIndex &parent, int rowCount);

} // namespace DragRows
