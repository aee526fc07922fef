#include "sync/ui/SyncingPrefs.h"

#include "platform/Alerts.h"
#include "platform/UserDefaults.h"
#include "platform/Workspace.h"
#include "store/ui/SyncingPaneHost.h"
#include "sync/AGKeychain.h"
#include "sync/Syncing.h"
#include "sync/SyncingKeys.h"
#include "sync/ui/BusyIndicator.h"
#include "sync/ui/ConfirmationImages.h"

#include <QComboBox>
#include <QFormLayout>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPropertyAnimation>
#include <QPushButton>
#include <QTabWidget>
#include <QTextDocumentFragment>
#include <QTimer>
#include <QVBoxLayout>

namespace {

// Item titles of the method pop-up, in the order of the "Method" numbers.
const QStringList MethodTitles{QStringLiteral("No Syncing"), QStringLiteral("Quillory Online"),
                               QStringLiteral("FTP Server"), QStringLiteral("Local Archive")};
// Pane heights for methods 0 to 3.
constexpr int Heights[] = {135, 455, 300, 175};
constexpr int ImageSide = 18;
constexpr int ResizeMilliseconds = 200;

const QString MethodCaption = QStringLiteral("Sync using:");
const QString Introduction = QStringLiteral(
    "Quillory downloads your data when it starts and uploads it when it quits, each time after a backup.");
const QString OnlineExplanation = QStringLiteral(
    "Quillory Online keeps a copy of your data on the Internet, so every computer you use can have the same "
    "assignments.  Type the user name and password of your account; they are checked as you type.");
const QString DownloadExplanation = QStringLiteral(
    "To replace the data on this computer with the data kept on the server now, download it.");
const QString FtpExplanation = QStringLiteral(
    "Keep your data on an FTP server of your own.  The path begins with \"/\" and ends with \"/\" for a folder, "
    "for example /planner/.");
// Rich text so that the archive's path is never broken at a slash.
const QString LocalExplanation = QStringLiteral(
    "Quillory packs your data into <span style=\"white-space:nowrap\">/tmp/Quillory.tar</span> when it quits "
    "and restores it from there when it starts.&nbsp; Nothing is sent over the network.");

QLabel *paragraph(const QString &text, const QString &objectName)
{
    auto *label = new QLabel(text);
    label->setObjectName(objectName);
    label->setWordWrap(true);
    label->setAccessibleName(QTextDocumentFragment::fromHtml(text).toPlainText());
    return label;
}

QLineEdit *field(const QString &objectName, const QString &accessibleName, bool secure = false)
{
    auto *edit = new QLineEdit;
    edit->setObjectName(objectName);
    edit->setAccessibleName(accessibleName);
    if (secure)
        edit->setEchoMode(QLineEdit::Password);
    return edit;
}

} // namespace

SyncingPrefs::SyncingPrefs(Syncing *engine, QWidget *parent)
    : QWidget(parent)
    , m_engine(engine ? engine : Syncing::sharedController())
{
    setObjectName(QStringLiteral("syncingView"));
    setAccessibleName(QStringLiteral("Sync preferences"));

    m_syncingMethod = new QComboBox;
    m_syncingMethod->setObjectName(QStringLiteral("syncingMethod"));
    m_syncingMethod->setAccessibleName(QStringLiteral("Sync method"));
    m_syncingMethod->addItems(MethodTitles);
    connect(m_syncingMethod, &QComboBox::activated, this, &SyncingPrefs::changeMethod);

    auto *methodCaption = new QLabel(MethodCaption);
    methodCaption->setObjectName(QStringLiteral("syncingMethodCaption"));
    methodCaption->setBuddy(m_syncingMethod);
    auto *methodRow = new QHBoxLayout;
    methodRow->addWidget(methodCaption);
    methodRow->addWidget(m_syncingMethod, 1);

    m_detailsTabView = new QTabWidget;
    m_detailsTabView->setObjectName(QStringLiteral("detailsTabView"));
    m_detailsTabView->setAccessibleName(QStringLiteral("Sync method settings"));
    m_detailsTabView->addTab(buildOnlineTab(), MethodTitles[1]);
    m_detailsTabView->addTab(buildFtpTab(), MethodTitles[2]);
    m_detailsTabView->addTab(buildLocalTab(), MethodTitles[3]);
    m_detailsTabView->tabBar()->hide(); // the pop-up chooses the tab
    // The tab widget hands focus to its tab bar, which is hidden here: as a Tab stop it would take
    // the key and go nowhere, and the fields below could never be reached from the keyboard.
    m_detailsTabView->setFocusPolicy(Qt::NoFocus);
    m_detailsTabView->tabBar()->setFocusPolicy(Qt::NoFocus);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(20, 14, 20, 12);
    layout->addLayout(methodRow);
    layout->addWidget(paragraph(Introduction, QStringLiteral("syncingIntroduction")));
    layout->addWidget(m_detailsTabView, 1);
    layout->addStretch(0);

    awakeFromNib();
}

