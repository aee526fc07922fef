#pragma once

#include "store/AssignmentsDocument.h"

#include <QString>

// The words of Edit ▸ Undo and Redo that every history of the program shares: the assignments' and
// the courses'.
namespace UndoNames {
inline const QString Undo = QStringLiteral("Undo");
inline const QString Redo = QStringLiteral("Redo");
inline const QString CantUndoAfterImport = QStringLiteral("Can't Undo After Import");
inline const QString CantUndoAfterSync = QStringLiteral("Can't Undo After Sync");
inline const QString CantUndoAfterOutsideChange = QStringLiteral("Can't Undo After Changes Elsewhere");

// Why no step can be taken back after this process replaced a whole file.
inline QString after(AssignmentsDocument::Replacement why)
{
    using enum AssignmentsDocument::Replacement;
    return why == Download || why == CalendarSync ? CantUndoAfterSync
        : why == BackupImport                     ? CantUndoAfterImport
                                                  : CantUndoAfterOutsideChange;
}

// "Undo Add Course", or what the history says when it has nothing.
inline QString title(const QString &prefix, const QString &step, const QString &whenNone)
{
    return step.isEmpty() ? whenNone : prefix + QLatin1Char(' ') + step;
}
} // namespace UndoNames
