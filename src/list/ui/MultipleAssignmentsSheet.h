#pragma once

#include "list/RecurringSeries.h"

#include <QDialog>
#include <QList>

#include <memory>

class CoursesDocument;
class DateEditor;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QStackedWidget;

// The recurring sheet: one name, course, textbook, type, grade, notes and completion for a whole
// series, with due dates repeating weekly or monthly and ending after a count or on a date. The
// series goes straight into the store file; the main window's refresh then shows it.
class MultipleAssignmentsSheet : public QDialog
{
    Q_OBJECT
public:
    static inline const QString SheetTitle = QStringLiteral("Add Recurring Assignments");

    explicit MultipleAssignmentsSheet(QWidget *parent);

    void showMultiplePanel();
    void hideMultiplePanel();
    // Validates (the first problem shows in an alert), then generates, stores and closes.
    bool addMultipleAssignments();
    // What the sheet holds now.
    RecurringSeries::Entries entries() const;

    // The sheet's fields.
    QLineEdit *nameField;
    QComboBox *courseField;
    QComboBox *textbookField;
    QCheckBox *completedField;
    QComboBox *typeField;
    QLineEdit *gradeField;
    QPlainTextEdit *notesField;
    QLabel *labelsCourseField;
    QLabel *labelsTextbookField;
    QLabel *labelsTypeField;
    QLabel *labelsGradeField;
    QComboBox *repeatPopUp;
    QComboBox *endPopUp;
    DateEditor *startingDate;
    QLineEdit *numberOfWeeks;
    QList<QCheckBox *> weekMatrix;                       // 0 Sunday ... 6 Saturday
    QList<QList<QCheckBox *>> calendarMatrix;            // [row][column]; nullptr where no day is
    QLineEdit *numberOfOccurances;
    DateEditor *endingDate;

private:
    void updateCourses();
    void updateTextbooks();
    void updateTypes();
    void changedCourse();
    void setDateToToday(DateEditor *editor);
    void dateIncreaseOrDecrease(DateEditor *editor, int days);
    void changeDateWithPullDownBoxes(DateEditor *editor, bool month);
    static QString dateText(const DateEditor *editor);
    QWidget *buildRepeat();
    QWidget *buildEnd();

    QStackedWidget *m_repeatPages;
    QStackedWidget *m_endPages;
    QString m_originalCourseString;
    // The courses as every window sees them: the pull-downs follow a change made while the sheet
    // is open.
    std::shared_ptr<CoursesDocument> m_courses;
};
