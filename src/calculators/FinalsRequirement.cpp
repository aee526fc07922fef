#include "calculators/FinalsRequirement.h"

#include <cfenv>
#include <climits>
#include <cmath>

namespace FinalsRequirement {

namespace {
const QString Impossible = QStringLiteral("It is impossible for you to get a %1% in the class.");
const QString Guaranteed = QStringLiteral("You are guaranteed a %1% in the class.");
const QString NeedPrefix = QStringLiteral("For a %1% in the class, you need a ");
const QString NeedSuffix = QStringLiteral("% on the final.");
} // namespace

int leadingInteger(const QString &text)
{
    qsizetype i = 0;
    while (i < text.size() && text.at(i).isSpace())
        ++i;
    bool negative = false;
    if (i < text.size() && (text.at(i) == QLatin1Char('+') || text.at(i) == QLatin1Char('-'))) {
        negative = text.at(i) == QLatin1Char('-');
        ++i;
    }
    qint64 value = 0;
    for (; i < text.size() && text.at(i) >= QLatin1Char('0') && text.at(i) <= QLatin1Char('9'); ++i) {
        value = value * 10 + (text.at(i).unicode() - '0');
        if (value > qint64(INT_MAX) + 1)
            value = qint64(INT_MAX) + 1; // saturate; the clamp below decides the sign's limit
    }
    if (negative)
        return value > qint64(INT_MAX) ? INT_MIN : int(-value);
    return value > INT_MAX ? INT_MAX : int(value);
}

double needed(int target, int grade, int percentage)
{
    const double weight = percentage / 100.0;
    const double base = grade * (1 - weight);
    return (target - base) / weight;
}

QString formatWhole(double value)
{
    if (std::isnan(value))
        return QStringLiteral("NaN");
    // nearbyint rounds in the current mode, half to even by default, as number patterns do.
    return QString::number(std::nearbyint(value), 'f', 0);
}

QString sentence(int target, double need)
{
    const QString number = QString::number(target);
    if (need > 100)
        return Impossible.arg(number);
    if (need <= 0)
        return Guaranteed.arg(number);
    return NeedPrefix.arg(number) + formatWhole(need) + NeedSuffix;
}

std::optional<QStringList> sentences(const QString &gradeText, const QString &percentageText)
{
    if (gradeText.isEmpty() || percentageText.isEmpty())
        return std::nullopt;
    const int grade = leadingInteger(gradeText);
    const int percentage = leadingInteger(percentageText);
    QStringList result;
    for (int target : Targets)
        result.append(sentence(target, needed(target, grade, percentage)));
    return result;
}

} // namespace FinalsRequirement
