#include "importing/CalendarFeedParser.h"

#include "importing/HtmlText.h"
#include "importing/ImportLog.h"

#include <libical/ical.h>

#include <QCryptographicHash>
#include <QRegularExpression>
#include <QTimeZone>

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

// DUE for a to-do, else DTSTART: what a student is due by.
std::optional<DueMoment> dueMoment(icalcomponent *calendar, icalcomponent *component, QString *error)
{
    icalproperty *property = nullptr;
    if (icalcomponent_isa(component) == ICAL_VTODO_COMPONENT)
        property = icalcomponent_get_first_property(component, ICAL_DUE_PROPERTY);
    if (!property)
        property = icalcomponent_get_first_property(component, ICAL_DTSTART_PROPERTY);
    if (!property)
        return DueMoment{};
    const icaltimetype time = icalproperty_isa(property) == ICAL_DUE_PROPERTY
                                  ? icalproperty_get_due(property)
                                  : icalproperty_get_dtstart(property);
    if (icaltime_is_null_time(time) || !icaltime_is_valid_time(time)) {
        *error = QStringLiteral("the date \"%1\" cannot be read").arg(text(icalproperty_get_value_as_string(property)));
        return std::nullopt;
    }
    const QDate day(time.year, time.month, time.day);
    if (!day.isValid()) {
        *error = QStringLiteral("the date \"%1\" names no real day").arg(text(icalproperty_get_value_as_string(property)));
        return std::nullopt;
    }
    if (icaltime_is_date(time)) {
        // A due day is that day for the student wherever they are: midnight local, never shifted.
        QDateTime midnight(day, QTime(0, 0));
        return DueMoment{midnight.isValid() ? midnight : day.startOfDay(), true};
    }
    const QTime clock(time.hour, time.minute, time.second);
    if (icaltime_is_utc(time))
        return DueMoment{QDateTime(day, clock, QTimeZone::utc()).toLocalTime(), false};

    if (icalparameter *tzid = icalproperty_get_first_parameter(property, ICAL_TZID_PARAMETER)) {
        const char *name = icalparameter_get_tzid(tzid);
        icaltimezone *zone = icalcomponent_get_timezone(calendar, name);
        if (!zone)
            zone = icaltimezone_get_builtin_timezone(name);
        if (zone) {
            const time_t seconds = icaltime_as_timet_with_zone(time, zone);
            return DueMoment{QDateTime::fromSecsSinceEpoch(qint64(seconds)).toLocalTime(), false};
        }
        const QTimeZone qtZone{QByteArray(name)};
        if (qtZone.isValid())
            return DueMoment{QDateTime(day, clock, qtZone).toLocalTime(), false};
        // A zone nobody knows: the wall-clock time the feed shows is the best guess.
        qCWarning(lcImporting) << "unknown time zone" << name << "read as local time";
    }
    return DueMoment{QDateTime(day, clock), false};
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

bool readComponents(icalcomponent *calendar, FeedContents &contents, QString *error)
{
    if (contents.calendarName.isEmpty()) {
        for (icalproperty *p = icalcomponent_get_first_property(calendar, ICAL_X_PROPERTY); p;
             p = icalcomponent_get_next_property(calendar, ICAL_X_PROPERTY))
            if (qstrcmp(icalproperty_get_x_name(p), "X-WR-CALNAME") == 0)
                contents.calendarName = text(icalproperty_get_value_as_string(p)).trimmed();
    }
    for (icalcomponent *c = icalcomponent_get_first_component(calendar, ICAL_ANY_COMPONENT); c;
         c = icalcomponent_get_next_component(calendar, ICAL_ANY_COMPONENT)) {
        const icalcomponent_kind kind = icalcomponent_isa(c);
        if (kind != ICAL_VEVENT_COMPONENT && kind != ICAL_VTODO_COMPONENT)
            continue;
        FeedEvent event;
        event.isTodo = kind == ICAL_VTODO_COMPONENT;
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
        contents.events.append(std::move(event));
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
