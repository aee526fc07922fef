#pragma once

#include "list/ui/MainMenus.h"
#include "store/Assignment.h"

#include <QObject>
#include <QPointer>

class AboutDialog;
class MainWindow;
class MultipleAssignmentsSheet;
class QMenu;
class QPoint;
class QWidget;

// What the main window's menu items, toolbar items and contextual menu do. The window builds the
// controls; this part carries out the commands on the window's controller and parts.
class MainWindowCommands : public QObject
{
    Q_OBJECT
public:
    explicit MainWindowCommands(MainWindow &window);

    void perform(MainMenus::Command command);
    void performToolbarItem(const QString &identifier);
    void addMultiple();
    void showContextMenu(const QPoint &globalPosition, bool onRow);
    // Names and enables Undo and Redo after the history and the keyboard's place.
    void validateHistory();

    MultipleAssignmentsSheet *recurringSheet() const { return m_recurringSheet; }
    AboutDialog *aboutDialog() const { return m_about; }
    QMenu *lastContextMenu() const { return m_contextMenu; }

private:
    void undoOrRedo(bool undo);
    static void showWindow(QWidget *window);
    void showAbout();
    void changeCalendarDate(const QString &title);
    AssignmentList selectedRecords() const;

    MainWindow &m_window;
    QPointer<MultipleAssignmentsSheet> m_recurringSheet;
    QPointer<AboutDialog> m_about;
    QPointer<QMenu> m_contextMenu;
};
