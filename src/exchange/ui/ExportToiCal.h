#pragma once

#include "store/Assignment.h"

#include <QObject>
#include <QPointer>
#include <QString>

class QDialog;
class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QRadioButton;
class QWidget;

// One export of the displayed assignments to the calendar. A fresh controller per export: it copies
// the list it is given (later changes to the main list do not reach a running export), optionally
// asks for the summary format and the kind of entry in a settings sheet, then builds and writes the
// file on a worker thread while a progress sheet covers the main window. It deletes itself once the
// export is over or the settings sheet was cancelled.
class ExportToiCal : public QObject
{
    Q_OBJECT

public:
    // Texts of the two sheets.
    static inline const QString SheetTitle = QStringLiteral("Export To iCal");
    static inline const QString FormatPrompt = QStringLiteral("Name each entry:");
    static inline const QString LegendTitle = QStringLiteral("Codes");
    static inline const QString NameCodeText = QStringLiteral("Name");
    static inline const QString DateCodeText = QStringLiteral("Due Date");
    static inline const QString EventsChoice = QStringLiteral("Export as events");
    static inline const QString ToDosChoice = QStringLiteral("Export as to-dos");
    static inline const QString ExportButton = QStringLiteral("Export");
    static inline const QString CancelButton = QStringLiteral("Cancel");
    static inline const QString ProgressText = QStringLiteral("Exporting to iCal...");

    explicit ExportToiCal(QWidget *mainWindow);
    ~ExportToiCal() override;

    // Entry point: the settings sheet when "Display Advanced iCal Settings" is on, otherwise an
    // export of events named by "%n" at once.
    void exportAssignments(const AssignmentList &assignments);
    void showExportSheet();
    void hideExportSheet();
    // The sheet's export button and the direct path. `sender` is the control that asked; when it
    // belongs to the settings sheet the sheet's choices are taken over.
    void beginExport(QObject *sender = nullptr);
    void showProgressSheet();
    void hideProgressSheet();

    QDialog *exportSheet() const { return m_exportSheet; }
    QDialog *progressSheet() const { return m_progressSheet; }
    QString exportName() const { return m_exportName; }
    QString exportFormat() const { return m_exportFormat; }

Q_SIGNALS:
    // The worker has written and handed over the file.
    void threadTestDidFinishWork();
    // The progress sheet is closed; the controller goes away next.
    void exportFinished();

private:
    void buildExportSheet();
    void buildProgressSheet();

    QPointer<QWidget> m_mainWindow;
    AssignmentList m_displayArray;
    QString m_exportName;
    QString m_exportFormat;

    QPointer<QDialog> m_exportSheet;
    QLineEdit *m_exportCustomName = nullptr;
    QRadioButton *m_exportEvents = nullptr;
    QRadioButton *m_exportToDos = nullptr;
    QLabel *m_courseLabel = nullptr;
    QLabel *m_textbookLabel = nullptr;
    QLabel *m_completedLabel = nullptr;
    QLabel *m_typeLabel = nullptr;
    QLabel *m_gradeLabel = nullptr;
    QPushButton *m_exportButton = nullptr;
    QPushButton *m_cancelButton = nullptr;

    QPointer<QDialog> m_progressSheet;
    QProgressBar *m_progressBar = nullptr;
};
