#pragma once

#include <QDateTime>
#include <QString>

// Every test runs against a fresh $HOME in a temporary folder, with the program's clock pinned to
// pinnedNow() and TZ fixed to America/New_York (a zone with daylight saving, which shakes out
// mistakes in date arithmetic). main() in TestMain.cpp installs this for every test.
namespace TestEnvironment {

// The instant the clock reads at the start of every test: Sunday 2026-11-22 10:30:00 local time.
QDateTime pinnedNow();

// The fresh home folder of the running test.
QString home();

// Path below the running test's data folder ("~/Library/Application Support/Quillory/").
QString dataFile(const QString &name);

// Writes bytes to a path, creating parent folders; fails the test on error.
void writeFile(const QString &path, const QByteArray &bytes);
QByteArray readFile(const QString &path);

// Fixtures shipped in tests/data.
QString fixture(const QString &name);

} // namespace TestEnvironment
