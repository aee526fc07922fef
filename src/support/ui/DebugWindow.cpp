#include "support/ui/DebugWindow.h"

#include "BuildInfo.h"
#include "importing/CalendarSubscriptions.h"
#include "platform/Alerts.h"
#include "platform/Paths.h"
#include "support/SupportLog.h"
#include "support/SupportReports.h"
#include "support/SupportTexts.h"
#include "support/TestHooks.h"
#include "support/ui/SendConfigurationSheet.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QGridLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QThread>
#include <QVBoxLayout>

namespace {
const QString WindowTitle = QStringLiteral("Quillory Debug");
const QString Explanation = QStringLiteral(
    "You held Alt while Quillory started. Here you can start again from a clean slate or send your "
    "configuration to the developer.");
const QString DeletePreferencesLabel = QStringLiteral("Delete Preferences…");
const QString DeleteDataLabel = QStringLiteral("Delete Data…");
const QString SendConfigurationLabel = QStringLiteral("Send Configuration…");
const QString QuitLabel = QStringLiteral("Quit");
const QString RelaunchLabel = QStringLiteral("Relaunch");
// The two ends of the modal run.
constexpr int QuitCode = 2;
constexpr int RelaunchCode = 3;

QPushButton *makeButton(const QString &text, const char *name, const char *icon, QWidget *parent)
{
    auto *button = new QPushButton(QIcon::fromTheme(QLatin1String(icon)), text, parent);
    button->setObjectName(QLatin1String(name));
    button->setAccessibleName(QString(text).remove(QChar(0x2026)));
    button->setAutoDefault(false);
    return button;
}
} // namespace

DebugWindow *DebugWindow::sharedController()
{
    static QPointer<DebugWindow> shared;
    if (!shared)
        shared = new DebugWindow;
    return shared;
}

DebugWindow::DebugWindow(QWidget *parent)
    : QDialog(parent)
    , m_applicationLabel(new QLabel(this))
    , m_sheet(new SendConfigurationSheet(this))
{
    setObjectName(QStringLiteral("DebugWindow"));
    setWindowTitle(WindowTitle);
    setAccessibleName(WindowTitle);
    setWindowIcon(QIcon::fromTheme(QStringLiteral("applications-development")));

    m_applicationLabel->setObjectName(QStringLiteral("applicationLabel"));
    QFont large = m_applicationLabel->font();
    large.setBold(true);
    large.setPointSizeF(large.pointSizeF() * 1.4);
    m_applicationLabel->setFont(large);
    m_applicationLabel->setAlignment(Qt::AlignCenter);
    auto *explanation = new QLabel(Explanation, this);
    explanation->setWordWrap(true);

    QPushButton *deletePreferences = makeButton(DeletePreferencesLabel, "deletePreferencesButton", "edit-delete", this);
    QPushButton *deleteData = makeButton(DeleteDataLabel, "deleteDataButton", "edit-delete", this);
    QPushButton *sendConfiguration = makeButton(SendConfigurationLabel, "sendConfigurationButton", "mail-send", this);
    QPushButton *quit = makeButton(QuitLabel, "quitButton", "application-exit", this);
    QPushButton *relaunch = makeButton(RelaunchLabel, "relaunchButton", "view-refresh", this);
    relaunch->setDefault(true);
    connect(deletePreferences, &QPushButton::clicked, this, &DebugWindow::deletePreferences);
    connect(deleteData, &QPushButton::clicked, this, &DebugWindow::deleteData);
    connect(sendConfiguration, &QPushButton::clicked, this, &DebugWindow::showSendConfigurationDialog);
    connect(quit, &QPushButton::clicked, this, &DebugWindow::quit);
    connect(relaunch, &QPushButton::clicked, this, &DebugWindow::closeAndRelaunch);
    connect(m_sheet->sendConfigurationSendButton(), &QPushButton::clicked, this, &DebugWindow::sendConfiguration);
    connect(m_sheet->sendConfigurationCancelButton(), &QPushButton::clicked, this,
            &DebugWindow::closeSendConfigurationWindow);

    auto *actions = new QGridLayout;
    actions->addWidget(deletePreferences, 0, 0);
    actions->addWidget(deleteData, 0, 1);
    actions->addWidget(sendConfiguration, 1, 0, 1, 2);
    auto *ends = new QHBoxLayout;
    ends->addWidget(quit);
    ends->addStretch(1);
    ends->addWidget(relaunch);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_applicationLabel);
    layout->addWidget(explanation);
    layout->addSpacing(8);
    layout->addLayout(actions);
    layout->addSpacing(8);
    layout->addLayout(ends);
    setMinimumWidth(420);
}

