#pragma once

#include <QDate>
#include <QDateTime>

#include <ostream>

// Readable failure messages for the date tests.
inline void PrintTo(const QDate &date, std::ostream *out)
{
    *out << (date.isValid() ? date.toString(Qt::ISODate).toStdString() : std::string("(invalid date)"));
}

inline void PrintTo(const QDateTime &moment, std::ostream *out)
{
    *out << (moment.isValid() ? moment.toString(Qt::ISODateWithMs).toStdString() : std::string("(invalid moment)"));
}
