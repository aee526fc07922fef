#include "list/ui/ToolbarCatalogue.h"

#include "platform/UserDefaults.h"
#include "store/Labels.h"
#include "store/PreferenceKeys.h"

namespace ToolbarCatalogue {

const QList<Item> &items()
{
    static const QList<Item> all{
        {AddItem, QStringLiteral("Add"), QStringLiteral("Add a new assignment"), QStringLiteral("AddAssignment"),
         QStringLiteral("list-add"), QStringLiteral("main-add")},
        {AddMultipleItem, QStringLiteral("Add Recurring"),
         QStringLiteral("Add numerous recurring assignment that occur on a regular basis"),
         QStringLiteral("AddMultipleAssignments"), QStringLiteral("appointment-new"),
         QStringLiteral("main-add-recurring")},
        {AddProjectItem, QStringLiteral("Add Project"), QStringLiteral("Add a new project"),
         QStringLiteral("AddProject"), QStringLiteral("folder-new"), QStringLiteral("main-add-project")},
        {RemoveItem, QStringLiteral("Delete"), QStringLiteral("Delete the currently selected items"),
         QStringLiteral("deleteIcon"), QStringLiteral("edit-delete"), QStringLiteral("main-delete")},
        {EmailItem, QStringLiteral("Email"), QStringLiteral("Email the selected items to a friend"),
         QStringLiteral("mailIcon"), QStringLiteral("mail-send"), QStringLiteral("main-email")},
        {ToggleDrawer, QStringLiteral("Toggle Sidebar"), QStringLiteral("Show or hide the details sidebar on the right"),
         QStringLiteral("drawerIcon"), QStringLiteral("view-right-pane"), QStringLiteral("main-sidebar")},
        {Preferences, QStringLiteral("Preferences"), QStringLiteral("Open the Preferences window"),
         QStringLiteral("prefsIcon"), QStringLiteral("preferences-system"), QStringLiteral("main-preferences")},
        {CoursesWindow, QStringLiteral("Courses and Textbooks"),
         QStringLiteral("Open the Courses and Textbooks window in order to manage courses, textbooks and types"),
         QStringLiteral("coursesIcon"), QStringLiteral("x-office-address-book"), QStringLiteral("main-courses")},
        {FinalsCalc, QStringLiteral("Finals Calculator"), QStringLiteral("Open the Finals Calculator"),
         QStringLiteral("finalsCalcIcon"), QStringLiteral("accessories-calculator"), QStringLiteral("main-finals")},
        {GPACalc, QStringLiteral("GPA Calculator"), QStringLiteral("Open the Grade Point Average Calculator"),
         QStringLiteral("gpaCalcIcon"), QStringLiteral("x-office-spreadsheet"), QStringLiteral("main-gpa")},
        {SearchItem, QStringLiteral("Search"), QStringLiteral("Search your assignments"), QString(),
         QStringLiteral("edit-find"), QStringLiteral("main-search")},
        {ExportToiCal, QStringLiteral("Export To iCal"),
         QStringLiteral("Export the currently viewable assignments to iCal"), QStringLiteral("exportToiCalIcon"),
         QStringLiteral("x-office-calendar"), QStringLiteral("main-export-ical")},
        {ExportToText, QStringLiteral("Export To Text"),
         QStringLiteral("Export the currently viewable assignments to a text file"),
         QStringLiteral("exportToTextIcon"), QStringLiteral("text-x-generic"), QStringLiteral("main-export-text")},
        {SyncData, QStringLiteral("Upload Data"), QStringLiteral("Upload your data to your remote server"),
         QStringLiteral("Sync"), QStringLiteral("network-transmit"), QStringLiteral("main-upload")},
        {FormatView, QStringLiteral("View"), QStringLiteral("Switch the format in which you view your assignments"),
         QString(), QStringLiteral("view-list-details"), QStringLiteral("main-format")},
        {CalendarSync, QStringLiteral("Calendar Sync"),
         QStringLiteral("Send and receive assignments with the calendar server of Preferences ▸ Calendar Server"),
         QStringLiteral("calendarSyncIcon"), QStringLiteral("emblem-synchronizing"), QStringLiteral("prefs-calendar-server")},
    };
    return all;
}

const Item *find(const QString &identifier)
{
    for (const Item &item : items())
        if (item.identifier == identifier)
            return &item;
    return nullptr;
}

QString standardLabel(const QString &identifier)
{
    if (identifier == Separator)
        return QStringLiteral("Separator");
    if (identifier == Space)
        return QStringLiteral("Space");
    if (identifier == FlexibleSpace)
        return QStringLiteral("Flexible Space");
    if (identifier == Customize)
        return QStringLiteral("Customize");
    return QString();
}

bool isStandard(const QString &identifier)
{
    return identifier == Separator || identifier == Space || identifier == FlexibleSpace || identifier == Customize;
}

bool isRepeatable(const QString &identifier)
{
    return isStandard(identifier);
}

QStringList allowedItemIdentifiers()
{
    return {AddItem, AddMultipleItem, AddProjectItem, RemoveItem,   EmailItem, CoursesWindow,
            Preferences, GPACalc,     FinalsCalc,     ExportToiCal, ExportToText, FormatView,
            SearchItem,  ToggleDrawer, SyncData,      CalendarSync, Separator,  Space,     FlexibleSpace, Customize};
}

QStringList defaultItemIdentifiers()
{
    return {AddItem, AddMultipleItem, AddProjectItem, RemoveItem, Separator,
            FormatView, FlexibleSpace, CoursesWindow, Separator, SearchItem};
}

QStringList storedItemIdentifiers()
{
    const QVariant stored = UserDefaults().object(ItemsPreferenceKey);
    if (stored.typeId() != QMetaType::QVariantList)
        return defaultItemIdentifiers();
    const QStringList allowed = allowedItemIdentifiers();
    QStringList identifiers;
    for (const QVariant &value : stored.toList()) {
        const QString identifier = value.toString();
        if (!allowed.contains(identifier) || (!isRepeatable(identifier) && identifiers.contains(identifier)))
            continue;
        identifiers.append(identifier);
    }
    return identifiers;
}

void storeItemIdentifiers(const QStringList &identifiers)
{
    QVariantList list;
    for (const QString &identifier : identifiers)
        list.append(identifier);
    UserDefaults().set(ItemsPreferenceKey, list);
}

QString coursesItemLabel()
{
    return Labels::plural(PreferenceKeys::LabelKeys::Course) + QStringLiteral(" and ")
        + Labels::plural(PreferenceKeys::LabelKeys::Textbook);
}

bool isEnabled(const QString &identifier, const ValidationState &state)
{
    if (state.customizing)
        return true;
    if (identifier == RemoveItem || identifier == EmailItem)
        return state.selectedRows > 0;
    if (identifier == ExportToText)
        return state.rows > 0;
    return true;
}

} // namespace ToolbarCatalogue
