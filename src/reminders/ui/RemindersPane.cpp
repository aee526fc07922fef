#include "reminders/ui/RemindersPane.h"

#include "reminders/ReminderSettings.h"
#include "store/ui/AdditionalPanes.h"
#include "store/ui/Named.h"

#include <QCheckBox>
#include <QLabel>
#include <QVBoxLayout>

#include <algorithm>

namespace {
const QString PaneName = QStringLiteral("Reminders");
const QString EnabledText = QStringLiteral("Remind me of assignments before they are due");
const QString EveningText = QStringLiteral("The evening before, at 6:00 PM");
// Short enough for the panes' width; the tool tip says where the program stays.
const QString TrayText = QStringLiteral("Keep running after the main window closes");
const QString TrayToolTip =
    QStringLiteral("Quillory stays in the notification area, so that reminders still come");
const QString WhenText = QStringLiteral("Remind me:");

QString leadText(int minutes)
{
    if (minutes % (24 * 60) == 0)
        return minutes == 24 * 60 ? QStringLiteral("1 day before") : QStringLiteral("%1 days before").arg(minutes / (24 * 60));
    if (minutes % 60 == 0)
        return minutes == 60 ? QStringLiteral("1 hour before") : QStringLiteral("%1 hours before").arg(minutes / 60);
    return QStringLiteral("%1 minutes before").arg(minutes);
}
} // namespace

RemindersPane::RemindersPane(QWidget *parent)
    : PreferencePane(parent)
{
    named(this, QStringLiteral("remindersView"), PaneName);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(16, 12, 16, 12);
    m_enabled = named(new QCheckBox(EnabledText), QStringLiteral("remindersEnabled"), EnabledText);
    layout->addWidget(m_enabled);
    auto *when = named(new QLabel(WhenText), QStringLiteral("remindersWhenCaption"), WhenText);
    layout->addWidget(when);
    auto *choices = new QVBoxLayout;
    choices->setContentsMargins(20, 0, 0, 0);
    m_eveningBefore = named(new QCheckBox(EveningText), QStringLiteral("remindersEveningBefore"), EveningText);
    choices->addWidget(m_eveningBefore);
    for (int minutes : OfferedLeads) {
        const QString text = leadText(minutes);
        auto *box = named(new QCheckBox(text), QStringLiteral("remindersLead%1").arg(minutes), text);
        box->setProperty("minutes", minutes);
        choices->addWidget(box);
        m_leads.append(box);
    }
    layout->addLayout(choices);
    m_keepInTray = named(new QCheckBox(TrayText), QStringLiteral("remindersKeepInTray"), TrayText);
    m_keepInTray->setToolTip(TrayToolTip);
    layout->addWidget(m_keepInTray);
    layout->addStretch();

    m_filling = true;
    const ReminderSettings settings = ReminderSettings::load();
    m_enabled->setChecked(settings.enabled);
    m_eveningBefore->setChecked(settings.eveningBefore);
    for (int minutes : settings.leadMinutes) {
        if (std::find(std::begin(OfferedLeads), std::end(OfferedLeads), minutes) == std::end(OfferedLeads))
            m_otherLeads.append(minutes);
    }
    for (QCheckBox *box : std::as_const(m_leads))
        box->setChecked(settings.leadMinutes.contains(box->property("minutes").toInt()));
    m_keepInTray->setChecked(settings.keepInTray);
    m_filling = false;
    updateEnabled();

    for (QCheckBox *box : findChildren<QCheckBox *>())
        connect(box, &QCheckBox::toggled, this, &RemindersPane::save);
}

void RemindersPane::updateEnabled()
{
    m_eveningBefore->setEnabled(m_enabled->isChecked());
    for (QCheckBox *box : std::as_const(m_leads))
        box->setEnabled(m_enabled->isChecked());
}

void RemindersPane::save()
{
    updateEnabled();
    if (m_filling)
        return;
    ReminderSettings settings = ReminderSettings::load();
    settings.enabled = m_enabled->isChecked();
    settings.eveningBefore = m_eveningBefore->isChecked();
    settings.keepInTray = m_keepInTray->isChecked();
    settings.leadMinutes = m_otherLeads;
    for (QCheckBox *box : std::as_const(m_leads)) {
        if (box->isChecked())
            settings.leadMinutes.append(box->property("minutes").toInt());
    }
    std::sort(settings.leadMinutes.begin(), settings.leadMinutes.end());
    settings.save();
}

void RemindersPane::registerWithPreferencesWindow()
{
    AdditionalPanes::registerPane({Identifier, PaneName,
                                   QStringLiteral("Choose when you are reminded of assignments that are due"),
                                   QStringLiteral("appointment-soon"), QStringLiteral("prefs-reminders"),
                                   [] { return new RemindersPane; }});
}
