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

// The menu items: "Undo Add Course" for the last step; with none, why the history ended
// (`clearedReason`) or plain "Undo". "Redo Add Course", or plain "Redo".
inline QString undoText(const QString &lastStep, const QString &clearedReason)
{
    if (!lastStep.isEmpty())
        return Undo + QLatin1Char(' ') + lastStep;
    return clearedReason.isEmpty() ? Undo : clearedReason;
}
inline QString redoText(const QString &lastStep)
{
    return lastStep.isEmpty() ? Redo : Redo + QLatin1Char(' ') + lastStep;
}
} // namespace UndoNames
