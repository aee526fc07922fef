#include "list/ui/MainWindowTestSupport.h"
#include "list/ui/ToolbarCatalogue.h"
#include "list/ui/ToolbarCustomizationPalette.h"

#include <QLineEdit>
#include <QListWidget>
#include <QToolButton>
#include <QWidgetAction>

using namespace ListTest;
using namespace WindowTest;
namespace TC = ToolbarCatalogue;

namespace {

// What the toolbar shows, left to right: labels, "separator", "flexible space".
QStringList readToolbar(MainToolbar *toolbar)
{
    QStringList items;
    for (QAction *action : toolbar->actions()) {
        const QString identifier = action->data().toString();
        if (action->isSeparator())
            items.append(QStringLiteral("separator"));
        else if (identifier == TC::FlexibleSpace)
            items.append(QStringLiteral("flexible space"));
        else if (identifier == TC::Space)
            items.append(QStringLiteral("space"));
        else
            items.append(action->text());
    }
    return items;
}

AssignmentList threeAssignments()
{
    return {record("Essay draft", {{"Course", "English"}}), record("Lab report", {{"Course", "Biology"}}),
            record("Problem set", {{"Course", "Math"}, {"Notes", "essay question 4"}})};
}

} // namespace

TEST(ToolbarWindow, AFreshToolbarShowsTheDefaultItemsWithTheirTipsAndEnablingRules)
{
    freshPreferences();
    writeStore(threeAssignments());
    Window w;
    EXPECT_EQ(readToolbar(w.toolbar()),
              (QStringList{"Add", "Add Recurring", "Add Project", "Delete", "separator", "View", "flexible space",
                           "Courses and Textbooks", "separator", "Search"}));
    // Every item on the toolbar can be reached by assistive technology under its label.
    for (const QString &identifier : {TC::AddItem, TC::RemoveItem})
        EXPECT_EQ(w.toolbar()->itemWidget(identifier)->accessibleName(), w.toolbar()->itemAction(identifier)->text());

    // Delete and Email need a selection; Export To Text needs rows.
    EXPECT_FALSE(w.toolbar()->itemAction(TC::RemoveItem)->isEnabled());
    EXPECT_FALSE(w.toolbar()->itemAction(TC::EmailItem)->isEnabled());
    EXPECT_TRUE(w.toolbar()->itemAction(TC::ExportToText)->isEnabled());
    EXPECT_TRUE(w.toolbar()->itemAction(TC::ExportToiCal)->isEnabled());
    w.select("Lab report");
    EXPECT_TRUE(w.toolbar()->itemAction(TC::RemoveItem)->isEnabled());
    EXPECT_TRUE(w.toolbar()->itemAction(TC::EmailItem)->isEnabled());

    // While the palette is open everything can be used.
    w.controller()->clearSelection();
    w.toolbar()->runCustomizationPalette();
    EXPECT_TRUE(w.toolbar()->itemAction(TC::RemoveItem)->isEnabled());
    w.toolbar()->customizationPalette()->accept();
    EXPECT_FALSE(w.toolbar()->itemAction(TC::RemoveItem)->isEnabled());
}

TEST(ToolbarWindow, TheCoursesItemAndWindowMenuFollowTheLabelsByAppendingAnS)
{
    freshPreferences();
    UserDefaults defaults;
    QVariantMap labels = defaults.dictionary(PreferenceKeys::Labels);
    labels.insert("Course", "Class");
    labels.insert("Textbook", "Book");
    defaults.set(PreferenceKeys::Labels, labels);
    Window w;
    EXPECT_EQ(w.toolbar()->itemAction(TC::CoursesWindow)->text(), "Classs and Books");
    EXPECT_EQ(w.window->menus()->action(MainMenus::Command::CoursesWindow)->text(), "Classs and Books Window");
    EXPECT_EQ(w.window->menus()->action(MainMenus::Command::AssignmentsWindow)->text(), "Assignments Window");
    EXPECT_EQ(w.controller()->tableModel()->headerData(w.table()->sectionOf("Course"), Qt::Horizontal).toString(),
              "Class");
}

