#pragma once

#include <QColor>
#include <QString>

#include <optional>

// Colours as the preferences keep them: "NSCalibratedRGBColorSpace" followed by red, green, blue
// and alpha from 0 to 1, separated by blanks. Reading skips the first 25 characters (the length of
// that name) and scans up to four numbers; alpha defaults to 1 and a number that cannot be scanned
// stays 0, as does every number after it.
namespace ColorString {

inline constexpr auto RGBSpaceName = "NSCalibratedRGBColorSpace";

QString fromComponents(double red, double green, double blue, double alpha = 1.0);
QString fromColor(const QColor &color);
// The grey-scale text of plain black, as the platform writes it; it reads back as black.
QString black();
// No text (a null string) gives no colour.
std::optional<QColor> toColor(const QString &text);

} // namespace ColorString
