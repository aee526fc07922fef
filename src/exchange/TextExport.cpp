#include "exchange/TextExport.h"

#include "exchange/DueDateTexts.h"
#include "exchange/ExportFields.h"
#include "exchange/ExportText.h"

#include "BuildInfo.h"
#include "platform/Alerts.h"
#include "platform/DateText.h"
#include "platform/FilePanels.h"
#include "platform/Paths.h"
#include "platform/Workspace.h"
#include "store/GeneralSettings.h"
#include "store/Labels.h"
#include "store/PreferenceKeys.h"

#include <QHash>
#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcText, "quillory.exchange.text")

namespace {

const QString ProgramName = QStringLiteral("Quillory ");
const QString HomeworkHeading = QStringLiteral(" Homework\n\n");
const QString Untitled = QStringLiteral("Untitled");
const QString CompleteSuffix = QStringLiteral("  --  Complete\n");
const QString IncompleteSuffix = QStringLiteral("  --  Incomplete\n");
const QString DueDate = QStringLiteral("Due Date: ");
const QString None = QStringLiteral("None");
const QString Separator = QStringLiteral(": ");
const QString NotesWord = QStringLiteral("Notes: ");
const QString CourseWord = QStringLiteral("Course: ");
const QString TextbookWord = QStringLiteral("Textbook: ");
const QString GradeWord = QStringLiteral("Grade: ");
const QString LinkStart = QStringLiteral("mailto:?subject=Homework Assignment&body=");
const QString EscapedAmpersand = QStringLiteral("&amp;");
const QString EncodedAmpersand = QStringLiteral("%26");
// Reserved characters of a URL that the link's escaping leaves as they are, so that "&amp;" survives
// it. "#" and "%" are escaped: a raw one would cut the body short or garble it.
const QByteArray LeftUnescaped = QByteArrayLiteral("!$&'()*+,/:;=?@");

QString version()
{
    return QString::fromLatin1(BuildInfo::ShortVersionString);
}

bool isTrue(const QVariant &value)
{
    if (value.typeId() == QMetaType::Bool)
        return value.toBool();
    if (value.typeId() == QMetaType::QString)
        return false;
    return value.isValid() && value.toDouble() != 0;
}

// An unreadable due date is written as it is stored.
QString dueDateText(DueDateTexts &texts, const QString &stored)
{
    if (auto text = texts.text(stored))
        return *std::move(text);
    qCWarning(lcText) << "Unreadable due date" << stored << "written as it is stored";
    return stored;
}

} // namespace

QString TextExport::stringByReplacingAmpersands(const QString &text)
{
    QString escaped = text;
    return escaped.replace(QLatin1Char('&'), EscapedAmpersand);
}

namespace {

// The text file's text, an entry at a time.
void writeText(ExportText &out, const AssignmentList &records)
{
    using namespace PreferenceKeys;
    const QString course = Labels::label(LabelKeys::Course) + Separator;
    const QString textbook = Labels::label(LabelKeys::Textbook) + Separator;
    const QString type = Labels::label(LabelKeys::Type) + Separator;
    const QString grade = Labels::label(LabelKeys::Grade) + Separator;
    // The due date as the list shows it, in local time.
    DueDateTexts dueDates(GeneralSettings::storedDateFormat());

    QString &text = out.text();
    text += ProgramName;
    text += version();
    text += QStringLiteral("\n\n");
    for (const AssignmentRef &record : records) {
        if (!record)
            continue;
        const ExportFields fields = ExportFields::of(*record);
        auto line = [&](const QString &word, const QVariant *value, const QString *absent) {
            if (!value && !absent)
                return;
            text += word;
            if (value)
                ExportFields::append(text, value);
            else
                text += *absent;
            text += QLatin1Char('\n');
        };
        if (fields.name)
            ExportFields::append(text, fields.name);
        else
            text += Untitled;
        text += fields.completed && isTrue(*fields.completed) ? CompleteSuffix : IncompleteSuffix;
        if (fields.date) {
            text += DueDate;
            text += dueDateText(dueDates, fields.date->toString());
            text += QLatin1Char('\n');
        }
        line(course, fields.course, &None);
        line(textbook, fields.textbook, &None);
        line(type, fields.type, nullptr);
        line(grade, fields.grade, nullptr);
        line(NotesWord, fields.notes, nullptr);
        text += QLatin1Char('\n');
        out.entryEnd();
    }
}

} // namespace

QString TextExport::textForAssignments(const AssignmentList &records)
{
    ExportText out;
    out.text().reserve(records.size() * 280 + 32);
    writeText(out, records);
    return std::move(out.text());
}

QByteArray TextExport::textFileBytes(const AssignmentList &records)
{
    return textForAssignments(records).toUtf8();
}

bool TextExport::writeTextFile(const QString &path, const AssignmentList &records, QString *error)
{
    return ExportText::writeFile(path, [&](ExportText &out) { writeText(out, records); }, error);
}

QString TextExport::emailBody(const AssignmentList &records)
{
    // The due date as the list shows it, in local time.
    DueDateTexts dueDates(GeneralSettings::storedDateFormat());
    QString body = ProgramName + version() + HomeworkHeading;
    for (const AssignmentRef &record : records) {
        if (!record)
            continue;
        const Assignment &fields = *record;
        auto escaped = [&](AssignmentField field) { return stringByReplacingAmpersands(fields.string(field)); };
        body += escaped(AssignmentField::Name);
        body += isTrue(fields.value(AssignmentField::Completed)) ? CompleteSuffix : IncompleteSuffix;
        if (fields.has(AssignmentField::Date))
            body += DueDate + dueDateText(dueDates, fields.string(AssignmentField::Date)) + QLatin1Char('\n');
        body += CourseWord + (fields.has(AssignmentField::Course) ? escaped(AssignmentField::Course) : None)
            + QLatin1Char('\n');
        body += TextbookWord + (fields.has(AssignmentField::Textbook) ? escaped(AssignmentField::Textbook) : None)
            + QLatin1Char('\n');
        if (fields.has(AssignmentField::Grade))
            body += GradeWord + escaped(AssignmentField::Grade) + QLatin1Char('\n');
        if (fields.has(AssignmentField::Notes))
            body += NotesWord + escaped(AssignmentField::Notes) + QLatin1Char('\n');
        body += QLatin1Char('\n');
    }
    return body;
}

QString TextExport::emailLinkText(const AssignmentList &selected)
{
    const QByteArray encoded = (LinkStart + emailBody(selected)).toUtf8().toPercentEncoding(LeftUnescaped);
    return QString::fromLatin1(encoded).replace(EscapedAmpersand, EncodedAmpersand);
}

bool TextExport::exportAssignmentsToText(const AssignmentList &records, const std::function<void()> &showProgress,
                                         const std::function<void()> &hideProgress)
{
    const QString path = FilePanels::runSave({Paths::home(), SuggestedFileName, TextExtension});
    if (path.isEmpty())
        return false;
    if (showProgress)
        showProgress();

    QString error;
    const bool written = writeTextFile(path, records, &error);
    if (written)
        Workspace::openFile(path);
    else
        qCWarning(lcText) << "Writing" << path << "failed:" << error;
    if (hideProgress)
        hideProgress();
    if (!written)
        Alerts::inform(ErrorTitle, WriteFailedMessage + QLatin1Char(' ') + error);
    return written;
}

void TextExport::emailAssignment(const AssignmentList &selected)
{
    // The link is already escaped; TolerantMode would re-escape nothing of it, StrictMode keeps it
    // exactly as built.
    Workspace::openUrl(QUrl(emailLinkText(selected), QUrl::StrictMode));
}
