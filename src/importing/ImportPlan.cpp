#include "importing/ImportPlan.h"

#include "importing/CourseTag.h"
#include "platform/Clock.h"
#include "platform/DateText.h"

#include <QHash>
#include <QSet>

namespace {

QVariantMap importedValues(const Assignment &record)
{
    return record.value(ImportKeys::Record).toMap();
}

QHash<QString, AssignmentRef> recordsByUid(const AssignmentList &records)
{
    QHash<QString, AssignmentRef> byUid;
    byUid.reserve(records.size());
    for (const AssignmentRef &record : records) {
        const QString uid = ImportPlan::uidOf(*record);
        if (!uid.isEmpty() && !byUid.contains(uid))
            byUid.insert(uid, record);
    }
    return byUid;
}

// What changed between the values last imported and the entry as it is now; empty when nothing.
QStringList changes(const QVariantMap &imported, const ImportPlan::Item &item)
{
    QStringList changed;
    if (imported.value(ImportKeys::Name).toString() != item.name)
        changed.append(QStringLiteral("new name"));
    if (imported.value(ImportKeys::Date).toString() != item.date)
        changed.append(QStringLiteral("new due date"));
    if (imported.value(ImportKeys::Notes).toString() != item.notes)
        changed.append(QStringLiteral("new notes"));
    return changed;
}

void setOrRemove(Assignment &record, const QString &key, const QString &value)
{
    if (value.isEmpty())
        record.remove(key);
    else
        record.set(key, value);
}

void writeImported(Assignment &record, const ImportPlan::Item &item, const QString &source)
{
    setOrRemove(record, AssignmentKeys::Name, item.name);
    setOrRemove(record, AssignmentKeys::Date, item.date);
    setOrRemove(record, AssignmentKeys::Notes, item.notes);
    record.set(AssignmentKeys::DateUpdated, DateText::nowStoredForm());
    QVariantMap imported;
    imported.insert(ImportKeys::Uid, item.uid);
    if (!source.isEmpty())
        imported.insert(ImportKeys::Source, source);
    imported.insert(ImportKeys::Name, item.name);
    imported.insert(ImportKeys::Date, item.date);
    imported.insert(ImportKeys::Notes, item.notes);
    record.set(ImportKeys::Record, imported);
}

// Earlier versions took a repeating entry as one assignment under the series' UID. Of the series'
// occurrences, the one that shares that assignment's due date (as imported, else as it is now)
// continues it, else the first one, so the first fetch of the series as occurrences neither adds a
// second copy of it nor loses what the student changed. A series whose assignment the student
// deleted (its UID among `deleted`) has that occurrence count as deleted. Occurrence UID -> series UID.
QHash<QString, QString> formerUids(const FeedContents &contents, const QHash<QString, AssignmentRef> &byUid,
                                   const QSet<QString> &deleted)
{
    QHash<QString, QList<const FeedEvent *>> series;
    for (const FeedEvent &event : contents.events)
        if (!event.seriesUid.isEmpty() && (byUid.contains(event.seriesUid) || deleted.contains(event.seriesUid)))
            series[event.seriesUid].append(&event);
    QHash<QString, QString> formers;
    for (auto it = series.cbegin(); it != series.cend(); ++it) {
        const FeedEvent *chosen = it.value().first();
        if (const AssignmentRef former = byUid.value(it.key())) {
            const QString imported = importedValues(*former).value(ImportKeys::Date).toString();
            const QString own = former->string(AssignmentKeys::Date);
            const auto sharing = [&it](const QString &date) -> const FeedEvent * {
                if (date.isEmpty())
                    return nullptr;
                for (const FeedEvent *event : it.value())
                    if (event->due.isValid() && DateText::toStoredForm(event->due) == date)
                        return event;
                return nullptr;
            };
            if (const FeedEvent *event = sharing(imported))
                chosen = event;
            else if (const FeedEvent *event = sharing(own))
                chosen = event;
        }
        // An occurrence already imported as itself is its own assignment.
        if (!byUid.contains(chosen->uid))
            formers.insert(chosen->uid, it.key());
    }
    return formers;
}

} // namespace

QString ImportPlan::uidOf(const Assignment &record)
{
    if (!record.has(ImportKeys::Record))
        return {};
    return importedValues(record).value(ImportKeys::Uid).toString();
}

bool ImportPlan::isUnedited(const Assignment &record)
{
    const QVariantMap imported = importedValues(record);
    return record.string(AssignmentKeys::Name) == imported.value(ImportKeys::Name).toString()
           && record.string(AssignmentKeys::Date) == imported.value(ImportKeys::Date).toString()
           && record.string(AssignmentKeys::Notes) == imported.value(ImportKeys::Notes).toString();
}

