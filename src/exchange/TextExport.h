#pragma once

#include "store/Assignment.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <functional>

// Assignments as plain text: the text file the user saves, and the body of an e-mail handed to the
// user's mail program through a "mailto:" link.
class TextExport
{
public:
    static inline const QString TextExtension = QStringLiteral("txt");
    static inline const QString SuggestedFileName = QStringLiteral("Quillory");
    static inline const QString ErrorTitle = QStringLiteral("Export Error");
    static inline const QString WriteFailedMessage = QStringLiteral("The text file could not be written.");

    // "&" -> "&amp;", which the link's escaping leaves alone and which then becomes "%26".
    static QString stringByReplacingAmpersands(const QString &text);

    // The text file: "Quillory <version>", a blank line, then one entry per record, each followed by
    // a blank line. Uses the user's labels and date format.
    static QString textForAssignments(const AssignmentList &records);
    // The same text in UTF-8, as the file holds it.
    static QByteArray textFileBytes(const AssignmentList &records);
    // The same bytes written atomically to `path` as they are made; false, with the reason in
    // `error`, when the file could not be written (whatever was at `path` then stays as it was).
    static bool writeTextFile(const QString &path, const AssignmentList &records, QString *error = nullptr);
    // The e-mail body, with fixed words and every "&" of the user's text as "&amp;".
    static QString emailBody(const AssignmentList &records);
    // "mailto:?subject=Homework Assignment&body=..." escaped for a URL, the user's "&" as "%26".
    static QString emailLinkText(const AssignmentList &selected);

    // The save panel (extension "txt", home folder, "Quillory"), then the file written and opened with
    // its default application. `showProgress` / `hideProgress` frame the work (the interface's sheet).
    // Returns false when cancelled or when the write failed (the user is told).
    static bool exportAssignmentsToText(const AssignmentList &records, const std::function<void()> &showProgress = {},
                                        const std::function<void()> &hideProgress = {});
    // Opens a new message with the selected assignments in the user's mail program.
    static void emailAssignment(const AssignmentList &selected);
};
