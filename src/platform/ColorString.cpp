#include "platform/ColorString.h"

#include <charconv>
#include <cmath>

namespace ColorString {

namespace {

// Six significant digits, like the platform's own description of a colour; never locale-dependent.
QString component(double value)
{
    char buffer[32];
    auto result = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general, 6);
    return QString::fromLatin1(buffer, result.ptr - buffer);
}

} // namespace

QString fromComponents(double red, double green, double blue, double alpha)
{
    return QLatin1String(RGBSpaceName) + QLatin1Char(' ') + component(red) + QLatin1Char(' ') + component(green)
        + QLatin1Char(' ') + component(blue) + QLatin1Char(' ') + component(alpha);
}

QString fromColor(const QColor &color)
{
    const QColor rgb = color.toRgb();
    return fromComponents(rgb.redF(), rgb.greenF(), rgb.blueF(), rgb.alphaF());
}

QString black()
{
    return QStringLiteral("NSCalibratedWhiteColorSpace 0 1");
}

std::optional<QColor> toColor(const QString &text)
{
    if (text.isNull())
        return std::nullopt;
    const QByteArray rest = text.mid(25).toLatin1();
    double values[4] = {0.0, 0.0, 0.0, 1.0};
    const char *p = rest.constData();
    const char *end = p + rest.size();
    for (double &value : values) {
        while (p < end && (*p == ' ' || *p == '\t' || *p == '\n' || *p == '\r'))
            ++p;
        if (p < end && *p == '+')
            ++p;
        double scanned = 0.0;
        auto result = std::from_chars(p, end, scanned);
        if (result.ec != std::errc() || !std::isfinite(scanned))
            break; // a scanner that fails does not advance, so every later number fails too
        value = scanned;
        p = result.ptr;
    }
    QColor color;
    color.setRgbF(float(std::clamp(values[0], 0.0, 1.0)), float(std::clamp(values[1], 0.0, 1.0)),
                  float(std::clamp(values[2], 0.0, 1.0)), float(std::clamp(values[3], 0.0, 1.0)));
    return color;
}

} // namespace ColorString