DebugWindow::~DebugWindow()
{
    // The worker reports back to this window; it is let finish first.
    if (m_worker)
        m_worker->wait();
}

bool DebugWindow::isRequestedAtLaunch()
{
    return TestHooks::altHeld() || QGuiApplication::queryKeyboardModifiers().testFlag(Qt::AltModifier);
}

DebugWindow::Outcome DebugWindow::showDebugWindow()
{
    m_applicationLabel->setText(
        QStringLiteral("%1 %2").arg(QLatin1String(BuildInfo::BundleName), QLatin1String(BuildInfo::BundleVersion)));
    m_applicationLabel->setAccessibleName(m_applicationLabel->text());
    adjustSize();
    if (const QScreen *screen = QGuiApplication::primaryScreen())
        move(screen->availableGeometry().center() - rect().center());
    qCInfo(lcSupport) << "Showing the debug window";
    return exec() == QuitCode ? Outcome::Quit : Outcome::Relaunch;
}

bool DebugWindow::isSending() const
{
    return !m_worker.isNull();
}

void DebugWindow::closeAndRelaunch()
{
    done(RelaunchCode);
}

void DebugWindow::reject()
{
    // Not while the configuration is being sent: its alert still has to come.
    if (!m_worker)
        closeAndRelaunch();
}

void DebugWindow::quit()
{
    done(QuitCode);
}

void DebugWindow::deletePreferences()
{
    const QString answer = Alerts::run({QString(), SupportTexts::DeletePreferencesMessage,
                                        SupportTexts::DeletePreferencesText,
                                        {SupportTexts::YesButton, SupportTexts::NoButton}, Alerts::Style::Warning});
    if (answer != SupportTexts::YesButton)
        return;
    const QString file = Paths::preferencesFile(QString::fromLatin1(BuildInfo::BundleIdentifier));
    if (QFile::exists(file) && !QFile::remove(file))
        qCWarning(lcSupport) << "Could not delete the preferences file" << file;
}

void DebugWindow::deleteData()
{
    const QString answer = Alerts::run({QString(), SupportTexts::DeleteDataMessage, SupportTexts::DeleteDataText,
                                        {SupportTexts::YesButton, SupportTexts::NoButton}, Alerts::Style::Warning});
    if (answer != SupportTexts::YesButton)
        return;
    QDir data(Paths::dataFolder());
    if (data.exists() && !data.removeRecursively()) {
        qCWarning(lcSupport) << "Could not delete all of the data folder" << data.path();
        return;
    }
    CalendarSubscriptions::forgetAll();
}

void DebugWindow::showSendConfigurationDialog()
{
    m_sheet->prepare();
    m_sheet->open();
    m_sheet->sendConfigurationComments()->setFocus();
}

void DebugWindow::closeSendConfigurationWindow()
{
    m_sheet->stopSending();
    m_sheet->done(QDialog::Accepted);
}

void DebugWindow::sendConfiguration()
{
    if (m_worker)
        return;
    m_sheet->showSending();
    const QString comments = m_sheet->sendConfigurationComments()->toPlainText();
    const QString version = QString::fromLatin1(BuildInfo::BundleVersion);
    // Packing the data and talking to the mail service may take a while: not on this thread. The
    // worker touches no window; the result comes back here as a queued call.
    QThread *worker = QThread::create([this, comments, version] {
        const bool sent = SupportReports::sendConfiguration(comments, version);
        QMetaObject::invokeMethod(this, [this, sent] { sendingFinished(sent); }, Qt::QueuedConnection);
    });
    worker->setObjectName(QStringLiteral("Configuration report"));
    connect(worker, &QThread::finished, worker, &QObject::deleteLater);
    m_worker = worker;
    worker->start();
}

void DebugWindow::sendingFinished(bool sent)
{
    if (m_worker) {
        m_worker->wait();
        m_worker = nullptr;
    }
    closeSendConfigurationWindow();
    if (sent)
        Alerts::run({QString(), SupportTexts::ConfigurationSentMessage, SupportTexts::ConfigurationSentText,
                     {SupportTexts::OkButton}, Alerts::Style::Informational});
    else
        Alerts::run({QString(), SupportTexts::ConfigurationFailedMessage, SupportTexts::ConfigurationFailedText,
                     {SupportTexts::OkButton}, Alerts::Style::Warning});
    Q_EMIT configurationSendingFinished(sent);
}
