#pragma once

#include "list/SidebarValues.h"
#include "store/Assignment.h"

#include <QString>
#include <QStringList>

#include <optional>

class Controller;

// The details sidebar's side of editing: filling the sidebar when the selection changes, and
// rebuilding the selected record from it (with the course-change and project rules), the today
// button, the date stepper and the date pull-downs.
class SidebarEditing
{
public:
    // Which editor ended editing; only the course field brings in a course's default textbook.
    enum class Sender { None, CourseField, Other };

    // What the sidebar shows after a change of selection.
    struct Fill {
        enum class Mode { NoSelection, Multiple, Assignment, Nothing };
        Mode mode = Mode::NoSelection;
        // Details and Notes always; Subprojects too for a project.
        int enabledTabs = 2;
        // The selected subproject's row in the subprojects table, or -1.
        int subprojectRow = -1;
        // 0: the date text field, 1: the three pull-downs ("Date Entry Format").
        int dateFace = 0;
        QStringList courseChoices;
        QStringList textbookChoices;
        SidebarValues values;
    };

    explicit SidebarEditing(Controller &controller);

    // Rebuilds the selected record from the sidebar's values. Does nothing (and returns false)
    // without exactly one selected row, without a record behind it (a subproject whose project is
    // gone), or when the date text names no date.
    bool editAssignment(Sender sender = Sender::None);
    // The course shown when the sidebar was filled; a course edit compares against it.
    void courseFieldWillChangeFrom(const std::optional<QString> &course) { m_originalCourseString = course; }
    std::optional<QString> originalCourseString() const { return m_originalCourseString; }

    void dateToToday();
    // Moves the stored due date by whole calendar days, the time of day kept; nothing when the
    // date field is empty.
    void addDay(int days);
    void increaseDate() { addDay(1); }
    void decreaseDate() { addDay(-1); }
    // A date pull-down changed; the month menu first rebuilds the day menu.
    void changeDateWithPullDownBoxes(bool fromMonthMenu);

    void tableViewSelectionDidChange();
    const Fill &fill() const { return m_fill; }
    // The sidebar's values for a record, as the fill shows them.
    SidebarValues valuesFor(const Assignment &record) const;
    // The textbooks of a course, from the courses file.
    QStringList updateTextbooksForCourse(const QString &course);

    // The contacts line: a contact record by its name ("first last"), any other value as it is,
    // separated by ", ".
    static QString contactName(const QVariant &contact);
    static QString contactsText(const QVariantList &contacts);

private:
    SidebarValues currentValues() const;
    void show(const SidebarValues &values);

    Controller &m_controller;
    Fill m_fill;
    std::optional<QString> m_originalCourseString;
};
