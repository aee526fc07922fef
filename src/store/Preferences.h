#pragma once

#include <QString>

// The preferences schema: defaults of the five groups, the migration of an earlier version's keys
// and file, and the old "Default Format" fix.
class Preferences
{
public:
    // True when all five groups exist; otherwise the program's preferences are not set up.
    static bool hasAllGroups();

    // Writes every group's defaults, replacing what was there: General (with "SUCheckAtStartup"),
    // columns (with their ordering and widths), colours (with "Preferences - Color Format"),
    // labels, personal information.
    static void setAllDefaults();
    static void setGeneralDefaults();
    static void setDefaultTableColumns();
    static void setDefaultColors();
    static void setDefaultLabels();
    static void setPersonalInfoDefaults();

    // Takes over an earlier version's keys, after the defaults were written.
    static void importEarlierPreferencesFile();
    static void importEarlierPersonalInfo();
    static void importEarlierLabels();
    static void importEarlierMainWindow();

    // An old integer "Default Format" of 1 becomes "Default Calendar Format" 2, anything else 0.
    // Returns whether there was one to fix.
    static bool fixOldDefaultFormat();

    enum class FileMove { NothingToMove, Moved, Failed };
    // Moves an earlier version's preferences file ("com.ostrelle" domain) to this version's path
    // when only the old one exists. On failure shows the "Preferences Error" alert.
    static FileMove moveEarlierPreferencesFile();

    // Starts a detached shell that waits (at most ten minutes) for this process to exit and then
    // starts `program` again. Returns whether the shell started.
    static bool scheduleRestart(const QString &program, qint64 pid);
};
