#include "list/ui/HelpWindow.h"

#include "widgets/Icons.h"

#include <QKeySequence>
#include <QShortcut>
#include <QTextBrowser>
#include <QUrl>
#include <QVBoxLayout>

HelpWindow *HelpWindow::sharedController()
{
    static HelpWindow *instance = new HelpWindow;
    return instance;
}

HelpWindow::HelpWindow()
    : QWidget(nullptr, Qt::Window)
    , m_browser(new QTextBrowser(this))
{
    setObjectName(QStringLiteral("HelpWindow"));
    setWindowTitle(WindowTitle);
    setWindowIcon(Icons::themed(QStringLiteral("help-browser"), QStringLiteral("quillory")));
    setAccessibleName(WindowTitle);

    m_browser->setObjectName(QStringLiteral("helpBrowser"));
    m_browser->setAccessibleName(tr("User guide"));
    m_browser->setOpenExternalLinks(true);
    m_browser->setSource(QUrl(GuideUrl));
    // The page follows the window's palette, so the guide is readable in a dark scheme too.
    m_browser->document()->setDefaultStyleSheet(QStringLiteral("h1 { font-size: x-large; } h2 { font-size: large; }"));

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_browser);

    // A help window is read and put away: Escape and the desktop's close shortcut both close it.
    auto *close = new QShortcut(QKeySequence::Close, this);
    connect(close, &QShortcut::activated, this, &QWidget::close);
    auto *escape = new QShortcut(QKeySequence(Qt::Key_Escape), this);
    connect(escape, &QShortcut::activated, this, &QWidget::close);

    // A line length that reads comfortably at any font size.
    const int em = fontMetrics().horizontalAdvance(QLatin1Char('M'));
    resize(em * 42, em * 40);
}
