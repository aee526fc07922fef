#pragma once

#include <QString>
#include <QVariantMap>

// The General preference pane's values, read from and written to "Preferences - General" the way the
// pane does: saving writes a fresh dictionary from every control (which drops keys the pane has no
// control for, such as "Enable Superfluous Visual Effects") and "SUCheckAtStartup" beside it.
struct GeneralSettings {
    int defaultView = 0;
    int defaultCalendarFormat = 0;
    int dateEntryFormat = 0;
    // 0-2: one of the three offered formats; 3: the custom format in customDateFormat.
    int dateFormatChoice = 0;
    QString customDateFormat;
    bool displayDuplicateDates = false;
    bool displayWarningMessages = true;
    bool displayAdvancedICalSettings = false;
    bool doubleClickCreates = true;
    bool alternateRowColors = false;
    bool hideWeekends = false;
    int mainWindowTransition = 3;
    QString subprojectTitleFormat;
    bool checkForUpdates = true;

    // What the pane shows when it opens.
    static GeneralSettings load();

    // The one reading of "Date Format" for every window that shows or reads due dates: the stored
    // text, or the first offered format when there is none.
    static QString storedDateFormat();
    // "Subproject Title Format" the same way, with "%p - %s" when there is none.
    static QString storedSubprojectTitleFormat();
    // `setGeneral:`
    void save() const;
    // `setGeneralDefaultsAndSave:`: everything back to its default except the window transition.
    void resetToDefaults();

    // The "Date Format" text the choice stands for.
    QString dateFormat() const;
    // Chooses the matching offered format, or the custom choice with the text.
    void setDateFormat(const QString &format);

    // Takes over an earlier version's top-level keys, removes them, and saves.
    static void importEarlierPreferencesFile();

private:
    // "Preferences - General" as the pane writes it.
    QVariantMap dictionary() const;
    void write(const QVariantMap &general) const;
};
