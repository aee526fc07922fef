#pragma once

class CourseFormPage;
class CoursesStore;
class QStackedWidget;
class TextbookFormPage;
class UniversalTypesPage;

// The form side of the courses and textbooks window: which row of the combined list the form
// shows, and handing the form's typing on to the store before anything else happens. The
// selection may already have moved on when the typing is saved, so saving goes by the form's row,
// not by the selection; and saving may move rows, so a row taken before is found again after.
class CoursesFormCommit
{
public:
    // `pages` shows a blank page, the course form, the textbook form and the universal types, in
    // that order.
    CoursesFormCommit(CoursesStore &store, QStackedWidget *pages, CourseFormPage *courseForm,
                      TextbookFormPage *textbookForm, UniversalTypesPage *typesPage);

    // The row whose record the form shows (-1: none).
    int row() const { return m_row; }
    void setRow(int row) { m_row = row; }

    // Hands on whatever is being typed in the form shown (see CourseFormPage::commitPendingEdit).
    // Saving it comes back here through the window; it is not asked again meanwhile.
    void commit();
    // Commits, then gives the row that the record at `row` before the commit has now (-1: gone).
    int rowAfterCommit(int row);

private:
    CoursesStore &m_store;
    QStackedWidget *m_pages;
    CourseFormPage *m_courseForm;
    TextbookFormPage *m_textbookForm;
    UniversalTypesPage *m_typesPage;
    int m_row = -1;
    bool m_committing = false;
};
