#pragma once

#include <QList>
#include <QString>
#include <QStringList>

// The items the main window's toolbar can hold: what each is called, says and shows, which may be
// put on the toolbar, which are there on a fresh start, and when each is enabled.
namespace ToolbarCatalogue {

inline const QString AddItem = QStringLiteral("AddItem");
inline const QString AddMultipleItem = QStringLiteral("AddMultipleItem");
inline const QString AddProjectItem = QStringLiteral("AddProjectItem");
inline const QString RemoveItem = QStringLiteral("RemoveItem");
inline const QString EmailItem = QStringLiteral("EmailItem");
inline const QString ToggleDrawer = QStringLiteral("ToggleDrawer");
inline const QString Preferences = QStringLiteral("Preferences");
inline const QString CoursesWindow = QStringLiteral("CoursesWindow");
inline const QString FinalsCalc = QStringLiteral("FinalsCalc");
inline const QString GPACalc = QStringLiteral("GPACalc");
inline const QString SearchItem = QStringLiteral("SearchItem");
inline const QString ExportToiCal = QStringLiteral("ExportToiCal");
inline const QString ExportToText = QStringLiteral("ExportToText");
inline const QString SyncData = QStringLiteral("SyncData");
inline const QString FormatView = QStringLiteral("FormatView");
// The calendar server's sync; its action is answered by whoever runs that sync.
inline const QString CalendarSync = QStringLiteral("CalendarSync");

// The desktop's standard items.
inline const QString Separator = QStringLiteral("Separator");
inline const QString Space = QStringLiteral("Space");
inline const QString FlexibleSpace = QStringLiteral("FlexibleSpace");
inline const QString Customize = QStringLiteral("Customize");

// Where the user's arrangement is kept between launches.
inline const QString ItemsPreferenceKey = QStringLiteral("Main Toolbar Items");

struct Item {
    QString identifier;
    QString label;   // also the palette label
    QString toolTip;
    QString image;   // the item's image name; empty for the two items that show a control
    QString themeIcon;
    QString fallbackIcon;
};

// The items, in the order of the table that defines them.
const QList<Item> &items();
const Item *find(const QString &identifier);
// The label of a standard item ("Separator", "Space", "Flexible Space", "Customize").
QString standardLabel(const QString &identifier);
bool isStandard(const QString &identifier);
// The four standard items may stand more than once on a toolbar; the others at most once.
bool isRepeatable(const QString &identifier);

// In the palette's order: the items, then separator, space, flexible space and customize.
QStringList allowedItemIdentifiers();
QStringList defaultItemIdentifiers();

// The user's arrangement from the preferences, with unknown and repeated items dropped; the
// default set when nothing usable is stored.
QStringList storedItemIdentifiers();
void storeItemIdentifiers(const QStringList &identifiers);

// The courses item reads the Course label + "s and " + the Textbook label + "s".
QString coursesItemLabel();

// What decides whether an item is enabled.
struct ValidationState {
    bool customizing = false;
    int selectedRows = 0;
    int rows = 0;
};
bool isEnabled(const QString &identifier, const ValidationState &state);

} // namespace ToolbarCatalogue
