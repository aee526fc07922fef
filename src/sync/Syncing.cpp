#include "sync/Syncing.h"

#include "exchange/AutomaticBackups.h"
#include "platform/Alerts.h"
#include "platform/DateText.h"
#include "platform/Paths.h"
#include "platform/UserDefaults.h"
#include "store/AssignmentsDocument.h"
#include "store/CoursesDocument.h"
#include "sync/AGKeychain.h"
#include "sync/CommandLine.h"
#include "sync/CurlText.h"
#include "sync/Hashing.h"
#include "sync/SyncArchive.h"
#include "sync/SyncLog.h"
#include "sync/SyncRunLock.h"
#include "sync/SyncingKeys.h"
#include "sync/UrlFetch.h"

#include <QCoreApplication>
#include <QtConcurrent/QtConcurrentRun>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QThread>

#include <algorithm>
#include <mutex>
#include <set>

Q_LOGGING_CATEGORY(lcSync, "quillory.sync")

namespace {

// The product's online service. Nothing answers under ".invalid", so the shared account's
// password can never reach a stranger's server.
const QString ProductFtpHost = QStringLiteral("ftp.quillory.invalid");
const QString ProductWebAddress = QStringLiteral("http://www.quillory.invalid/");
const QString ProductAccountName = QStringLiteral("planner@quillory.invalid");
const QString ProductAccountPassword = QStringLiteral("kestrelo");
const QString ProductHomePage = QStringLiteral("http://www.quillory.invalid/");

const QString FtpScheme = QStringLiteral("ftp://");
const QString UsernameQuery = QStringLiteral("?username=");
const QString PasswordQuery = QStringLiteral("&password=");
// Characters a URL may hold as they are; everything else is percent-escaped.
const QByteArray UrlCharacters = QByteArrayLiteral("!$&'()*+,;=:@/?#[]");
const QString BackupFailed = QStringLiteral("The automatic backup could not be written: %1");
constexpr auto KeychainLog = "Error: unable to get password from keychain.";

std::mutex g_hooksMutex;
Syncing::ProgressPresenter g_progress;
std::function<void()> g_quit;
Syncing::NoticePresenter g_notice;
std::set<QString> g_noticesShown;

Syncing::ProgressPresenter progressPresenter()
{
    std::lock_guard lock(g_hooksMutex);
    return g_progress;
}

} // namespace

Syncing::OnlineService Syncing::productService()
{
    return {ProductFtpHost, ProductWebAddress, ProductAccountName, ProductAccountPassword, ProductHomePage};
}

Syncing::Syncing(OnlineService service, QObject *parent)
    : QObject(parent)
    , m_service(std::move(service))
{
}

Syncing *Syncing::sharedController()
{
    static Syncing *instance = new Syncing(productService());
    return instance;
}

void Syncing::setProgressPresenter(ProgressPresenter presenter)
{
    std::lock_guard lock(g_hooksMutex);
    g_progress = std::move(presenter);
}

void Syncing::setQuitHandler(std::function<void()> handler)
{
    std::lock_guard lock(g_hooksMutex);
    g_quit = std::move(handler);
}

void Syncing::setNoticePresenter(NoticePresenter presenter)
{
    std::lock_guard lock(g_hooksMutex);
    g_notice = std::move(presenter);
}

void Syncing::showNotice(const QString &title, const QString &text)
{
    NoticePresenter presenter;
    {
        std::lock_guard lock(g_hooksMutex);
        // Said once already (the quit's upload meeting the link the start-up's download met): a
        // second message would only repeat it.
        if (!g_noticesShown.insert(title + QLatin1Char('\n') + text).second)
            return;
        presenter = g_notice;
    }
    qCWarning(lcSync).noquote() << title + QStringLiteral(": ") + text;
    if (presenter)
        presenter(title, text);
}

void Syncing::forgetNoticesForTest()
{
    std::lock_guard lock(g_hooksMutex);
    g_noticesShown.clear();
}

bool Syncing::isSyncing()
{
    return SyncRunLock::isHeld();
}

QVariantMap Syncing::settings()
{
    return UserDefaults().dictionary(SyncingKeys::Group);
}

