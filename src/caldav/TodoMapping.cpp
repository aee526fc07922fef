#include "caldav/TodoMapping.h"

#include "platform/Clock.h"
#include "platform/DateText.h"
#include "platform/PropertyList.h"
#include "store/Assignment.h"

#include <QCryptographicHash>
#include <QTimeZone>

#include <libical/ical.h>

#include <cmath>

namespace {

using namespace AssignmentKeys;

const char *const XGrade = "X-QUILLORY-GRADE";
const char *const XTextbook = "X-QUILLORY-TEXTBOOK";
const char *const XCourse = "X-QUILLORY-COURSE";
const char *const XType = "X-QUILLORY-TYPE";
const char *const XPriority = "X-QUILLORY-PRIORITY";
const char *const XProject = "X-QUILLORY-PROJECT";
const char *const XSubproject = "X-QUILLORY-SUBPROJECT";

// Properties this mapping owns: they are removed and written again on every PUT.
const icalproperty_kind OwnedKinds[] = {ICAL_SUMMARY_PROPERTY,    ICAL_DUE_PROPERTY,          ICAL_STATUS_PROPERTY,
                                        ICAL_COMPLETED_PROPERTY,  ICAL_PERCENTCOMPLETE_PROPERTY, ICAL_PRIORITY_PROPERTY,
                                        ICAL_CATEGORIES_PROPERTY, ICAL_DESCRIPTION_PROPERTY,  ICAL_RELATEDTO_PROPERTY,
                                        ICAL_LASTMODIFIED_PROPERTY, ICAL_DTSTAMP_PROPERTY,    ICAL_UID_PROPERTY};
const char *const OwnedX[] = {XGrade, XTextbook, XCourse, XType, XPriority, XProject, XSubproject};

struct Component {
    icalcomponent *c = nullptr;
    ~Component() { if (c) icalcomponent_free(c); }
};

QString text(const char *s) { return s ? QString::fromUtf8(s) : QString(); }

void removeAll(icalcomponent *todo, icalproperty_kind kind)
{
    while (icalproperty *p = icalcomponent_get_first_property(todo, kind)) {
        icalcomponent_remove_property(todo, p);
        icalproperty_free(p);
    }
}

void removeX(icalcomponent *todo, const char *name)
{
    for (icalproperty *p = icalcomponent_get_first_property(todo, ICAL_X_PROPERTY); p;) {
        icalproperty *next = icalcomponent_get_next_property(todo, ICAL_X_PROPERTY);
        if (qstrcmp(icalproperty_get_x_name(p), name) == 0) {
            icalcomponent_remove_property(todo, p);
            icalproperty_free(p);
        }
        p = next;
    }
}

QString xValue(icalcomponent *todo, const char *name)
{
    for (icalproperty *p = icalcomponent_get_first_property(todo, ICAL_X_PROPERTY); p;
         p = icalcomponent_get_next_property(todo, ICAL_X_PROPERTY)) {
        if (qstrcmp(icalproperty_get_x_name(p), name) == 0)
            return text(icalproperty_get_x(p));
    }
    return {};
}

void addX(icalcomponent *todo, const char *name, const QString &value)
{
    if (value.isEmpty())
        return;
    icalproperty *p = icalproperty_new_x(value.toUtf8().constData());
    icalproperty_set_x_name(p, name);
    icalcomponent_add_property(todo, p);
}

icaltimetype utcTime(const QDateTime &moment)
{
    const QDateTime utc = moment.toUTC();
    icaltimetype t = icaltime_null_time();
    t.year = utc.date().year();
    t.month = utc.date().month();
    t.day = utc.date().day();
    t.hour = utc.time().hour();
    t.minute = utc.time().minute();
    t.second = utc.time().second();
    t.zone = icaltimezone_get_utc_timezone();
    return t;
}

std::optional<QDateTime> fromIcalTime(icaltimetype t)
{
    if (icaltime_is_null_time(t) || !icaltime_is_valid_time(t))
        return std::nullopt;
    if (t.is_date)
        return QDateTime(QDate(t.year, t.month, t.day), QTime(0, 0), Qt::LocalTime);
    if (t.zone || icaltime_is_utc(t)) {
        const icaltimetype utc = icaltime_convert_to_zone(t, icaltimezone_get_utc_timezone());
        return QDateTime(QDate(utc.year, utc.month, utc.day), QTime(utc.hour, utc.minute, utc.second), QTimeZone::utc())
            .toLocalTime();
    }
    // A floating time is the wall-clock time wherever the reader is.
    return QDateTime(QDate(t.year, t.month, t.day), QTime(t.hour, t.minute, t.second), Qt::LocalTime);
}

// The system zone as libical knows it, for DUE;TZID=...; null when it has no such zone.
icaltimezone *localZone()
{
    const QByteArray id = QTimeZone::systemTimeZoneId();
    if (id.isEmpty() || id == "UTC")
        return nullptr;
    return icaltimezone_get_builtin_timezone(id.constData());
}

// The zone's rules as a VTIMEZONE under its plain name: only the rules in force today (those
// without an end), which are what due dates of a student's terms need. libical's full history of
// the zone carries ends of past rules that strict servers refuse.
icalcomponent *zoneComponent(icaltimezone *zone, const QByteArray &name)
{
    icalcomponent *out = icalcomponent_new_clone(icaltimezone_get_component(zone));
    QList<icalcomponent *> current, ended;
    icalcomponent *latest = nullptr;
    for (icalcomponent *rule = icalcomponent_get_first_component(out, ICAL_ANY_COMPONENT); rule;
         rule = icalcomponent_get_next_component(out, ICAL_ANY_COMPONENT)) {
        icalproperty *p = icalcomponent_get_first_property(rule, ICAL_RRULE_PROPERTY);
        if (p && icaltime_is_null_time(icalproperty_get_rrule(p).until))
            current << rule;
        else
            ended << rule;
        if (!p && (!latest || icaltime_compare(icalcomponent_get_dtstart(rule), icalcomponent_get_dtstart(latest)) > 0))
            latest = rule;
    }
    for (icalcomponent *rule : ended) {
        if (current.isEmpty() && rule == latest)
            continue; // a zone without daylight saving: its last fixed offset
        icalcomponent_remove_component(out, rule);
        icalcomponent_free(rule);
    }
    // libical starts today's rules where its table ends (years ahead): from 1970 they cover every
    // due date, as calendar programs write them.
    for (icalcomponent *rule : std::as_const(current)) {
        icaltimetype start = icalcomponent_get_dtstart(rule);
        start.year = 1970;
        icalcomponent_set_dtstart(rule, start);
    }
    icalproperty *id = icalcomponent_get_first_property(out, ICAL_TZID_PROPERTY);
    icalproperty_set_tzid(id, name.constData());
    return out;
}

int icalPriority(double priority)
{
    const int p = std::clamp(int(std::lround(priority)), 1, 5);
    return 9 - 2 * (p - 1); // 5 (highest on the slider) is 1, the highest in iCalendar
}

double sliderPriority(int ical) { return ical <= 0 ? 1.0 : double(std::clamp((9 - ical) / 2 + 1, 1, 5)); }

icalcomponent *findTodo(icalcomponent *root)
{
    if (!root)
        return nullptr;
    if (icalcomponent_isa(root) == ICAL_VTODO_COMPONENT)
        return root;
    return icalcomponent_get_first_component(root, ICAL_VTODO_COMPONENT);
}

} // namespace

