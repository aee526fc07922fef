#include "list/DisplayPipeline.h"

#include "list/ListTexts.h"

namespace {
// Joins the fields of one record; no search text can hold it, so no match spans two fields.
constexpr QChar FieldSeparator = QChar(0x1F);
} // namespace

const std::vector<DisplayPipeline::Field> &DisplayPipeline::fields()
{
    static const std::vector<Field> list = {
        {AssignmentKeys::Name, ListTexts::ScopeName},     {AssignmentKeys::Course, ListTexts::ScopeCourse},
        {AssignmentKeys::Textbook, ListTexts::ScopeTextbook}, {AssignmentKeys::Grade, ListTexts::ScopeGrade},
        {AssignmentKeys::Type, ListTexts::ScopeType},     {AssignmentKeys::Notes, ListTexts::ScopeNotes},
    };
    return list;
}

AssignmentList DisplayPipeline::filter(const AssignmentList &all, const QString &view, const QString &course)
{
    const bool onlyIncomplete = view == ListTexts::Incomplete;
    const bool onlyComplete = view == ListTexts::Complete;
    const bool anyCourse = course == ListTexts::All;
    AssignmentList filtered;
    filtered.reserve(all.size());
    for (const AssignmentRef &record : all) {
        const bool completed = record->isCompleted();
        if ((onlyIncomplete && completed) || (onlyComplete && !completed))
            continue;
        if (!anyCourse) {
            const auto it = record->fields().constFind(AssignmentKeys::Course);
            if (it == record->fields().constEnd() || it->toString() != course)
                continue;
        }
        filtered.append(record);
    }
    return filtered;
}

const QString &DisplayPipeline::joinedText(qsizetype index, const Assignment &record)
{
    Joined &joined = m_joined[size_t(index)];
    if (joined.record == &record && joined.revision == record.revision())
        return joined.text;
    if (joined.record) // keep what the slot held for when its record comes back
        m_byRevision.emplace(joined.revision, std::move(joined.text));
    if (const auto it = m_byRevision.find(record.revision()); it != m_byRevision.end()) {
        joined = {record.revision(), &record, it->second};
        return joined.text;
    }
    QString text;
    for (const Field &field : fields()) {
        const QString &value = record.lowered(field.key);
        if (value.isNull())
            continue;
        if (!text.isEmpty())
            text += FieldSeparator;
        text += value;
    }
    joined = {record.revision(), &record, std::move(text)};
    return joined.text;
}

AssignmentList DisplayPipeline::search(const AssignmentList &filtered, const QString &loweredText,
                                       const QString &scope)
{
    if (loweredText.isEmpty())
        return filtered;

    AssignmentList display;
    const bool everyField = scope.isEmpty();
    if (everyField && !loweredText.contains(FieldSeparator)) {
        // Entries follow the filtered list by position; a changed list rebuilds the ones that moved.
        m_joined.resize(size_t(filtered.size()));
        if (m_byRevision.size() > 4 * m_joined.size() + 1024)
            m_byRevision.clear();
        for (qsizetype i = 0; i < filtered.size(); ++i)
            if (joinedText(i, *filtered[i]).contains(loweredText))
                display.append(filtered[i]);
        return display;
    }
    for (const AssignmentRef &record : filtered) {
        for (const Field &field : fields()) {
            if (!everyField && scope != field.scope)
                continue;
            const QString &value = record->lowered(field.key);
            if (!value.isNull() && value.contains(loweredText)) {
                display.append(record);
                break;
            }
        }
    }
    return display;
}