qint64 Syncing::method()
{
    return settings().value(SyncingKeys::Method).toLongLong();
}

// --- Sequences --------------------------------------------------------------------------------

// Both wait for a sync already running even when syncing has been switched off since: the quit's
// upload must not let the program end under the toolbar's.
void Syncing::uploadData()
{
    SyncRunLock::begin();
    runUpload();
    SyncRunLock::end();
}

void Syncing::downloadData()
{
    SyncRunLock::begin();
    runDownload();
    SyncRunLock::end();
}

void Syncing::runUpload()
{
    const qint64 chosen = method();
    if (chosen == SyncingKeys::NoSyncing)
        return;
    m_quitChosen = false;
    showProgressSheetWithTitle(UploadingTitle);
    QFuture<BackupOutcome> pending = startBackup();
    if (compressData()) {
        if (chosen == SyncingKeys::QuilloryOnline) {
            hideProgressSheet();
            showProgressSheetWithTitle(UploadingOnlineTitle);
            onlineUpload();
        } else if (chosen == SyncingKeys::FTPServerMethod) {
            hideProgressSheet();
            showProgressSheetWithTitle(UploadingFTPTitle);
            ftpUpload();
        }
    }
    pending.waitForFinished(); // an upload changes nothing here: a failed backup is only logged
    hideProgressSheet();
}

void Syncing::runDownload()
{
    const qint64 chosen = method();
    if (chosen == SyncingKeys::NoSyncing)
        return;
    m_quitChosen = false;
    showProgressSheetWithTitle(DownloadingTitle);
    QFuture<BackupOutcome> pending = startBackup();
    bool goOn = true;
    if (chosen == SyncingKeys::QuilloryOnline) {
        hideProgressSheet();
        showProgressSheetWithTitle(DownloadingOnlineTitle);
        goOn = onlineDownload();
    } else if (chosen == SyncingKeys::FTPServerMethod) {
        hideProgressSheet();
        showProgressSheetWithTitle(DownloadingFTPTitle);
        goOn = ftpDownload();
    }
    // Checking and unpacking touch only /tmp, so they too run while the backup is written.
    QString problem;
    const SyncArchive::Unpacked unpacked = goOn ? SyncArchive::unpack(&problem) : SyncArchive::Unpacked::NoArchive;
    pending.waitForFinished();
    const BackupOutcome backedUp = pending.result();
    // What the download replaces must be in a backup first; without one the user decides.
    bool merge = unpacked == SyncArchive::Unpacked::Ready;
    if (!backedUp.written && merge)
        merge = showErrorDialog(backedUp.problem);
    if (unpacked == SyncArchive::Unpacked::Refused)
        refuse(problem);
    if (merge) {
        SyncArchive::mergeUnpacked(Paths::dataFolder());
        // The windows show the downloaded assignments and courses at once and write nothing older back.
        AssignmentsDocument::fileReplaced(Paths::assignmentsFile(), AssignmentsDocument::Replacement::Download);
        CoursesDocument::fileReplaced(Paths::coursesFile(), CoursesDocument::Replacement::Download);
    }
    SyncArchive::cleanUp();
    hideProgressSheet();
}

bool Syncing::syncData()
{
    // Taken here, before the thread starts, so that a second click finds it taken at once.
    if (!SyncRunLock::tryBegin()) {
        showNotice(SyncInProgressTitle, SyncInProgressText);
        return false;
    }
    QThread *worker = QThread::create([this] {
        runUpload();
        SyncRunLock::end();
        Q_EMIT asynchronousUploadFinished();
    });
    connect(worker, &QThread::finished, worker, &QObject::deleteLater);
    worker->start();
    return true;
}

void Syncing::uploadDataAsynchronously()
{
    uploadData();
    Q_EMIT asynchronousUploadFinished();
}

// --- Steps ------------------------------------------------------------------------------------

QString Syncing::backupPath()
{
    return AutomaticBackups::path();
}

