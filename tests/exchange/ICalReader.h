#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

// What libical makes of an iCalendar file: a calendar program's reading of our export.
namespace ICalReader {

struct Entry {
    QString kind; // "VEVENT" or "VTODO"
    QString summary;
    QString description;
    QString start; // DTSTART as libical writes it back (YYYYMMDD for dates)
    QString end;
    QString due;
    QString completed;
    QString status;
    int uid = 0;
    QStringList errors; // X-LIC-ERROR texts: what libical could not take and left out
};

struct Calendar {
    bool parsed = false;
    QString name;    // X-WR-CALNAME
    QString prodId;  // PRODID as read (backslash escapes undone)
    QString method;
    QStringList errors; // X-LIC-ERROR at the top level
    QList<Entry> entries;
};

Calendar read(const QByteArray &text);

} // namespace ICalReader
