#pragma once

#include <QObject>

class QSocketNotifier;

// Turns SIGTERM and SIGINT (a desktop session's logout, Ctrl+C in a terminal) into the program's
// normal quit, so that the quit path runs just as with the Quit command. The signal handler only
// writes a byte to a socket; the event loop does the rest.
class QuitSignals : public QObject
{
    Q_OBJECT
public:
    explicit QuitSignals(QObject *parent = nullptr);
    ~QuitSignals() override;

Q_SIGNALS:
    void quitRequested(int signal);

private:
    void readSignal();
    QSocketNotifier *m_notifier = nullptr;
};