QFuture<Syncing::BackupOutcome> Syncing::startBackup()
{
    hideProgressSheet();
    showProgressSheetWithTitle(BackingUpTitle);
    // Computed here: the name is the moment the step began.
    const QString path = backupPath();
    return QtConcurrent::run([path] {
        BackupOutcome outcome;
        QString error;
        // Without a data folder (a first start on this computer) there is nothing to lose.
        const bool nothingToSave = !QFileInfo(Paths::dataFolder()).isDir();
        outcome.written = AutomaticBackups::write(path, &error) || nothingToSave;
        if (!outcome.written) {
            qCWarning(lcSync) << "automatic backup failed:" << error;
            outcome.problem = BackupFailed.arg(error);
        }
        return outcome;
    });
}

bool Syncing::backup(QString *problem)
{
    QFuture<BackupOutcome> pending = startBackup();
    pending.waitForFinished();
    const BackupOutcome outcome = pending.result();
    if (problem)
        *problem = outcome.problem;
    return outcome.written;
}

bool Syncing::compressData()
{
    QString problem;
    if (SyncArchive::compress(Paths::dataFolder(), &problem))
        return true;
    refuse(problem);
    return false;
}

void Syncing::uncompressData()
{
    QString problem;
    if (!SyncArchive::uncompress(Paths::dataFolder(), &problem)) {
        refuse(problem);
        return;
    }
    AssignmentsDocument::fileReplaced(Paths::assignmentsFile(), AssignmentsDocument::Replacement::Download);
    CoursesDocument::fileReplaced(Paths::coursesFile(), CoursesDocument::Replacement::Download);
}

void Syncing::refuse(const QString &problem)
{
    // Nothing is left to decide (the step cannot be made safely) and a link anyone can plant in /tmp
    // must not hold the program at a question: the sync goes without this step and the user is told.
    showNotice(WarningTitle, ProblemMessage + problem + NotSyncedText);
}

// --- Transfers --------------------------------------------------------------------------------

QStringList Syncing::uploadArguments(const QString &url) const
{
    return {QStringLiteral("-K"), QStringLiteral("-"), url, QStringLiteral("-T"), SyncArchive::ArchivePath};
}

QStringList Syncing::downloadArguments(const QString &url) const
{
    return {QStringLiteral("-K"), QStringLiteral("-"), url, QStringLiteral("-o"), SyncArchive::ArchivePath};
}

QByteArray Syncing::curlConfig(const QString &credentials)
{
    return CurlText::config(credentials);
}

QString Syncing::onlineCredentials() const
{
    return m_service.accountName + QLatin1Char(':') + m_service.accountPassword;
}

QString Syncing::onlineUrl(bool download) const
{
    const QString username = settings().value(SyncingKeys::OnlineUsername).toString();
    QString url = FtpScheme + m_service.ftpHost + QLatin1Char('/') + username + QLatin1Char('/');
    if (download)
        url += RemoteArchiveName;
    return url;
}

QString Syncing::ftpUrl(const QVariantMap &settings, bool download)
{
    // Joined as typed: the path is expected to begin with "/" (and end with one for a folder).
    QString url = FtpScheme + settings.value(SyncingKeys::FTPServer).toString()
        + settings.value(SyncingKeys::FTPPath).toString();
    if (download)
        url += RemoteArchiveName;
    return url;
}

bool Syncing::transfer(const QString &credentials, const QString &url, bool download)
{
    if (download) {
        QString problem;
        if (!SyncArchive::prepareForDownload(&problem)) {
            refuse(problem);
            return false; // nothing arrived, and a planted archive must not be unpacked
        }
    }
    const QString curlUrl = CurlText::url(url);
    const auto outcome = CommandLine::run(CurlPath, download ? downloadArguments(curlUrl) : uploadArguments(curlUrl),
                                          true, {}, curlConfig(credentials));
    const QString result = outcome.exitStatus != 0 ? outcome.output : QString();
    if (result.isEmpty())
        return true;
    // Whatever a failed download left is not the user's data.
    if (download)
        SyncArchive::removeArchive();
    return showErrorDialog(CurlText::message(result));
}

bool Syncing::onlineUpload()
{
    if (!checkForValidOnlineUser())
        return showErrorDialog(UnableToLogin);
    return transfer(onlineCredentials(), onlineUrl(false), false);
}

