#include "caldav/ui/CalendarServerPane.h"

#include "caldav/CalDavSettings.h"
#include "caldav/DavSession.h"
#include "store/ui/AdditionalPanes.h"

#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>
#include <QtConcurrent>

#include <algorithm>

namespace {

template<typename W>
W *named(W *widget, const QString &objectName, const QString &accessibleName)
{
    widget->setObjectName(objectName);
    widget->setAccessibleName(accessibleName);
    return widget;
}

const QString LocalOnlyNote = QStringLiteral(
    "Assignments are kept as to-dos in the chosen calendar, where phones and other computers see them.  "
    "The attached file and the snapshot stay on this computer.");

} // namespace

CalendarServerPane::CalendarServerPane(QWidget *parent) : PreferencePane(parent)
{
    named(this, QStringLiteral("calendarServerView"), PaneName);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(16, 12, 16, 12);
    auto *form = new QFormLayout;
    m_address = named(new QLineEdit, QStringLiteral("calendarServerAddress"), tr("Server address"));
    m_address->setPlaceholderText(tr("https://cloud.example.edu/remote.php/dav"));
    m_user = named(new QLineEdit, QStringLiteral("calendarServerUser"), tr("User name"));
    m_password = named(new QLineEdit, QStringLiteral("calendarServerPassword"), tr("Password"));
    m_password->setEchoMode(QLineEdit::Password);
    form->addRow(tr("Server address:"), m_address);
    form->addRow(tr("User name:"), m_user);
    form->addRow(tr("Password:"), m_password);
    layout->addLayout(form);

    auto *buttons = new QHBoxLayout;
    m_checkButton = named(new QPushButton(tr("Check")), QStringLiteral("calendarServerCheck"), tr("Check"));
    buttons->addWidget(m_checkButton);
    m_status = named(new QLabel, QStringLiteral("calendarServerStatus"), tr("Account status"));
    m_status->setWordWrap(true);
    buttons->addWidget(m_status, 1);
    layout->addLayout(buttons);

    layout->addWidget(named(new QLabel(tr("To-do calendars:")), QStringLiteral("calendarServerListCaption"), tr("To-do calendars")));
    m_calendars = named(new QListWidget, QStringLiteral("calendarServerCalendars"), tr("To-do calendars"));
    m_calendars->setMinimumHeight(90);
    layout->addWidget(m_calendars);
    m_createButton = named(new QPushButton(tr("Create “%1”").arg(CalDavAccount::DefaultCalendarName)),
                           QStringLiteral("calendarServerCreate"), tr("Create calendar"));
    m_createButton->setEnabled(false);
    auto *createRow = new QHBoxLayout;
    createRow->addWidget(m_createButton);
    createRow->addStretch();
    layout->addLayout(createRow);
    auto *note = named(new QLabel(LocalOnlyNote), QStringLiteral("calendarServerNote"), LocalOnlyNote);
    note->setWordWrap(true);
    layout->addWidget(note);
    layout->addStretch();

    const CalDavSettings settings = CalDavSettings::load();
    m_address->setText(settings.address);
    m_user->setText(settings.user);
    if (!settings.user.isEmpty())
        m_password->setText(CalDavSettings::password(settings.user));
    if (settings.isComplete()) {
        m_status->setText(tr("Syncing with “%1”.").arg(settings.calendarName));
        showCalendars({{QUrl(settings.calendarUrl), settings.calendarName, true, settings.syncCollection}}, settings.calendarUrl);
    }

    connect(m_checkButton, &QPushButton::clicked, this, &CalendarServerPane::check);
    connect(m_password, &QLineEdit::returnPressed, this, &CalendarServerPane::check);
    connect(m_createButton, &QPushButton::clicked, this, &CalendarServerPane::create);
    connect(m_calendars, &QListWidget::itemClicked, this, &CalendarServerPane::choose);
    connect(&m_check, &QFutureWatcher<CalDavAccount::Discovery>::finished, this, &CalendarServerPane::checked);
}

CalendarServerPane::~CalendarServerPane() { m_check.waitForFinished(); }

