#include "exchange/ICalExport.h"

#include "exchange/ExportFields.h"
#include "exchange/ExportText.h"
#include "platform/Clock.h"
#include "platform/DateText.h"
#include "platform/Paths.h"
#include "platform/UserDefaults.h"
#include "platform/Workspace.h"
#include "store/Labels.h"
#include "store/PreferenceKeys.h"

#include <QDir>
#include <QFileInfo>
#include <QLoggingCategory>

#include <atomic>
#include <charconv>
#include <iterator>

Q_LOGGING_CATEGORY(lcICal, "quillory.exchange.ical")

namespace {

// Fixed by the calendars that have read these files for years: the same in every export.
const QString Header = QStringLiteral("BEGIN:VCALENDAR\n"
                                      "VERSION:2.0\n"
                                      "X-WR-CALNAME:Quillory\n"
                                      "PRODID:-//Apple Computer\\, Inc//iCal 2.0//EN\n"
                                      "X-WR-RELCALID:4EA05A06-6F59-496B-924A-46198366564B\n"
                                      "X-WR-TIMEZONE:US/Pacific\n"
                                      "CALSCALE:GREGORIAN\n"
                                      "METHOD:PUBLISH\n");
const QString Trailer = QStringLiteral("END:VCALENDAR");
// The fixed text between the values of an entry, each run of it appended in one piece.
const QString EventStart = QStringLiteral("BEGIN:VEVENT\nDTSTART;VALUE=DATE:");
const QString EventEndLine = QStringLiteral("DTEND;VALUE=DATE:");
const QString ToDoStart = QStringLiteral("BEGIN:VTODO\n");
const QString CompletedLines = QStringLiteral("STATUS:COMPLETED\nCOMPLETED:");
const QString DueLine = QStringLiteral("DUE;VALUE=DATE:");
const QString SummaryLine = QStringLiteral("SUMMARY:");
const QString DescriptionLine = QStringLiteral("\nDESCRIPTION:");
const QString UidLine = QStringLiteral("\nUID:");
// The stamp is fixed, the same for every entry and every export.
const QString EventStampAndEnd = QStringLiteral("DTSTAMP:20050817T051622Z\nEND:VEVENT\n");
const QString ToDoStampAndEnd = QStringLiteral("DTSTAMP:20050817T051622Z\nEND:VTODO\n");
const QString EscapedNewline = QStringLiteral("\\n");
const QString Separator = QStringLiteral(": ");
const QString NameWord = QStringLiteral("Name: ");
const QString NotesWord = QStringLiteral("Notes: ");
const QString Complete = QStringLiteral("Complete");
const QString Incomplete = QStringLiteral("Incomplete");
// The legacy top-level date format of the summary's %d, and its stand-in when absent.
const QString LegacyDateFormatKey = QStringLiteral("Date Format");
const QString DefaultDateFormat = QString::fromLatin1(DateText::StoredFormat);

std::atomic<int> g_eventCounter{0};
std::atomic<int> g_toDoCounter{0};

bool isTrue(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::Bool:
        return value.toBool();
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::UInt:
    case QMetaType::ULongLong:
    case QMetaType::Double:
        return value.toDouble() != 0;
    default:
        return false;
    }
}

// "%Y%m%d" and the line's end, appended in one piece: this runs once or twice per entry.
void appendDay(QString &out, const QDate &day)
{
    int year = 0;
    int month = 0;
    int dayOfMonth = 0;
    day.getDate(&year, &month, &dayOfMonth);
    if (year < 0 || year > 9999) {
        out += QString::number(year).rightJustified(4, QLatin1Char('0'));
        out += QStringLiteral("%1%2\n").arg(month, 2, 10, QLatin1Char('0')).arg(dayOfMonth, 2, 10, QLatin1Char('0'));
        return;
    }
    const char16_t text[] = {char16_t(u'0' + year / 1000),      char16_t(u'0' + year / 100 % 10),
                             char16_t(u'0' + year / 10 % 10),   char16_t(u'0' + year % 10),
                             char16_t(u'0' + month / 10),       char16_t(u'0' + month % 10),
                             char16_t(u'0' + dayOfMonth / 10), char16_t(u'0' + dayOfMonth % 10),
                             u'\n'};
    out += QStringView(text, std::size(text));
}

// A whole number and the line's end, without making a string of it first.
void appendNumberLine(QString &out, int number)
{
    char text[16];
    const auto end = std::to_chars(text, text + sizeof text - 1, number).ptr;
    *end = '\n';
    out += QLatin1StringView(text, end + 1 - text);
}

int digits(const QString &text, qsizetype from, qsizetype count)
{
    int value = 0;
    for (qsizetype i = from; i < from + count; ++i) {
        const char16_t c = text.at(i).unicode();
        if (c < u'0' || c > u'9')
            return -1;
        value = value * 10 + (c - u'0');
    }
    return value;
}

