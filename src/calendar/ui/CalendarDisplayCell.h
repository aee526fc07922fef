#pragma once

#include <QColor>
#include <QFont>
#include <QString>

// One row of a day's list as it is about to be drawn; the calendar's delegate may change its text
// colour (the list's colouring of the entry's assignment).
struct CalendarDisplayCell {
    QString text;
    QFont font;
    QColor textColor;
    bool selected = false;
    bool editable = false;
};