int ImportPlan::count(Action action) const
{
    return int(std::count_if(m_items.cbegin(), m_items.cend(), [action](const Item &i) { return i.action == action; }));
}

ImportPlan ImportPlan::make(const FeedContents &contents, const AssignmentList &records, const QStringList &courses,
                            const QString &source, const QSet<QString> &deletedIfMissing)
{
    ImportPlan plan;
    plan.m_source = source;
    plan.m_items.reserve(contents.events.size());
    const QHash<QString, AssignmentRef> byUid = recordsByUid(records);
    const QHash<QString, QString> formers = formerUids(contents, byUid, deletedIfMissing);
    QSet<QString> seen;
    seen.reserve(contents.events.size());
    for (const FeedEvent &event : contents.events) {
        Item item;
        item.uid = event.uid;
        const CourseTag::Split split = CourseTag::split(event.summary, courses);
        item.name = split.name;
        item.course = split.course;
        item.newCourse = !split.course.isEmpty() && !split.knownCourse;
        item.date = event.due.isValid() ? DateText::toStoredForm(event.due) : QString();
        item.allDay = event.allDay;
        item.notes = event.notes;
        item.completed = event.completed;

        const auto skip = [&item](const QString &why) {
            item.action = Action::Skip;
            item.reason = why;
            item.chosen = false;
        };
        AssignmentRef existing = byUid.value(event.uid);
        if (!existing && formers.contains(event.uid)) {
            item.formerUid = formers.value(event.uid);
            existing = byUid.value(item.formerUid);
        }
        if (seen.contains(event.uid)) {
            // Repeated UIDs are moved occurrences of one entry; the first one stands for it.
            skip(QStringLiteral("appears more than once in the calendar"));
        } else if (event.cancelled) {
            skip(QStringLiteral("cancelled in the calendar"));
        } else if (existing) {
            const QStringList changed = changes(importedValues(*existing), item);
            if (changed.isEmpty())
                skip(QStringLiteral("unchanged since the last import"));
            else if (!isUnedited(*existing))
                skip(QStringLiteral("edited here since it was imported"));
            else {
                item.action = Action::Update;
                item.reason = changed.join(QStringLiteral(", "));
                item.course = existing->string(AssignmentKeys::Course);
                item.newCourse = false;
            }
        } else if (deletedIfMissing.contains(event.uid)
                   || (!item.formerUid.isEmpty() && deletedIfMissing.contains(item.formerUid))) {
            skip(QStringLiteral("deleted here since it was imported"));
        } else {
            item.action = Action::Add;
        }
        seen.insert(event.uid);
        plan.m_items.append(std::move(item));
    }
    return plan;
}

ImportPlan::Result ImportPlan::apply(AssignmentList &records, const QStringList &courses) const
{
    Result result;
    QHash<QString, AssignmentRef> byUid = recordsByUid(records);
    QSet<QString> newCourseKeys;
    for (const Item &item : m_items) {
        if (!item.chosen || item.action == Action::Skip)
            continue;
        AssignmentRef existing = byUid.value(item.uid);
        if (!existing && !item.formerUid.isEmpty() && (existing = byUid.value(item.formerUid))) {
            // The series' one assignment becomes this occurrence's when it is updated.
            if (isUnedited(*existing) && !changes(importedValues(*existing), item).isEmpty()) {
                byUid.remove(item.formerUid);
                byUid.insert(item.uid, existing);
            }
        }
        if (existing) {
            // Imported or edited since the preview: only an unedited record with changed values moves.
            if (!isUnedited(*existing) || changes(importedValues(*existing), item).isEmpty())
                continue;
            writeImported(*existing, item, m_source);
            ++result.updated;
            continue;
        }
        if (item.action != Action::Add)
            continue; // the record it would update was deleted since: a deletion is the student's choice
        AssignmentRef record = Assignments::make();
        writeImported(*record, item, m_source);
        if (!item.course.isEmpty()) {
            const QString known = CourseTag::matchCourse(item.course, courses);
            record->set(AssignmentKeys::Course, known.isEmpty() ? item.course : known);
            if (known.isEmpty() && !newCourseKeys.contains(item.course.toLower())) {
                newCourseKeys.insert(item.course.toLower());
                result.newCourses.append(item.course);
            }
        }
        record->set(AssignmentKeys::Priority, 1.0);
        if (item.completed)
            record->set(AssignmentKeys::Completed, true);
        record->set(AssignmentKeys::DateCreated, Clock::secondsSince1970());
        records.append(record);
        byUid.insert(item.uid, record);
        result.addedUids.append(item.uid);
        ++result.added;
    }
    return result;
}
