#pragma once

#include <QString>
#include <QVariantList>

// Realistic assignment stores for benchmarks: the same count and seed give the same records, byte
// for byte, on every run and machine. A record carries what a student's store holds: a name, a due
// date as text, course, textbook, type, grade, a "Priority" real, "Completed", notes in several
// languages, sometimes contacts, a file, a project or subproject link, "Date Created" as a real and
// "Date Updated" as text; one record in a hundred has a 50 KB "Snapshot". A store of 10,000 records
// is about 14 MB of XML.
namespace StoreGenerator {

QVariantList assignments(int count, quint64 seed = 1);

// Writes assignments(count, seed) as a property list to `path` (atomically). Returns false and a
// message on failure.
bool writeStore(const QString &path, int count, QString *error = nullptr, quint64 seed = 1);

} // namespace StoreGenerator
