#pragma once

#include "store/Assignment.h"

class QWidget;

// The main window's exchange commands, each given the list it works on (the displayed assignments,
// or the selected ones for the e-mail).
namespace ExchangeCommands {

// A fresh iCalendar export over the main window.
void exportAssignmentsToiCal(QWidget *mainWindow, const AssignmentList &displayAssignments);
// The save panel, then the text file written under a progress sheet and opened.
void exportAssignmentsToText(QWidget *mainWindow, const AssignmentList &displayAssignments);
// A new message with the selected assignments in the user's mail program.
void emailAssignment(const AssignmentList &selectedAssignments);
// Forwarded to the shared Backup.
void exportToBackup();
void importFromBackup();

} // namespace ExchangeCommands
