#include "TestEnvironment.h"

#include "platform/Alerts.h"
#include "platform/Clock.h"
#include "platform/FilePanels.h"
#include "platform/Workspace.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <memory>

namespace {

std::unique_ptr<QTemporaryDir> g_home;

class FreshHomeListener : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo &) override
    {
        g_home = std::make_unique<QTemporaryDir>(QDir::tempPath() + QStringLiteral("/quillory-test-XXXXXX"));
        qputenv("HOME", QFile::encodeName(g_home->path()));
        Clock::pin(TestEnvironment::pinnedNow());
        Alerts::resetForTest();
        FilePanels::resetForTest();
        // Tests never launch real programs: what would be opened is recorded instead.
        Workspace::recordForTest();
    }
    void OnTestEnd(const testing::TestInfo &) override
    {
        Clock::unpin();
        g_home.reset();
    }
};

} // namespace

namespace TestEnvironment {

QDateTime pinnedNow()
{
    return QDateTime(QDate(2026, 11, 22), QTime(10, 30, 0));
}

QString home()
{
    return g_home ? g_home->path() : QString();
}

QString dataFile(const QString &name)
{
    return home() + QStringLiteral("/Library/Application Support/Quillory/") + name;
}

void writeFile(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate)) << path.toStdString();
    ASSERT_EQ(file.write(bytes), bytes.size());
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll();
}

QString fixture(const QString &name)
{
    return QStringLiteral(QUILLORY_TEST_DATA_DIR "/") + name;
}

} // namespace TestEnvironment

int main(int argc, char **argv)
{
    // The time zone and platform are fixed before Qt reads them.
    setenv("TZ", "America/New_York", 1);
    tzset();
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    testing::UnitTest::GetInstance()->listeners().Append(new FreshHomeListener);
    return RUN_ALL_TESTS();
}
