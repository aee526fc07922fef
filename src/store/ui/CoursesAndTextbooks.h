#pragma once

#include "store/CoursesStore.h"
#include "store/ui/CoursesFileWarnings.h"

#include <QMainWindow>

#include <memory>

class CourseFormPage;
class CoursesFormCommit;
class CoursesListModel;
class QAction;
class QListView;
class QListWidget;
class QStackedWidget;
class QToolBar;
class TextbookFormPage;
class UniversalTypesPage;

// The courses and textbooks window: the combined list of courses with their textbooks, the single
// "Universal Types" row, and the form of whatever is selected. Every change goes through the courses
// store and is written at once; every window showing the courses hears of it from their document.
class CoursesAndTextbooks : public QMainWindow
{
    Q_OBJECT
public:
    // The pages of `selectedItem`, in order; the first is blank.
    enum class Page { Blank = 0, Course = 1, Textbook = 2, Types = 3 };

    explicit CoursesAndTextbooks(QWidget *parent = nullptr);
    ~CoursesAndTextbooks() override;

    // The window the rest of the program opens (made on first use).
    static CoursesAndTextbooks *sharedController();

    CoursesStore &store() { return m_store; }
    // Rereads the files and every label (what opening the window does).
    void reloadFromDisk();
    // What becoming active again does: rereads the files if another window or program changed them,
    // keeping the record shown when it is still there.
    void refreshFromDisk();
    // Hands on whatever is being typed in the form shown (see CourseFormPage::commitPendingEdit).
    void commitPendingEdit();
    void updateLabels();

    void addCourse();
    void addTextbook();
    void deleteCourseOrTextbook();
    // Edit ▸ Undo and Redo: the field's typing first, else the last change to the courses.
    void undoOrRedo(bool undo);
    QAction *undoAction() const { return m_undo; }
    QAction *redoAction() const { return m_redo; }
    // Selects a record of the combined list by row, or by name (a course or a textbook).
    void selectRow(int row);
    bool selectCourseOrTextbook(const QString &name);
    void selectUniversalTypes();

    int selectedRow() const;
    Page currentPage() const;
    CoursesListModel *coursesModel() const { return m_model; }

protected:
    void showEvent(QShowEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void buildToolbar();
    void buildEditMenu();
    // Names and enables Undo and Redo after the history and the keyboard's place.
    void validateHistory();
    // A history step named for this window's labels: "Add Course", "Rename Textbook", ...
    QString stepName(const QString &verb, bool course) const;
    // The document changed: shows the new data, keeping the record shown and the typing in its form.
    void changedElsewhere(QObject *source);
    void selectionChanged();
    void showRecord(int row);
    void courseEdited(bool fromNameField);
    void textbookEdited(bool fromNameField);
    void universalTypesEdited(const QStringList &types);
    void courseDropped(int from, int dropRow);
    // Reads the list again from the store and selects `row` without refilling the form, which may
    // hold the focus and the caret of the field being typed in.
    void reloadList(int row);
    // After a change that found the files replaced and could not be made: the fresh list, with the
    // record that was shown shown again if it is still there.
    void showFreshList(const QVariantMap &shown);
    void updateToolbar();
    QStringList courseNames() const;

    CoursesStore m_store;
    CoursesListModel *m_model;
    QToolBar *m_toolbar;
    QAction *m_addCourse;
    QAction *m_addTextbook;
    QAction *m_delete;
    QAction *m_undo;
    QAction *m_redo;
    QListView *m_coursesTable;
    QListWidget *m_typesTable;
    QStackedWidget *m_selectedItem;
    CourseFormPage *m_courseForm;
    TextbookFormPage *m_textbookForm;
    UniversalTypesPage *m_typesPage;
    // The row the form shows, and its typing handed on by that row.
    std::unique_ptr<CoursesFormCommit> m_form;
    CoursesFileWarnings m_warnings;
    bool m_reloading = false;
    bool m_refreshQueued = false;
};