const QStringList &TodoMapping::mappedKeys()
{
    static const QStringList keys = {Name, Date, Completed, Priority, Course, Type, Notes, Grade, Textbook, Project, Subproject};
    return keys;
}

QByteArray TodoMapping::digest(const QVariantMap &recordFields)
{
    QVariantMap mapped;
    for (const QString &key : mappedKeys()) {
        const auto it = recordFields.constFind(key);
        if (key == Priority) {
            // A record without a priority shows 1, as the server will be told.
            mapped.insert(key, QString::number(it == recordFields.constEnd() ? 1.0 : it->toDouble(), 'g', 12));
            continue;
        }
        if (it == recordFields.constEnd())
            continue;
        // Completed false and absent are the same.
        if (key == Completed) {
            if (it->toBool())
                mapped.insert(key, true);
        } else if (key == Date) {
            // The same instant written with another offset is the same due date.
            const auto due = DateText::fromStoredForm(it->toString());
            mapped.insert(key, due ? QString::number(due->toMSecsSinceEpoch()) : it->toString());
        } else if (it->toString().isEmpty()) {
            continue; // an empty field and an absent one are the same
        } else {
            mapped.insert(key, it->toString());
        }
    }
    return QCryptographicHash::hash(PropertyList::toXml(mapped), QCryptographicHash::Sha1).toHex();
}

