#include "support/ui/SendConfigurationSheet.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

namespace {
const QString SheetTitle = QStringLiteral("Send Configuration");
const QString Explanation = QStringLiteral(
    "Your preferences and a copy of your data will be sent to the developer. Add any comments that "
    "may help:");
const QString SendLabel = QStringLiteral("Send");
const QString CancelLabel = QStringLiteral("Cancel");
const QString SendingLabel = QStringLiteral("Sending…");
} // namespace

SendConfigurationSheet::SendConfigurationSheet(QWidget *parent)
    : QDialog(parent)
    , m_comments(new QPlainTextEdit(this))
    , m_sendButton(new QPushButton(SendLabel, this))
    , m_cancelButton(new QPushButton(CancelLabel, this))
    , m_progress(new QProgressBar(this))
    , m_sendingLabel(new QLabel(SendingLabel, this))
{
    setObjectName(QStringLiteral("sendConfigurationSheet"));
    setWindowTitle(SheetTitle);
    setAccessibleName(SheetTitle);
    setWindowModality(Qt::WindowModal);

    auto *explanation = new QLabel(Explanation, this);
    explanation->setWordWrap(true);
    explanation->setBuddy(m_comments);
    m_comments->setObjectName(QStringLiteral("sendConfigurationComments"));
    m_comments->setAccessibleName(QStringLiteral("Comments"));
    m_comments->setTabChangesFocus(true);
    m_sendButton->setObjectName(QStringLiteral("sendConfigurationSendButton"));
    m_sendButton->setAccessibleName(SendLabel);
    m_sendButton->setDefault(true);
    m_cancelButton->setObjectName(QStringLiteral("sendConfigurationCancelButton"));
    m_cancelButton->setAccessibleName(CancelLabel);
    // Indeterminate: the mail service tells nothing until it is done.
    m_progress->setObjectName(QStringLiteral("sendConfigurationProgressIndicator"));
    m_progress->setAccessibleName(QStringLiteral("Sending progress"));
    m_progress->setRange(0, 0);
    m_progress->setTextVisible(false);
    m_progress->setMaximumWidth(160);
    m_sendingLabel->setObjectName(QStringLiteral("sendConfigurationSendingLabel"));
    m_sendingLabel->setAccessibleName(SendingLabel);

    auto *buttons = new QDialogButtonBox(this);
    buttons->addButton(m_sendButton, QDialogButtonBox::AcceptRole);
    buttons->addButton(m_cancelButton, QDialogButtonBox::RejectRole);
    auto *bottom = new QHBoxLayout;
    bottom->addWidget(m_progress);
    bottom->addWidget(m_sendingLabel);
    bottom->addStretch(1);
    bottom->addWidget(buttons);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(explanation);
    layout->addWidget(m_comments, 1);
    layout->addLayout(bottom);
    resize(460, 300);
    prepare();
}

void SendConfigurationSheet::prepare()
{
    m_progress->hide();
    m_sendingLabel->hide();
    m_comments->setReadOnly(false);
    m_sendButton->setEnabled(true);
    m_cancelButton->setEnabled(true);
}

void SendConfigurationSheet::showSending()
{
    m_progress->show();
    m_sendingLabel->show();
    m_comments->setReadOnly(true);
    m_sendButton->setEnabled(false);
    m_cancelButton->setEnabled(false);
}

void SendConfigurationSheet::stopSending()
{
    m_progress->hide();
    m_sendingLabel->hide();
}

void SendConfigurationSheet::reject()
{
    if (m_cancelButton->isEnabled())
        QDialog::reject();
}
