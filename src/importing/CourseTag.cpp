#include "importing/CourseTag.h"

#include <QRegularExpression>

#include <optional>

QString CourseTag::matchCourse(const QString &candidate, const QStringList &courses)
{
    const QString wanted = candidate.simplified();
    if (wanted.isEmpty())
        return {};
    for (const QString &course : courses)
        if (course.simplified().compare(wanted, Qt::CaseInsensitive) == 0)
            return course;
    return {};
}

bool CourseTag::looksLikeCourseCode(const QString &text)
{
    static const QRegularExpression code(QStringLiteral("^[A-Za-z]{2,6}[ _-]?\\d{1,4}[A-Za-z]?([ _.-]\\w{1,6})*$"));
    return code.match(text.simplified()).hasMatch();
}

CourseTag::Split CourseTag::split(const QString &title, const QStringList &courses)
{
    const QString whole = title.simplified();
    const auto take = [&courses](const QString &name, const QString &candidate, bool anyText) -> std::optional<Split> {
        const QString course = candidate.simplified();
        if (name.simplified().isEmpty() || course.isEmpty())
            return std::nullopt;
        const QString known = matchCourse(course, courses);
        if (!known.isEmpty())
            return Split{name.simplified(), known, true};
        if (anyText || looksLikeCourseCode(course))
            return Split{name.simplified(), course, false};
        return std::nullopt;
    };

    static const QRegularExpression bracketSuffix(QStringLiteral("^(.*\\S)\\s*\\[([^\\[\\]]+)\\]$"));
    static const QRegularExpression bracketPrefix(QStringLiteral("^\\[([^\\[\\]]+)\\]\\s*(.*)$"));
    static const QRegularExpression colonPrefix(QStringLiteral("^([^:]{1,60}?)\\s*:\\s+(.+)$"));
    static const QRegularExpression dashSuffix(QStringLiteral("^(.+\\S)\\s+[-\\x{2013}\\x{2014}]\\s+([^-\\x{2013}\\x{2014}]+)$"));

    QRegularExpressionMatch m = bracketSuffix.match(whole);
    if (m.hasMatch())
        if (auto split = take(m.captured(1), m.captured(2), true))
            return *split;
    m = bracketPrefix.match(whole);
    if (m.hasMatch())
        if (auto split = take(m.captured(2), m.captured(1), true))
            return *split;
    m = colonPrefix.match(whole);
    if (m.hasMatch())
        if (auto split = take(m.captured(2), m.captured(1), false))
            return *split;
    m = dashSuffix.match(whole);
    if (m.hasMatch())
        if (auto split = take(m.captured(1), m.captured(2), false))
            return *split;
    return Split{whole, {}, false};
}
