#pragma once

#include <QString>

// The automatic backups kept in "Syncing Backups" in the data folder, made before every sync and
// before an import replaces the data: named after the moment (the stored date form, ".plist"),
// the newest MaximumKept entries kept (every entry counts, names sort oldest first).
// A name already taken in the same second gets "_2", "_3", ... before ".plist", so no backup
// ever replaces another.
class AutomaticBackups
{
public:
    AutomaticBackups() = delete;

    static constexpr int MaximumKept = 20;
    // Where a backup made now goes (before any "_2" it may need).
    static QString path();
    // Writes the backup of the current data files and prunes the folder. False (with the reason)
    // when the backup could not be written.
    static bool write(const QString &path, QString *error = nullptr);
    // Removes the oldest entries of the folder beyond MaximumKept (also for backups written by
    // others into the same folder).
    static void prune();
};
