#include "list/ui/MainWindowTestSupport.h"

#include "BuildInfo.h"
#include "calculators/ui/GPACalculator.h"
#include "list/ui/AboutDialog.h"
#include "list/ui/HelpWindow.h"
#include "platform/Alerts.h"
#include "platform/Paths.h"
#include "platform/Workspace.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QRegularExpression>
#include <QTextBrowser>

using namespace ListTest;
using namespace WindowTest;
using Command = MainMenus::Command;

namespace {

QStringList titles(const QMenu *menu)
{
    QStringList list;
    for (const QAction *action : menu->actions())
        list.append(action->isSeparator() ? QStringLiteral("-") : action->text());
    return list;
}

QMenu *helpMenu(MainWindow *window)
{
    for (QMenu *menu : window->menus()->menus())
        if (menu->title() == QStringLiteral("&Help"))
            return menu;
    return nullptr;
}

// The licence as the Debian package's copyright file declares it.
QString packagedLicense()
{
    QFile copyright(QStringLiteral(QUILLORY_TEST_DATA_DIR "/../../resources/desktop/copyright"));
    EXPECT_TRUE(copyright.open(QIODevice::ReadOnly));
    const QRegularExpressionMatch match
        = QRegularExpression(QStringLiteral("^License: (\\S+)$"), QRegularExpression::MultilineOption)
              .match(QString::fromUtf8(copyright.readAll()));
    return match.captured(1);
}

} // namespace

TEST(HelpAndAboutWindow, F1OpensTheGuideFromAnyWindowAndItsContentsLinksMoveWithinIt)
{
    freshPreferences();
    Window w;
    QMenu *menu = helpMenu(w.window.get());
    ASSERT_NE(menu, nullptr);
    EXPECT_EQ(titles(menu), (QStringList{QStringLiteral("Quillory Help"), QStringLiteral("-"), QStringLiteral("About Quillory")}));
    EXPECT_EQ(w.window->menus()->action(Command::About)->menuRole(), QAction::AboutRole);

    // Typed in the calculator, which has no menus of its own.
    GPACalculator *calculator = GPACalculator::sharedController();
    calculator->show();
    calculator->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(calculator));
    QTest::keyClick(QApplication::focusWidget() ? QApplication::focusWidget() : calculator, Qt::Key_F1);
    HelpWindow *help = HelpWindow::sharedController();
    EXPECT_TRUE(help->isVisible());
    calculator->close();

    QTextBrowser *browser = help->browser();
    EXPECT_EQ(browser->source(), QUrl(HelpWindow::GuideUrl));
    const QString text = browser->toPlainText();
    // The guide is the real one, covering what a student needs, not an empty page.
    for (const char *topic : {"Projects and subprojects", "Courses, textbooks and types", "The calendar",
                              "GPA and finals calculators", "Exporting and e-mail", "Backups: restore and merge",
                              "Syncing with an FTP server"})
        EXPECT_TRUE(text.contains(QLatin1String(topic))) << topic;
    EXPECT_FALSE(browser->accessibleName().isEmpty());

    // A contents link scrolls to its section rather than leaving the guide.
    browser->verticalScrollBar()->setValue(0);
    browser->setSource(QUrl(HelpWindow::GuideUrl + QStringLiteral("#sync")));
    QCoreApplication::processEvents();
    EXPECT_GT(browser->verticalScrollBar()->value(), 0);
    EXPECT_TRUE(Workspace::takeOpened().isEmpty());

    QTest::keyClick(browser, Qt::Key_Escape);
    EXPECT_FALSE(help->isVisible());
}

TEST(HelpAndAboutWindow, AboutShowsVersionLicenceAndTheDataFolderItOpens)
{
    freshPreferences();
    Window w;
    w.window->menus()->action(Command::About)->trigger();
    AboutDialog *about = w.window->aboutDialog();
    ASSERT_NE(about, nullptr);
    EXPECT_TRUE(about->isVisible());
    auto *buttons = about->findChild<QDialogButtonBox *>();
    ASSERT_NE(buttons, nullptr);
    EXPECT_EQ(about->focusWidget(), buttons->button(QDialogButtonBox::Close));
    // Asked again: the same box comes to the front.
    w.window->menus()->action(Command::About)->trigger();
    EXPECT_EQ(w.window->aboutDialog(), about);

    const QString description = about->descriptionText();
    EXPECT_TRUE(description.contains(QStringLiteral("Version %1").arg(QLatin1String(BuildInfo::BundleVersion)))) << description.toStdString();
    EXPECT_TRUE(description.contains(packagedLicense())) << description.toStdString();
    EXPECT_EQ(packagedLicense(), QLatin1String(BuildInfo::License));
    auto *folder = about->findChild<QLabel *>(QStringLiteral("aboutDataFolder"));
    ASSERT_NE(folder, nullptr);
    EXPECT_EQ(folder->text(), QDir::cleanPath(Paths::dataFolder()));

    QDir().mkpath(Paths::dataFolder());
    QTest::mouseClick(about->openFolderButton(), Qt::LeftButton);
    const QList<Workspace::Opened> opened = Workspace::takeOpened();
    ASSERT_EQ(opened.size(), 1);
    EXPECT_EQ(opened.first().url, QUrl::fromLocalFile(QDir::cleanPath(Paths::dataFolder())));
    EXPECT_TRUE(opened.first().application.isEmpty());

    // A folder removed by hand is reported, not opened.
    QDir(Paths::dataFolder()).removeRecursively();
    QTest::mouseClick(about->openFolderButton(), Qt::LeftButton);
    EXPECT_TRUE(Workspace::takeOpened().isEmpty());
    const QList<Alerts::Request> asked = Alerts::takeAsked();
    ASSERT_EQ(asked.size(), 1);
    EXPECT_TRUE(asked.first().message.contains(QStringLiteral("does not exist")));

    about->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(w.window->aboutDialog(), nullptr);
}
