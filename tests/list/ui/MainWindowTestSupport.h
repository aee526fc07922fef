#pragma once

#include "list/AssignmentTableModel.h"
#include "list/Controller.h"
#include "list/ListTestSupport.h"
#include "list/ui/AssignmentTableView.h"
#include "list/ui/DetailsSidebar.h"
#include "list/ui/FilterBar.h"
#include "list/ui/MainToolbar.h"
#include "list/ui/MainWindow.h"
#include "list/ui/SidebarForm.h"
#include "store/Preferences.h"
#include "store/StartupSequence.h"

#include <QHeaderView>
#include <QTest>
#include <gtest/gtest.h>

#include <memory>

namespace WindowTest {

// A real main window over the test's home folder, set up the way the program starts it.
struct Window {
    std::unique_ptr<MainWindow> window;

    explicit Window(bool show = true)
    {
        window = std::make_unique<MainWindow>();
        StartupSequence::setUpWindowFromPreferences(window->startupSteps());
        if (show) {
            window->show();
            EXPECT_TRUE(QTest::qWaitForWindowExposed(window.get()));
            window->refresh();
        }
    }
    Controller *controller() const { return window->controller(); }
    MainToolbar *toolbar() const { return window->mainToolbar(); }
    AssignmentTableView *table() const { return window->assignmentTable(); }
    SidebarForm *form() const { return window->sidebar()->form(); }
    QStringList shown() const { return ListTest::names(controller()->displayAssignments()); }
    int rowOf(const QString &name) const { return int(shown().indexOf(name)); }
    void select(const QString &name) const { controller()->selectRowAlone(rowOf(name)); }

    FilterButton *filterButton(const QString &title, int segment) const
    {
        // Titles repeat across segments ("All"); the objectName carries the segment.
        for (FilterButton *button : window->filterBar()->buttons())
            if (button->objectName().section(QLatin1Char('_'), 1, 1).toInt() == segment && button->text() == title)
                return button;
        return nullptr;
    }
    void clickFilter(const QString &title, int segment) const
    {
        FilterButton *button = filterButton(title, segment);
        ASSERT_NE(button, nullptr) << title.toStdString();
        QTest::mouseClick(button, Qt::LeftButton);
        QCoreApplication::processEvents();
    }
    void clickHeader(const QString &identifier) const
    {
        QHeaderView *header = table()->horizontalHeader();
        const int section = table()->sectionOf(identifier);
        ASSERT_GE(section, 0) << identifier.toStdString();
        const QPoint centre(header->sectionViewportPosition(section) + header->sectionSize(section) / 2,
                            header->height() / 2);
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, centre);
    }
};

// What a mouse sends for a double click: press, release, press, the double click, release.
inline void doubleClick(QWidget *widget, const QPoint &position)
{
    QTest::mouseClick(widget, Qt::LeftButton, {}, position);
    QTest::mousePress(widget, Qt::LeftButton, {}, position);
    QTest::mouseDClick(widget, Qt::LeftButton, {}, position);
    QTest::mouseRelease(widget, Qt::LeftButton, {}, position);
    QCoreApplication::processEvents();
}

// Preferences as a first start writes them, with "All" as the view.
inline void freshPreferences()
{
    Preferences::setAllDefaults();
    ListTest::setGeneral(PreferenceKeys::GeneralKeys::DefaultView, 2);
}

} // namespace WindowTest
