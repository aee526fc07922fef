#pragma once

#include <QString>
#include <QStringList>

// Writes a backup document: a property list whose root array holds the root arrays of the data
// files, in the order given. A missing file counts as an empty list; a file that does not read by
// the property-list reader's rules fails the backup. A plain XML file has its own bytes nested
// rather than being read and written again, and the document takes its name only once every file
// was checked and every byte is on disk.
class BackupWriter
{
public:
    static bool write(const QString &path, const QStringList &files, QString *error = nullptr);
};
