#pragma once

#include "platform/FileStamp.h"
#include "store/Assignment.h"

#include <QString>

namespace PropertyList {
struct ReadReport;
}

// The file "Assignments.plist" in the data folder: an XML property list whose root is an array of
// assignment dictionaries, in order of creation.
//
// A store file that cannot be parsed is never overwritten by this class: load() reports the
// failure, and save() writes nothing until a later load() succeeds (the file was replaced from
// outside: backup import, sync, deleting all data).
class AssignmentStore
{
public:
    AssignmentStore();
    explicit AssignmentStore(QString path);

    QString path() const { return m_path; }

    // The start-up repair: creates the data folder (owner-only), removes temporary files that killed
    // runs left in it and in the preferences folder, writes an empty store when the file is missing, then gives every record
    // without "Date Updated" now as text, and every record without "Date Created" now as seconds
    // since 1970, each pass rewriting the file. Does nothing to a file that does not parse. When a
    // rewrite would change text that could not be read exactly, the original is kept first as
    // "Assignments.plist.before-repair" (once: an existing copy is never replaced).
    void repairAtStartup();

    static inline const QString BeforeRepairSuffix = QStringLiteral(".before-repair");
    // Reads the file. A missing file is an empty list. nullopt when the file does not parse; the
    // store is then not usable for saving until a later load succeeds.
    std::optional<AssignmentList> load(QString *error = nullptr);
    bool isUsable() const { return m_usable; }

    // Writes the whole list atomically. Does nothing (and returns false) while the last load failed.
    bool save(const AssignmentList &list);

    // True when the file is exactly as this store last read or wrote it (same size, modification
    // time and inode), so a reread would give the same records.
    bool isUnchangedSinceLastAccess() const;

    // Gives every record without "Priority" the priority 1.0; returns whether any changed.
    static bool addPrioritiesToAssignmentsWithoutThem(AssignmentList &list);

    // Reads or writes a store file directly, for the windows that change assignments outside the
    // main list (course renames, recurring series, deleting all data). readFile returns nullopt when
    // the file does not parse (a missing file reads as empty).
    static std::optional<QVariantList> readFile(const QString &path, QString *error = nullptr,
                                                PropertyList::ReadReport *report = nullptr);
    static bool writeFile(const QString &path, const QVariantList &records);

private:
    void remember();

    QString m_path;
    bool m_usable = true;
    bool m_accessed = false;
    std::optional<FileStamp> m_lastStamp;
};
