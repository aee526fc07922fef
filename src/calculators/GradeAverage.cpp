#include "calculators/GradeAverage.h"

#include <QHash>

#include <charconv>
#include <cmath>
#include <string>

namespace GradeAverage {

double leadingNumber(const QString &text)
{
    // Digits, one point and an exponent: the longest prefix that reads as a decimal number. Parsed
    // with from_chars so that a decimal-comma locale never changes what "3.5" means.
    const QByteArray bytes = text.toUtf8();
    qsizetype i = 0;
    while (i < bytes.size() && (bytes[i] == ' ' || bytes[i] == '\t' || bytes[i] == '\n'))
        ++i;
    std::string number;
    if (i < bytes.size() && (bytes[i] == '+' || bytes[i] == '-')) {
        if (bytes[i] == '-')
            number += '-';
        ++i;
    }
    bool digits = false;
    while (i < bytes.size() && std::isdigit(static_cast<unsigned char>(bytes[i]))) {
        number += bytes[i++];
        digits = true;
    }
    if (i < bytes.size() && bytes[i] == '.') {
        number += bytes[i++];
        while (i < bytes.size() && std::isdigit(static_cast<unsigned char>(bytes[i]))) {
            number += bytes[i++];
            digits = true;
        }
    }
    if (!digits)
        return 0;
    if (i < bytes.size() && (bytes[i] == 'e' || bytes[i] == 'E')) {
        std::string exponent = "e";
        qsizetype j = i + 1;
        if (j < bytes.size() && (bytes[j] == '+' || bytes[j] == '-'))
            exponent += bytes[j++];
        bool exponentDigits = false;
        while (j < bytes.size() && std::isdigit(static_cast<unsigned char>(bytes[j]))) {
            exponent += bytes[j++];
            exponentDigits = true;
        }
        if (exponentDigits)
            number += exponent;
    }
    double value = 0;
    const auto result = std::from_chars(number.data(), number.data() + number.size(), value);
    if (result.ec == std::errc::result_out_of_range) {
        // Too small rounds to nothing, too large is infinite, as the C library reads it.
        if (number.find("e-") != std::string::npos)
            return 0.0;
        return number[0] == '-' ? -HUGE_VAL : HUGE_VAL;
    }
    return value;
}

std::optional<double> letterPoints(const QString &text)
{
    static const QHash<QString, double> points = {
        {QStringLiteral("A+"), 4.3},   {QStringLiteral("A"), 4.0},    {QStringLiteral("A-"), 3.667},
        {QStringLiteral("B+"), 3.333}, {QStringLiteral("B"), 3.0},    {QStringLiteral("B-"), 2.667},
        {QStringLiteral("C+"), 2.333}, {QStringLiteral("C"), 2.0},    {QStringLiteral("C-"), 1.667},
        {QStringLiteral("D+"), 1.333}, {QStringLiteral("D"), 1.0},    {QStringLiteral("D-"), 0.667},
        {QStringLiteral("F"), 0.0},
    };
    // Only the letter's case may vary: "a+" counts, "A+ " does not.
    if (text.isEmpty())
        return std::nullopt;
    auto it = points.constFind(text);
    if (it == points.constEnd() && text.at(0).isLower()) {
        QString upper = text;
        upper[0] = text.at(0).toUpper();
        it = points.constFind(upper);
    }
    if (it == points.constEnd())
        return std::nullopt;
    return *it;
}

QString formatMean(double mean)
{
    if (std::isnan(mean))
        return QStringLiteral("nan");
    if (std::isinf(mean))
        return mean > 0 ? QStringLiteral("inf") : QStringLiteral("-inf");
    QString text = QString::number(mean, 'f', 3);
    while (text.endsWith(QLatin1Char('0')) && text.at(text.size() - 2) != QLatin1Char('.'))
        text.chop(1);
    if (text == QLatin1String("-0.0"))
        text = QStringLiteral("0.0");
    return text;
}

QString displayText(const QStringList &cells)
{
    double points = 0;
    double count = 0;
    for (const QString &cell : cells) {
        const double value = leadingNumber(cell);
        if (value != 0) {
            points += value;
            count += 1;
        } else if (const auto letter = letterPoints(cell)) {
            points += *letter;
            count += 1;
        }
    }
    // Nothing counted is 0/0, which the display shows as a plain zero.
    const QString mean = formatMean(points / count);
    if (mean == QLatin1String("nan"))
        return EmptyDisplay;
    return DisplayPrefix + mean;
}

} // namespace GradeAverage
