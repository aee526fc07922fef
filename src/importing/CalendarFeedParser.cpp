#include "importing/CalendarFeedParser.h"

#include "importing/HtmlText.h"
#include "importing/ImportLog.h"
#include "platform/Clock.h"

#include <libical/ical.h>

#include <QCryptographicHash>
#include <QHash>
#include <QSet>
#include <QRegularExpression>
#include <QTimeZone>

#include <algorithm>
#include <memory>

namespace {

struct ComponentDeleter {
    void operator()(icalcomponent *component) const { icalcomponent_free(component); }
};
using ComponentPtr = std::unique_ptr<icalcomponent, ComponentDeleter>;

QString text(const char *value)
{
    return value ? QString::fromUtf8(value) : QString();
}

QString propertyText(icalcomponent *component, icalproperty_kind kind)
{
    icalproperty *property = icalcomponent_get_first_property(component, kind);
    return property ? text(icalproperty_get_value_as_string(property)) : QString();
}

// Whether an error libical noted stops the import. Real feeds carry harmless faults (Canvas sends
// empty DESCRIPTION lines, others odd X- values) that libical drops with a note; refusing those would
// refuse the feeds students actually have. A line that is no property, a component that does not
// close, or a due date that cannot be read would lose or misplace assignments: those stop it.
bool isFatal(icalproperty *error)
{
    const QString message = text(icalproperty_get_xlicerror(error));
    if (message.contains(QLatin1String("DTSTART")) || message.contains(QLatin1String("DUE")))
        return true;
    icalparameter *type = icalproperty_get_first_parameter(error, ICAL_XLICERRORTYPE_PARAMETER);
    if (!type)
        return false;
    switch (icalparameter_get_xlicerrortype(type)) {
    case ICAL_XLICERRORTYPE_COMPONENTPARSEERROR:
    case ICAL_XLICERRORTYPE_PROPERTYPARSEERROR:
    case ICAL_XLICERRORTYPE_MIMEPARSEERROR:
        return true;
    default:
        return false;
    }
}

// The first error that stops the import, with the name of the component it sits in; the others are
// logged.
QString firstFatalError(icalcomponent *component)
{
    for (icalproperty *p = icalcomponent_get_first_property(component, ICAL_XLICERROR_PROPERTY); p;
         p = icalcomponent_get_next_property(component, ICAL_XLICERROR_PROPERTY)) {
        const QString message = text(icalproperty_get_xlicerror(p)).trimmed();
        if (!isFatal(p)) {
            qCInfo(lcImporting) << "ignored in the calendar:" << message;
            continue;
        }
        // libical's notes end with what it did to its own copy ("Removing entire property: value");
        // the student needs what is wrong and where, since nothing of the file is kept.
        static const QRegularExpression removing(QStringLiteral("^(.*?)\\.?\\s*Removing[^:]*:\\s*(.*)$"));
        QString what = message;
        const QRegularExpressionMatch match = removing.match(message);
        if (match.hasMatch()) {
            what = match.captured(1);
            if (!match.captured(2).trimmed().isEmpty())
                what += QStringLiteral(" (“%1”)").arg(match.captured(2).trimmed());
        }
        const QString summary = text(icalcomponent_get_summary(component)).simplified();
        if (!summary.isEmpty())
            return QStringLiteral("in “%1”: %2").arg(summary, what);
        return QStringLiteral("in a %1: %2").arg(text(icalcomponent_kind_to_string(icalcomponent_isa(component))), what);
    }
    for (icalcomponent *child = icalcomponent_get_first_component(component, ICAL_ANY_COMPONENT); child;
         child = icalcomponent_get_next_component(component, ICAL_ANY_COMPONENT)) {
        const QString error = firstFatalError(child);
        if (!error.isEmpty())
            return error;
    }
    return {};
}

struct DueMoment {
    QDateTime local;
    bool allDay = false;
};

// The moment `time` names, in local time. `tzid` is the zone its property names, or null.
DueMoment localMoment(icalcomponent *calendar, const icaltimetype &time, const char *tzid)
{
    const QDate day(time.year, time.month, time.day);
    if (icaltime_is_date(time)) {
        // A due day is that day for the student wherever they are: midnight local, never shifted.
        QDateTime midnight(day, QTime(0, 0));
        return DueMoment{midnight.isValid() ? midnight : day.startOfDay(), true};
    }
    const QTime clock(time.hour, time.minute, time.second);
    if (icaltime_is_utc(time))
        return DueMoment{QDateTime(day, clock, QTimeZone::utc()).toLocalTime(), false};

    if (tzid) {
        icaltimezone *zone = icalcomponent_get_timezone(calendar, tzid);
        if (!zone)
            zone = icaltimezone_get_builtin_timezone(tzid);
        if (zone) {
            const time_t seconds = icaltime_as_timet_with_zone(time, zone);
            return DueMoment{QDateTime::fromSecsSinceEpoch(qint64(seconds)).toLocalTime(), false};
        }
        const QTimeZone qtZone{QByteArray(tzid)};
        if (qtZone.isValid())
            return DueMoment{QDateTime(day, clock, qtZone).toLocalTime(), false};
        // A zone nobody knows: the wall-clock time the feed shows is the best guess.
        qCWarning(lcImporting) << "unknown time zone" << tzid << "read as local time";
    }
    return DueMoment{QDateTime(day, clock), false};
}

const char *tzidOf(icalproperty *property)
{
    icalparameter *tzid = icalproperty_get_first_parameter(property, ICAL_TZID_PARAMETER);
    return tzid ? icalparameter_get_tzid(tzid) : nullptr;
}

// DUE for a to-do, else DTSTART: the property that says what a student is due by; null for none.
icalproperty *dueProperty(icalcomponent *component)
{
    icalproperty *property = nullptr;
    if (icalcomponent_isa(component) == ICAL_VTODO_COMPONENT)
        property = icalcomponent_get_first_property(component, ICAL_DUE_PROPERTY);
    if (!property)
        property = icalcomponent_get_first_property(component, ICAL_DTSTART_PROPERTY);
    return property;
}

icaltimetype dueTime(icalproperty *property)
{
    return icalproperty_isa(property) == ICAL_DUE_PROPERTY ? icalproperty_get_due(property)
                                                           : icalproperty_get_dtstart(property);
}

std::optional<DueMoment> dueMoment(icalcomponent *calendar, icalcomponent *component, QString *error)
{
    icalproperty *property = dueProperty(component);
    if (!property)
        return DueMoment{};
    const icaltimetype time = dueTime(property);
    if (icaltime_is_null_time(time) || !icaltime_is_valid_time(time)) {
        *error = QStringLiteral("the date \"%1\" cannot be read").arg(text(icalproperty_get_value_as_string(property)));
        return std::nullopt;
    }
    if (!QDate(time.year, time.month, time.day).isValid()) {
        *error = QStringLiteral("the date \"%1\" names no real day").arg(text(icalproperty_get_value_as_string(property)));
        return std::nullopt;
    }
    return localMoment(calendar, time, tzidOf(property));
}

// Feeds without UIDs still import once: the key stands for the summary and the start as written.
QString fallbackUid(icalcomponent *component)
{
    QCryptographicHash hash(QCryptographicHash::Sha1);
    hash.addData(propertyText(component, ICAL_SUMMARY_PROPERTY).toUtf8());
    hash.addData("\n");
    hash.addData(propertyText(component, ICAL_DTSTART_PROPERTY).toUtf8());
    hash.addData(propertyText(component, ICAL_DUE_PROPERTY).toUtf8());
    return QStringLiteral("generated-") + QString::fromLatin1(hash.result().toHex());
}

QString notesOf(icalcomponent *component)
{
    QString description = text(icalcomponent_get_description(component));
    if (description.trimmed().isEmpty()) {
        // Some systems send only the formatted description.
        for (icalproperty *p = icalcomponent_get_first_property(component, ICAL_X_PROPERTY); p;
             p = icalcomponent_get_next_property(component, ICAL_X_PROPERTY)) {
            if (qstrcmp(icalproperty_get_x_name(p), "X-ALT-DESC") == 0) {
                description = text(icalproperty_get_value_as_string(p));
                break;
            }
        }
    }
    if (HtmlText::looksLikeHtml(description))
        description = HtmlText::toPlainText(description);
    description = description.trimmed();
    const QString url = propertyText(component, ICAL_URL_PROPERTY).trimmed();
    if (!url.isEmpty() && !description.contains(url))
        description = description.isEmpty() ? url : description + QStringLiteral("\n\n") + url;
    return description;
}

// The entry `c` stands for, its due date read; false (with the message) when the date cannot be read.
bool readEvent(icalcomponent *calendar, icalcomponent *c, FeedEvent &event, QString *error)
{
    event.isTodo = icalcomponent_isa(c) == ICAL_VTODO_COMPONENT;
    QString dateError;
    const std::optional<DueMoment> due = dueMoment(calendar, c, &dateError);
    event.summary = text(icalcomponent_get_summary(c)).simplified();
    if (!due) {
        *error = QStringLiteral("In \"%1\", %2.").arg(event.summary, dateError);
        return false;
    }
    event.due = due->local;
    event.allDay = due->allDay;
    event.uid = text(icalcomponent_get_uid(c)).trimmed();
    if (event.uid.isEmpty())
        event.uid = fallbackUid(c);
    event.notes = notesOf(c);
    const icalproperty_status status = icalcomponent_get_status(c);
    event.completed = status == ICAL_STATUS_COMPLETED;
    event.cancelled = status == ICAL_STATUS_CANCELLED;
    return true;
}

// One occurrence of a repeating entry: the moment the rule gives it (which its RECURRENCE-ID names)
// and the key that tells it from the others.
struct Occurrence {
    QDateTime original;
    bool allDay = false;
    QString key;
    FeedEvent event;
};

bool sameOccurrence(const Occurrence &occurrence, const DueMoment &moment)
{
    if (occurrence.allDay || moment.allDay)
        return occurrence.original.date() == moment.local.date();
    return occurrence.original == moment.local;
}

// Each occurrence of a repeating entry becomes an entry of its own, with a UID of its own made of
// the series' UID and the occurrence's original date, so that the next fetch finds it again. Only
// occurrences from a year back to a year ahead are taken, and the rule is followed a bounded number
// of steps: a rule repeating every second since 1970 costs no more than a short one.
// EXDATE removes occurrences; an entry with the same UID and a RECURRENCE-ID replaces one.
void expandRecurrences(icalcomponent *calendar, icalcomponent *master, const FeedEvent &series,
                       const QList<icalcomponent *> &overrides, QList<FeedEvent> &into)
{
    constexpr int MaxSteps = 20000;
    constexpr int MaxOccurrences = 1000;
    const QDateTime now = Clock::now();
    const QDateTime from = now.addYears(-1);
    const QDateTime until = now.addYears(1);
    icalproperty *dueProp = dueProperty(master);
    const icaltimetype start = dueTime(dueProp);
    const char *tzid = tzidOf(dueProp);

    QList<Occurrence> occurrences;
    const auto add = [&](const icaltimetype &time) {
        const DueMoment moment = localMoment(calendar, time, tzid);
        if (moment.local < from || moment.local > until || occurrences.size() >= MaxOccurrences)
            return;
        for (const Occurrence &existing : std::as_const(occurrences))
            if (sameOccurrence(existing, moment))
                return;
        FeedEvent event = series;
        event.due = moment.local;
        event.allDay = moment.allDay;
        occurrences.append(Occurrence{moment.local, moment.allDay, text(icaltime_as_ical_string(time)), event});
    };
    for (icalproperty *p = icalcomponent_get_first_property(master, ICAL_RRULE_PROPERTY); p;
         p = icalcomponent_get_next_property(master, ICAL_RRULE_PROPERTY)) {
        icalrecur_iterator *it = icalrecur_iterator_new(icalproperty_get_rrule(p), start);
        if (!it) {
            qCInfo(lcImporting) << "a repeat rule that cannot be followed in" << series.summary;
            continue;
        }
        for (int step = 0; step < MaxSteps; ++step) {
            const icaltimetype next = icalrecur_iterator_next(it);
            if (icaltime_is_null_time(next) || localMoment(calendar, next, tzid).local > until)
                break;
            add(next);
        }
        icalrecur_iterator_free(it);
    }
    for (icalproperty *p = icalcomponent_get_first_property(master, ICAL_RDATE_PROPERTY); p;
         p = icalcomponent_get_next_property(master, ICAL_RDATE_PROPERTY)) {
        const icaldatetimeperiodtype rdate = icalproperty_get_rdate(p);
        if (!icaltime_is_null_time(rdate.time) && icaltime_is_valid_time(rdate.time))
            add(rdate.time);
    }
    for (icalproperty *p = icalcomponent_get_first_property(master, ICAL_EXDATE_PROPERTY); p;
         p = icalcomponent_get_next_property(master, ICAL_EXDATE_PROPERTY)) {
        const icaltimetype exdate = icalproperty_get_exdate(p);
        if (icaltime_is_null_time(exdate))
            continue;
        const DueMoment excluded = localMoment(calendar, exdate, tzidOf(p));
        occurrences.removeIf([&](const Occurrence &occurrence) { return sameOccurrence(occurrence, excluded); });
    }
    for (icalcomponent *changed : overrides) {
        icalproperty *idProp = icalcomponent_get_first_property(changed, ICAL_RECURRENCEID_PROPERTY);
        const icaltimetype id = icalproperty_get_recurrenceid(idProp);
        const DueMoment original = localMoment(calendar, id, tzidOf(idProp));
        FeedEvent event;
        QString ignored;
        if (!readEvent(calendar, changed, event, &ignored))
            continue;
        event.uid = series.uid;
        const auto found = std::find_if(occurrences.begin(), occurrences.end(),
                                        [&](const Occurrence &o) { return sameOccurrence(o, original); });
        if (found != occurrences.end())
            found->event = event;
        else if (original.local >= from && original.local <= until)
            occurrences.append(Occurrence{original.local, original.allDay, text(icaltime_as_ical_string(id)), event});
    }
    std::sort(occurrences.begin(), occurrences.end(),
              [](const Occurrence &a, const Occurrence &b) { return a.original < b.original; });
    for (Occurrence &occurrence : occurrences) {
        occurrence.event.uid = series.uid + QLatin1Char('/') + occurrence.key;
        occurrence.event.seriesUid = series.uid;
        into.append(std::move(occurrence.event));
    }
}

bool readComponents(icalcomponent *calendar, FeedContents &contents, QString *error)
{
    if (contents.calendarName.isEmpty()) {
        for (icalproperty *p = icalcomponent_get_first_property(calendar, ICAL_X_PROPERTY); p;
             p = icalcomponent_get_next_property(calendar, ICAL_X_PROPERTY))
            if (qstrcmp(icalproperty_get_x_name(p), "X-WR-CALNAME") == 0)
                contents.calendarName = text(icalproperty_get_value_as_string(p)).trimmed();
    }
    const auto isEntry = [](icalcomponent *c) {
        const icalcomponent_kind kind = icalcomponent_isa(c);
        return kind == ICAL_VEVENT_COMPONENT || kind == ICAL_VTODO_COMPONENT;
    };
    // The changed occurrences of repeating entries, by the series' UID.
    QHash<QString, QList<icalcomponent *>> overrides;
    for (icalcomponent *c = icalcomponent_get_first_component(calendar, ICAL_ANY_COMPONENT); c;
         c = icalcomponent_get_next_component(calendar, ICAL_ANY_COMPONENT)) {
        if (isEntry(c) && icalcomponent_get_first_property(c, ICAL_RECURRENCEID_PROPERTY))
            overrides[text(icalcomponent_get_uid(c)).trimmed()].append(c);
    }
    // The UIDs whose changed occurrences found their entry.
    QSet<QString> repeating;
    for (icalcomponent *c = icalcomponent_get_first_component(calendar, ICAL_ANY_COMPONENT); c;
         c = icalcomponent_get_next_component(calendar, ICAL_ANY_COMPONENT)) {
        if (!isEntry(c) || icalcomponent_get_first_property(c, ICAL_RECURRENCEID_PROPERTY))
            continue;
        FeedEvent event;
        if (!readEvent(calendar, c, event, error))
            return false;
        const bool repeats = event.due.isValid() && (icalcomponent_get_first_property(c, ICAL_RRULE_PROPERTY) ||
                                                     icalcomponent_get_first_property(c, ICAL_RDATE_PROPERTY));
        if (repeats) {
            repeating.insert(event.uid);
            expandRecurrences(calendar, c, event, overrides.value(event.uid), contents.events);
            continue;
        }
        if (overrides.contains(event.uid)) {
            // A single entry's one occurrence changed: the change stands for it, under its own UID;
            // a change of an occurrence it does not have is nothing.
            repeating.insert(event.uid);
            const DueMoment due{event.due, event.allDay};
            for (icalcomponent *changed : overrides.value(event.uid)) {
                icalproperty *idProp = icalcomponent_get_first_property(changed, ICAL_RECURRENCEID_PROPERTY);
                const DueMoment id = localMoment(calendar, icalproperty_get_recurrenceid(idProp), tzidOf(idProp));
                FeedEvent replacement;
                if (sameOccurrence(Occurrence{id.local, id.allDay, {}, {}}, due)
                    && readEvent(calendar, changed, replacement, error)) {
                    replacement.uid = event.uid;
                    event = replacement;
                }
            }
        }
        contents.events.append(std::move(event));
    }
    // A changed occurrence whose series is not in the file stands on its own.
    for (auto it = overrides.cbegin(); it != overrides.cend(); ++it) {
        if (repeating.contains(it.key()))
            continue;
        for (icalcomponent *c : it.value()) {
            FeedEvent event;
            if (!readEvent(calendar, c, event, error))
                return false;
            const QString id = propertyText(c, ICAL_RECURRENCEID_PROPERTY);
            event.seriesUid = event.uid;
            event.uid += QLatin1Char('/') + id;
            contents.events.append(std::move(event));
        }
    }
    return true;
}

} // namespace

