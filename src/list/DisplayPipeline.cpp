#include "list/DisplayPipeline.h"

#include "list/ListTexts.h"

#include <QStringMatcher>

namespace {
// Separates the fields of one record; no search text that lacks it can match across two fields.
constexpr QChar FieldSeparator = QChar(0x1F);
// The buffer is rebuilt from the current records once stale text outweighs them this much.
constexpr qsizetype CompactSlack = 1 << 20;
} // namespace

const std::vector<DisplayPipeline::Field> &DisplayPipeline::fields()
{
    static const std::vector<Field> list = {
        {AssignmentField::Name, ListTexts::ScopeName},         {AssignmentField::Course, ListTexts::ScopeCourse},
        {AssignmentField::Textbook, ListTexts::ScopeTextbook}, {AssignmentField::Grade, ListTexts::ScopeGrade},
        {AssignmentField::Type, ListTexts::ScopeType},         {AssignmentField::Notes, ListTexts::ScopeNotes},
    };
    return list;
}

namespace {
// The filter's test with the view and course read once for a whole list.
struct FilterTest {
    bool onlyIncomplete;
    bool onlyComplete;
    bool anyCourse;
    const QString &course;
    FilterTest(const QString &view, const QString &courseTitle)
        : onlyIncomplete(view == ListTexts::Incomplete)
        , onlyComplete(view == ListTexts::Complete)
        , anyCourse(courseTitle == ListTexts::All)
        , course(courseTitle)
    {
    }
    bool operator()(const Assignment &record) const
    {
        const bool completed = record.isCompleted();
        if ((onlyIncomplete && completed) || (onlyComplete && !completed))
            return false;
        return anyCourse
            || (record.has(AssignmentField::Course) && record.value(AssignmentField::Course).toString() == course);
    }
};
} // namespace

bool DisplayPipeline::passes(const Assignment &record, const QString &view, const QString &course)
{
    return FilterTest(view, course)(record);
}

AssignmentList DisplayPipeline::filter(const AssignmentList &all, const QString &view, const QString &course)
{
    const FilterTest passes(view, course);
    AssignmentList filtered;
    filtered.reserve(all.size());
    for (const AssignmentRef &record : all)
        if (passes(*record))
            filtered.append(record);
    return filtered;
}

bool DisplayPipeline::matches(const Assignment &record, const QString &loweredText, const QString &scope)
{
    if (loweredText.isEmpty())
        return true;
    // Field by field: a text never matches across two fields.
    for (const Field &field : fields())
        if ((scope.isEmpty() || field.scope == scope) && record.lowered(field.key).contains(loweredText))
            return true;
    return false;
}

DisplayPipeline::Span DisplayPipeline::append(const Assignment &record)
{
    Span span;
    span.begin = m_text.size();
    int f = 0;
    for (const Field &field : fields()) {
        if (f > 0)
            m_text += FieldSeparator;
        // An absent field is stored empty: a non-empty text cannot match it either.
        m_text += record.lowered(field.key);
        span.ends[size_t(f++)] = m_text.size();
    }
    m_text += FieldSeparator;
    return span;
}

void DisplayPipeline::compact()
{
    QString text;
    text.reserve(m_liveLength);
    for (Entry &entry : m_entries) {
        const qsizetype shift = text.size() - entry.span.begin;
        const qsizetype length = entry.span.ends.back() + 1 - entry.span.begin;
        text.append(QStringView(m_text).mid(entry.span.begin, length));
        entry.span.begin += shift;
        for (qsizetype &end : entry.span.ends)
            end += shift;
    }
    m_text = std::move(text);
    m_byRevision.clear();
}

bool DisplayPipeline::refresh(const AssignmentList &filtered)
{
    bool same = m_entries.size() == size_t(filtered.size());
    if (same) {
        for (qsizetype i = 0; i < filtered.size(); ++i) {
            const Entry &entry = m_entries[size_t(i)];
            const Assignment &record = *filtered[i];
            if (entry.record != &record || entry.revision != record.revision()) {
                same = false;
                break;
            }
        }
    }
    if (same)
        return true;

    // Entries follow the filtered list by position; whatever a slot held is kept by revision for
    // when its record comes back.
    for (const Entry &entry : m_entries)
        if (entry.record)
            m_byRevision.emplace(entry.revision, entry.span);
    m_entries.assign(size_t(filtered.size()), Entry{});
    m_liveLength = 0;
    for (qsizetype i = 0; i < filtered.size(); ++i) {
        const Assignment &record = *filtered[i];
        Entry &entry = m_entries[size_t(i)];
        entry.record = &record;
        entry.revision = record.revision();
        if (const auto it = m_byRevision.find(record.revision()); it != m_byRevision.end())
            entry.span = it->second;
        else
            entry.span = append(record);
        m_liveLength += entry.span.ends.back() + 1 - entry.span.begin;
    }
    if (m_text.size() > 2 * m_liveLength + CompactSlack)
        compact();
    return false;
}

AssignmentList DisplayPipeline::search(const AssignmentList &filtered, const QString &loweredText,
                                       const QString &scope)
{
    if (loweredText.isEmpty()) {
        m_lastValid = false;
        return filtered;
    }

    const bool unchanged = refresh(filtered);
    int only = -1;
    if (!scope.isEmpty()) {
        for (int f = 0; f < FieldCount; ++f)
            if (fields()[size_t(f)].scope == scope)
                only = f;
        if (only < 0) { // a scope no field has: nothing matches
            m_lastValid = false;
            return {};
        }
    }
    const bool narrowing = unchanged && m_lastValid && scope == m_lastScope && loweredText.contains(m_lastText);

    const QStringMatcher matcher(loweredText, Qt::CaseSensitive);
    // A text holding the separator could match across two fields; such a text is searched field
    // by field.
    const bool fieldByField = only < 0 && loweredText.contains(FieldSeparator);
    const QChar *text = m_text.constData();
    const auto matches = [&](const Span &span) {
        if (only >= 0) {
            const qsizetype begin = only == 0 ? span.begin : span.ends[size_t(only - 1)] + 1;
            return matcher.indexIn(text + begin, span.ends[size_t(only)] - begin) >= 0;
        }
        if (!fieldByField)
            return matcher.indexIn(text + span.begin, span.ends.back() - span.begin) >= 0;
        qsizetype begin = span.begin;
        for (const qsizetype end : span.ends) {
            if (matcher.indexIn(text + begin, end - begin) >= 0)
                return true;
            begin = end + 1;
        }
        return false;
    };

    std::vector<qsizetype> hits;
    if (narrowing) {
        hits.reserve(m_lastHits.size());
        for (const qsizetype i : m_lastHits)
            if (matches(m_entries[size_t(i)].span))
                hits.push_back(i);
    } else {
        for (qsizetype i = 0; i < qsizetype(m_entries.size()); ++i)
            if (matches(m_entries[size_t(i)].span))
                hits.push_back(i);
    }

    AssignmentList display;
    display.reserve(qsizetype(hits.size()));
    for (const qsizetype i : hits)
        display.append(filtered[i]);
    m_lastText = loweredText;
    m_lastScope = scope;
    m_lastHits = std::move(hits);
    m_lastValid = true;
    return display;
}
