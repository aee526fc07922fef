#pragma once

#include <QList>
#include <QString>
#include <QUrl>

// Hands URLs and files to the desktop: the user's mail program for "mailto:", the default application
// for a file's type (xdg-open through QDesktopServices). May be called from any thread; the hand-over
// itself always happens on the interface thread.
//
// Tests switch on recording: nothing is launched, and what would have been opened is kept for the
// test to read back.
class Workspace
{
public:
    // The calendar application of the program's old home; here the desktop's default handler of
    // text/calendar, which is what xdg-open picks for an .ics file.
    static inline const QString CalendarApplication = QStringLiteral("iCal");

    struct Opened {
        QUrl url;            // what was handed over (a file: URL for files)
        QString application; // the application asked for by name, or empty for the default
    };

    static bool openUrl(const QUrl &url);
    // Opens a file with the default application for its type, or with the named application when it
    // stands for one the desktop knows under another name (CalendarApplication).
    static bool openFile(const QString &path, const QString &application = QString());

    // For tests: from now on record instead of opening.
    static void recordForTest();
    static QList<Opened> takeOpened();
    // For tests that catch the opening themselves (QDesktopServices::setUrlHandler): hand over again.
    static void stopRecordingForTest();
};