SyncingPrefs::~SyncingPrefs() = default;

QWidget *SyncingPrefs::buildOnlineTab()
{
    auto *tab = new QWidget;
    tab->setObjectName(QStringLiteral("onlineTab"));
    tab->setAccessibleName(MethodTitles[1]);
    m_onlineUsername = field(QStringLiteral("onlineUsername"), QStringLiteral("Quillory Online user name"));
    m_onlinePassword = field(QStringLiteral("onlinePassword"), QStringLiteral("Quillory Online password"), true);
    connect(m_onlineUsername, &QLineEdit::textEdited, this, &SyncingPrefs::controlTextDidChange);
    connect(m_onlinePassword, &QLineEdit::textEdited, this, &SyncingPrefs::controlTextDidChange);

    m_confirmationProgressIndicator = new BusyIndicator;
    m_confirmationProgressIndicator->setObjectName(QStringLiteral("confirmationProgressIndicator"));
    m_confirmationProgressIndicator->setAccessibleName(QStringLiteral("Checking the account"));
    m_confirmationProgressIndicator->setFixedSize(ImageSide, ImageSide);
    m_confirmationProgressIndicator->hide();
    m_confirmationImageView = new QLabel;
    m_confirmationImageView->setObjectName(QStringLiteral("confirmationImageView"));
    m_confirmationImageView->setAccessibleName(QStringLiteral("Account check result"));
    m_confirmationImageView->setFixedSize(ImageSide, ImageSide);
    m_confirmationImageView->hide();

    auto *passwordRow = new QHBoxLayout;
    passwordRow->addWidget(m_onlinePassword, 1);
    auto *status = new QWidget;
    status->setFixedSize(ImageSide, ImageSide);
    auto *statusStack = new QHBoxLayout(status);
    statusStack->setContentsMargins(0, 0, 0, 0);
    statusStack->addWidget(m_confirmationProgressIndicator);
    statusStack->addWidget(m_confirmationImageView);
    passwordRow->addWidget(status);

    auto *form = new QFormLayout;
    form->addRow(QStringLiteral("User name:"), m_onlineUsername);
    form->addRow(QStringLiteral("Password:"), passwordRow);

    auto *website = new QPushButton(QStringLiteral("Visit Quillory Online"));
    website->setObjectName(QStringLiteral("openWebsiteButton"));
    website->setAccessibleName(website->text());
    connect(website, &QPushButton::clicked, this, &SyncingPrefs::openWebsite);

    m_downloadButton = new QPushButton(QStringLiteral("Download Data"));
    m_downloadButton->setObjectName(QStringLiteral("downloadButton"));
    m_downloadButton->setAccessibleName(m_downloadButton->text());
    m_downloadButton->setEnabled(false);
    connect(m_downloadButton, &QPushButton::clicked, this, &SyncingPrefs::downloadDataFromServer);

    auto *line = new QFrame;
    line->setObjectName(QStringLiteral("onlineSeparator"));
    line->setFrameShape(QFrame::HLine);
    line->setFrameShadow(QFrame::Sunken);

    auto *layout = new QVBoxLayout(tab);
    layout->addWidget(paragraph(OnlineExplanation, QStringLiteral("onlineExplanation")));
    layout->addLayout(form);
    auto *websiteRow = new QHBoxLayout;
    websiteRow->addStretch(1);
    websiteRow->addWidget(website);
    layout->addLayout(websiteRow);
    layout->addWidget(line);
    layout->addWidget(paragraph(DownloadExplanation, QStringLiteral("downloadExplanation")));
    auto *downloadRow = new QHBoxLayout;
    downloadRow->addStretch(1);
    downloadRow->addWidget(m_downloadButton);
    layout->addLayout(downloadRow);
    layout->addStretch(1);
    return tab;
}

