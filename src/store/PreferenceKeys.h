#pragma once

#include <QString>

// Names of the preferences the windows share. The five group dictionaries are what the preference
// panes edit; the program counts its preferences as set up only when all five exist.
namespace PreferenceKeys {

// Groups
inline const QString General = QStringLiteral("Preferences - General");
inline const QString UserColumns = QStringLiteral("Preferences - User Columns");
inline const QString Colors = QStringLiteral("Preferences - Colors");
inline const QString Labels = QStringLiteral("Preferences - Labels");
inline const QString PersonalInfo = QStringLiteral("Preferences - Personal Info");

// Top level
inline const QString UserColumnsOrdering = QStringLiteral("Preferences - User Columns Ordering");
inline const QString ColorFormat = QStringLiteral("Preferences - Color Format");
inline const QString LastShownPane = QStringLiteral("Preferences - Last Shown Pane");
inline const QString SortSelectors = QStringLiteral("Sort Selectors");
inline const QString SortColumn = QStringLiteral("Sort Column");
inline const QString SortDirection = QStringLiteral("Sort Direction");
inline const QString AssignmentDrawerState = QStringLiteral("Assignment Drawer State");
inline const QString SidebarIsAttached = QStringLiteral("Sidebar is Attached");
inline const QString LastStartup = QStringLiteral("Last Startup");
inline const QString SUCheckAtStartup = QStringLiteral("SUCheckAtStartup");

// Values
inline const QString Open = QStringLiteral("Open");
inline const QString Closed = QStringLiteral("Closed");
inline const QString Ascending = QStringLiteral("Ascending");
inline const QString Descending = QStringLiteral("Descending");

// Inside "Preferences - General"
namespace GeneralKeys {
inline const QString DefaultView = QStringLiteral("Default View");
inline const QString DefaultCalendarFormat = QStringLiteral("Default Calendar Format");
inline const QString DateEntryFormat = QStringLiteral("Date Entry Format");
inline const QString DisplayDuplicateDates = QStringLiteral("Display Duplicate Dates");
inline const QString DisplayWarningMessages = QStringLiteral("Display Warning Messages");
inline const QString DisplayAdvancedICalSettings = QStringLiteral("Display Advanced iCal Settings");
inline const QString DoubleClickCreates = QStringLiteral("Double-clicking will create new assignment");
inline const QString DateFormat = QStringLiteral("Date Format");
inline const QString EnableSuperfluousVisualEffects = QStringLiteral("Enable Superfluous Visual Effects");
inline const QString MainWindowTransition = QStringLiteral("Main Window Transition");
inline const QString AlternateRowColors = QStringLiteral("Alternate row colors for each day");
inline const QString HideWeekends = QStringLiteral("Hide Weekends in Calendar View");
inline const QString SubprojectTitleFormat = QStringLiteral("Subproject Title Format");
// Only ever read from an earlier version's General dictionary.
inline const QString OldDefaultFormat = QStringLiteral("Default Format");
} // namespace GeneralKeys

// The three date formats the General pane offers; anything else is a custom format.
inline const QString DateFormatLong = QStringLiteral("%A, %B %e, %Y");
inline const QString DateFormatShort = QStringLiteral("%a, %b %e, %Y");
inline const QString DateFormatNumeric = QStringLiteral("%m/%d/%y");
inline const QString DefaultSubprojectTitleFormat = QStringLiteral("%p - %s");

// Keys of "Preferences - Colors"
namespace ColorKeys {
inline const QString AllOthers = QStringLiteral("All Others");
inline const QString Completed = QStringLiteral("Completed");
inline const QString PastDue = QStringLiteral("Past Due");
inline const QString DueToday = QStringLiteral("Due Today");
inline const QString DueTomorrow = QStringLiteral("Due Tomorrow");
inline const QString DueInTwoDays = QStringLiteral("Due in Two Days");
} // namespace ColorKeys

// Keys of "Preferences - Labels", in the order the Labels pane lists them.
namespace LabelKeys {
inline const QString Assignment = QStringLiteral("Assignment");
inline const QString Completed = QStringLiteral("Completed");
inline const QString Grade = QStringLiteral("Grade");
inline const QString Type = QStringLiteral("Type");
inline const QString Course = QStringLiteral("Course");
inline const QString CourseField1 = QStringLiteral("CourseField1");
inline const QString CourseField2 = QStringLiteral("CourseField2");
inline const QString CourseField3 = QStringLiteral("CourseField3");
inline const QString CourseField4 = QStringLiteral("CourseField4");
inline const QString CourseField5 = QStringLiteral("CourseField5");
inline const QString CourseField6 = QStringLiteral("CourseField6");
inline const QString Textbook = QStringLiteral("Textbook");
inline const QString TextbookField1 = QStringLiteral("TextbookField1");
inline const QString TextbookField2 = QStringLiteral("TextbookField2");
inline const QString TextbookField3 = QStringLiteral("TextbookField3");
inline const QString TextbookField4 = QStringLiteral("TextbookField4");
inline const QString TextbookField5 = QStringLiteral("TextbookField5");
inline const QString Name = QStringLiteral("Name");
inline const QString School = QStringLiteral("School");
inline const QString StudentID = QStringLiteral("Student ID");
} // namespace LabelKeys

// Keys of "Preferences - Personal Info"
namespace PersonalInfoKeys {
inline const QString Name = QStringLiteral("Name");
inline const QString School = QStringLiteral("School");
inline const QString StudentID = QStringLiteral("Student ID");
} // namespace PersonalInfoKeys

} // namespace PreferenceKeys
