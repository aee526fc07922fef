#pragma once

#include "exchange/DueDateTexts.h"
#include "exchange/ExportFields.h"
#include "store/Assignment.h"

#include <QByteArray>
#include <QDate>
#include <QHash>
#include <QString>
#include <QVariantMap>

class ExportText;

// The iCalendar text of an export and its hand-over to the calendar.
//
// The text is what calendars have always been given by this program: fixed header lines, one all-day
// event or one to-do per assignment, "\n" line ends and the values written as they stand (no
// escaping, no folding). Entries are numbered by two counters shared by every export of the program
// run, one for events and one for to-dos, so a second export continues where the first stopped.
//
// Everything here may run on a worker thread: it reads the records' fields and the preferences only.
class ICalExport
{
public:
    static inline const QString Events = QStringLiteral("Events");
    static inline const QString ToDos = QStringLiteral("ToDos");
    static inline const QString DefaultName = QStringLiteral("%n");

    // `exportName` is the summary format ("%n", "%c: %n (%a)", ...); `exportFormat` is Events or ToDos
    // (anything else gives a calendar without entries). The user's labels and the legacy date format
    // are read now, once for the whole export.
    ICalExport(QString exportName, QString exportFormat);

    // The whole file. Takes the next UIDs from the shared counters. `today` is the day written for
    // records without a date and for COMPLETED.
    QByteArray fileText(const AssignmentList &records, const QDate &today);

    // DESCRIPTION: "Name: ...\n", the labelled course, textbook, type and grade, "Notes: ...\n", each
    // only when the record has the key, the "\n" being a backslash and an "n".
    QString createNotesFromObject(const QVariantMap &record) const;
    // SUMMARY: the summary format with %n %d %c %t %a %b %g replaced in that order.
    QString createCustomName(const QVariantMap &record) const;

    // Builds the file for today (Clock::now()), writes it atomically to "iCalExport.ics" in the data
    // folder and hands it to the calendar. A failed write is logged only: the calendar is still asked
    // to open whatever file is there.
    bool performExport(const AssignmentList &records);

    // The counters are per program run; tests that stand for a fresh run start them again.
    static void resetCountersForTest();

private:
    void write(ExportText &out, const AssignmentList &records, const QDate &today);
    void appendEvent(QString &out, const ExportFields &fields, const QDate &today) const;
    void appendToDo(QString &out, const ExportFields &fields, const QDate &today) const;
    void appendSummaryThroughUid(QString &out, const ExportFields &fields, int uid) const;

    QString m_exportName;
    QString m_exportFormat;
    // The user's labels for the description, each with its ": ".
    QString m_courseHeading, m_textbookHeading, m_typeHeading, m_gradeHeading;
    QString m_legacyDateFormat;
    // Summary texts of due dates already met in this export (assignments share dates often).
    mutable DueDateTexts m_dateTexts;
    // The summary format read once: literal text and the codes' places, in the order the codes'
    // replacements leave them. Empty when the format cannot be taken apart this way.
    struct NamePiece {
        QString text;
        int code = -1; // index into the codes, or -1 for literal text
    };
    QList<NamePiece> m_namePieces;
    bool m_nameUsesDate = false;
    QString slowCustomName(const ExportFields &fields) const;
    void appendCustomName(QString &out, const ExportFields &fields) const;
    void appendNotes(QString &out, const ExportFields &fields) const;
};
