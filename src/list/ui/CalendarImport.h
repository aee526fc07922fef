#pragma once

#include "importing/ImportPlan.h"

#include <QString>
#include <QStringList>
#include <QVariantList>

#include <optional>

class CalendarImportSheet;
class Controller;
class QWidget;

// File ▸ Import Calendar…: a calendar file chosen in the open panel is read and planned against the
// store, the preview sheet shows the plan, and the chosen items are applied through the controller,
// so the list, the calendar views and every other window showing assignments follow, and the store
// is written the one atomic way it always is.
namespace CalendarImport {

inline const QString AlertTitle = QStringLiteral("Import Calendar");

// Asks for a file and opens the preview over `window`; nullptr when cancelled or the file cannot be
// imported (the reason was shown in an alert).
CalendarImportSheet *chooseAndPreview(QWidget *window, Controller &controller);
// The same for a known file.
CalendarImportSheet *previewFile(QWidget *window, Controller &controller, const QString &path);

// Reads and plans a file against the controller's records; nullopt with the message for the user.
std::optional<ImportPlan> planFile(const QString &path, Controller &controller, QString *error);

// Applies the chosen items of `plan`: refreshes from disk first (another window may have written),
// adds the courses it names that the student does not have, then adds and updates the assignments
// and saves. Returns what was done; nothing when the store cannot be written.
ImportPlan::Result apply(Controller &controller, const ImportPlan &plan);

// The course names of the combined courses-and-textbooks records.
QStringList courseNames(const QVariantList &coursesAndTextbooks);

} // namespace CalendarImport
