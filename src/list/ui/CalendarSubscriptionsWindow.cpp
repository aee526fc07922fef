#include "list/ui/CalendarSubscriptionsWindow.h"

#include "importing/CalendarSubscriptions.h"
#include "list/ui/CalendarSubscriptionRefresher.h"
#include "platform/Alerts.h"
#include "platform/PreferencesNotifier.h"
#include "platform/UserDefaults.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {
constexpr int UrlRole = Qt::UserRole + 1;
}

CalendarSubscriptionsWindow::CalendarSubscriptionsWindow(QWidget *parent, CalendarSubscriptionRefresher &refresher)
    : QDialog(parent)
    , m_refresher(refresher)
{
    setObjectName(QStringLiteral("calendarSubscriptionsWindow"));
    setWindowTitle(WindowTitle);
    setAccessibleName(WindowTitle);
    setAttribute(Qt::WA_DeleteOnClose);
    resize(640, 300);

    auto *caption = new QLabel(QStringLiteral("Course calendars checked at start and every %1 hours:")
                                   .arg(CalendarSubscriptions::RefreshHours),
                               this);
    caption->setAccessibleName(QStringLiteral("Subscriptions caption"));
    m_list = new QTreeWidget(this);
    m_list->setObjectName(QStringLiteral("calendarSubscriptionList"));
    m_list->setAccessibleName(QStringLiteral("Course calendar subscriptions"));
    m_list->setHeaderLabels({QStringLiteral("Address"), QStringLiteral("Last Checked")});
    m_list->setRootIsDecorated(false);
    m_list->setUniformRowHeights(true);
    m_list->setTextElideMode(Qt::ElideMiddle);
    m_list->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    m_list->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    m_list->header()->setStretchLastSection(false);
    caption->setBuddy(m_list);
    m_status = new QLabel(this);
    m_status->setObjectName(QStringLiteral("calendarSubscriptionsStatus"));
    m_status->setAccessibleName(QStringLiteral("Check status"));
    m_status->setWordWrap(true);

    auto *buttons = new QDialogButtonBox(this);
    m_remove = buttons->addButton(RemoveTitle, QDialogButtonBox::DestructiveRole);
    m_remove->setObjectName(QStringLiteral("removeSubscriptionButton"));
    m_remove->setAccessibleName(QStringLiteral("Remove subscription"));
    m_remove->setIcon(QIcon::fromTheme(QStringLiteral("list-remove")));
    m_checkNow = buttons->addButton(CheckNowTitle, QDialogButtonBox::ActionRole);
    m_checkNow->setObjectName(QStringLiteral("checkSubscriptionButton"));
    m_checkNow->setAccessibleName(QStringLiteral("Check subscription now"));
    m_checkNow->setIcon(QIcon::fromTheme(QStringLiteral("view-refresh")));
    m_close = buttons->addButton(QDialogButtonBox::Close);
    m_close->setAccessibleName(QStringLiteral("Close"));
    for (QPushButton *button : {m_remove, m_checkNow, m_close})
        button->setAutoDefault(false);
    connect(m_remove, &QPushButton::clicked, this, &CalendarSubscriptionsWindow::removeSelected);
    connect(m_checkNow, &QPushButton::clicked, this, &CalendarSubscriptionsWindow::checkSelected);
    connect(m_close, &QPushButton::clicked, this, &QDialog::close);
    connect(m_list, &QTreeWidget::itemSelectionChanged, this, &CalendarSubscriptionsWindow::updateButtons);
    connect(&m_refresher, &CalendarSubscriptionRefresher::refreshed, this, &CalendarSubscriptionsWindow::checked);
    connect(UserDefaults::notifier(), &PreferencesNotifier::changed, this, [this](const QString &, const QString &key) {
        if (key == CalendarSubscriptions::PreferencesKey)
            reload();
    });

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(caption);
    layout->addWidget(m_list);
    layout->addWidget(m_status);
    layout->addWidget(buttons);
    reload();
    m_list->setFocus();
}

void CalendarSubscriptionsWindow::reload()
{
    const QString selected = selectedUrl();
    m_list->clear();
    const QLocale locale;
    for (const CalendarSubscriptions::Subscription &s : CalendarSubscriptions::load()) {
        const QString checked = s.lastChecked.isValid()
                                    ? locale.toString(s.lastChecked.toLocalTime(), QLocale::ShortFormat)
                                    : QStringLiteral("Not yet");
        auto *item = new QTreeWidgetItem(m_list, {CalendarSubscriptions::displayUrl(s.url), checked});
        item->setData(0, UrlRole, s.url);
        item->setToolTip(0, CalendarSubscriptions::displayUrl(s.url));
        if (s.url == selected)
            m_list->setCurrentItem(item);
    }
    if (!m_list->currentItem() && m_list->topLevelItemCount() > 0)
        m_list->setCurrentItem(m_list->topLevelItem(0));
    if (m_list->topLevelItemCount() == 0)
        m_status->setText(QStringLiteral("No course calendar is subscribed to."));
    updateButtons();
}

QString CalendarSubscriptionsWindow::selectedUrl() const
{
    const QTreeWidgetItem *item = m_list->currentItem();
    return item && item->isSelected() ? item->data(0, UrlRole).toString() : QString();
}

void CalendarSubscriptionsWindow::updateButtons()
{
    const QString url = selectedUrl();
    m_remove->setEnabled(!url.isEmpty());
    m_checkNow->setEnabled(!url.isEmpty() && !m_refresher.isFetching(url));
}

bool CalendarSubscriptionsWindow::removeSelected()
{
    const QString url = selectedUrl();
    if (url.isEmpty())
        return false;
    const QString chosen = Alerts::run(
        {WindowTitle,
         QStringLiteral("Remove the subscription to “%1”?").arg(CalendarSubscriptions::displayUrl(url)),
         QStringLiteral("The calendar will no longer be checked.  Assignments it already added stay in your list."),
         {RemoveTitle, QStringLiteral("Cancel")},
         Alerts::Style::Warning});
    if (chosen != RemoveTitle)
        return false;
    const bool removed = CalendarSubscriptions::remove(url);
    m_status->setText(removed ? QStringLiteral("Subscription removed.  Its assignments are still in your list.")
                              : QString());
    reload();
    return removed;
}

void CalendarSubscriptionsWindow::checkSelected()
{
    const QString url = selectedUrl();
    if (url.isEmpty() || m_refresher.isFetching(url))
        return;
    m_status->setText(QStringLiteral("Checking %1…").arg(CalendarSubscriptions::displayUrl(url)));
    m_refresher.refresh(url);
    updateButtons();
}

void CalendarSubscriptionsWindow::checked(const QString &url, const ImportPlan::Result &result, const QString &error)
{
    if (!CalendarSubscriptions::find(url))
        return;
    const QString shown = CalendarSubscriptions::displayUrl(url);
    m_status->setText(error.isEmpty() ? QStringLiteral("%1 checked: %2 added, %3 updated.")
                                            .arg(shown)
                                            .arg(result.added)
                                            .arg(result.updated)
                                      : QStringLiteral("%1 could not be checked.  %2").arg(shown, error));
    reload();
}

void CalendarSubscriptionsWindow::keyPressEvent(QKeyEvent *event)
{
    if ((event->key() == Qt::Key_Delete || event->key() == Qt::Key_Backspace) && event->modifiers() == Qt::NoModifier) {
        removeSelected();
        return;
    }
    QDialog::keyPressEvent(event);
}
