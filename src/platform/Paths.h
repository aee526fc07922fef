#pragma once

#include <QString>

// Where the program keeps things, all below the user's home folder. The layout is the one the
// program has always used, so data folders, backups and sync archives stay interchangeable.
// Every function reads $HOME afresh, so a changed home (as in the tests) is honoured at once.
namespace Paths {

inline constexpr auto AssignmentsFileName = "Assignments.plist";
inline constexpr auto CoursesFileName = "Courses and Textbooks.plist";
inline constexpr auto UniversalTypesFileName = "Universal Types.plist";
inline constexpr auto ICalExportFileName = "iCalExport.ics";
inline constexpr auto SyncingBackupsFolderName = "Syncing Backups";

QString home();
// "~/Library/Application Support/Quillory" (no trailing slash).
QString dataFolder();
QString assignmentsFile();
QString coursesFile();
QString universalTypesFile();
QString iCalExportFile();
QString syncingBackupsFolder();
// "~/Library/Preferences/<domain>.plist"
QString preferencesFile(const QString &domain);
QString preferencesFolder();
// "~/Library/Logs/CrashReporter/Quillory.crash.log"
QString crashLog();

// Creates the folder and any missing parents readable by the owner only (0700, whatever the umask):
// the data and preferences folders hold a student's grades and contacts. Folders that exist keep
// their mode. True when the folder exists afterwards.
bool makePrivateFolder(const QString &path);

} // namespace Paths
