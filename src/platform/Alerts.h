#pragma once

#include <QString>
#include <QStringList>

#include <functional>

// Modal alerts with a title, a message, an informative text and up to three buttons.
//
// The core never shows a window itself: the interface installs a presenter at start-up (a
// QMessageBox, window-modal over the given parent when there is one). Tests queue answers in
// advance instead, so flows with confirmations run headless, and can read back what was asked.
class Alerts
{
public:
    enum class Style { Informational, Warning, Critical };

    struct Request {
        QString title;           // window title ("Warning", "Preferences Error", ...)
        QString message;         // the bold first line
        QString informativeText; // the smaller text under it
        QStringList buttons;     // left to right in reading order; the first is the default
        Style style = Style::Warning;
    };

    // Shows the alert and returns the text of the button chosen; "" when it was dismissed
    // without a choice (or when nothing can show it).
    static QString run(const Request &request);

    // A "Warning" with "Yes" and "No": true only when "Yes" was chosen.
    static bool askYesNo(const QString &title, const QString &message);
    // A message with one "OK" button.
    static void inform(const QString &title, const QString &message, Style style = Style::Warning);

    // Once the program is quitting on a signal (a logout, Ctrl+C), nobody is left to answer: every
    // alert from then on returns "" at once, the cancel answer, and the caller takes its cancel path.
    // The interface closes the alerts already open the same way.
    static void cancelForQuit();
    static bool isQuitting();

    using Presenter = std::function<QString(const Request &)>;
    static void setPresenter(Presenter presenter);

    // For tests: answers given in order to the next alerts (by button text), and the alerts asked.
    static void queueAnswer(const QString &buttonText);
    static QList<Request> takeAsked();
    static void resetForTest();
};
