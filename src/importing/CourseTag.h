#pragma once

#include <QString>
#include <QStringList>

// Learning-management feeds put the course into each title: "Essay 2 [ENG 101]", "ENG 101: Essay 2",
// "Essay 2 - ENG 101". CourseTag takes it out again, so that the assignment is named "Essay 2" and
// belongs to the course.
//
// Brackets always name a course. A prefix before ": " or a suffix after " - " could as well be part
// of the title ("Chapter 3: Reading"), so it counts only when it is one of the student's courses or
// looks like a course code (letters and a number, "ENG 101", "CS-61A", "MATH221").
class CourseTag
{
public:
    struct Split {
        QString name;           // the title without the course
        QString course;         // empty when the title names none
        bool knownCourse = false; // `course` is one of the student's, spelled as they spell it
    };

    static Split split(const QString &title, const QStringList &courses);
    // The student's course matching `candidate` ignoring case and runs of blanks, or empty.
    static QString matchCourse(const QString &candidate, const QStringList &courses);
    static bool looksLikeCourseCode(const QString &text);
};