QByteArray TodoMapping::toIcs(const QVariantMap &f, const QString &uid, const QString &parentUid,
                              const QByteArray &previousIcs)
{
    Component root;
    if (!previousIcs.isEmpty())
        root.c = icalparser_parse_string(previousIcs.constData());
    icalcomponent *todo = findTodo(root.c);
    if (!todo) {
        if (root.c)
            icalcomponent_free(root.c);
        root.c = icalcomponent_new(ICAL_VCALENDAR_COMPONENT);
        icalcomponent_add_property(root.c, icalproperty_new_version("2.0"));
        icalcomponent_add_property(root.c, icalproperty_new_prodid("-//Quillory//Assignments//EN"));
        todo = icalcomponent_new(ICAL_VTODO_COMPONENT);
        icalcomponent_add_component(root.c, todo);
    } else if (icalcomponent_isa(root.c) == ICAL_VTODO_COMPONENT) {
        icalcomponent *calendar = icalcomponent_new(ICAL_VCALENDAR_COMPONENT);
        icalcomponent_add_property(calendar, icalproperty_new_version("2.0"));
        icalcomponent_add_property(calendar, icalproperty_new_prodid("-//Quillory//Assignments//EN"));
        icalcomponent_add_component(calendar, root.c);
        root.c = calendar;
    }
    for (icalproperty_kind kind : OwnedKinds)
        removeAll(todo, kind);
    for (const char *name : OwnedX)
        removeX(todo, name);

    icalcomponent_add_property(todo, icalproperty_new_uid(uid.toUtf8().constData()));
    icalcomponent_add_property(todo, icalproperty_new_dtstamp(utcTime(Clock::now())));
    const auto updated = DateText::fromStoredForm(f.value(DateUpdated).toString());
    icalcomponent_add_property(todo, icalproperty_new_lastmodified(utcTime(updated ? *updated : Clock::now())));
    icalcomponent_add_property(todo, icalproperty_new_summary(f.value(Name).toString().toUtf8().constData()));

    if (const auto due = DateText::fromStoredForm(f.value(Date).toString())) {
        const QDateTime local = due->toLocalTime();
        icaltimetype t = icaltime_null_time();
        if (local.time() == QTime(0, 0)) {
            // Midnight is how a day without a time is stored: it stays a date, not an instant.
            t = icaltime_from_day_of_year(1, local.date().year());
            t.month = local.date().month();
            t.day = local.date().day();
            t.is_date = 1;
            icalcomponent_add_property(todo, icalproperty_new_due(t));
        } else if (icaltimezone *zone = localZone()) {
            t.year = local.date().year();
            t.month = local.date().month();
            t.day = local.date().day();
            t.hour = local.time().hour();
            t.minute = local.time().minute();
            t.second = local.time().second();
            t.zone = zone;
            icalproperty *p = icalproperty_new_due(t);
            const QByteArray tzid = QTimeZone::systemTimeZoneId();
            icalproperty_add_parameter(p, icalparameter_new_tzid(tzid.constData()));
            icalcomponent_add_property(todo, p);
            // The zone's rules travel with it so that any reader can place the time.
            bool present = false;
            for (icalcomponent *z = icalcomponent_get_first_component(root.c, ICAL_VTIMEZONE_COMPONENT); z;
                 z = icalcomponent_get_next_component(root.c, ICAL_VTIMEZONE_COMPONENT)) {
                icalproperty *id = icalcomponent_get_first_property(z, ICAL_TZID_PROPERTY);
                present = present || (id && tzid == icalproperty_get_tzid(id));
            }
            if (!present)
                icalcomponent_add_component(root.c, zoneComponent(zone, tzid));
        } else {
            icalcomponent_add_property(todo, icalproperty_new_due(utcTime(*due)));
        }
    }

    if (f.value(Completed).toBool()) {
        icalcomponent_add_property(todo, icalproperty_new_status(ICAL_STATUS_COMPLETED));
        icalcomponent_add_property(todo, icalproperty_new_percentcomplete(100));
        icalcomponent_add_property(todo, icalproperty_new_completed(utcTime(updated ? *updated : Clock::now())));
    } else {
        icalcomponent_add_property(todo, icalproperty_new_status(ICAL_STATUS_NEEDSACTION));
    }
    const double priority = f.contains(Priority) ? f.value(Priority).toDouble() : 1.0;
    icalcomponent_add_property(todo, icalproperty_new_priority(icalPriority(priority)));
    addX(todo, XPriority, QString::number(priority, 'g', 12));

    QStringList categories;
    for (const QString &key : {Course, Type})
        if (!f.value(key).toString().isEmpty())
            categories << f.value(key).toString();
    if (!categories.isEmpty()) {
        icalproperty *p = icalproperty_new_categories(categories.first().toUtf8().constData());
        icalcomponent_add_property(todo, p);
        if (categories.size() > 1)
            icalcomponent_add_property(todo, icalproperty_new_categories(categories.last().toUtf8().constData()));
    }
    addX(todo, XCourse, f.value(Course).toString());
    addX(todo, XType, f.value(Type).toString());
    if (!f.value(Notes).toString().isEmpty())
        icalcomponent_add_property(todo, icalproperty_new_description(f.value(Notes).toString().toUtf8().constData()));
    addX(todo, XGrade, f.value(Grade).toString());
    addX(todo, XTextbook, f.value(Textbook).toString());
    addX(todo, XProject, f.value(Project).toString());
    addX(todo, XSubproject, f.value(Subproject).toString());
    if (!parentUid.isEmpty()) {
        icalproperty *p = icalproperty_new_relatedto(parentUid.toUtf8().constData());
        icalproperty_add_parameter(p, icalparameter_new_reltype(ICAL_RELTYPE_PARENT));
        icalcomponent_add_property(todo, p);
    }
    char *out = icalcomponent_as_ical_string_r(root.c);
    QByteArray bytes(out);
    free(out);
    return bytes;
}