void CalendarServerPane::check()
{
    if (m_check.isRunning())
        return;
    m_creating = false;
    m_checkButton->setEnabled(false);
    m_createButton->setEnabled(false);
    m_calendars->clear();
    m_status->setText(tr("Checking…"));
    const QString address = m_address->text(), user = m_user->text(), password = m_password->text();
    m_check.setFuture(QtConcurrent::run([=] {
        DavSession session(user, password);
        session.setTimeoutMs(20000);
        return CalDavAccount::discover(session, address);
    }));
}

void CalendarServerPane::create()
{
    if (m_check.isRunning() || m_home.isEmpty())
        return;
    m_creating = true;
    m_checkButton->setEnabled(false);
    m_createButton->setEnabled(false);
    m_status->setText(tr("Creating “%1”…").arg(CalDavAccount::DefaultCalendarName));
    const QString user = m_user->text(), password = m_password->text();
    const QUrl home = m_home;
    m_check.setFuture(QtConcurrent::run([=] {
        DavSession session(user, password);
        return CalDavAccount::createCalendar(session, home, CalDavAccount::DefaultCalendarName);
    }));
}

void CalendarServerPane::checked()
{
    const CalDavAccount::Discovery found = m_check.result();
    m_checkButton->setEnabled(true);
    if (found.problem != CalDavAccount::Problem::None) {
        m_status->setText(found.message);
        m_createButton->setEnabled(!m_home.isEmpty() && m_creating);
        return;
    }
    if (!m_creating)
        m_home = found.home;
    if (m_creating && !found.calendars.isEmpty()) {
        m_creating = false;
        showCalendars(found.calendars, {});
        m_calendars->setCurrentRow(0);
        choose();
        check();
        return;
    }
    // A second calendar of the same name would only confuse the phone that shows both.
    const bool hasOurs = std::any_of(found.calendars.cbegin(), found.calendars.cend(), [](const CalDavAccount::Calendar &c) {
        return c.name == CalDavAccount::DefaultCalendarName;
    });
    m_createButton->setEnabled(!m_home.isEmpty() && !hasOurs);
    const CalDavSettings settings = CalDavSettings::load();
    showCalendars(found.calendars, settings.calendarUrl);
    m_status->setText(found.calendars.isEmpty()
                          ? tr("The account has no calendar for to-dos yet: create “%1”.").arg(CalDavAccount::DefaultCalendarName)
                          : tr("Account found.  Choose the calendar to sync with."));
    if (!settings.calendarUrl.isEmpty() && m_calendars->currentItem())
        m_status->setText(tr("Account found.  Syncing with “%1”.").arg(settings.calendarName));
}

void CalendarServerPane::showCalendars(const QList<CalDavAccount::Calendar> &calendars, const QString &chosen)
{
    m_calendars->clear();
    for (const CalDavAccount::Calendar &calendar : calendars) {
        auto *item = new QListWidgetItem(QIcon::fromTheme(QStringLiteral("x-office-calendar")), calendar.name, m_calendars);
        item->setData(Qt::UserRole, calendar.url.toString());
        item->setData(Qt::UserRole + 1, calendar.offersSyncCollection);
        item->setToolTip(calendar.url.toString());
        if (calendar.url.toString() == chosen)
            m_calendars->setCurrentItem(item);
    }
}

void CalendarServerPane::choose()
{
    QListWidgetItem *item = m_calendars->currentItem();
    if (!item)
        return;
    CalDavSettings settings;
    settings.address = m_address->text().trimmed();
    settings.user = m_user->text().trimmed();
    settings.calendarUrl = item->data(Qt::UserRole).toString();
    settings.calendarName = item->text();
    settings.syncCollection = item->data(Qt::UserRole + 1).toBool();
    if (!CalDavSettings::storePassword(settings.user, m_password->text())) {
        m_status->setText(tr("The password could not be kept in the keychain, so the account was not saved."));
        return;
    }
    settings.save();
    m_status->setText(tr("Syncing with “%1”.").arg(settings.calendarName));
}

void CalendarServerPane::registerWithPreferencesWindow()
{
    AdditionalPanes::registerPane({Identifier, PaneName,
                                   QStringLiteral("Sync assignments with a calendar server your phone also reads"),
                                   QStringLiteral("x-office-calendar"), QStringLiteral("prefs-calendar-server"),
                                   [] { return new CalendarServerPane; }});
}
