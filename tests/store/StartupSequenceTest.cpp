#include "TestEnvironment.h"

#include "platform/DateText.h"
#include "platform/Paths.h"
#include "platform/PropertyList.h"
#include "platform/UserDefaults.h"
#include "store/PreferenceKeys.h"
#include "store/Preferences.h"
#include "store/StartupSequence.h"

#include <QDir>
#include <gtest/gtest.h>

using namespace PreferenceKeys;

namespace {

// Records each step as it is asked for, with what it is given.
class RecordingHooks : public StartupHooks, public WindowStartupHooks
{
public:
    WindowStartupHooks &windowSteps() override { return *this; }
    QStringList steps;
    int viewIndex = -99;
    int format = -99;
    bool drawerOpen = false;
    QStringList selectors;
    QString lastStartupSeen;
    bool storeRepairedBeforeLists = false;
    bool storeExistedAtDownload = true;

    void restartAndQuit() override { steps << QStringLiteral("restart"); }
    void downloadData() override
    {
        steps << QStringLiteral("download");
        storeExistedAtDownload = QFileInfo::exists(Paths::assignmentsFile());
    }
    void createLists() override
    {
        steps << QStringLiteral("lists");
        storeRepairedBeforeLists = QFileInfo::exists(Paths::assignmentsFile());
    }
    void setUpDateFormatter(const QString &) override
    {
        steps << QStringLiteral("formatter");
        EXPECT_TRUE(Preferences::hasAllGroups());
    }
    void setUpWindow(bool open) override
    {
        steps << QStringLiteral("window");
        drawerOpen = open;
    }
    void setSortSelectors(const QStringList &s) override
    {
        steps << QStringLiteral("sort selectors");
        selectors = s;
    }
    void setUpFilterBar(int index) override
    {
        steps << QStringLiteral("filter bar");
        viewIndex = index;
    }
    void selectFormat(int f) override
    {
        steps << QStringLiteral("format");
        format = f;
    }
    void finishWindowSetUp() override { steps << QStringLiteral("finish window"); }
    void updateWindowInformation() override { steps << QStringLiteral("load"); }
    void updateCalendar() override { steps << QStringLiteral("calendar"); }
    void checkCrashLog(const QString &last) override
    {
        steps << QStringLiteral("crash log");
        lastStartupSeen = last;
    }
    void showMainWindow() override { steps << QStringLiteral("show"); }
    void uploadData() override { steps << QStringLiteral("upload"); }
};

} // namespace

TEST(StartupSequence, RunsItsStepsInOrderAndUploadsAtQuitOnlyAfterStartingUp)
{
    RecordingHooks hooks;
    StartupSequence sequence(hooks);
    EXPECT_FALSE(sequence.programDidSuccessfullyStartUp());
    ASSERT_EQ(sequence.run(), StartupSequence::Outcome::Started);
    EXPECT_EQ(hooks.steps, (QStringList{QStringLiteral("download"), QStringLiteral("lists"), QStringLiteral("formatter"),
                                        QStringLiteral("window"), QStringLiteral("sort selectors"),
                                        QStringLiteral("filter bar"), QStringLiteral("format"),
                                        QStringLiteral("finish window"), QStringLiteral("load"),
                                        QStringLiteral("calendar"), QStringLiteral("crash log"), QStringLiteral("show")}));
    // Nothing was read or repaired before the download, which may replace the whole folder.
    EXPECT_FALSE(hooks.storeExistedAtDownload);
    EXPECT_TRUE(hooks.storeRepairedBeforeLists);
    EXPECT_TRUE(sequence.programDidSuccessfullyStartUp());
    EXPECT_EQ(hooks.viewIndex, 1);
    EXPECT_EQ(hooks.format, 0);
    EXPECT_TRUE(hooks.drawerOpen);
    EXPECT_EQ(hooks.selectors, StartupSequence::DefaultSortSelectors);
    EXPECT_TRUE(hooks.lastStartupSeen.isNull());

    const UserDefaults defaults;
    EXPECT_EQ(defaults.string(LastStartup), DateText::toStoredForm(TestEnvironment::pinnedNow()));
    EXPECT_EQ(defaults.string(AssignmentDrawerState), QStringLiteral("Open"));

    sequence.terminate();
    sequence.terminate();
    EXPECT_EQ(hooks.steps.count(QStringLiteral("upload")), 1);

    RecordingHooks never;
    StartupSequence notStarted(never);
    notStarted.terminate();
    EXPECT_TRUE(never.steps.isEmpty());
}

