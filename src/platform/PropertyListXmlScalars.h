#pragma once

#include <QVariant>

#include <string_view>

// The text of the XML property list's scalar elements turned into values, independent of the
// locale. Each returns false, leaving `value` alone, when the text is not of its form.
namespace PropertyListXmlScalars {

// The text without the XML whitespace (blank, tab, line feed, carriage return) around it.
std::string_view trimmed(std::string_view text);

// Decimal, with an optional sign; values above the signed 64-bit range that fit in 64 unsigned
// bits become quint64, everything else qint64.
bool integer(std::string_view text, QVariant &value);
// Decimal or exponent form with an optional sign, and "nan", "inf", "-inf".
bool real(std::string_view text, QVariant &value);
// 2006-09-14T04:00:00Z, always UTC.
bool date(std::string_view text, QVariant &value);
// Base64 with any whitespace between the characters; the padding may be left off.
bool data(std::string_view text, QVariant &value);

} // namespace PropertyListXmlScalars
