#include "exchange/ICalExport.h"

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
#include <QSaveFile>

#include <atomic>

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
const QString Stamp = QStringLiteral("DTSTAMP:20050817T051622Z\n");
const QString BeginEvent = QStringLiteral("BEGIN:VEVENT\n");
const QString EndEvent = QStringLiteral("END:VEVENT\n");
const QString BeginToDo = QStringLiteral("BEGIN:VTODO\n");
const QString EndToDo = QStringLiteral("END:VTODO\n");
const QString StartLine = QStringLiteral("DTSTART;VALUE=DATE:");
const QString EndLine = QStringLiteral("DTEND;VALUE=DATE:");
const QString DueLine = QStringLiteral("DUE;VALUE=DATE:");
const QString StatusCompleted = QStringLiteral("STATUS:COMPLETED\n");
const QString CompletedLine = QStringLiteral("COMPLETED:");
const QString SummaryLine = QStringLiteral("SUMMARY:");
const QString DescriptionLine = QStringLiteral("DESCRIPTION:");
const QString UidLine = QStringLiteral("UID:");
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

void appendDay(QString &out, const QDate &day)
{
    // "%Y%m%d", written by hand: this runs once or twice per entry of a long export.
    const int year = day.year();
    out += QString::number(year).rightJustified(4, QLatin1Char('0'));
    const int month = day.month();
    const int dayOfMonth = day.day();
    out += QLatin1Char(char('0' + month / 10));
    out += QLatin1Char(char('0' + month % 10));
    out += QLatin1Char(char('0' + dayOfMonth / 10));
    out += QLatin1Char(char('0' + dayOfMonth % 10));
    out += QLatin1Char('\n');
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
QDate dayOf(const QVariantMap &record, const QDate &today)
{
    const auto it = record.constFind(AssignmentKeys::Date);
    if (it == record.constEnd())
        return today;
    const QString text = it->toString();
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

} // namespace

ICalExport::ICalExport(QString exportName, QString exportFormat)
    : m_exportName(std::move(exportName))
    , m_exportFormat(std::move(exportFormat))
    , m_courseLabel(Labels::label(PreferenceKeys::LabelKeys::Course))
    , m_textbookLabel(Labels::label(PreferenceKeys::LabelKeys::Textbook))
    , m_typeLabel(Labels::label(PreferenceKeys::LabelKeys::Type))
    , m_gradeLabel(Labels::label(PreferenceKeys::LabelKeys::Grade))
{
    const UserDefaults defaults;
    m_legacyDateFormat = defaults.contains(LegacyDateFormatKey) ? defaults.string(LegacyDateFormatKey)
                                                                : DefaultDateFormat;
}

QString ICalExport::createNotesFromObject(const QVariantMap &record) const
{
    QString notes;
    auto part = [&](const QString &key, const QString &word) {
        const auto it = record.constFind(key);
        if (it == record.constEnd())
            return;
        notes += word;
        notes += it->toString();
        notes += EscapedNewline;
    };
    part(AssignmentKeys::Name, NameWord);
    part(AssignmentKeys::Course, m_courseLabel + Separator);
    part(AssignmentKeys::Textbook, m_textbookLabel + Separator);
    part(AssignmentKeys::Type, m_typeLabel + Separator);
    part(AssignmentKeys::Grade, m_gradeLabel + Separator);
    part(AssignmentKeys::Notes, NotesWord);
    return notes;
}

QString ICalExport::createCustomName(const QVariantMap &record) const
{
    QString name = m_exportName;
    if (name == DefaultName) { // the common case of a long export
        const QString plain = record.value(AssignmentKeys::Name).toString();
        // A name holding a code of its own goes the long way: later codes search earlier values.
        if (!plain.contains(QLatin1Char('%')))
            return plain;
    }

    auto replace = [&](const char *code, const QString &value) {
        name.replace(QLatin1String(code), value);
    };
    replace("%n", record.value(AssignmentKeys::Name).toString());
    if (record.contains(AssignmentKeys::Date)) {
        const QString stored = record.value(AssignmentKeys::Date).toString();
        auto known = m_dateTexts.constFind(stored);
        if (known == m_dateTexts.constEnd()) {
            const auto moment = DateText::fromStoredForm(stored);
            if (!moment)
                qCWarning(lcICal) << "Unreadable due date" << stored << "left out of the summary";
            // A null text marks a date that cannot be read: "%d" then stays as it is.
            known = m_dateTexts.insert(stored, moment ? DateText::format(moment->toLocalTime(), m_legacyDateFormat)
                                                      : QString());
        }
        if (!known->isNull())
            replace("%d", *known);
    }
    replace("%c", record.value(AssignmentKeys::Course).toString());
    replace("%t", record.value(AssignmentKeys::Textbook).toString());
    replace("%a", isTrue(record.value(AssignmentKeys::Completed)) ? Complete : Incomplete);
    replace("%b", record.value(AssignmentKeys::Type).toString());
    replace("%g", record.value(AssignmentKeys::Grade).toString());
    return name;
}

void ICalExport::appendEvent(QString &out, const QVariantMap &record, const QDate &today) const
{
    const QDate day = dayOf(record, today);
    out += BeginEvent;
    out += StartLine;
    appendDay(out, day);
    out += EndLine;
    appendDay(out, day.addDays(1));
    out += SummaryLine;
    out += createCustomName(record);
    out += QLatin1Char('\n');
    out += DescriptionLine;
    out += createNotesFromObject(record);
    out += QLatin1Char('\n');
    out += UidLine;
    out += QString::number(++g_eventCounter);
    out += QLatin1Char('\n');
    out += Stamp;
    out += EndEvent;
}

void ICalExport::appendToDo(QString &out, const QVariantMap &record, const QDate &today) const
{
    out += BeginToDo;
    if (isTrue(record.value(AssignmentKeys::Completed))) {
        out += StatusCompleted;
        out += CompletedLine;
        appendDay(out, today);
    }
    out += DueLine;
    appendDay(out, dayOf(record, today));
    out += SummaryLine;
    out += createCustomName(record);
    out += QLatin1Char('\n');
    out += DescriptionLine;
    out += createNotesFromObject(record);
    out += QLatin1Char('\n');
    out += UidLine;
    out += QString::number(++g_toDoCounter);
    out += QLatin1Char('\n');
    out += Stamp;
    out += EndToDo;
}

QByteArray ICalExport::fileText(const AssignmentList &records, const QDate &today)
{
    QString out;
    out.reserve(Header.size() + Trailer.size() + records.size() * 200);
    out += Header;
    const bool events = m_exportFormat == Events;
    const bool toDos = !events && m_exportFormat == ToDos;
    if (events || toDos) {
        for (const AssignmentRef &record : records) {
            if (!record)
                continue;
            if (events)
                appendEvent(out, record->fields(), today);
            else
                appendToDo(out, record->fields(), today);
        }
    }
    out += Trailer;
    return out.toUtf8();
}

bool ICalExport::performExport(const AssignmentList &records)
{
    const QByteArray text = fileText(records, Clock::now().toLocalTime().date());
    const QString folder = Paths::dataFolder();
    if (!QFileInfo::exists(folder) && !QDir().mkpath(folder))
        qCWarning(lcICal) << "Cannot create the data folder" << folder;

    const QString path = Paths::iCalExportFile();
    QSaveFile file(path);
    bool written = false;
    if (file.open(QIODevice::WriteOnly)) {
        if (file.write(text) == text.size())
            written = file.commit();
        else
            file.cancelWriting();
    }
    if (!written)
        qCWarning(lcICal) << "Writing" << path << "failed:" << file.errorString();
    Workspace::openFile(path, Workspace::CalendarApplication);
    return written;
}

void ICalExport::resetCountersForTest()
{
    g_eventCounter = 0;
    g_toDoCounter = 0;
}
