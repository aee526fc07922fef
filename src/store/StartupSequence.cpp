#include "store/StartupSequence.h"

#include "platform/DateText.h"
#include "platform/UserDefaults.h"
#include "store/AssignmentStore.h"
#include "store/PreferenceKeys.h"
#include "store/Preferences.h"

#include <QLoggingCategory>

Q_DECLARE_LOGGING_CATEGORY(lcStore)

using namespace PreferenceKeys;

const QStringList StartupSequence::DefaultSortSelectors = {
    fieldKey(AssignmentField::Date), fieldKey(AssignmentField::Name), fieldKey(AssignmentField::Course),
    fieldKey(AssignmentField::Textbook)};

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
    WindowStartupHooks &window = m_hooks.windowSteps();
    window.createLists();

    if (!Preferences::hasAllGroups()) {
        Preferences::setAllDefaults();
        Preferences::importEarlierPreferencesFile();
    }
    setUpWindowFromPreferences(window);

    // Finishing the launch.
    UserDefaults defaults;
    m_hooks.checkCrashLog(defaults.string(LastStartup));
    defaults.set(LastStartup, DateText::nowStoredForm());
    m_hooks.showMainWindow();
    m_started = true;
    return Outcome::Started;
}

void StartupSequence::setUpWindowFromPreferences(WindowStartupHooks &window)
{
    UserDefaults defaults;
    window.setUpDateFormatter(defaults.groupValue(General, GeneralKeys::DateFormat).toString());

    const bool drawerOpen = defaults.string(AssignmentDrawerState) != Closed;
    if (drawerOpen && defaults.string(AssignmentDrawerState) != Open)
        defaults.set(AssignmentDrawerState, Open);
    window.setUpWindow(drawerOpen);

    const QVariant selectors = defaults.object(SortSelectors);
    window.setSortSelectors(selectors.typeId() == QMetaType::QVariantList ? selectors.toStringList()
                                                                          : DefaultSortSelectors);

    window.setUpFilterBar(startupViewIndex(defaults.groupValue(General, GeneralKeys::DefaultView).toLongLong()));
    if (defaults.dictionary(General).contains(GeneralKeys::OldDefaultFormat))
        Preferences::fixOldDefaultFormat();
    const QVariantMap general = defaults.dictionary(General);
    window.selectFormat(general.contains(GeneralKeys::DefaultCalendarFormat)
                            ? int(general.value(GeneralKeys::DefaultCalendarFormat).toLongLong())
                            : -1);
    window.finishWindowSetUp();

    window.updateWindowInformation();
    window.updateCalendar();
}

int StartupSequence::startupViewIndex(qint64 defaultView)
{
    // Any stored number gives one of the three views, a negative or a large one too.
    return int(((defaultView + 1) % 3 + 3) % 3);
}

void StartupSequence::terminate()
{
    if (m_terminated)
        return;
    m_terminated = true;
    if (m_started)
        m_hooks.uploadData();
}