std::optional<FeedContents> CalendarFeedParser::parse(const QByteArray &bytes, QString *error)
{
    const auto fail = [error](const QString &message) -> std::optional<FeedContents> {
        qCWarning(lcImporting) << "calendar not imported:" << message;
        if (error)
            *error = message;
        return std::nullopt;
    };
    QByteArray body = bytes;
    if (body.startsWith("\xEF\xBB\xBF"))
        body.remove(0, 3);
    const QByteArray trimmed = body.trimmed();
    if (!trimmed.startsWith("BEGIN:VCALENDAR"))
        return fail(QStringLiteral("This is not a calendar file: it does not begin with BEGIN:VCALENDAR."));
    if (!trimmed.endsWith("END:VCALENDAR"))
        return fail(QStringLiteral("The calendar file is cut short: it does not end with END:VCALENDAR."));
    if (body.contains('\0'))
        return fail(QStringLiteral("The calendar file holds binary data."));

    ComponentPtr root(icalparser_parse_string(body.constData()));
    if (!root)
        return fail(QStringLiteral("The calendar file cannot be read."));
    const QString parseError = firstFatalError(root.get());
    if (!parseError.isEmpty())
        return fail(QStringLiteral("The calendar file has an error %1.").arg(parseError));

    FeedContents contents;
    QString message;
    if (icalcomponent_isa(root.get()) == ICAL_VCALENDAR_COMPONENT) {
        if (!readComponents(root.get(), contents, &message))
            return fail(message);
    } else {
        // Several calendars in one file come back under an XROOT.
        bool any = false;
        for (icalcomponent *c = icalcomponent_get_first_component(root.get(), ICAL_VCALENDAR_COMPONENT); c;
             c = icalcomponent_get_next_component(root.get(), ICAL_VCALENDAR_COMPONENT)) {
            any = true;
            if (!readComponents(c, contents, &message))
                return fail(message);
        }
        if (!any)
            return fail(QStringLiteral("The calendar file holds no calendar."));
    }
    return contents;
}
