#pragma once

#include <QString>

// The fixed texts of the assignment list: filter-bar titles, search scopes, alert texts and the
// names of the small images the table shows. Written once here and used as they stand.
namespace ListTexts {

// Filter bar
inline const QString All = QStringLiteral("All");
inline const QString Incomplete = QStringLiteral("Incomplete");
inline const QString Complete = QStringLiteral("Complete");
inline const QString Divider = QStringLiteral("DIVIDER");

// Search scopes (the search field's placeholder) and the scope menu's "All" item
inline const QString ScopeAll = QString();
inline const QString ScopeName = QStringLiteral("name");
inline const QString ScopeCourse = QStringLiteral("course");
inline const QString ScopeTextbook = QStringLiteral("textbook");
inline const QString ScopeGrade = QStringLiteral("grade");
inline const QString ScopeType = QStringLiteral("type");
inline const QString ScopeNotes = QStringLiteral("notes");

// The label of the toolbar item whose presence switches the search on
inline const QString SearchItemLabel = QStringLiteral("Search");

// Alerts
inline const QString WarningTitle = QStringLiteral("Warning");
inline const QString DeleteOneQuestion = QStringLiteral("Are you sure you want to delete this assignment?");
inline const QString DeleteManyQuestion = QStringLiteral("Are you sure you want to delete these assignments?");
inline const QString StoreErrorTitle = QStringLiteral("Assignments Error");
inline const QString AddUnreadableMessage = QStringLiteral(
    "The assignments file could not be read, so the new assignment was not added.  The file has been left as it "
    "is.");
inline const QString RecurringUnreadableMessage = QStringLiteral(
    "The assignments file could not be read, so the recurring assignments were not added.  The file has been left "
    "as it is.");
inline const QString RecurringUnwritableMessage = QStringLiteral(
    "The recurring assignments could not be saved.  The assignments file has been left as it was.");

// Images of the attachment columns
inline const QString NotesImage = QStringLiteral("NotesSmallFlagged");
inline const QString ContactsImage = QStringLiteral("Contact");
inline const QString FileImage = QStringLiteral("Attachment");
inline const QString SnapshotImage = QStringLiteral("CameraSmall");

// Date texts
inline const QString DayKeyFormat = QStringLiteral("%Y-%m-%d");
inline const QString Today = QStringLiteral("today");
inline const QString MonthTitleFormat = QStringLiteral("%b");
inline const QString DayTitleFormat = QStringLiteral("%e");
inline const QString YearTitleFormat = QStringLiteral("%Y");

// Subproject titles
inline const QString ProjectPlaceholder = QStringLiteral("%p");
inline const QString SubprojectPlaceholder = QStringLiteral("%s");

// Courses file
inline const QString CourseTypeKey = QStringLiteral("Type");
inline const QString CourseTypeCourse = QStringLiteral("Course");
inline const QString CourseTypeTextbook = QStringLiteral("Textbook");
inline const QString CourseNameKey = QStringLiteral("Name");
inline const QString TextbookCourseKey = QStringLiteral("Course");
inline const QString DefaultTextbookKey = QStringLiteral("Default Textbook");
inline const QString NoTextbook = QStringLiteral("none");

} // namespace ListTexts
