#pragma once

#include "store/Assignment.h"

#include <QList>
#include <QObject>
#include <QScopeGuard>
#include <QString>
#include <QStringList>
#include <QVariantList>

#include <memory>
#include <optional>

class AssignmentsDocument;
class CoursesDocument;

// The undo history of the courses, textbooks and universal types, shared by every courses window
// through their document, and lasting as long as the program holds the document.
//
// A step is what one action of a window changed: the two files' contents before and after it, and
// the assignments a rename renamed with them. Undo writes the contents before back (the same bytes
// as before the action) and renames those assignments back; redo does the action's result again.
// A step is only taken back over the data it left: a change made outside any step (another part of
// the program, another program, a sync or a backup import) ends the history, and the menu says why.
class CoursesHistory : public QObject
{
    Q_OBJECT
public:
    explicit CoursesHistory(CoursesDocument &document);
    ~CoursesHistory() override;

    // While the returned guard lives, the document's changes make one step called `name` ("Add
    // Course"); nested steps join the outermost.
    [[nodiscard]] auto step(const QString &name)
    {
        begin(name);
        return qScopeGuard([this] { end(); });
    }
    // Inside a step: these assignments of `document` had `key` renamed from `from` to `to`.
    void renamedAssignments(const std::shared_ptr<AssignmentsDocument> &document, const AssignmentList &records,
                            const QString &key, const QString &from, const QString &to);

    // The document saved a change (called by the document itself). Outside a step, no step can be
    // taken back over it any more.
    void documentChanged();
    // The files were replaced or reread: the history ends, and Undo says `reason`.
    void clear(const QString &reason);

    bool canUndo() const { return !m_undo.isEmpty(); }
    bool canRedo() const { return !m_redo.isEmpty(); }
    QString undoText() const;
    QString redoText() const;

    // Each saves through the document, announcing `source`; false when nothing was taken back (no
    // step, or the data no longer is what the step left, which ends the history).
    bool undo(QObject *source);
    bool redo(QObject *source);

Q_SIGNALS:
    void changed();

private:
    struct State {
        QVariantList combined;
        QStringList types;
        bool operator==(const State &) const = default;
    };
    struct Rename {
        std::shared_ptr<AssignmentsDocument> document;
        AssignmentList records;
        QString key;
        QString from;
        QString to;
    };
    struct Step {
        QString name;
        State before;
        State after;
        QList<Rename> renames;
    };

    void begin(const QString &name);
    void end();
    State current() const;
    // Writes `to` (which the data must now be `from`) and renames the step's assignments forward or back.
    bool apply(const Step &step, bool back, QObject *source);

    CoursesDocument &m_document;
    QList<Step> m_undo;
    QList<Step> m_redo;
    std::optional<Step> m_open;
    QString m_clearedReason;
    int m_depth = 0;
    bool m_applying = false;
    bool m_changedOutside = false;
};
