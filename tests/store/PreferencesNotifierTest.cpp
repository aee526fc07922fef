#include "TestEnvironment.h"

#include "platform/PreferencesNotifier.h"
#include "platform/UserDefaults.h"
#include "store/GeneralSettings.h"
#include "store/PreferenceKeys.h"
#include "store/Preferences.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QThread>
#include <gtest/gtest.h>

#include <thread>

using namespace PreferenceKeys;

namespace
{

// Every change the notifier reports while it lives, with the thread it arrived on.
struct Recorder {
    QList<std::pair<QString, QString>> changes;
    QList<QThread *> threads;
    QMetaObject::Connection connection;
    Recorder()
    {
        connection = QObject::connect(
            UserDefaults::notifier(), &PreferencesNotifier::changed, [this](const QString &group, const QString &key) {
                changes.append({ group, key });
                threads.append(QThread::currentThread());
            });
    }
    ~Recorder() { QObject::disconnect(connection); }
};

} // namespace

TEST(PreferencesNotifier, AWriteNamesTheEntriesItChangedAndNothingElse)
{
    Preferences::setAllDefaults();
    Recorder recorder;

    QVariantMap general = UserDefaults().dictionary(General);
    general.insert(GeneralKeys::DateFormat, DateFormatNumeric);
    general.insert(GeneralKeys::HideWeekends, true);
    UserDefaults().set(General, general);
    EXPECT_EQ(recorder.changes,
        (QList<std::pair<QString, QString>> {
            { General, GeneralKeys::DateFormat }, { General, GeneralKeys::HideWeekends } }));

    // The same values again change nothing and say nothing.
    recorder.changes.clear();
    UserDefaults().set(General, general);
    EXPECT_TRUE(recorder.changes.isEmpty());

    // A top-level value, and a removal.
    UserDefaults().set(ColorFormat, 2);
    UserDefaults().remove(SUCheckAtStartup);
    EXPECT_EQ(recorder.changes,
        (QList<std::pair<QString, QString>> { { QString(), ColorFormat }, { QString(), SUCheckAtStartup } }));

    // Another domain's file is not the program's preferences.
    recorder.changes.clear();
    UserDefaults(QStringLiteral("com.example.Other")).set(ColorFormat, 3);
    EXPECT_TRUE(recorder.changes.isEmpty());
}

TEST(PreferencesNotifier, AWriteFromAWorkerThreadArrivesQueuedOnTheInterfaceThread)
{
    Preferences::setAllDefaults();
    Recorder recorder;
    std::thread worker([] { UserDefaults().set(LastStartup, QStringLiteral("from a worker")); });
    worker.join();
    // Nothing arrives on the worker, and nothing before the interface thread's event loop turns.
    EXPECT_TRUE(recorder.changes.isEmpty());
    QElapsedTimer timer;
    timer.start();
    while (recorder.changes.isEmpty() && timer.elapsed() < 2000)
        QCoreApplication::processEvents();
    ASSERT_EQ(recorder.changes, (QList<std::pair<QString, QString>> { { QString(), LastStartup } }));
    EXPECT_EQ(recorder.threads.first(), QCoreApplication::instance()->thread());
}

TEST(PreferencesNotifier, EveryReaderOfTheDateFormatGetsTheSameDefault)
{
    Preferences::setAllDefaults();
    QVariantMap general = UserDefaults().dictionary(General);
    general.remove(GeneralKeys::DateFormat);
    general.remove(GeneralKeys::SubprojectTitleFormat);
    UserDefaults().set(General, general);
    EXPECT_EQ(GeneralSettings::storedDateFormat(), DateFormatLong);
    EXPECT_EQ(GeneralSettings::storedSubprojectTitleFormat(), DefaultSubprojectTitleFormat);
    // The General pane shows the format the list uses, not an empty custom one.
    const GeneralSettings shown = GeneralSettings::load();
    EXPECT_EQ(shown.dateFormatChoice, 0);
    EXPECT_EQ(shown.dateFormat(), DateFormatLong);
}
