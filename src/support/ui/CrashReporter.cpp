#include "support/ui/CrashReporter.h"

#include "support/CrashLog.h"
#include "support/SupportLog.h"
#include "support/SupportReports.h"

#include <QApplication>
#include <QCheckBox>
#include <QCloseEvent>
#include <QDialogButtonBox>
#include <QFileInfo>
#include <QFontDatabase>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

namespace {
const QString WindowTitle = QStringLiteral("Quillory Crash Reporter");
const QString Heading = QStringLiteral("Quillory quit unexpectedly the last time it ran.");
const QString Explanation = QStringLiteral(
    "You can send the report below to the developer to help fix the problem. Please describe what you "
    "were doing when it happened.");
const QString ProblemLabel = QStringLiteral("Problem details:");
const QString DescriptionLabel = QStringLiteral("What were you doing?");
const QString SendDataLabel = QStringLiteral("Send a copy of my data and preferences with the report");
const QString SendLabel = QStringLiteral("Send");
const QString CancelLabel = QStringLiteral("Cancel");
} // namespace

CrashReporter::CrashReporter(QWidget *parent)
    : QWidget(parent, Qt::Window)
    , m_problemInformation(new QPlainTextEdit(this))
    , m_descriptionInformation(new QPlainTextEdit(this))
    , m_sendDataButton(new QCheckBox(SendDataLabel, this))
    , m_sendButton(new QPushButton(SendLabel, this))
    , m_cancelButton(new QPushButton(CancelLabel, this))
{
    setObjectName(QStringLiteral("CrashReporter"));
    setWindowTitle(WindowTitle);
    setAccessibleName(WindowTitle);
    setWindowIcon(QIcon::fromTheme(QStringLiteral("dialog-warning")));

    auto *heading = new QLabel(Heading, this);
    QFont bold = heading->font();
    bold.setBold(true);
    heading->setFont(bold);
    auto *explanation = new QLabel(Explanation, this);
    explanation->setWordWrap(true);

    auto *problemLabel = new QLabel(ProblemLabel, this);
    problemLabel->setBuddy(m_problemInformation);
    m_problemInformation->setObjectName(QStringLiteral("problemInformation"));
    m_problemInformation->setAccessibleName(QStringLiteral("Problem details"));
    m_problemInformation->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    m_problemInformation->setLineWrapMode(QPlainTextEdit::NoWrap);

    auto *descriptionLabel = new QLabel(DescriptionLabel, this);
    descriptionLabel->setBuddy(m_descriptionInformation);
    m_descriptionInformation->setObjectName(QStringLiteral("descriptionInformation"));
    m_descriptionInformation->setAccessibleName(QStringLiteral("Description of what happened"));
    m_descriptionInformation->setTabChangesFocus(true);

    m_sendDataButton->setObjectName(QStringLiteral("sendDataButton"));
    m_sendDataButton->setAccessibleName(SendDataLabel);
    m_sendButton->setObjectName(QStringLiteral("sendButton"));
    m_sendButton->setAccessibleName(SendLabel);
    m_sendButton->setDefault(true);
    m_cancelButton->setObjectName(QStringLiteral("cancelButton"));
    m_cancelButton->setAccessibleName(CancelLabel);

    auto *buttons = new QDialogButtonBox(this);
    buttons->addButton(m_sendButton, QDialogButtonBox::AcceptRole);
    buttons->addButton(m_cancelButton, QDialogButtonBox::RejectRole);
    connect(m_sendButton, &QPushButton::clicked, this, &CrashReporter::emailCrashReport);
    connect(m_cancelButton, &QPushButton::clicked, this, &QWidget::close);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(heading);
    layout->addWidget(explanation);
    layout->addWidget(problemLabel);
    layout->addWidget(m_problemInformation, 3);
    layout->addWidget(descriptionLabel);
    layout->addWidget(m_descriptionInformation, 1);
    layout->addWidget(m_sendDataButton);
    layout->addWidget(buttons);
    resize(640, 560);
}

bool CrashReporter::checkForCrashLog(const QString &logPath, const QString &lastStartup)
{
    if (!CrashLog::isNew(logPath, lastStartup))
        return false;
    m_logPath = logPath;
    qCInfo(lcSupport).noquote() << "Offering the crash log written at"
                                << QFileInfo(logPath).lastModified().toString(Qt::ISODate);
    m_problemInformation->setReadOnly(false);
    m_problemInformation->appendPlainText(CrashLog::read(logPath));
    m_problemInformation->setReadOnly(true);
    m_problemInformation->moveCursor(QTextCursor::Start);
    if (const QScreen *screen = QGuiApplication::primaryScreen())
        move(screen->availableGeometry().center() - rect().center());
    show();
    raise();
    activateWindow();
    m_descriptionInformation->setFocus();
    return true;
}

void CrashReporter::emailCrashReport()
{
    m_sendButton->setEnabled(false);
    m_cancelButton->setEnabled(false);
    // The sending waits for the mail service; the window shows it is busy meanwhile.
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const bool sent = SupportReports::sendCrashReport(m_descriptionInformation->toPlainText(),
                                                      m_problemInformation->toPlainText(),
                                                      m_sendDataButton->isChecked());
    QApplication::restoreOverrideCursor();
    // Not shown to the user either way: the log goes, as it would at a cancel.
    if (!sent)
        qCInfo(lcSupport) << "The crash report was not sent";
    close();
}

void CrashReporter::closeEvent(QCloseEvent *event)
{
    if (!m_logPath.isEmpty())
        CrashLog::remove(m_logPath);
    QWidget::closeEvent(event);
}
