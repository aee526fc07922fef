#pragma once

#include <QObject>
#include <QPointer>
#include <QStringList>

#include <functional>

class QWidget;

// Files to open and requests to come to the front, from this program's own command line, from a
// later start that handed them over, or dropped on the main window from the file manager. They wait until the main window is up and no question is
// open, then each file goes through the backup import (merge or replace), or a calendar file through the
// calendar import's preview, one after the other.
class OpenRequests : public QObject
{
    Q_OBJECT
public:
    // Our own message for a file that is no backup; the import's own question would otherwise
    // offer to replace the data with the empty lists such a file reads as.
    static inline const QString NotABackupMessage = QStringLiteral("\u201c%1\u201d is not a Quillory backup, so it was not imported.  Nothing has been changed.");

    explicit OpenRequests(QObject *parent = nullptr);

    // Brings a window to the front and says how, for the log.
    using Raiser = std::function<QString(QWidget *)>;

    // `raise`: bring the window to the front (a later start asked for it), with `raiser` when the
    // later start brought the desktop's permission to do so.
    void add(const QStringList &files, bool raise, const Raiser &raiser = {});
    // The main window is on screen: whatever waited is done now, and files dropped on it from now
    // on are opened the same way.
    void windowShown(QWidget *window);

    // True for the names calendar files go by; such a file is offered to the calendar import.
    static bool isCalendarFile(const QString &name);
    // True when `path` holds a property-list array whose first three elements are lists.
    static bool isBackup(const QString &path);

    // The local files among dropped or pasted data, or an empty list when there are none.
    static QStringList localFiles(const class QMimeData *data);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void scheduleProcessing(int delayMs = 0);
    void process();
    void open(const QString &path);

    QPointer<QWidget> m_window;
    QStringList m_pending;
    bool m_raise = false;
    Raiser m_raiser;
    bool m_scheduled = false;
};