// The day of a stored date as its text says it: "%Y-%m-%d %H:%M:%S", the offset taking no part.
// Read by hand: a long export reads one per entry.
QDate dayOf(const QVariant *date, const QDate &today)
{
    if (!date)
        return today;
    QString made;
    const QString *stored = ExportFields::stringIn(date);
    const QString &text = stored ? *stored : (made = date->toString());
    if (text.size() >= 19 && text.at(4) == u'-' && text.at(7) == u'-' && text.at(10) == u' ' && text.at(13) == u':'
        && text.at(16) == u':') {
        const int hour = digits(text, 11, 2);
        const int minute = digits(text, 14, 2);
        const int second = digits(text, 17, 2);
        const QDate day(digits(text, 0, 4), digits(text, 5, 2), digits(text, 8, 2));
        if (day.isValid() && QTime::isValid(hour, minute, second))
            return day;
    }
    qCWarning(lcICal) << "Unreadable due date" << text << "exported as today";
    return today;
}

QString legacyDateFormat()
{
    const UserDefaults defaults;
    return defaults.contains(LegacyDateFormatKey) ? defaults.string(LegacyDateFormatKey) : DefaultDateFormat;
}

// The summary's codes in the order they are replaced, and private-use characters standing for them.
constexpr int CodeCount = 7;
constexpr const char *Codes[CodeCount] = {"%n", "%d", "%c", "%t", "%a", "%b", "%g"};
constexpr int DateCode = 1;
constexpr char16_t MarkBase = 0xE000;

} // namespace

ICalExport::ICalExport(QString exportName, QString exportFormat)
    : m_exportName(std::move(exportName))
    , m_exportFormat(std::move(exportFormat))
    , m_courseHeading(Labels::label(PreferenceKeys::LabelKeys::Course) + Separator)
    , m_textbookHeading(Labels::label(PreferenceKeys::LabelKeys::Textbook) + Separator)
    , m_typeHeading(Labels::label(PreferenceKeys::LabelKeys::Type) + Separator)
    , m_gradeHeading(Labels::label(PreferenceKeys::LabelKeys::Grade) + Separator)
    , m_legacyDateFormat(legacyDateFormat())
    , m_dateTexts(m_legacyDateFormat)
{
    // The codes are replaced one after the other, each in the text the earlier ones left. Doing
    // that once with stand-in characters gives where each value goes; it is the same for every
    // record as long as no value brings a "%" of its own and no "%" of the format stands right
    // before a value (which would read the value's first letter as a code).
    QString withMarks = m_exportName;
    bool usable = true;
    for (int code = 0; code < CodeCount; ++code) {
        if (withMarks.contains(QChar(MarkBase + code)))
            usable = false;
    }
    for (int code = 0; code < CodeCount && usable; ++code)
        withMarks.replace(QLatin1String(Codes[code]), QString(QChar(MarkBase + code)));
    QString literal;
    for (qsizetype i = 0; i < withMarks.size() && usable; ++i) {
        const char16_t c = withMarks.at(i).unicode();
        if (c < MarkBase || c >= MarkBase + CodeCount) {
            literal += withMarks.at(i);
            continue;
        }
        if (literal.endsWith(QLatin1Char('%')))
            usable = false;
        if (!literal.isEmpty())
            m_namePieces.append({literal, -1});
        literal.clear();
        m_namePieces.append({QString(), int(c - MarkBase)});
        m_nameUsesDate = m_nameUsesDate || c - MarkBase == DateCode;
    }
    if (!literal.isEmpty())
        m_namePieces.append({literal, -1});
    if (!usable)
        m_namePieces.clear();
}

QString ICalExport::createNotesFromObject(const QVariantMap &record) const
{
    QString notes;
    appendNotes(notes, ExportFields::of(record));
    return notes;
}

void ICalExport::appendNotes(QString &out, const ExportFields &fields) const
{
    auto part = [&](const QVariant *value, const QString &heading) {
        if (!value)
            return;
        out += heading;
        ExportFields::append(out, value);
        out += EscapedNewline;
    };
    part(fields.name, NameWord);
    part(fields.course, m_courseHeading);
    part(fields.textbook, m_textbookHeading);
    part(fields.type, m_typeHeading);
    part(fields.grade, m_gradeHeading);
    part(fields.notes, NotesWord);
}

QString ICalExport::createCustomName(const QVariantMap &record) const
{
    QString name;
    appendCustomName(name, ExportFields::of(record));
    return name;
}