TEST(StartupSequence, ReadsDefaultViewFormatDrawerAndSortSelectors)
{
    Preferences::setAllDefaults();
    UserDefaults defaults;
    QVariantMap general = defaults.dictionary(General);
    general.insert(GeneralKeys::DefaultView, qint64(2));
    general.insert(GeneralKeys::OldDefaultFormat, qint64(1));
    defaults.set(General, general);
    defaults.set(AssignmentDrawerState, QStringLiteral("Closed"));
    defaults.set(SortSelectors, QVariantList{QStringLiteral("Name")});
    defaults.set(LastStartup, QStringLiteral("2026-11-21 09:00:00 -0500"));

    RecordingHooks hooks;
    StartupSequence sequence(hooks);
    sequence.run();
    // 2 + 1 wraps to the first view.
    EXPECT_EQ(hooks.viewIndex, 0);
    // The old "Default Format" 1 means the monthly calendar.
    EXPECT_EQ(hooks.format, 2);
    EXPECT_FALSE(hooks.drawerOpen);
    EXPECT_EQ(hooks.selectors, QStringList{QStringLiteral("Name")});
    EXPECT_EQ(hooks.lastStartupSeen, QStringLiteral("2026-11-21 09:00:00 -0500"));
    EXPECT_EQ(defaults.string(AssignmentDrawerState), QStringLiteral("Closed"));

    defaults.set(AssignmentDrawerState, QStringLiteral("Half"));
    RecordingHooks again;
    StartupSequence(again).run();
    EXPECT_TRUE(again.drawerOpen);
    EXPECT_EQ(defaults.string(AssignmentDrawerState), QStringLiteral("Open"));
}

TEST(StartupSequence, FourOfFiveGroupsAreAllResetThenEarlierKeysApplied)
{
    Preferences::setAllDefaults();
    UserDefaults defaults;
    QVariantMap labels = defaults.dictionary(PreferenceKeys::Labels);
    labels.insert(QStringLiteral("Course"), QStringLiteral("Class"));
    defaults.set(PreferenceKeys::Labels, labels);
    defaults.remove(PersonalInfo);
    defaults.set(QStringLiteral("Personal Info"), QVariantMap{{QStringLiteral("Name"), QStringLiteral("Ada")}});

    RecordingHooks hooks;
    StartupSequence(hooks).run();
    EXPECT_TRUE(Preferences::hasAllGroups());
    EXPECT_EQ(defaults.dictionary(PreferenceKeys::Labels).value(QStringLiteral("Course")).toString(),
              QStringLiteral("Course"));
    EXPECT_EQ(defaults.dictionary(PersonalInfo).value(QStringLiteral("Name")).toString(), QStringLiteral("Ada"));
}

TEST(StartupSequence, MovingAnEarlierPreferencesFileRestartsBeforeAnythingElse)
{
    QDir().mkpath(Paths::preferencesFolder());
    ASSERT_TRUE(PropertyList::writeFile(Paths::preferencesFile(QStringLiteral("com.ostrelle.Quillory")), QVariantMap()));
    RecordingHooks hooks;
    StartupSequence sequence(hooks);
    EXPECT_EQ(sequence.run(), StartupSequence::Outcome::Restarting);
    EXPECT_EQ(hooks.steps, QStringList{QStringLiteral("restart")});
    EXPECT_FALSE(sequence.programDidSuccessfullyStartUp());
    sequence.terminate();
    EXPECT_EQ(hooks.steps, QStringList{QStringLiteral("restart")});
}
