#pragma once

#include "importing/ImportPlan.h"

#include <QDialog>

class CalendarSubscriptionRefresher;
class QLabel;
class QPushButton;
class QTreeWidget;

// File ▸ Course Calendar Subscriptions…: lists the subscribed course calendars (their addresses with
// the private token cut short, and when each was last checked) so that one subscribed by mistake can
// be removed, or one checked at once. The list follows the preferences, so a subscription added or
// removed from another window shows here too.
class CalendarSubscriptionsWindow : public QDialog
{
    Q_OBJECT
public:
    static inline const QString WindowTitle = QStringLiteral("Course Calendar Subscriptions");
    static inline const QString RemoveTitle = QStringLiteral("Remove");
    static inline const QString CheckNowTitle = QStringLiteral("Check Now");

    CalendarSubscriptionsWindow(QWidget *parent, CalendarSubscriptionRefresher &refresher);

    QTreeWidget *list() const { return m_list; }
    QPushButton *removeButton() const { return m_remove; }
    QPushButton *checkNowButton() const { return m_checkNow; }
    QLabel *statusLabel() const { return m_status; }

    // Asks first, then forgets the selected subscription. False when nothing was removed.
    bool removeSelected();
    void checkSelected();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    void reload();
    QString selectedUrl() const;
    void updateButtons();
    void checked(const QString &url, const ImportPlan::Result &result, const QString &error);

    CalendarSubscriptionRefresher &m_refresher;
    QTreeWidget *m_list;
    QLabel *m_status;
    QPushButton *m_remove;
    QPushButton *m_checkNow;
    QPushButton *m_close;
};
