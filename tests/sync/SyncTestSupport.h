#pragma once

#include "support/LocalServers.h"

#include <QByteArray>
#include <QLockFile>
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

// The engine works on fixed paths below /tmp; every sync test holds this lock so that two runs of
// the suite on one computer never share them.
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
    std::unique_ptr<QLockFile> m_lock;
    std::unique_ptr<class QTemporaryDir> m_secondHome;
};

// The Secret Service of this test program, started once on a private bus.
LocalServers::PrivateKeyring &sharedKeyring();
