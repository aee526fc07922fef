#pragma once

#include <QObject>
#include <QStringList>

#include "WindowActivation.h"

class QLocalServer;
class QLocalSocket;

// One running Quillory per data folder. Two copies would each write the same data files from their
// own lists, and whichever saved last would silently undo the other's changes. So the first start
// listens on a local socket named after the data folder; a later start finds it there, hands it the
// files from its command line (or just asks it to come to the front) and ends.
//
// The socket lives in $XDG_RUNTIME_DIR, or else in a private folder of the user's own in the
// temporary folder, and only the user may connect to it. A socket left behind by a copy that was
// killed is noticed (nobody answers on it) and replaced.
class SingleInstance : public QObject
{
    Q_OBJECT
public:
    enum class Role {
        Primary,    // this process runs the program and listens for later starts
        HandedOver, // another process runs the program for this data folder and has the files
        Alone,      // no socket could be set up: the program runs without the guard (logged)
    };

    explicit SingleInstance(const QString &dataFolder, QObject *parent = nullptr);
    ~SingleInstance() override;

    // Either hands `files` to the copy already running, with this start's permission to come to the
    // front, or becomes the one that runs.
    Role claim(const QStringList &files, const WindowActivation &activation = {});

    // Where the socket for `dataFolder` goes; empty when no private place can be found.
    static QString socketPath(const QString &dataFolder);

Q_SIGNALS:
    // A later start asked for the window, with the files from its command line (maybe none).
    void activationRequested(const QStringList &files, const WindowActivation &activation);

private:
    bool handOver(const QStringList &files, const WindowActivation &activation);
    bool listen();
    void readRequest(QLocalSocket *socket);

    QString m_path;
    QLocalServer *m_server = nullptr;
};
