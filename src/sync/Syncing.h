#pragma once

#include <QFuture>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <functional>

// The sync engine: copies the whole data folder to a remote place and back, with an automatic
// backup of the current data before either. An upload packs the data folder (less its backups)
// into /tmp/Quillory.tar and sends it with curl; a download fetches that archive and copies its
// contents over the data folder. Two transfers exist: the online service (one fixed FTP account
// with a folder per user, after a web check of the user's own account) and an FTP server of the
// user's own. Every run reads "Preferences - Syncing" afresh; "Method" 0 or absent does nothing.
class Syncing : public QObject
{
    Q_OBJECT
public:
    // The online service. The product's values live under ".invalid" host names, which never
    // resolve; tests hand their own local endpoints to the constructor.
    struct OnlineService {
        QString ftpHost;         // host (and ":port") of the service's FTP server
        QString webAddress;      // ends in "/"; "userexists.php" is appended
        QString accountName;     // the one FTP account every user shares
        QString accountPassword; // its fixed password
        QString homePage;
    };
    static OnlineService productService();

    explicit Syncing(OnlineService service = productService(), QObject *parent = nullptr);
    // The one engine of the running program (with the product's service).
    static Syncing *sharedController();

    const OnlineService &service() const { return m_service; }

    // Full sequences. Each blocks its thread until its child processes are done.
    void uploadData();
    void downloadData();
    // uploadData on a thread of its own (the toolbar's upload); returns at once and emits
    // asynchronousUploadFinished when done. Windows are touched only through the presenters,
    // which hand the work to the interface thread. While another sync runs it starts nothing, tells
    // the user so and returns false.
    bool syncData();
    void uploadDataAsynchronously();

    // Syncs share fixed temporary paths, so one runs at a time in the whole program: a sequence asked
    // for while another runs waits for it (on the interface thread the windows stay painted meanwhile
    // and the running sync can still show its sheet and alerts).
    static bool isSyncing();

    // The steps.
    // Writes a dated backup and keeps the newest 20 entries. False (with the reason) when the
    // backup could not be written.
    bool backup(QString *problem = nullptr);
    // The same begun on a worker thread, so that packing and the transfer, which only read the data
    // folder, run beside it; a download waits for it before it changes anything.
    struct BackupOutcome {
        bool written = false;
        QString problem;
    };
    QFuture<BackupOutcome> startBackup();
    // False when a temporary path had to be refused (the reason went to the Warning alert).
    bool compressData();
    void uncompressData();
    // Transfers. False when the user chose "Quit" in the Warning alert.
    bool onlineUpload();
    bool onlineDownload();
    bool ftpUpload();
    bool ftpDownload();

    bool checkForValidOnlineUser();
    bool checkForValidOnlineUsername(const QString &username, const QString &password);
    // The account check's address: web address + "userexists.php?username=...&password=<md5 hex>",
    // with only the characters a URL cannot hold percent-escaped (UTF-8).
    QByteArray accountCheckUrl(const QString &username, const QString &password) const;

    // Runs a program; its output when the exit status is non-zero, "" when it is zero.
    QString runCommand(const QString &program, const QStringList &arguments);

    void showProgressSheetWithTitle(const QString &title);
    void hideProgressSheet();
    // The "Warning" alert with "Quit" and "Continue". Returns true for "Continue". "Quit" hands
    // over to the quit handler, and the running sequence stops.
    bool showErrorDialog(const QString &text);
    // Whether "Quit" was chosen during the last sequence (the start-up checks this after the
    // download, since it runs before the event loop).
    bool quitWasChosen() const { return m_quitChosen; }

    // What the arguments of a transfer are, for the sequences and for anyone checking them. The
    // credentials never appear among them, where every user of the computer could read them: curl
    // reads them from its standard input, as the configuration line curlConfig() makes.
    QStringList uploadArguments(const QString &url) const;
    QStringList downloadArguments(const QString &url) const;
    static QByteArray curlConfig(const QString &credentials);
    QString onlineUrl(bool download) const;
    static QString ftpUrl(const QVariantMap &settings, bool download);

    // The backup file name for now: "<Syncing Backups>/<date>.plist", trimmed.
    static QString backupPath();
    static QVariantMap settings();
    static qint64 method();

    // The interface installs these at start-up; without them nothing is shown.
    struct ProgressPresenter {
        std::function<void(const QString &title)> show;
        std::function<void()> hide;
    };
    static void setProgressPresenter(ProgressPresenter presenter);
    static void setQuitHandler(std::function<void()> handler);
    // A message that asks nothing and blocks nothing (a refused temporary path, a sync already
    // running). Each distinct message is shown once per run of the program and always logged.
    using NoticePresenter = std::function<void(const QString &title, const QString &text)>;
    static void setNoticePresenter(NoticePresenter presenter);
    static void showNotice(const QString &title, const QString &text);

    static constexpr int MaximumBackups = 20; // the automatic backups kept (AutomaticBackups writes them)
    // Notices are shown once per run of the program; tests start each case afresh.
    static void forgetNoticesForTest();

    static inline const QString CurlPath = QStringLiteral("/usr/bin/curl");
    static inline const QString RemoteArchiveName = QStringLiteral("Quillory.tar");
    static inline const QString AccountCheckPage = QStringLiteral("userexists.php");

    static inline const QString UploadingTitle = QStringLiteral("Uploading Data...");
    static inline const QString DownloadingTitle = QStringLiteral("Downloading Data...");
    static inline const QString BackingUpTitle = QStringLiteral("Backing Up Data...");
    static inline const QString UploadingOnlineTitle = QStringLiteral("Uploading Data to Quillory Online...");
    static inline const QString UploadingFTPTitle = QStringLiteral("Uploading Data to FTP Server...");
    static inline const QString DownloadingOnlineTitle = QStringLiteral("Downloading Data from Quillory Online...");
    static inline const QString DownloadingFTPTitle = QStringLiteral("Downloading Data from FTP Server...");

    static inline const QString WarningTitle = QStringLiteral("Warning");
    static inline const QString ProblemMessage = QStringLiteral("There was a problem syncing your data:\n");
    static inline const QString NoInformation = QStringLiteral("no information provided");
    static inline const QString QuitButton = QStringLiteral("Quit");
    static inline const QString ContinueButton = QStringLiteral("Continue");
    static inline const QString UnableToLogin = QStringLiteral("unable to login.");
    static inline const QString SyncInProgressTitle = QStringLiteral("Sync in Progress");
    static inline const QString SyncInProgressText
        = QStringLiteral("Your data is already being synced.  Try again when that sync has finished.");
    static inline const QString NotSyncedText = QStringLiteral("\n\nThis sync was skipped; nothing was changed.");

Q_SIGNALS:
    void asynchronousUploadFinished();

private:
    void runUpload();
    void runDownload();
    // Reports a temporary path or archive that had to be refused: logged, and a notice.
    void refuse(const QString &problem);
    bool transfer(const QString &credentials, const QString &url, bool download);
    QString onlineCredentials() const;

    OnlineService m_service;
    bool m_quitChosen = false;
};
