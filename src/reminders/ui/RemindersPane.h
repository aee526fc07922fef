#pragma once

#include "store/ui/PreferencePane.h"

#include <QList>

class QCheckBox;

// The "Reminders" pane: turns reminders on or off, chooses when they come before an assignment is
// due, and whether the program keeps running in the notification area once the main window closes.
// Every change is saved at once to "Preferences - Reminders".
class RemindersPane : public PreferencePane
{
    Q_OBJECT
public:
    inline static const QString Identifier = QStringLiteral("Reminders");
    // The lead times offered, in minutes before the due time.
    static constexpr int OfferedLeads[] = {15, 60, 120, 24 * 60};

    explicit RemindersPane(QWidget *parent = nullptr);

    // Adds the pane to the preferences window's toolbar (at start-up).
    static void registerWithPreferencesWindow();

private:
    void save();
    void updateEnabled();

    QCheckBox *m_enabled;
    QCheckBox *m_eveningBefore;
    QList<QCheckBox *> m_leads;
    QCheckBox *m_keepInTray;
    // Lead times set by hand that the pane offers no box for: kept as they are.
    QList<int> m_otherLeads;
    bool m_filling = false;
};
