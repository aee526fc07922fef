#pragma once

#include <QWidget>

class QTextBrowser;

// The user guide that ships inside the program, in a window of its own beside the main window so
// the student can read and try at the same time. Links inside the guide move within it; links to
// the web go to the desktop's browser.
class HelpWindow : public QWidget
{
    Q_OBJECT
public:
    static inline const QString WindowTitle = QStringLiteral("Quillory Help");
    // Where the guide is compiled in.
    static inline const QString GuideUrl = QStringLiteral("qrc:/help/guide.html");

    static HelpWindow *sharedController();

    QTextBrowser *browser() const { return m_browser; }

private:
    HelpWindow();

    QTextBrowser *m_browser;
};