bool Syncing::onlineDownload()
{
    if (!checkForValidOnlineUser()) {
        // An archive left from an earlier run is not what the server holds: never unpack it.
        SyncArchive::removeArchive();
        return showErrorDialog(UnableToLogin);
    }
    return transfer(onlineCredentials(), onlineUrl(true), true);
}

static QString ftpCredentials(const QVariantMap &settings)
{
    const QString name = settings.value(SyncingKeys::FTPName).toString();
    QString password; // no keychain item: an empty password
    if (AGKeychain::checkForExistanceOfKeychainItem(AGKeychain::InternetPasswordItem, AGKeychain::QuilloryKind, name))
        password = AGKeychain::getPasswordFromKeychainItem(AGKeychain::InternetPasswordItem, AGKeychain::QuilloryKind,
                                                           name);
    return name + QLatin1Char(':') + password;
}

bool Syncing::ftpUpload()
{
    const QVariantMap current = settings();
    return transfer(ftpCredentials(current), ftpUrl(current, false), false);
}

bool Syncing::ftpDownload()
{
    const QVariantMap current = settings();
    return transfer(ftpCredentials(current), ftpUrl(current, true), true);
}

// --- Account check ----------------------------------------------------------------------------

bool Syncing::checkForValidOnlineUser()
{
    const QString username = settings().value(SyncingKeys::OnlineUsername).toString();
    if (!AGKeychain::checkForExistanceOfKeychainItem(AGKeychain::OnlinePasswordItem, AGKeychain::QuilloryKind,
                                                     username)) {
        qCWarning(lcSync).noquote() << KeychainLog;
        return false;
    }
    const QString password
        = AGKeychain::getPasswordFromKeychainItem(AGKeychain::OnlinePasswordItem, AGKeychain::QuilloryKind, username);
    return checkForValidOnlineUsername(username, password);
}

QByteArray Syncing::accountCheckUrl(const QString &username, const QString &password) const
{
    const QString text = m_service.webAddress + AccountCheckPage + UsernameQuery + username + PasswordQuery
        + Hashing::md5HexOfText(password);
    return text.toUtf8().toPercentEncoding(UrlCharacters);
}

bool Syncing::checkForValidOnlineUsername(const QString &username, const QString &password)
{
    const auto body = UrlFetch::bodyOf(accountCheckUrl(username, password));
    return body && !body->isEmpty() && body->front() == QLatin1Char('1');
}

// --- Runner, sheet and alert ------------------------------------------------------------------

QString Syncing::runCommand(const QString &program, const QStringList &arguments)
{
    const auto outcome = CommandLine::run(program, arguments);
    return outcome.exitStatus != 0 ? outcome.output : QString();
}

void Syncing::showProgressSheetWithTitle(const QString &title)
{
    const auto presenter = progressPresenter();
    if (presenter.show)
        presenter.show(title);
}

void Syncing::hideProgressSheet()
{
    const auto presenter = progressPresenter();
    if (presenter.hide)
        presenter.hide();
}

bool Syncing::showErrorDialog(const QString &text)
{
    hideProgressSheet();
    const Alerts::Request request{WarningTitle, ProblemMessage + (text.isEmpty() ? NoInformation : text), QString(),
                                  {QuitButton, ContinueButton}, Alerts::Style::Warning};
    QString answer;
    QCoreApplication *app = QCoreApplication::instance();
    if (app && QThread::currentThread() != app->thread()) {
        // The toolbar's upload runs on its own thread; the alert is asked on the interface thread.
        QMetaObject::invokeMethod(app, [&] { answer = Alerts::run(request); }, Qt::BlockingQueuedConnection);
    } else {
        answer = Alerts::run(request);
    }
    // Quitting on a signal closes the alert with no answer: the program is on its way out, and
    // going on would only start what the quit must not wait for.
    if (answer != QuitButton && !(answer.isEmpty() && Alerts::isQuitting()))
        return true;

    m_quitChosen = true;
    std::function<void()> quit;
    {
        std::lock_guard lock(g_hooksMutex);
        quit = g_quit;
    }
    if (quit)
        quit();
    else if (app)
        QMetaObject::invokeMethod(app, &QCoreApplication::quit, Qt::QueuedConnection);
    return false;
}
