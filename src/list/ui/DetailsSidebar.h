#pragma once

#include "camera/SnapshotDelegate.h"
#include "list/SidebarEditing.h"
#include "list/SidebarValues.h"

#include <QWidget>

#include <memory>

class Controller;
class CoursesDocument;
class QGroupBox;
class QLabel;
class QListWidget;
class QStackedWidget;
class SidebarForm;
class SubprojectsModel;

// The details sidebar: with nothing selected the student's details and the courses box; with
// several rows a count; with one row the editors of SidebarForm on their three tabs. Every editor
// hands its value to the list when the user is done with it, and shows what the list gives back.
class DetailsSidebar : public QWidget, public SidebarEditor, public SnapshotDelegate
{
    Q_OBJECT
public:
    enum Page { NoSelectionPage, MultiplePage, AssignmentPage, NothingPage };

    explicit DetailsSidebar(Controller *controller, QWidget *parent = nullptr);

    // SidebarEditor
    SidebarValues sidebarValues() const override;
    void setSidebarValues(const SidebarValues &values) override;
    // SnapshotDelegate: a picture taken (or cleared) in the video window, stored as an edit.
    void snapshotImageWasTaken(const QImage &image) override;

    Page page() const;
    SidebarForm *form() const { return m_form; }
    SubprojectsModel *subprojectsModel() const { return m_subprojects; }
    QGroupBox *coursesBox() const { return m_coursesBox; }
    QListWidget *coursesList() const { return m_coursesList; }
    QLabel *multipleLabel() const { return m_multipleLabel; }
    QList<QLabel *> personalInfoLabels() const { return m_personalInfo; }
    // How many of the three tabs can be chosen.
    int enabledTabCount() const;
    void showTab(int tab);
    // The Details tab with the name field focused, for the record being edited.
    void focusName();

    // Hands the editors' values to the list (the program loses focus, the window closes).
    void commitEdit() { commitPendingEdit(); }
    // SidebarEditor: the field the keyboard is in, or an open cell of the subprojects table, is
    // handed to the list as if the user had pressed Return in it.
    void commitPendingEdit() override;

    // The window refresh: labels, the personal details and the courses box.
    void applyLabelsAndInformation();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void applyFill();
    void applyCoursesColours();
    void fillCoursesBox();
    // The courses changed (in the courses window, by erasing, an import, a download): the courses
    // box and the choices of the pull-downs follow at once, keeping what each pull-down shows.
    void coursesChanged();
    void edit(SidebarEditing::Sender sender);
    void fillTypes(const QString &course);
    static void setChoices(class QComboBox *box, const QStringList &choices, const QString &text);
    void connectEditors();
    // Del in the subprojects table: the selected subprojects, after asking as the list does.
    void deleteSelectedSubprojects(bool ask);
    QList<int> selectedSubprojectRows() const;

    Controller *m_controller;
    std::shared_ptr<CoursesDocument> m_courses;
    QStackedWidget *m_pages;
    SidebarForm *m_form;
    SubprojectsModel *m_subprojects;
    QGroupBox *m_coursesBox;
    QListWidget *m_coursesList;
    QLabel *m_multipleLabel;
    QLabel *m_nothingLabel;
    QList<QLabel *> m_personalInfo;
    SidebarValues m_shown;
    bool m_filling = false;
    bool m_editing = false;
    bool m_committing = false;
};