TEST(ToolbarWindow, TypingSearchesUntilTheSearchItemIsRemoved)
{
    freshPreferences();
    writeStore(threeAssignments());
    Window w;
    QTest::keyClicks(w.toolbar()->searchField(), "essay");
    EXPECT_EQ(w.shown().size(), 2); // the name and the notes match
    // Scope "Name": the next keystroke searches names only.
    w.toolbar()->scopeActions().at(1)->trigger();
    EXPECT_EQ(w.toolbar()->searchField()->placeholderText(), "name");
    EXPECT_EQ(w.shown().size(), 2);
    QTest::keyClick(w.toolbar()->searchField(), Qt::Key_Space);
    QTest::keyClick(w.toolbar()->searchField(), Qt::Key_Backspace);
    EXPECT_EQ(w.shown(), QStringList{"Essay draft"});

    // Taken off the toolbar through the palette, the field's text no longer counts.
    w.toolbar()->runCustomizationPalette();
    ToolbarCustomizationPalette *palette = w.toolbar()->customizationPalette();
    const int searchPosition = int(w.toolbar()->itemIdentifiers().indexOf(TC::SearchItem));
    palette->removeItemAt(searchPosition);
    palette->accept();
    EXPECT_FALSE(w.toolbar()->itemIdentifiers().contains(TC::SearchItem));
    EXPECT_FALSE(w.toolbar()->isSearchItemVisible());
    w.controller()->controlTextDidChange(true);
    EXPECT_EQ(w.shown().size(), 3);
}

TEST(ToolbarWindow, ThePaletteAddsRemovesAndReordersItemsAndTheArrangementSurvivesARestart)
{
    freshPreferences();
    QStringList expected;
    {
        Window w;
        w.toolbar()->runCustomizationPalette();
        ToolbarCustomizationPalette *palette = w.toolbar()->customizationPalette();
        // An item already on the toolbar is not offered again; the standard ones always are.
        QStringList offered;
        for (int row = 0; row < palette->availableList()->count(); ++row)
            offered.append(palette->availableList()->item(row)->data(Qt::UserRole).toString());
        EXPECT_FALSE(offered.contains(TC::AddItem));
        EXPECT_TRUE(offered.contains(TC::GPACalc));
        EXPECT_TRUE(offered.contains(TC::Separator));

        palette->toolbarList()->setCurrentRow(0);
        palette->addItem(TC::GPACalc);          // after Add
        palette->addItem(TC::GPACalc);          // a second one is refused
        palette->moveItem(1, 2);                // two places to the right
        palette->removeItemAt(0);               // Add goes
        palette->accept();
        expected = w.toolbar()->itemIdentifiers();
        EXPECT_EQ(expected.mid(0, 4),
                  (QStringList{TC::AddMultipleItem, TC::AddProjectItem, TC::GPACalc, TC::RemoveItem}));
        EXPECT_EQ(expected.count(TC::GPACalc), 1);
    }
    Window again;
    EXPECT_EQ(again.toolbar()->itemIdentifiers(), expected);
    EXPECT_EQ(readToolbar(again.toolbar()).at(2), "GPA Calculator");

    // The default set comes back on request.
    again.toolbar()->runCustomizationPalette();
    again.toolbar()->customizationPalette()->useDefaultSet();
    EXPECT_EQ(again.toolbar()->itemIdentifiers(), TC::defaultItemIdentifiers());
}

TEST(ToolbarWindow, AStoredArrangementWithUnknownOrRepeatedItemsKeepsTheGoodOnes)
{
    freshPreferences();
    UserDefaults().set(TC::ItemsPreferenceKey,
                       QVariantList{"AddItem", "Bogus", "AddItem", "Separator", "Separator", "SearchItem"});
    Window w;
    EXPECT_EQ(w.toolbar()->itemIdentifiers(), (QStringList{"AddItem", "Separator", "Separator", "SearchItem"}));
}

TEST(ToolbarWindow, TheWindowItemsOpenThePreferencesCoursesAndCalculatorWindows)
{
    freshPreferences();
    Window w;
    for (const QString &identifier : {TC::Preferences, TC::CoursesWindow, TC::GPACalc, TC::FinalsCalc}) {
        const int before = int(QApplication::topLevelWidgets().size());
        QList<QWidget *> visibleBefore;
        for (QWidget *widget : QApplication::topLevelWidgets())
            if (widget->isVisible())
                visibleBefore.append(widget);
        w.toolbar()->itemAction(identifier)->trigger();
        int newlyVisible = 0;
        for (QWidget *widget : QApplication::topLevelWidgets())
            if (widget->isVisible() && !visibleBefore.contains(widget)) {
                ++newlyVisible;
                widget->close();
            }
        EXPECT_EQ(newlyVisible, 1) << identifier.toStdString() << " (" << before << " windows before)";
    }
}
