#pragma once

#include <QWidget>

class QCheckBox;
class QPlainTextEdit;
class QPushButton;

// The window that offers, at the start after a crash, to mail the crash log to the developer with
// the user's description of what happened and, if the user wants, a copy of the data. Closing it,
// by sending or cancelling, deletes the log, so the same crash is never offered twice.
class CrashReporter : public QWidget
{
    Q_OBJECT
public:
    explicit CrashReporter(QWidget *parent = nullptr);

    // Shows the window with the log at `logPath` when that log is newer than `lastStartup` (the
    // preferences' "Last Startup", still unrenewed). True when it was shown.
    bool checkForCrashLog(const QString &logPath, const QString &lastStartup);

    // The send button: sends the description and the log (with the data when the box is ticked),
    // whatever the outcome quietly, then closes the window.
    void emailCrashReport();

    QPlainTextEdit *problemInformation() const { return m_problemInformation; }
    QPlainTextEdit *descriptionInformation() const { return m_descriptionInformation; }
    QCheckBox *sendDataButton() const { return m_sendDataButton; }
    QPushButton *sendButton() const { return m_sendButton; }
    QPushButton *cancelButton() const { return m_cancelButton; }

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    QString m_logPath;
    QPlainTextEdit *m_problemInformation;
    QPlainTextEdit *m_descriptionInformation;
    QCheckBox *m_sendDataButton;
    QPushButton *m_sendButton;
    QPushButton *m_cancelButton;
};