QWidget *SyncingPrefs::buildFtpTab()
{
    auto *tab = new QWidget;
    tab->setObjectName(QStringLiteral("ftpTab"));
    tab->setAccessibleName(MethodTitles[2]);
    m_ftpServer = field(QStringLiteral("ftpServer"), QStringLiteral("FTP server"));
    m_ftpName = field(QStringLiteral("ftpName"), QStringLiteral("FTP user name"));
    m_ftpPassword = field(QStringLiteral("ftpPassword"), QStringLiteral("FTP password"), true);
    m_ftpPath = field(QStringLiteral("ftpPath"), QStringLiteral("FTP path"));
    m_ftpServer->setPlaceholderText(QStringLiteral("ftp.example.com"));
    m_ftpPath->setPlaceholderText(QStringLiteral("/planner/"));
    auto *form = new QFormLayout;
    form->addRow(QStringLiteral("Server:"), m_ftpServer);
    form->addRow(QStringLiteral("User name:"), m_ftpName);
    form->addRow(QStringLiteral("Password:"), m_ftpPassword);
    form->addRow(QStringLiteral("Path:"), m_ftpPath);
    auto *layout = new QVBoxLayout(tab);
    layout->addWidget(paragraph(FtpExplanation, QStringLiteral("ftpExplanation")));
    layout->addLayout(form);
    layout->addStretch(1);
    return tab;
}

QWidget *SyncingPrefs::buildLocalTab()
{
    auto *tab = new QWidget;
    tab->setObjectName(QStringLiteral("localTab"));
    tab->setAccessibleName(MethodTitles[3]);
    auto *layout = new QVBoxLayout(tab);
    layout->addWidget(paragraph(LocalExplanation, QStringLiteral("localExplanation")));
    layout->addStretch(1);
    return tab;
}

SyncingPrefs *SyncingPrefs::sharedController()
{
    static SyncingPrefs *instance = new SyncingPrefs;
    return instance;
}

void SyncingPrefs::registerWithPreferencesWindow()
{
    SyncingPaneHost::registerPane({[] { return sharedController()->currentView(); },
                                   [] { return sharedController()->getViewSize(); },
                                   [] { sharedController()->preferencesPanelWillClose(); }});
}

void SyncingPrefs::awakeFromNib()
{
    getSyncing();
    changeMethod();
}

void SyncingPrefs::getSyncing()
{
    const QVariantMap settings = UserDefaults().dictionary(SyncingKeys::Group);
    const qint64 method = settings.value(SyncingKeys::Method).toLongLong();
    m_syncingMethod->setCurrentIndex(method >= 0 && method < MethodTitles.size() ? int(method) : 0);
    if (method != SyncingKeys::QuilloryOnline)
        return;
    if (settings.contains(SyncingKeys::OnlineUsername))
        m_onlineUsername->setText(settings.value(SyncingKeys::OnlineUsername).toString());
    const QString username = m_onlineUsername->text();
    if (AGKeychain::checkForExistanceOfKeychainItem(AGKeychain::OnlinePasswordItem, AGKeychain::QuilloryKind, username))
        m_onlinePassword->setText(
            AGKeychain::getPasswordFromKeychainItem(AGKeychain::OnlinePasswordItem, AGKeychain::QuilloryKind, username));
    controlTextDidChange();
}

void SyncingPrefs::setSyncing()
{
    const int method = m_syncingMethod->currentIndex();
    QVariantMap settings{{SyncingKeys::Method, qint64(method)}};
    if (method == SyncingKeys::QuilloryOnline) {
        const QString username = m_onlineUsername->text();
        const QString password = m_onlinePassword->text();
        settings.insert(SyncingKeys::OnlineUsername, username);
        if (!password.isEmpty()) {
            const auto &item = AGKeychain::OnlinePasswordItem;
            const auto &kind = AGKeychain::QuilloryKind;
            if (!AGKeychain::checkForExistanceOfKeychainItem(item, kind, username)) {
                if (!AGKeychain::addKeychainItem(item, kind, username, password))
                    Alerts::inform(ErrorTitle, KeychainAddError);
            } else if (!AGKeychain::modifyKeychainItem(item, kind, username, password)) {
                Alerts::inform(ErrorTitle, KeychainUpdateError);
            }
        }
    }
    // The whole dictionary is replaced: keys this pane does not write are dropped.
    UserDefaults().set(SyncingKeys::Group, settings);
}

void SyncingPrefs::changeMethod()
{
    const int method = m_syncingMethod->currentIndex();
    if (method == SyncingKeys::NoSyncing)
        m_detailsTabView->hide();
    resizeWindow();
    setSyncing();
    if (method != SyncingKeys::NoSyncing) {
        m_detailsTabView->show();
        m_detailsTabView->setCurrentIndex(method - 1);
    }
}

