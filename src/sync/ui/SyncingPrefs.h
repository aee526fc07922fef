#pragma once

#include <QWidget>

class BusyIndicator;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTabWidget;
class QTimer;
class Syncing;

// The syncing pane of the preferences: the sync method, the online service's user name and
// password (checked against the service a quarter second after the last keystroke), the FTP
// server's fields, and a button that downloads the data from the server. Everything is saved into
// "Preferences - Syncing" at once, and the online password into the keychain.
//
// One pane lives for the whole run (sharedController); the preferences window shows its view and
// tells it when it closes. It works on its own as well, as a window of its own size.
class SyncingPrefs : public QWidget
{
    Q_OBJECT
public:
    // `engine` does the account check and the download; the shared engine when none is given.
    explicit SyncingPrefs(Syncing *engine = nullptr, QWidget *parent = nullptr);
    ~SyncingPrefs() override;

    static SyncingPrefs *sharedController();
    // Offers the shared pane to the preferences window.
    static void registerWithPreferencesWindow();

    // Loading: getSyncing, then changeMethod.
    void awakeFromNib();
    void getSyncing();
    // Saves a fresh dictionary (only "Method", and "Online Username" for the online service) and
    // puts a typed online password into the keychain.
    void setSyncing();
    void changeMethod();
    // Any keystroke in the online fields: spin, and check again 0.25 s after the last one.
    void controlTextDidChange();
    void checkForValidOnlineUser();
    void downloadDataFromServer();
    // The question before any download that replaces this computer's data (this pane's button, the
    // File menu): true for "Yes".
    static bool confirmDownload();
    void openWebsite();
    // An online account never confirmed in this pane switches syncing off.
    void preferencesPanelWillClose();
    static void setSyncingDefaults();

    // The pane's height for the selected method.
    int getWindowHeight() const;
    void resizeWindow();
    int getViewSize() const { return getWindowHeight(); }
    QWidget *currentView() { return this; }

    // What the confirmation image shows: "GreenCheck", "RedX", or "" while hidden.
    QString shownImage() const { return m_shownImage; }
    bool hasPendingCheck() const { return m_checkTimer != nullptr; }

    static constexpr int PaneWidth = 400;
    static constexpr int CheckDelayMilliseconds = 250;

    static inline const QString KeychainAddError = QStringLiteral("There was an error adding the keychain item.");
    static inline const QString KeychainUpdateError = QStringLiteral("There was an error updating the keychain item.");
    static inline const QString ErrorTitle = QStringLiteral("Error");
    static inline const QString DownloadTitle = QStringLiteral("Download Data");
    static inline const QString DownloadQuestion = QStringLiteral(
        "Are you sure you want to download your data from Quillory Online?  Doing so will overwrite any data that "
        "you have on this computer.");
    static inline const QString YesButton = QStringLiteral("Yes");
    static inline const QString NoButton = QStringLiteral("No");

private:
    QWidget *buildOnlineTab();
    QWidget *buildFtpTab();
    QWidget *buildLocalTab();
    void showImage(const QString &name);
    void forgetCheckTimer();

    Syncing *m_engine;
    QComboBox *m_syncingMethod = nullptr;
    QTabWidget *m_detailsTabView = nullptr;
    QLabel *m_confirmationImageView = nullptr;
    BusyIndicator *m_confirmationProgressIndicator = nullptr;
    QLineEdit *m_onlineUsername = nullptr;
    QLineEdit *m_onlinePassword = nullptr;
    QPushButton *m_downloadButton = nullptr;
    QTimer *m_checkTimer = nullptr;
    QLineEdit *m_ftpServer = nullptr;
    QLineEdit *m_ftpName = nullptr;
    QLineEdit *m_ftpPassword = nullptr;
    QLineEdit *m_ftpPath = nullptr;
    QString m_shownImage;
};
