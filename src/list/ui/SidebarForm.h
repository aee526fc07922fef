#pragma once

#include <QByteArray>
#include <QVariant>
#include <QWidget>

class ContactTokenField;
class DateEditor;
class FilePicker;
class NSButton_Snapshot;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QSlider;
class QTableView;
class QToolButton;
class QTabWidget;

// The editors of the details sidebar on their three tabs (Details, Notes, Subprojects). Only
// builds and lays out; DetailsSidebar wires them to the list.
class SidebarForm : public QWidget
{
    Q_OBJECT
public:
    static constexpr int DetailsTab = 0;
    static constexpr int NotesTab = 1;
    static constexpr int SubprojectsTab = 2;
    static constexpr int PriorityMinimum = 1;
    static constexpr int PriorityMaximum = 5;

    explicit SidebarForm(QWidget *parent = nullptr);

    // The course, textbook, type and grade captions read the user's labels.
    void applyLabels();
    // Shows the stored snapshot (image data; empty for none).
    void showSnapshot(const QByteArray &data);
    // The reminder pull-down: the record's own reminder (minutes before, 0 for none; invalid for the
    // preferences'). A lead time the choices lack is added as a choice of its own.
    void showReminder(const QVariant &minutes);
    QVariant reminder() const;

    QTabWidget *tabs = nullptr;
    QLineEdit *nameField = nullptr;
    DateEditor *dateEditor = nullptr;
    QComboBox *courseField = nullptr;
    QComboBox *textbookField = nullptr;
    QComboBox *typeField = nullptr;
    QCheckBox *completedCheckbox = nullptr;
    QLineEdit *gradeField = nullptr;
    QSlider *prioritySlider = nullptr;
    QComboBox *reminderField = nullptr;
    FilePicker *filePicker = nullptr;
    NSButton_Snapshot *snapshotButton = nullptr;
    ContactTokenField *contactsField = nullptr;
    QPlainTextEdit *notesField = nullptr;
    QTableView *subprojectsTable = nullptr;
    QToolButton *addSubprojectButton = nullptr;
    QToolButton *removeSubprojectButton = nullptr;

    QLabel *courseCaption = nullptr;
    QLabel *textbookCaption = nullptr;
    QLabel *typeCaption = nullptr;
    QLabel *gradeCaption = nullptr;
    QLabel *completedCaption = nullptr;

private:
    QWidget *buildDetails();
    QWidget *buildNotes();
    QWidget *buildSubprojects();
};
