#pragma once

#include <QString>

// What the list needs of the main window's toolbar. The window implements it; tests use a plain
// object.
class ToolbarState
{
public:
    virtual ~ToolbarState() = default;

    // Whether an item labelled "Search" is among the toolbar's visible items (not removed by the
    // user, not pushed into the overflow). Without it the search field's text is ignored.
    virtual bool isSearchItemVisible() const = 0;
    virtual QString searchText() const = 0;
    // The search field's placeholder, which is the search scope ("" for every field).
    virtual QString searchPlaceholder() const = 0;
    virtual void setSearchPlaceholder(const QString &placeholder) = 0;
    // The selected segment of the format control: 0 list, 1 weekly, 2 monthly calendar.
    virtual int formatSegment() const = 0;
};
