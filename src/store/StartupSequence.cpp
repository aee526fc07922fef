#include "store/StartupSequence.h"

#include "platform/DateText.h"
#include "platform/UserDefaults.h"
#include "store/AssignmentStore.h"
#include "store/PreferenceKeys.h"
#include "store/Preferences.h"

#include <QLoggingCategory>

Q_DECLARE_LOGGING_CATEGORY(lcStore)

using namespace PreferenceKeys;

const QStringList StartupSequence::DefaultSortSelectors = {QStringLiteral("Date"), QStringLiteral("Name"),
                                                           QStringLiteral("Course"), QStringLiteral("Textbook")};

StartupSequence::StartupSequence(StartupHooks &hooks)
    : m_hooks(hooks)
{
}

StartupSequence::Outcome StartupSequence::run()
{
    // An earlier version's preferences file is moved into place first; the preferences store is
    // then read afresh by a new run of the program.
    if (Preferences::moveEarlierPreferencesFile() == Preferences::FileMove::Moved) {
        m_hooks.restartAndQuit();
        return Outcome::Restarting;
    }

    // Before anything is read: a download may replace the data folder.
    m_hooks.downloadData();
    if (!m_hooks.startupMayGoOn())
        return Outcome::Stopped;

    AssignmentStore().repairAtStartup();
    m_hooks.createLists();

    if (!Preferences::hasAllGroups()) {
        Preferences::setAllDefaults();
        Preferences::importEarlierPreferencesFile();
    }

    UserDefaults defaults;
    m_hooks.setUpDateFormatter(defaults.groupValue(General, GeneralKeys::DateFormat).toString());

    const bool drawerOpen = defaults.string(AssignmentDrawerState) != Closed;
    if (drawerOpen && defaults.string(AssignmentDrawerState) != Open)
        defaults.set(AssignmentDrawerState, Open);
    m_hooks.setUpWindow(drawerOpen);

    const QVariant selectors = defaults.object(SortSelectors);
    m_hooks.setSortSelectors(selectors.typeId() == QMetaType::QVariantList ? selectors.toStringList()
                                                                           : DefaultSortSelectors);

    // The view shown at start-up is the one after "Default View", wrapping to the first.
    const qint64 defaultView = defaults.groupValue(General, GeneralKeys::DefaultView).toLongLong();
    m_hooks.setUpFilterBar(int((defaultView + 1) % 3 + 3) % 3);
    if (defaults.dictionary(General).contains(GeneralKeys::OldDefaultFormat))
        Preferences::fixOldDefaultFormat();
    const QVariantMap general = defaults.dictionary(General);
    m_hooks.selectFormat(general.contains(GeneralKeys::DefaultCalendarFormat)
                             ? int(general.value(GeneralKeys::DefaultCalendarFormat).toLongLong())
                             : -1);
    m_hooks.finishWindowSetUp();

    m_hooks.updateWindowInformation();
    m_hooks.updateCalendar();

    // Finishing the launch.
    m_hooks.checkCrashLog(defaults.string(LastStartup));
    defaults.set(LastStartup, DateText::nowStoredForm());
    m_hooks.showMainWindow();
    m_started = true;
    return Outcome::Started;
}

void StartupSequence::terminate()
{
    if (m_terminated)
        return;
    m_terminated = true;
    if (m_started)
        m_hooks.uploadData();
}
