#include "SyncTestSupport.h"

#include "platform/Paths.h"
#include "platform/PropertyList.h"
#include "platform/UserDefaults.h"
#include "support/TestEnvironment.h"
#include "sync/Syncing.h"
#include "sync/SyncingKeys.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QTemporaryDir>

void SyncTest::SetUp()
{
    m_paths.take();
    if (HasFatalFailure())
        return;
    UserDefaults::dropCaches();
    Syncing::setProgressPresenter({[this](const QString &title) { m_sheet << QStringLiteral("show:") + title; },
                                   [this] { m_sheet << QStringLiteral("hide"); }});
    Syncing::setQuitHandler([] {});
    Syncing::forgetNoticesForTest();
    Syncing::setNoticePresenter(
        [this](const QString &title, const QString &text) { m_notices << title + QStringLiteral(": ") + text; });
}

void SyncTest::TearDown()
{
    Syncing::setProgressPresenter({});
    Syncing::setQuitHandler({});
    Syncing::setNoticePresenter({});
    m_paths.release();
}

void SyncTest::writeSettings(const QVariantMap &settings)
{
    UserDefaults().set(SyncingKeys::Group, settings);
}

QString SyncTest::dataFolder()
{
    return Paths::dataFolder();
}

void SyncTest::writeSampleData(const QString &marker)
{
    QDir().mkpath(dataFolder());
    QVariantList assignments;
    for (int i = 0; i < 3; ++i)
        assignments << QVariantMap{{QStringLiteral("Title"), marker + QString::number(i)},
                                   {QStringLiteral("Priority"), 1.5 + i},
                                   {QStringLiteral("Date Created"), 1700000000.25 + i}};
    ASSERT_TRUE(PropertyList::writeFile(Paths::assignmentsFile(), assignments));
    ASSERT_TRUE(PropertyList::writeFile(
        Paths::coursesFile(), QVariantList{QVariantMap{{QStringLiteral("Type"), QStringLiteral("Course")},
                                                       {QStringLiteral("Name"), marker + QStringLiteral(" 101")}}}));
    ASSERT_TRUE(PropertyList::writeFile(Paths::universalTypesFile(), QVariantList{QStringLiteral("Essay")}));
    TestEnvironment::writeFile(dataFolder() + QStringLiteral("/iCal Export Notes.txt"), marker.toUtf8());
    TestEnvironment::writeFile(dataFolder() + QStringLiteral("/Attachments/photo one.jpg"),
                               QByteArray(70000, 'x') + marker.toUtf8());
}

QMap<QString, QByteArray> SyncTest::snapshot(const QString &folder, bool withBackups)
{
    QMap<QString, QByteArray> files;
    QDirIterator it(folder, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    const QDir base(folder);
    while (it.hasNext()) {
        const QString path = it.next();
        const QString relative = base.relativeFilePath(path);
        if (!withBackups && relative.startsWith(QLatin1String(Paths::SyncingBackupsFolderName) + QLatin1Char('/')))
            continue;
        files.insert(relative, TestEnvironment::readFile(path));
    }
    return files;
}

void SyncTest::switchToSecondHome()
{
    m_secondHome = std::make_unique<QTemporaryDir>(QDir::tempPath() + QStringLiteral("/quillory-second-XXXXXX"));
    qputenv("HOME", QFile::encodeName(m_secondHome->path()));
    UserDefaults::dropCaches();
}
