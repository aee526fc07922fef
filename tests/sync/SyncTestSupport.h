#pragma once

#include "support/SyncSandbox.h"

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QVariantMap>
#include <gtest/gtest.h>

#include <memory>
#include <ostream>

// Readable failure messages for texts.
inline void PrintTo(const QString &text, std::ostream *out)
{
    *out << '"' << text.toStdString() << '"';
}

// The engine driven in-process, with its fixed paths below /tmp held for the test and its sheets and
// notices recorded instead of shown.
class SyncTest : public testing::Test
{
protected:
    void SetUp() override;
    void TearDown() override;

    // "show:<title>" and "hide", in the order the engine asked for them.
    QStringList m_sheet;
    // "<title>: <text>" of every notice (the messages that block nothing), in order.
    QStringList m_notices;

    static void writeSettings(const QVariantMap &settings);
    // Three store files with a few records, a file with blanks in its name and one in a subfolder.
    static void writeSampleData(const QString &marker);
    // Every file below `folder` by relative path, "Syncing Backups" left out unless asked for.
    static QMap<QString, QByteArray> snapshot(const QString &folder, bool withBackups = false);
    // Points $HOME at another fresh folder (the second computer of a round trip).
    void switchToSecondHome();
    static QString dataFolder();

private:
    SyncSandbox::PathsLock m_paths;
    std::unique_ptr<class QTemporaryDir> m_secondHome;
};
