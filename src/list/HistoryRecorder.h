#pragma once

#include "store/Assignment.h"
#include "store/UndoNames.h"

#include <QList>
#include <QObject>
#include <QScopeGuard>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

// The undo history of the assignments. Every save of the list is compared with the list as it was
// last saved, and what differs becomes a step: deep copies of the records that went and of those
// that came, with their positions. Records are shared and change in place, so only copies can say
// what a record was. Saves inside one action (a group) make one step.
//
// Undo and redo only compute the list the step leads to; the controller puts it in place the way
// every other change does.
class HistoryRecorder : public QObject
{
    Q_OBJECT
public:
    static inline const QString ImportName = QStringLiteral("Import");
    static inline const QString AddRecurringName = QStringLiteral("Add Recurring Assignments");
    static inline const QString DuplicateName = QStringLiteral("Duplicate");
    static inline const QString EditMultipleName = QStringLiteral("Edit Assignments");

    struct Record {
        qsizetype position = 0;
        Assignment value;
    };
    // What a step changed besides the assignments (the courses an import added). It is taken back
    // after the step's records are, and made again after they are, each time given the records as
    // the step leaves them.
    struct Companion {
        std::function<void(const AssignmentList &)> undone;
        std::function<void(const AssignmentList &)> redone;
    };
    struct Step {
        QString name;
        QList<Record> before;
        QList<Record> after;
        std::shared_ptr<Companion> companion;
    };
    // The list a step leads to, and the records of it the step brought back (to be selected).
    struct Applied {
        AssignmentList list;
        AssignmentList restored;
    };

    explicit HistoryRecorder(std::function<AssignmentList()> current, QObject *parent = nullptr);

    // Names the change the next recorded step makes (instead of the name read from the records).
    void nameNextChange(const QString &name) { m_nextName = name; }
    // Joins `companion` to the step the next recorded change makes.
    void accompanyNextChange(std::shared_ptr<Companion> companion) { m_nextCompanion = std::move(companion); }
    // While the returned guard lives, saves make no step; the step is made when the outermost goes.
    [[nodiscard]] auto group()
    {
        ++m_depth;
        return qScopeGuard([this] {
            if (--m_depth == 0)
                closeGroup();
        });
    }

    // The list was saved: records what changed since the last save as a step.
    void saved();
    // The list was read afresh from the file. A named change (a series written to the file by the
    // recurring sheet) becomes a step; anything else is taken as it is.
    void reloaded();
    // The records were replaced from outside (sync, backup import): the history ends here.
    void clear(const QString &reason);

    bool canUndo() const { return !m_undo.isEmpty(); }
    bool canRedo() const { return !m_redo.isEmpty(); }
    // "Undo Delete 3 Assignments", "Can't Undo After Sync", or "Undo" with nothing to undo.
    QString undoText() const;
    QString redoText() const;

    // The list after undoing / redoing the last step on `list`, or nullopt when the records the step
    // changed are no longer there as it left them (the history is then cleared).
    std::optional<Applied> undo(const AssignmentList &list);
    std::optional<Applied> redo(const AssignmentList &list);

    // A step's name from its records: "Delete 3 Assignments", "Change Due Date", "Complete", ...
    static QString describe(const Step &step);

Q_SIGNALS:
    void changed();

private:
    void closeGroup();
    void record();
    void rebase();
    std::optional<Applied> apply(const AssignmentList &list, const QList<Record> &remove,
                                 const QList<Record> &insert);

    std::function<AssignmentList()> m_current;
    QList<Assignment> m_saved;
    QList<Step> m_undo;
    QList<Step> m_redo;
    QString m_nextName;
    std::shared_ptr<Companion> m_nextCompanion;
    QString m_clearedReason;
    int m_depth = 0;
    bool m_dirty = false;
};
