#include "list/ui/MainWindowTestSupport.h"

#include "app/OpenRequests.h"
#include "exchange/Backup.h"
#include "list/ui/CalendarImportSheet.h"
#include "platform/Alerts.h"
#include "platform/Paths.h"
#include "platform/PropertyList.h"
#include "support/TestEnvironment.h"

#include <QDropEvent>
#include <QMimeData>
#include <QUrl>

using namespace ListTest;
using namespace WindowTest;

// Files dragged from the file manager onto the main window go where a file given on the command
// line goes: a backup to the import's question, a calendar to the calendar import's preview, anything else to a message that nothing changed.
namespace {

struct DropResult {
    bool enterAccepted = false;
    bool dropAccepted = false;
};

DropResult drop(QWidget *window, const QList<QUrl> &urls)
{
    QMimeData data;
    data.setUrls(urls);
    const QPoint at(window->width() / 2, window->height() / 2);
    DropResult result;
    QDragEnterEvent enter(at, Qt::CopyAction | Qt::MoveAction | Qt::LinkAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(window, &enter);
    result.enterAccepted = enter.isAccepted() && enter.dropAction() == Qt::CopyAction;
    QDropEvent dropped(at, Qt::CopyAction | Qt::MoveAction | Qt::LinkAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(window, &dropped);
    result.dropAccepted = dropped.isAccepted();
    // The drop returns before anything is opened; the import runs from the next turns of the loop.
    EXPECT_TRUE(Alerts::takeAsked().isEmpty());
    for (int i = 0; i < 5; ++i)
        QCoreApplication::processEvents();
    return result;
}

} // namespace

TEST(DropOnWindow, ABackupGoesToTheImportAndAnyOtherFileIsRefusedWithNothingChanged)
{
    freshPreferences();
    writeStore({record("Essay")});
    const QString backup = TestEnvironment::home() + QStringLiteral("/Quillory Backup");
    ASSERT_TRUE(PropertyList::writeFile(backup, QVariantList{Assignments::toVariantList({record("Lab")}), QVariantList{}, QVariantList{}}));
    const QString photo = TestEnvironment::home() + QStringLiteral("/timetable.png");
    TestEnvironment::writeFile(photo, "\x89PNG\r\n\x1a\n");

    Window w;
    OpenRequests requests;
    requests.windowShown(w.window.get());
    const QByteArray before = TestEnvironment::readFile(Paths::assignmentsFile());

    // The import asks its question about the dropped file; Cancel leaves the data alone.
    Alerts::queueAnswer(Backup::CancelButton);
    DropResult result = drop(w.window.get(), {QUrl::fromLocalFile(backup)});
    EXPECT_TRUE(result.enterAccepted);
    EXPECT_TRUE(result.dropAccepted);
    QList<Alerts::Request> asked = Alerts::takeAsked();
    ASSERT_EQ(asked.size(), 1);
    EXPECT_EQ(asked.first().message, Backup::ImportMessage);

    // "Replace" through a drop does what it does through the menu.
    Alerts::queueAnswer(Backup::ReplaceButton);
    drop(w.window.get(), {QUrl::fromLocalFile(backup)});
    ASSERT_EQ(Alerts::takeAsked().size(), 1);
    EXPECT_TRUE(TestEnvironment::readFile(Paths::assignmentsFile()).contains("Lab"));
    const QByteArray replaced = TestEnvironment::readFile(Paths::assignmentsFile());

    // Another file is taken, and refused with the message a command-line start gives.
    result = drop(w.window.get(), {QUrl::fromLocalFile(photo)});
    EXPECT_TRUE(result.enterAccepted);
    asked = Alerts::takeAsked();
    ASSERT_EQ(asked.size(), 1);
    EXPECT_EQ(asked.first().message, OpenRequests::NotABackupMessage.arg(QStringLiteral("timetable.png")));
    EXPECT_EQ(TestEnvironment::readFile(Paths::assignmentsFile()), replaced);
    EXPECT_NE(replaced, before);

    // A course calendar goes to the calendar import's preview, which adds nothing until it is applied.
    const QString calendar = TestEnvironment::home() + QStringLiteral("/biology.ics");
    TestEnvironment::writeFile(calendar, "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Course//EN\r\n"
                                         "BEGIN:VEVENT\r\nUID:lab-3@course\r\nDTSTAMP:20261120T120000Z\r\n"
                                         "DTSTART;VALUE=DATE:20261203\r\nSUMMARY:Lab 3\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n");
    result = drop(w.window.get(), {QUrl::fromLocalFile(calendar)});
    EXPECT_TRUE(result.enterAccepted);
    EXPECT_TRUE(Alerts::takeAsked().isEmpty());
    auto *preview = w.window->findChild<CalendarImportSheet *>();
    ASSERT_NE(preview, nullptr);
    EXPECT_TRUE(preview->isVisible());
    EXPECT_EQ(TestEnvironment::readFile(Paths::assignmentsFile()), replaced);
    preview->close();

    // A link from a browser is not a file: the drag is not taken and nothing is asked.
    result = drop(w.window.get(), {QUrl(QStringLiteral("https://example.invalid/Quillory%20Backup"))});
    EXPECT_FALSE(result.enterAccepted);
    EXPECT_FALSE(result.dropAccepted);
    EXPECT_TRUE(Alerts::takeAsked().isEmpty());
}
