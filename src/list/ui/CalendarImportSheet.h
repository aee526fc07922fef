#pragma once

#include "importing/ImportPlan.h"

#include <QDialog>

class Controller;
class QLabel;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

// The preview of a calendar import: every entry of the file with what would happen to it (added,
// updated, or skipped and why), each with a check box. Skipped entries cannot be chosen. "Import"
// applies the chosen ones; "Cancel" changes nothing.
class CalendarImportSheet : public QDialog
{
    Q_OBJECT
public:
    static inline const QString SheetTitle = QStringLiteral("Import Calendar");
    static inline const QString ImportButtonTitle = QStringLiteral("Import");

    CalendarImportSheet(QWidget *parent, Controller &controller, ImportPlan plan);

    QTreeWidget *itemsList() const { return m_items; }
    QPushButton *importButton() const { return m_import; }
    QPushButton *cancelButton() const { return m_cancel; }
    QLabel *summaryLabel() const { return m_summary; }
    const ImportPlan &plan() const { return m_plan; }
    // What the last click on "Import" did.
    const ImportPlan::Result &result() const { return m_result; }

    // Applies the checked items and closes.
    void importChosen();

private:
    void fill();
    void updateSummary();

    Controller &m_controller;
    ImportPlan m_plan;
    ImportPlan::Result m_result;
    QLabel *m_title = nullptr;
    QLabel *m_summary = nullptr;
    QTreeWidget *m_items = nullptr;
    QPushButton *m_import = nullptr;
    QPushButton *m_cancel = nullptr;
};
