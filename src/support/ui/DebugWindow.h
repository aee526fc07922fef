#pragma once

#include <QDialog>
#include <QPointer>

class QLabel;
class QPushButton;
class QThread;
class SendConfigurationSheet;

// The window that opens when Alt is held while the program starts, before anything else: it can
// delete the preferences or all data, mail the configuration to the developer, and then quit or
// relaunch the program (which starts afresh from whatever was deleted).
class DebugWindow : public QDialog
{
    Q_OBJECT
public:
    enum class Outcome { Quit, Relaunch };

    // One for the run, made on first use.
    static DebugWindow *sharedController();
    explicit DebugWindow(QWidget *parent = nullptr);
    ~DebugWindow() override;

    // Whether Alt is held now (the modifier state the window system reports). Tests and scripted
    // checks get the same answer through QUILLORY_TEST_ALT_HELD.
    static bool isRequestedAtLaunch();

    // Shows the name and build, centres the window and runs it modally until the user quits or
    // relaunches. The caller does what the outcome says.
    Outcome showDebugWindow();

    // The close button (QWidget::close keeps its own meaning): ends the modal run with a relaunch.
    void closeAndRelaunch();
    void quit();
    void deletePreferences();
    void deleteData();
    void showSendConfigurationDialog();
    void closeSendConfigurationWindow();
    // The sheet's send button: the work goes to a worker thread; the sheet and the alert after it
    // change on this thread only.
    void sendConfiguration();

    QLabel *applicationLabel() const { return m_applicationLabel; }
    SendConfigurationSheet *sendConfigurationSheet() const { return m_sheet; }
    bool isSending() const;

Q_SIGNALS:
    // The configuration report is done and its alert was answered.
    void configurationSendingFinished(bool sent);

public Q_SLOTS:
    // Escape and the window's close box relaunch, as the close button does.
    void reject() override;

private:
    void sendingFinished(bool sent);

    QLabel *m_applicationLabel;
    SendConfigurationSheet *m_sheet;
    QPointer<QThread> m_worker;
};
