#pragma once

#include "importing/FeedEvent.h"

#include <QByteArray>
#include <QString>

#include <optional>

// Reads an iCalendar file (RFC 5545) with libical: its VEVENTs and VTODOs become FeedEvents.
//
// Dates keep what the file means: a DATE value is that day, whatever the time zone; a time with a
// TZID is converted from that zone (the file's own VTIMEZONE, else the system's zone database); a
// UTC time is converted to local time; a floating time is read as local time.
//
// A file that is not a calendar, is cut short, or holds a value libical cannot read gives nullopt and
// a message meant for the user: nothing of such a file is imported, rather than part of it.
class CalendarFeedParser
{
public:
    static std::optional<FeedContents> parse(const QByteArray &bytes, QString *error);
};
