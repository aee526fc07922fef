#include "exchange/ui/ExchangeCommands.h"

#include "exchange/Backup.h"
#include "exchange/TextExport.h"
#include "exchange/ui/ExportProgressSheet.h"
#include "exchange/ui/ExportToiCal.h"

#include <QPointer>

namespace ExchangeCommands {

void exportAssignmentsToiCal(QWidget *mainWindow, const AssignmentList &displayAssignments)
{
    (new ExportToiCal(mainWindow))->exportAssignments(displayAssignments);
}

void exportAssignmentsToText(QWidget *mainWindow, const AssignmentList &displayAssignments)
{
    QPointer<ExportProgressSheet> sheet;
    TextExport::exportAssignmentsToText(
        displayAssignments,
        [&] {
            sheet = new ExportProgressSheet(ExportProgressSheet::TextExportMessage, mainWindow);
            sheet->open();
        },
        [&] {
            if (sheet) {
                sheet->done(1);
                sheet->deleteLater();
            }
        });
}

void emailAssignment(const AssignmentList &selectedAssignments)
{
    TextExport::emailAssignment(selectedAssignments);
}

void exportToBackup()
{
    Backup::sharedController()->exportToBackup();
}

void importFromBackup()
{
    Backup::sharedController()->importFromBackup();
}

} // namespace ExchangeCommands
