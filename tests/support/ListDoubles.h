#pragma once

#include "list/SidebarValues.h"
#include "list/ToolbarState.h"
#include "platform/Paths.h"
#include "platform/PropertyList.h"
#include "platform/UserDefaults.h"
#include "store/Assignment.h"
#include "store/PreferenceKeys.h"

#include <QVariantList>
#include <QVariantMap>

// What the list's controller talks to in place of the main window, for the tests that drive the
// controller without one, and the store and preferences on disk as those tests read and set them.

// The toolbar as the list sees it: a search item that can be taken off, its text and placeholder,
// and the format control.
struct FakeToolbar : ToolbarState {
    bool searchVisible = true;
    QString text;
    QString placeholder;
    int format = 0;
    bool isSearchItemVisible() const override { return searchVisible; }
    QString searchText() const override { return text; }
    QString searchPlaceholder() const override { return placeholder; }
    void setSearchPlaceholder(const QString &value) override { placeholder = value; }
    int formatSegment() const override { return format; }
};

// The sidebar's editors: what the controller shows is what the next edit reads, as in the window.
struct FakeSidebar : SidebarEditor {
    SidebarValues values;
    SidebarValues sidebarValues() const override { return values; }
    void setSidebarValues(const SidebarValues &shown) override { values = shown; }
};

namespace StoreFiles {

inline QVariantList readStore()
{
    return PropertyList::readFile(Paths::assignmentsFile()).value_or(QVariant()).toList();
}

// The record named `name` as the store file holds it now, or an empty map.
inline QVariantMap storedNamed(const QString &name)
{
    for (const QVariant &entry : readStore())
        if (entry.toMap().value(AssignmentKeys::Name).toString() == name)
            return entry.toMap();
    return {};
}

// The names of the records in the store file, in file order or sorted when only which records it
// holds matters.
inline QStringList storedNames(bool sorted = false)
{
    QStringList names;
    for (const QVariant &entry : readStore())
        names.append(entry.toMap().value(AssignmentKeys::Name).toString());
    if (sorted)
        names.sort();
    return names;
}

inline void setGeneral(const QString &key, const QVariant &value)
{
    UserDefaults defaults;
    QVariantMap general = defaults.dictionary(PreferenceKeys::General);
    general.insert(key, value);
    defaults.set(PreferenceKeys::General, general);
}

} // namespace StoreFiles
