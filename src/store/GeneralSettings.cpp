#include "store/GeneralSettings.h"

#include "platform/UserDefaults.h"
#include "store/PreferenceKeys.h"

#include <QStringList>
#include <QVariantMap>

using namespace PreferenceKeys;
using namespace PreferenceKeys::GeneralKeys;

namespace {
const QStringList OfferedFormats = {DateFormatLong, DateFormatShort, DateFormatNumeric};

namespace Old {
const QString DateEntryFormat = QStringLiteral("Date Entry Format");
const QString TextBox = QStringLiteral("Text Box");
const QString PullDownBoxes = QStringLiteral("Pull Down Boxes");
const QString DateFormat = QStringLiteral("Date Format");
const QString DefaultView = QStringLiteral("Default View");
const QString DisplayICalExportAdvancedSettings = QStringLiteral("Display iCal Export Advanced Settings");
const QString DisplayDuplicateDates = QStringLiteral("Display Duplicate Dates");
const QString DisplayWarningMessages = QStringLiteral("Display Warning Messages");
} // namespace Old
} // namespace

GeneralSettings GeneralSettings::load()
{
    const UserDefaults defaults;
    const QVariantMap general = defaults.dictionary(General);
    GeneralSettings s;
    s.defaultView = general.value(DefaultView).toInt();
    s.defaultCalendarFormat = general.value(DefaultCalendarFormat).toInt();
    s.dateEntryFormat = general.value(DateEntryFormat).toInt();
    s.setDateFormat(storedDateFormat());
    s.displayDuplicateDates = general.value(DisplayDuplicateDates).toBool();
    s.displayWarningMessages = general.value(DisplayWarningMessages).toBool();
    s.displayAdvancedICalSettings = general.value(DisplayAdvancedICalSettings).toBool();
    s.doubleClickCreates = general.value(DoubleClickCreates).toBool();
    s.alternateRowColors = general.value(AlternateRowColors).toBool();
    s.hideWeekends = general.value(HideWeekends).toBool();
    s.mainWindowTransition = general.value(MainWindowTransition).toInt();
    // Without the key the list titles subprojects with the built-in format; the pane shows that.
    s.subprojectTitleFormat = storedSubprojectTitleFormat();
    s.checkForUpdates = defaults.boolValue(SUCheckAtStartup);
    return s;
}

namespace
{
QString storedText(const QString &key, const QString &fallback)
{
    const QVariant value = UserDefaults().groupValue(General, key);
    return value.typeId() == QMetaType::QString ? value.toString() : fallback;
}
} // namespace

QString GeneralSettings::storedDateFormat()
{
    return storedText(DateFormat, DateFormatLong);
}

QString GeneralSettings::storedSubprojectTitleFormat()
{
    return storedText(SubprojectTitleFormat, DefaultSubprojectTitleFormat);
}

QString GeneralSettings::dateFormat() const
{
    if (dateFormatChoice >= 0 && dateFormatChoice < OfferedFormats.size())
        return OfferedFormats[dateFormatChoice];
    return customDateFormat;
}

void GeneralSettings::setDateFormat(const QString &format)
{
    const int offered = int(OfferedFormats.indexOf(format));
    if (offered >= 0) {
        dateFormatChoice = offered;
    } else {
        dateFormatChoice = 3;
        customDateFormat = format;
    }
}

QVariantMap GeneralSettings::dictionary() const
{
    return {
        {DefaultView, qint64(defaultView)},
        {DefaultCalendarFormat, qint64(defaultCalendarFormat)},
        {DateEntryFormat, qint64(dateEntryFormat)},
        {DisplayDuplicateDates, displayDuplicateDates},
        {DisplayWarningMessages, displayWarningMessages},
        {DisplayAdvancedICalSettings, displayAdvancedICalSettings},
        {DoubleClickCreates, doubleClickCreates},
        {DateFormat, dateFormat()},
        {MainWindowTransition, qint64(mainWindowTransition)},
        {AlternateRowColors, alternateRowColors},
        {HideWeekends, hideWeekends},
        // Stored even when empty: an emptied format shows subprojects without a title.
        {SubprojectTitleFormat, subprojectTitleFormat},
    };
}

void GeneralSettings::save() const
{
    write(dictionary());
}

void GeneralSettings::write(const QVariantMap &general) const
{
    UserDefaults().setMany({{General, general}, {SUCheckAtStartup, checkForUpdates}});
}

void GeneralSettings::resetToDefaults()
{
    defaultView = 0;
    defaultCalendarFormat = 0;
    dateFormatChoice = 0;
    dateEntryFormat = 0;
    displayDuplicateDates = false;
    displayWarningMessages = true;
    checkForUpdates = true;
    displayAdvancedICalSettings = false;
    doubleClickCreates = true;
    alternateRowColors = false;
    hideWeekends = false;
    subprojectTitleFormat = DefaultSubprojectTitleFormat;
}

void GeneralSettings::importEarlierPreferencesFile()
{
    UserDefaults defaults;
    GeneralSettings s = load();
    const QVariantMap all = defaults.all();
    const QVariantMap before = defaults.dictionary(General);
    QStringList removals;
    const auto take = [&](const QString &key) {
        removals.append(key);
        return all.value(key);
    };
    if (all.contains(Old::DateEntryFormat)) {
        const QString entry = take(Old::DateEntryFormat).toString();
        if (entry == Old::TextBox)
            s.dateEntryFormat = 0;
        else if (entry == Old::PullDownBoxes)
            s.dateEntryFormat = 1;
    }
    if (all.contains(Old::DateFormat))
        s.setDateFormat(take(Old::DateFormat).toString());
    if (all.contains(Old::DefaultView))
        s.defaultView = take(Old::DefaultView).toInt();
    if (all.contains(Old::DisplayICalExportAdvancedSettings))
        s.displayAdvancedICalSettings = take(Old::DisplayICalExportAdvancedSettings).toBool();
    if (all.contains(Old::DisplayDuplicateDates))
        s.displayDuplicateDates = take(Old::DisplayDuplicateDates).toBool();
    if (all.contains(Old::DisplayWarningMessages))
        s.displayWarningMessages = take(Old::DisplayWarningMessages).toBool();
    if (!removals.isEmpty())
        defaults.setMany({}, removals);
    // The keys only the pane writes stay unwritten until the user saves the pane; their readers
    // keep their own defaults meanwhile.
    QVariantMap general = s.dictionary();
    for (const QString &key : {AlternateRowColors, HideWeekends, SubprojectTitleFormat})
        if (!before.contains(key))
            general.remove(key);
    s.write(general);
}