std::optional<TodoMapping::Todo> TodoMapping::fromIcs(const QByteArray &ics)
{
    Component root;
    root.c = icalparser_parse_string(ics.constData());
    icalcomponent *todo = findTodo(root.c);
    if (!todo)
        return std::nullopt;
    Todo out;
    out.uid = text(icalcomponent_get_uid(todo));
    QVariantMap &f = out.fields;
    if (icalproperty *p = icalcomponent_get_first_property(todo, ICAL_SUMMARY_PROPERTY))
        f.insert(Name, text(icalproperty_get_summary(p)));
    if (icalproperty *p = icalcomponent_get_first_property(todo, ICAL_DUE_PROPERTY)) {
        icaltimetype t = icalproperty_get_due(p);
        if (icalparameter *tz = icalproperty_get_first_parameter(p, ICAL_TZID_PARAMETER); tz && !t.zone) {
            const char *tzid = icalparameter_get_tzid(tz);
            icaltimezone *zone = icalcomponent_get_timezone(root.c, tzid);
            if (!zone)
                zone = icaltimezone_get_builtin_timezone(tzid);
            t.zone = zone;
        }
        if (const auto due = fromIcalTime(t))
            f.insert(Date, DateText::toStoredForm(*due));
    }
    bool completed = false;
    if (icalproperty *p = icalcomponent_get_first_property(todo, ICAL_STATUS_PROPERTY))
        completed = icalproperty_get_status(p) == ICAL_STATUS_COMPLETED;
    if (icalproperty *p = icalcomponent_get_first_property(todo, ICAL_PERCENTCOMPLETE_PROPERTY))
        completed = completed || icalproperty_get_percentcomplete(p) >= 100;
    completed = completed || icalcomponent_get_first_property(todo, ICAL_COMPLETED_PROPERTY);
    f.insert(Completed, completed);

    int icalPri = 0;
    if (icalproperty *p = icalcomponent_get_first_property(todo, ICAL_PRIORITY_PROPERTY))
        icalPri = icalproperty_get_priority(p);
    bool exact = false;
    const double kept = xValue(todo, XPriority).toDouble(&exact);
    // The exact slider value survives unless a phone changed the priority since we wrote it.
    f.insert(Priority, exact && icalPriority(kept) == icalPri ? kept : sliderPriority(icalPri));

    QStringList categories;
    for (icalproperty *p = icalcomponent_get_first_property(todo, ICAL_CATEGORIES_PROPERTY); p;
         p = icalcomponent_get_next_property(todo, ICAL_CATEGORIES_PROPERTY))
        categories += text(icalproperty_get_categories(p)).split(QLatin1Char(','), Qt::SkipEmptyParts);
    QString course = xValue(todo, XCourse), type = xValue(todo, XType);
    QStringList ours;
    for (const QString &value : {course, type})
        if (!value.isEmpty())
            ours << value;
    if (ours != categories) {
        // Categories edited elsewhere: the first names the course, the second the type.
        course = categories.value(0);
        type = categories.value(1);
    }
    for (const auto &[key, value] : {std::pair{Course, course}, {Type, type}, {Grade, xValue(todo, XGrade)},
                                    {Textbook, xValue(todo, XTextbook)}, {Project, xValue(todo, XProject)},
                                    {Subproject, xValue(todo, XSubproject)}})
        if (!value.isEmpty())
            f.insert(key, value);
    if (icalproperty *p = icalcomponent_get_first_property(todo, ICAL_DESCRIPTION_PROPERTY))
        if (const QString notes = text(icalproperty_get_description(p)); !notes.isEmpty())
            f.insert(Notes, notes);
    for (icalproperty *p = icalcomponent_get_first_property(todo, ICAL_RELATEDTO_PROPERTY); p;
         p = icalcomponent_get_next_property(todo, ICAL_RELATEDTO_PROPERTY)) {
        icalparameter *rel = icalproperty_get_first_parameter(p, ICAL_RELTYPE_PARAMETER);
        if (!rel || icalparameter_get_reltype(rel) == ICAL_RELTYPE_PARENT)
            out.parentUid = text(icalproperty_get_relatedto(p));
    }
    if (icalproperty *p = icalcomponent_get_first_property(todo, ICAL_LASTMODIFIED_PROPERTY))
        out.lastModified = fromIcalTime(icalproperty_get_lastmodified(p));
    return out;
}

QVariantMap TodoMapping::merged(const QVariantMap &local, const Todo &remote)
{
    QVariantMap out = local;
    for (const QString &key : mappedKeys())
        out.remove(key);
    out.insert(remote.fields);
    out.insert(CalDavKeys::Uid, remote.uid);
    if (!out.contains(Name))
        out.insert(Name, QString());
    out.insert(DateUpdated, remote.lastModified ? DateText::toStoredForm(*remote.lastModified) : DateText::nowStoredForm());
    return out;
}
