#include "list/ui/SubscribeCalendarSheet.h"

#include "importing/CalendarSubscriptions.h"
#include "list/ui/CalendarSubscriptionRefresher.h"
#include "platform/Alerts.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

SubscribeCalendarSheet::SubscribeCalendarSheet(QWidget *parent, CalendarSubscriptionRefresher &refresher)
    : QDialog(parent)
    , m_refresher(refresher)
{
    setObjectName(QStringLiteral("subscribeCalendarSheet"));
    setWindowTitle(SheetTitle);
    setAccessibleName(SheetTitle);
    setWindowModality(Qt::WindowModal);
    setMinimumWidth(520);
    setAttribute(Qt::WA_DeleteOnClose);

    auto *prompt = new QLabel(QStringLiteral("Address of the course calendar (from the course site’s calendar feed "
                                             "or “Subscribe” link):"),
                              this);
    prompt->setWordWrap(true);
    prompt->setAccessibleName(QStringLiteral("Calendar address prompt"));
    m_address = new QLineEdit(this);
    m_address->setObjectName(QStringLiteral("calendarAddressField"));
    m_address->setAccessibleName(QStringLiteral("Calendar address"));
    m_address->setPlaceholderText(QStringLiteral("webcal://… or https://…"));
    prompt->setBuddy(m_address);
    m_status = new QLabel(this);
    m_status->setObjectName(QStringLiteral("subscribeCalendarStatus"));
    m_status->setAccessibleName(QStringLiteral("Subscription status"));
    m_status->setWordWrap(true);

    auto *buttons = new QDialogButtonBox(this);
    m_subscribe = buttons->addButton(SubscribeButtonTitle, QDialogButtonBox::AcceptRole);
    m_subscribe->setObjectName(QStringLiteral("subscribeCalendarButton"));
    m_subscribe->setAccessibleName(SubscribeButtonTitle);
    m_subscribe->setDefault(true);
    m_cancel = buttons->addButton(QDialogButtonBox::Cancel);
    m_cancel->setAccessibleName(QStringLiteral("Cancel"));
    connect(m_subscribe, &QPushButton::clicked, this, &SubscribeCalendarSheet::startSubscription);
    connect(m_cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(&m_refresher, &CalendarSubscriptionRefresher::refreshed, this, &SubscribeCalendarSheet::finished);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(prompt);
    layout->addWidget(m_address);
    layout->addWidget(m_status);
    layout->addWidget(buttons);
}

bool SubscribeCalendarSheet::startSubscription()
{
    QString error;
    const std::optional<QString> url = CalendarSubscriptions::normalizedUrl(m_address->text(), &error);
    if (!url) {
        m_status->setText(error);
        return false;
    }
    m_pendingUrl = *url;
    m_status->setText(QStringLiteral("Fetching the calendar…"));
    m_subscribe->setEnabled(false);
    m_address->setEnabled(false);
    m_refresher.subscribe(*url);
    return true;
}

void SubscribeCalendarSheet::finished(const QString &url, const ImportPlan::Result &result, const QString &error)
{
    if (url != m_pendingUrl)
        return;
    m_pendingUrl.clear();
    m_subscribe->setEnabled(true);
    m_address->setEnabled(true);
    if (!error.isEmpty()) {
        m_status->setText(QStringLiteral("The calendar could not be subscribed to.  %1  Nothing was imported.").arg(error));
        m_address->setFocus();
        return;
    }
    accept();
    Alerts::inform(SheetTitle,
                   QStringLiteral("Subscribed.  %1 added, %2 updated.  The calendar is checked again every %3 hours.")
                       .arg(result.added)
                       .arg(result.updated)
                       .arg(CalendarSubscriptions::RefreshHours),
                   Alerts::Style::Informational);
}
