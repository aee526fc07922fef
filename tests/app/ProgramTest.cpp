#include "ProgramProcess.h"

#include "platform/DateText.h"
#include "platform/Paths.h"
#include "platform/PropertyList.h"
#include "platform/UserDefaults.h"
#include "store/PreferenceKeys.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QProcess>
#include <QThread>
#include <gtest/gtest.h>

// These tests start the real program against the test's home folder and look at what it leaves on
// disk. The program runs offscreen; QUILLORY_QUIT_AFTER_STARTUP makes it take its normal quit path
// as soon as its window is up.
namespace {

int runProgram()
{
    QProcess program;
    program.setProcessEnvironment(ProgramProcess::environment({{QStringLiteral("QUILLORY_QUIT_AFTER_STARTUP"), QStringLiteral("1")}}));
    program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    program.start(QStringLiteral(QUILLORY_PROGRAM_PATH), QStringList());
    EXPECT_TRUE(program.waitForFinished(60000));
    EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
    return program.exitCode();
}

QVariantMap preferences()
{
    UserDefaults::dropCaches();
    return UserDefaults().all();
}

bool waitFor(const std::function<bool()> &condition, int milliseconds)
{
    QDeadlineTimer deadline(milliseconds);
    while (!deadline.hasExpired()) {
        if (condition())
            return true;
        QThread::msleep(50);
    }
    return condition();
}

} // namespace

TEST(Program, StartUpRepairsTheStoreAndWritesEveryPreferenceGroup)
{
    QDir().mkpath(Paths::dataFolder());
    const QVariantList records{
        QVariantMap{{QStringLiteral("Name"), QStringLiteral("Essay")}, {QStringLiteral("Unknown Key"), QStringLiteral("kept")}},
        QVariantMap{{QStringLiteral("Name"), QStringLiteral("Lab")}, {QStringLiteral("Priority"), 3.0}},
    };
    ASSERT_TRUE(PropertyList::writeFile(Paths::assignmentsFile(), records));

    ASSERT_EQ(runProgram(), 0);

    const QVariantList after = PropertyList::readFile(Paths::assignmentsFile())->toList();
    ASSERT_EQ(after.size(), 2);
    const QVariantMap first = after[0].toMap();
    EXPECT_EQ(first.value(QStringLiteral("Unknown Key")).toString(), QStringLiteral("kept"));
    EXPECT_EQ(first.value(QStringLiteral("Date Created")).typeId(), QMetaType::Double);
    EXPECT_TRUE(DateText::fromStoredForm(first.value(QStringLiteral("Date Updated")).toString()).has_value());
    EXPECT_EQ(first.value(QStringLiteral("Priority")), QVariant(1.0));
    EXPECT_EQ(first.value(QStringLiteral("Priority")).typeId(), QMetaType::Double);
    EXPECT_EQ(after[1].toMap().value(QStringLiteral("Priority")), QVariant(3.0));

    const QVariantMap prefs = preferences();
    for (const QString &group : {PreferenceKeys::General, PreferenceKeys::UserColumns, PreferenceKeys::Colors,
                                 PreferenceKeys::Labels, PreferenceKeys::PersonalInfo})
        EXPECT_TRUE(prefs.contains(group)) << group.toStdString();
    EXPECT_TRUE(DateText::fromStoredForm(prefs.value(PreferenceKeys::LastStartup).toString()).has_value());
}

TEST(Program, AnUnreadableStoreIsByteIdenticalAfterAStartAndAQuit)
{
    static const char bytes[] = "\x00\x01 this is <not> a property list \xff";
    const QByteArray garbage(bytes, sizeof bytes - 1);
    TestEnvironment::writeFile(Paths::assignmentsFile(), garbage);
    ASSERT_EQ(runProgram(), 0);
    EXPECT_EQ(TestEnvironment::readFile(Paths::assignmentsFile()), garbage);
}

TEST(Program, MovesAnEarlierPreferencesFileAndStartsAgain)
{
    QDir().mkpath(Paths::preferencesFolder());
    const QString oldFile = Paths::preferencesFile(QStringLiteral("com.ostrelle.Quillory"));
    ASSERT_TRUE(PropertyList::writeFile(oldFile, QVariantMap{{QStringLiteral("Labels"),
                                                              QVariantMap{{QStringLiteral("Course"), QStringLiteral("Class")}}}}));

    // The first run moves the file and ends before showing a window ...
    ASSERT_EQ(runProgram(), 0);
    EXPECT_FALSE(QFileInfo::exists(oldFile));
    // ... and the run it starts once the first has quit picks the moved file up and migrates it.
    ASSERT_TRUE(waitFor([] { return preferences().contains(PreferenceKeys::LastStartup); }, 60000));
    const QVariantMap prefs = preferences();
    EXPECT_EQ(prefs.value(PreferenceKeys::Labels).toMap().value(QStringLiteral("Course")).toString(), QStringLiteral("Class"));
    EXPECT_FALSE(prefs.contains(QStringLiteral("Labels")));
}
