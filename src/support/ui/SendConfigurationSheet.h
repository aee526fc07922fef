#pragma once

#include <QDialog>

class QLabel;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;

// The debug window's sheet that takes the user's comments and shows that the configuration is on
// its way. Its buttons are wired by the debug window.
class SendConfigurationSheet : public QDialog
{
    Q_OBJECT
public:
    explicit SendConfigurationSheet(QWidget *parent);

    // Ready for comments: editable, both buttons on, nothing in progress.
    void prepare();
    // Sending: the progress indicator turns, the comments are read-only, both buttons are off.
    void showSending();
    void stopSending();

    QPlainTextEdit *sendConfigurationComments() const { return m_comments; }
    QPushButton *sendConfigurationSendButton() const { return m_sendButton; }
    QPushButton *sendConfigurationCancelButton() const { return m_cancelButton; }
    QProgressBar *sendConfigurationProgressIndicator() const { return m_progress; }
    QLabel *sendConfigurationSendingLabel() const { return m_sendingLabel; }

public Q_SLOTS:
    // Escape while sending does not take the sheet away from under the worker.
    void reject() override;

private:
    QPlainTextEdit *m_comments;
    QPushButton *m_sendButton;
    QPushButton *m_cancelButton;
    QProgressBar *m_progress;
    QLabel *m_sendingLabel;
};