void ICalExport::appendCustomName(QString &out, const ExportFields &fields) const
{
    if (m_namePieces.isEmpty()) {
        out += slowCustomName(fields);
        return;
    }
    // Each code's text, pointing into the record where it holds one; made texts are kept in `made`.
    const QString *values[CodeCount] = {};
    QString made[CodeCount];
    for (const NamePiece &piece : m_namePieces) {
        if (piece.code < 0 || values[piece.code])
            continue;
        const QVariant *field = nullptr;
        switch (piece.code) {
        case 0:
            field = fields.name;
            break;
        case DateCode: {
            if (!fields.date) {
                // Without a date "%d" stays as it is; it cannot turn into a later code, whose "%"
                // would have to be followed by another letter.
                static const QString Kept = QStringLiteral("%d");
                values[piece.code] = &Kept;
                continue;
            }
            std::optional<QString> text = m_dateTexts.text(fields.date->toString());
            if (!text) {
                out += slowCustomName(fields); // which says why the date is left out
                return;
            }
            made[piece.code] = *std::move(text);
            values[piece.code] = &made[piece.code];
            break;
        }
        case 2:
            field = fields.course;
            break;
        case 3:
            field = fields.textbook;
            break;
        case 4:
            values[piece.code] = fields.completed && isTrue(*fields.completed) ? &Complete : &Incomplete;
            break;
        case 5:
            field = fields.type;
            break;
        default:
            field = fields.grade;
            break;
        }
        if (!values[piece.code]) {
            values[piece.code] = ExportFields::stringIn(field);
            if (!values[piece.code]) {
                if (field)
                    made[piece.code] = field->toString(); // an absent field stays an empty text
                values[piece.code] = &made[piece.code];
            }
        }
        // A value holding a "%" could make a code for a later replacement: the long way is exact.
        if (values[piece.code]->contains(QLatin1Char('%'))) {
            out += slowCustomName(fields);
            return;
        }
    }
    for (const NamePiece &piece : m_namePieces)
        out += piece.code < 0 ? piece.text : *values[piece.code];
}

QString ICalExport::slowCustomName(const ExportFields &fields) const
{
    QString name = m_exportName;
    auto text = [](const QVariant *value) { return value ? value->toString() : QString(); };

    auto replace = [&](const char *code, const QString &value) {
        name.replace(QLatin1String(code), value);
    };
    replace("%n", text(fields.name));
    if (fields.date) {
        const QString stored = fields.date->toString();
        // A date that cannot be read leaves "%d" as it is.
        if (const auto text = m_dateTexts.text(stored))
            replace("%d", *text);
        else
            qCWarning(lcICal) << "Unreadable due date" << stored << "left out of the summary";
    }
    replace("%c", text(fields.course));
    replace("%t", text(fields.textbook));
    replace("%a", fields.completed && isTrue(*fields.completed) ? Complete : Incomplete);
    replace("%b", text(fields.type));
    replace("%g", text(fields.grade));
    return name;
}

// The lines every event and to-do has after its dates: summary, description and its number.
void ICalExport::appendSummaryThroughUid(QString &out, const ExportFields &fields,
                                         int uid) const
{
    out += SummaryLine;
    appendCustomName(out, fields);
    out += DescriptionLine;
    appendNotes(out, fields);
    out += UidLine;
    appendNumberLine(out, uid);
}

void ICalExport::appendEvent(QString &out, const ExportFields &fields,
                             const QDate &today) const
{
    const QDate day = dayOf(fields.date, today);
    out += EventStart;
    appendDay(out, day);
    out += EventEndLine;
    appendDay(out, day.addDays(1));
    appendSummaryThroughUid(out, fields, ++g_eventCounter);
    out += EventStampAndEnd;
}

void ICalExport::appendToDo(QString &out, const ExportFields &fields,
                            const QDate &today) const
{
    out += ToDoStart;
    if (fields.completed && isTrue(*fields.completed)) {
        out += CompletedLines;
        appendDay(out, today);
    }
    out += DueLine;
    appendDay(out, dayOf(fields.date, today));
    appendSummaryThroughUid(out, fields, ++g_toDoCounter);
    out += ToDoStampAndEnd;
}

QByteArray ICalExport::fileText(const AssignmentList &records, const QDate &today)
{
    ExportText out;
    // About 400 characters an entry.
    out.text().reserve(Header.size() + Trailer.size() + records.size() * 420);
    write(out, records, today);
    return out.takeUtf8();
}

void ICalExport::write(ExportText &out, const AssignmentList &records, const QDate &today)
{
    out.text() += Header;
    const bool events = m_exportFormat == Events;
    const bool toDos = !events && m_exportFormat == ToDos;
    if (events || toDos) {
        for (const AssignmentRef &record : records) {
            if (!record)
                continue;
            const ExportFields fields = ExportFields::of(*record);
            if (events)
                appendEvent(out.text(), fields, today);
            else
                appendToDo(out.text(), fields, today);
            out.entryEnd();
        }
    }
    out.text() += Trailer;
}

bool ICalExport::performExport(const AssignmentList &records)
{
    const QString folder = Paths::dataFolder();
    if (!QFileInfo::exists(folder) && !QDir().mkpath(folder))
        qCWarning(lcICal) << "Cannot create the data folder" << folder;

    const QString path = Paths::iCalExportFile();
    const QDate today = Clock::now().toLocalTime().date();
    QString error;
    const bool written = ExportText::writeFile(path, [&](ExportText &out) { write(out, records, today); }, &error);
    if (!written)
        qCWarning(lcICal) << "Writing" << path << "failed:" << error;
    Workspace::openFile(path, Workspace::CalendarApplication);
    return written;
}

void ICalExport::resetCountersForTest()
{
    g_eventCounter = 0;
    g_toDoCounter = 0;
}
