// libical is plain C; it comes before any Qt header like the other C libraries of the program.
#include <libical/ical.h>

#include "ICalReader.h"

namespace ICalReader {

namespace {

QString text(const char *value)
{
    return value ? QString::fromUtf8(value) : QString();
}

QString dateText(icaltimetype time)
{
    if (icaltime_is_null_time(time))
        return QString();
    if (time.is_date)
        return QString::asprintf("%04d%02d%02d", time.year, time.month, time.day);
    return text(icaltime_as_ical_string(time));
}

QStringList errorsOf(icalcomponent *component)
{
    QStringList errors;
    for (icalproperty *p = icalcomponent_get_first_property(component, ICAL_XLICERROR_PROPERTY); p;
         p = icalcomponent_get_next_property(component, ICAL_XLICERROR_PROPERTY))
        errors.append(text(icalproperty_get_xlicerror(p)));
    return errors;
}

QString xValue(icalcomponent *component, const char *name)
{
    for (icalproperty *p = icalcomponent_get_first_property(component, ICAL_X_PROPERTY); p;
         p = icalcomponent_get_next_property(component, ICAL_X_PROPERTY)) {
        if (qstrcmp(icalproperty_get_x_name(p), name) == 0)
            return text(icalproperty_get_x(p));
    }
    return QString();
}

} // namespace

Calendar read(const QByteArray &bytes)
{
    Calendar calendar;
    icalcomponent *root = icalparser_parse_string(bytes.constData());
    if (!root || icalcomponent_isa(root) != ICAL_VCALENDAR_COMPONENT) {
        if (root)
            icalcomponent_free(root);
        return calendar;
    }
    calendar.parsed = true;
    calendar.name = xValue(root, "X-WR-CALNAME");
    if (icalproperty *p = icalcomponent_get_first_property(root, ICAL_PRODID_PROPERTY))
        calendar.prodId = text(icalproperty_get_prodid(p));
    if (icalproperty *p = icalcomponent_get_first_property(root, ICAL_METHOD_PROPERTY))
        calendar.method = text(icalproperty_method_to_string(icalproperty_get_method(p)));
    calendar.errors = errorsOf(root);

    for (icalcomponent *c = icalcomponent_get_first_component(root, ICAL_ANY_COMPONENT); c;
         c = icalcomponent_get_next_component(root, ICAL_ANY_COMPONENT)) {
        Entry entry;
        entry.kind = text(icalcomponent_kind_to_string(icalcomponent_isa(c)));
        entry.summary = text(icalcomponent_get_summary(c));
        entry.description = text(icalcomponent_get_description(c));
        entry.uid = text(icalcomponent_get_uid(c)).toInt();
        if (icalcomponent_get_first_property(c, ICAL_DTSTART_PROPERTY))
            entry.start = dateText(icalcomponent_get_dtstart(c));
        if (icalcomponent_get_first_property(c, ICAL_DTEND_PROPERTY))
            entry.end = dateText(icalcomponent_get_dtend(c));
        if (icalcomponent_get_first_property(c, ICAL_DUE_PROPERTY))
            entry.due = dateText(icalcomponent_get_due(c));
        if (icalproperty *p = icalcomponent_get_first_property(c, ICAL_COMPLETED_PROPERTY))
            entry.completed = dateText(icalproperty_get_completed(p));
        if (icalcomponent_get_first_property(c, ICAL_STATUS_PROPERTY))
            entry.status = text(icalproperty_status_to_string(icalcomponent_get_status(c)));
        entry.errors = errorsOf(c);
        calendar.entries.append(entry);
    }
    icalcomponent_free(root);
    return calendar;
}

} // namespace ICalReader
