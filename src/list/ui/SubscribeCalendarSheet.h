#pragma once

#include "importing/ImportPlan.h"

#include <QDialog>

class CalendarSubscriptionRefresher;
class QLabel;
class QLineEdit;
class QPushButton;

// File ▸ Subscribe to Course Calendar…: asks for the feed's address (https:// or webcal://, as course
// sites show it), fetches it at once and stays open until it answered: a calendar that could be read
// is imported and kept as a subscription; otherwise the sheet says why and the address can be fixed.
class SubscribeCalendarSheet : public QDialog
{
    Q_OBJECT
public:
    static inline const QString SheetTitle = QStringLiteral("Subscribe to Course Calendar");
    static inline const QString SubscribeButtonTitle = QStringLiteral("Subscribe");

    SubscribeCalendarSheet(QWidget *parent, CalendarSubscriptionRefresher &refresher);

    QLineEdit *addressField() const { return m_address; }
    QLabel *statusLabel() const { return m_status; }
    QPushButton *subscribeButton() const { return m_subscribe; }

    // Checks the address and starts the fetch; false (with the reason shown) for no address.
    bool startSubscription();

private:
    void finished(const QString &url, const ImportPlan::Result &result, const QString &error);

    CalendarSubscriptionRefresher &m_refresher;
    QString m_pendingUrl;
    QLineEdit *m_address;
    QLabel *m_status;
    QPushButton *m_subscribe;
    QPushButton *m_cancel;
};
