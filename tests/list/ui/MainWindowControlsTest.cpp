#include "list/ui/MainWindowTestSupport.h"
#include "calendar/ui/BVCalendarView.h"
#include "calendar/ui/CalendarController.h"
#include "camera/ui/NSButton_Snapshot.h"
#include "list/ui/FormatControl.h"
#include "platform/Alerts.h"
#include "platform/Paths.h"
#include "widgets/AnimatingTabView.h"

#include <QAccessible>
#include <QAccessibleActionInterface>
#include <QApplication>
#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QHelpEvent>
#include <QImage>
#include <QImageWriter>
#include <QLineEdit>
#include <QToolButton>
#include <QToolTip>

using namespace ListTest;
using namespace WindowTest;

namespace {

// The tool tip a person resting the pointer on the middle of `widget` gets to read.
QString toolTipAt(QWidget *widget)
{
    QToolTip::hideText();
    const QPoint centre = widget->rect().center();
    QHelpEvent help(QEvent::ToolTip, centre, widget->mapToGlobal(centre));
    QApplication::sendEvent(widget, &help);
    return QToolTip::isVisible() ? QToolTip::text() : QString();
}

QByteArray tiffImage()
{
    QImage image(64, 48, QImage::Format_RGB32);
    image.fill(QColor(200, 40, 40));
    QByteArray data;
    QBuffer buffer(&data);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "tiff");
    EXPECT_TRUE(writer.write(image)) << writer.errorString().toStdString();
    return data;
}

} // namespace

TEST(MainWindowControls, TheSnapshotButtonSaysNoneWithoutAnImageAndShowsATiffSnapshot)
{
    freshPreferences();
    const QByteArray tiff = tiffImage();
    ASSERT_FALSE(tiff.isEmpty());
    writeStore({record("Plain"), record("Pictured", {{"Snapshot", tiff}})});
    Window w;
    w.select("Plain");
    EXPECT_EQ(w.form()->snapshotButton->text(), "none");
    EXPECT_TRUE(w.form()->snapshotButton->image().isNull());
    w.select("Pictured");
    EXPECT_FALSE(w.form()->snapshotButton->image().isNull());
    EXPECT_EQ(w.form()->snapshotButton->text(), "");
}

TEST(MainWindowControls, EveryToolbarItemShowsItsToolTipUnderThePointer)
{
    freshPreferences();
    Window w;
    MainToolbar *toolbar = w.toolbar();
    QStringList all;
    for (const ToolbarCatalogue::Item &item : ToolbarCatalogue::items())
        all.append(item.identifier);
    toolbar->setItemIdentifiers(all);
    QCoreApplication::processEvents();
    for (const ToolbarCatalogue::Item &item : ToolbarCatalogue::items()) {
        QWidget *widget = toolbar->itemWidget(item.identifier);
        ASSERT_NE(widget, nullptr) << item.identifier.toStdString();
        // The pointer rests on what the item shows: the control itself for the search and view items.
        QWidget *under = widget->childAt(widget->rect().center());
        if (item.identifier == ToolbarCatalogue::SearchItem)
            under = toolbar->searchField();
        else if (item.identifier == ToolbarCatalogue::FormatView)
            under = toolbar->formatControl()->segmentButton(1);
        EXPECT_EQ(toolTipAt(under ? under : widget), item.toolTip) << item.identifier.toStdString();
    }
}

TEST(MainWindowControls, TheAccessibleToggleOfAFormatSegmentSwitchesTheView)
{
    freshPreferences();
    Window w;
    FormatControl *format = w.toolbar()->formatControl();
    QAccessibleInterface *weekly = QAccessible::queryAccessibleInterface(format->segmentButton(1));
    ASSERT_NE(weekly, nullptr);
    ASSERT_NE(weekly->actionInterface(), nullptr);
    const QStringList actions = weekly->actionInterface()->actionNames();
    const QString toggle = QAccessibleActionInterface::toggleAction();
    ASSERT_TRUE(actions.contains(toggle)) << actions.join(", ").toStdString();
    weekly->actionInterface()->doAction(toggle);
    QTest::qWait(50);
    EXPECT_EQ(w.toolbar()->formatSegment(), 1);
    EXPECT_EQ(w.window->calendarController()->activeView(), w.window->calendarController()->weeklyView());
    EXPECT_TRUE(QTest::qWaitFor([&] { return w.window->formattingTabView()->currentIndex() == 1; }, 3000));

    QAccessibleInterface *monthly = QAccessible::queryAccessibleInterface(format->segmentButton(2));
    monthly->actionInterface()->doAction(toggle);
    EXPECT_TRUE(QTest::qWaitFor([&] { return w.window->formattingTabView()->currentIndex() == 2; }, 3000));
    EXPECT_EQ(w.window->calendarController()->activeView(), w.window->calendarController()->monthlyView());
    EXPECT_TRUE(format->segmentButton(2)->isChecked());
    EXPECT_FALSE(format->segmentButton(1)->isChecked());
}

TEST(MainWindowControls, AddingOverAnUnreadableStoreSaysSoAndLeavesTheFileAsItIs)
{
    freshPreferences();
    QDir().mkpath(Paths::dataFolder());
    QFile file(Paths::assignmentsFile());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    const QByteArray broken("<?xml version=\"1.0\"?><plist><array><dict><key>Name");
    file.write(broken);
    file.close();
    Window w;
    w.toolbar()->itemAction(ToolbarCatalogue::AddItem)->trigger();
    const QList<Alerts::Request> asked = Alerts::takeAsked();
    ASSERT_EQ(asked.size(), 1);
    EXPECT_TRUE(asked[0].message.contains("could not be read")) << asked[0].message.toStdString();
    EXPECT_TRUE(w.controller()->allAssignments().isEmpty());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), broken);
}

TEST(MainWindowControls, TheAccessibleToggleOfTheCompletedBoxCompletesTheAssignment)
{
    freshPreferences();
    writeStore({record("Essay")});
    Window w;
    w.select("Essay");
    QAccessibleInterface *box = QAccessible::queryAccessibleInterface(w.form()->completedCheckbox);
    ASSERT_NE(box, nullptr);
    ASSERT_NE(box->actionInterface(), nullptr);
    box->actionInterface()->doAction(QAccessibleActionInterface::toggleAction());
    ASSERT_TRUE(w.form()->completedCheckbox->isChecked());
    ASSERT_EQ(readStore().size(), 1);
    EXPECT_TRUE(readStore()[0].toMap().value("Completed").toBool());
}