void SyncingPrefs::controlTextDidChange()
{
    m_confirmationProgressIndicator->show();
    m_confirmationProgressIndicator->startAnimation();
    showImage(QString());
    m_downloadButton->setEnabled(false);
    if (m_onlineUsername->text().isEmpty() || m_onlinePassword->text().isEmpty())
        return;
    forgetCheckTimer();
    m_checkTimer = new QTimer(this);
    m_checkTimer->setObjectName(QStringLiteral("checkTimer"));
    m_checkTimer->setSingleShot(true);
    m_checkTimer->setInterval(CheckDelayMilliseconds);
    connect(m_checkTimer, &QTimer::timeout, this, &SyncingPrefs::checkForValidOnlineUser);
    m_checkTimer->start();
}

void SyncingPrefs::checkForValidOnlineUser()
{
    m_confirmationProgressIndicator->show();
    m_confirmationProgressIndicator->startAnimation();
    showImage(QString());
    m_downloadButton->setEnabled(false);
    const bool accepted = m_engine->checkForValidOnlineUsername(m_onlineUsername->text(), m_onlinePassword->text());
    m_confirmationProgressIndicator->stopAnimation();
    m_confirmationProgressIndicator->hide();
    if (accepted) {
        showImage(ConfirmationImages::GreenCheck);
        m_downloadButton->setEnabled(true);
        setSyncing();
    } else {
        showImage(ConfirmationImages::RedX);
        m_downloadButton->setEnabled(false);
    }
    forgetCheckTimer();
}

void SyncingPrefs::forgetCheckTimer()
{
    if (!m_checkTimer)
        return;
    m_checkTimer->stop();
    m_checkTimer->deleteLater();
    m_checkTimer = nullptr;
}

void SyncingPrefs::showImage(const QString &name)
{
    m_shownImage = name;
    if (name.isEmpty()) {
        m_confirmationImageView->hide();
        return;
    }
    m_confirmationImageView->setPixmap(ConfirmationImages::image(name, ImageSide, devicePixelRatioF()));
    m_confirmationImageView->setAccessibleDescription(name);
    m_confirmationImageView->setToolTip(name == ConfirmationImages::GreenCheck
                                            ? QStringLiteral("Your Quillory Online account was accepted.")
                                            : QStringLiteral("Quillory Online did not accept this account."));
    m_confirmationImageView->show();
}

bool SyncingPrefs::confirmDownload()
{
    return Alerts::run({DownloadTitle, DownloadQuestion, QString(), {YesButton, NoButton}, Alerts::Style::Warning})
        == YesButton;
}

void SyncingPrefs::downloadDataFromServer()
{
    if (confirmDownload())
        m_engine->downloadData();
}

void SyncingPrefs::openWebsite()
{
    Workspace::openUrl(QUrl(m_engine->service().homePage));
}

void SyncingPrefs::preferencesPanelWillClose()
{
    if (m_syncingMethod->currentIndex() != SyncingKeys::QuilloryOnline
        || m_shownImage == ConfirmationImages::GreenCheck)
        return;
    forgetCheckTimer();
    m_confirmationProgressIndicator->stopAnimation();
    m_syncingMethod->setCurrentIndex(SyncingKeys::NoSyncing);
    m_detailsTabView->hide();
    setSyncing();
}

void SyncingPrefs::setSyncingDefaults()
{
    UserDefaults().set(SyncingKeys::Group, QVariantMap{{SyncingKeys::Method, qint64(SyncingKeys::NoSyncing)}});
}

int SyncingPrefs::getWindowHeight() const
{
    const int method = m_syncingMethod->currentIndex();
    return method >= 0 && method < int(std::size(Heights)) ? Heights[method] : Heights[0];
}

void SyncingPrefs::resizeWindow()
{
    QWidget *host = window();
    const int height = getWindowHeight();
    // Whatever surrounds the pane in its window (a toolbar) keeps its height.
    const int chrome = host == this ? 0 : qMax(0, host->height() - this->height());
    const QRect target(host->geometry().topLeft(), QSize(PaneWidth, chrome + height));
    if (host != this)
        setFixedSize(PaneWidth, height);
    host->setMinimumSize(0, 0);
    host->setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
    if (!host->isVisible()) {
        host->setGeometry(target);
        host->setFixedSize(target.size());
        return;
    }
    // The top edge stays put; the window grows or shrinks at the bottom.
    auto *animation = new QPropertyAnimation(host, "geometry", this);
    animation->setDuration(ResizeMilliseconds);
    animation->setStartValue(host->geometry());
    animation->setEndValue(target);
    animation->setEasingCurve(QEasingCurve::InOutQuad);
    connect(animation, &QPropertyAnimation::finished, host, [host, target] { host->setFixedSize(target.size()); });
    animation->start(QAbstractAnimation::DeleteWhenStopped);
}
