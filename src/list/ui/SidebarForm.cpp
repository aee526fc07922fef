#include "list/ui/SidebarForm.h"

#include "camera/ui/NSButton_Snapshot.h"
#include "contacts/ui/ContactTokenField.h"
#include "list/ui/DateEditor.h"
#include "list/ui/FilePicker.h"
#include "store/Labels.h"
#include "store/PreferenceKeys.h"
#include "widgets/BVTableView.h"
#include "widgets/Icons.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSlider>
#include <QTabBar>
#include <QTabWidget>
#include <QTableView>
#include <QToolButton>
#include <QVBoxLayout>

using namespace PreferenceKeys;

namespace {
const QString NonePlaceholder = QStringLiteral("none");
const QString NotesPlaceholder = QStringLiteral("notes");

QComboBox *comboBox(const QString &name)
{
    auto *box = new QComboBox;
    box->setObjectName(name);
    box->setEditable(true);
    box->setInsertPolicy(QComboBox::NoInsert);
    box->lineEdit()->setPlaceholderText(NonePlaceholder);
    box->setMaxVisibleItems(12);
    box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    box->setMinimumContentsLength(8);
    return box;
}

// "15 minutes before", "2 hours before", "1 week before".
QString leadText(int minutes)
{
    const auto count = [](int n, const char *one, const char *many) {
        return QStringLiteral("%1 %2 before").arg(n).arg(QLatin1String(n == 1 ? one : many));
    };
    if (minutes % (7 * 24 * 60) == 0)
        return count(minutes / (7 * 24 * 60), "week", "weeks");
    if (minutes % (24 * 60) == 0)
        return count(minutes / (24 * 60), "day", "days");
    if (minutes % 60 == 0)
        return count(minutes / 60, "hour", "hours");
    return count(minutes, "minute", "minutes");
}
} // namespace

SidebarForm::SidebarForm(QWidget *parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("sidebarForm"));
    tabs = new QTabWidget(this);
    tabs->setObjectName(QStringLiteral("sidebarTabs"));
    tabs->setAccessibleName(tr("Assignment details"));
    tabs->setDocumentMode(true);
    tabs->tabBar()->setAccessibleName(tr("Sidebar tabs"));
    tabs->addTab(buildDetails(), tr("Details"));
    tabs->addTab(buildNotes(), tr("Notes"));
    tabs->addTab(buildSubprojects(), tr("Subprojects"));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(tabs);
    applyLabels();
}

QWidget *SidebarForm::buildDetails()
{
    auto *page = new QWidget;
    page->setObjectName(QStringLiteral("detailsTab"));
    nameField = new QLineEdit;
    nameField->setObjectName(QStringLiteral("nameField"));
    nameField->setAccessibleName(tr("Name"));
    dateEditor = new DateEditor(tr("Due date"), QStringLiteral("date"));
    courseField = comboBox(QStringLiteral("courseField"));
    textbookField = comboBox(QStringLiteral("textbookField"));
    typeField = comboBox(QStringLiteral("typeField"));
    completedCheckbox = new QCheckBox;
    completedCheckbox->setObjectName(QStringLiteral("completedCheckbox"));
    gradeField = new QLineEdit;
    gradeField->setObjectName(QStringLiteral("gradeField"));
    prioritySlider = new QSlider(Qt::Horizontal);
    prioritySlider->setObjectName(QStringLiteral("prioritySlider"));
    prioritySlider->setAccessibleName(tr("Priority"));
    prioritySlider->setRange(PriorityMinimum, PriorityMaximum);
    prioritySlider->setTickPosition(QSlider::TicksBelow);
    prioritySlider->setPageStep(1);
    reminderField = new QComboBox;
    reminderField->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    reminderField->setMinimumContentsLength(8);
    reminderField->setObjectName(QStringLiteral("reminderField"));
    reminderField->setAccessibleName(tr("Reminder"));
    reminderField->setToolTip(tr("When to be reminded of this assignment; Default follows Preferences ▸ Reminders"));
    reminderField->addItem(tr("Default"), QVariant());
    reminderField->addItem(tr("None"), 0);
    for (const int minutes : {15, 60, 120, 24 * 60, 2 * 24 * 60, 7 * 24 * 60})
        reminderField->addItem(leadText(minutes), minutes);
    filePicker = new FilePicker;
    snapshotButton = new NSButton_Snapshot;
    snapshotButton->setObjectName(QStringLiteral("snapshotButton"));
    snapshotButton->setAccessibleName(tr("Snapshot"));
    snapshotButton->setMinimumSize(100, 76);
    snapshotButton->setToolTip(tr("Take a snapshot with the camera"));
    contactsField = new ContactTokenField;
    contactsField->setObjectName(QStringLiteral("contactsField"));
    contactsField->setAccessibleName(tr("Contacts"));
    contactsField->lineEdit()->setAccessibleName(tr("Contacts"));
    contactsField->setPlaceholderText(NonePlaceholder);
    contactsField->setToolTip(tr("Names from the address book; a comma or Return ends each name"));

    courseCaption = new QLabel;
    textbookCaption = new QLabel;
    typeCaption = new QLabel;
    gradeCaption = new QLabel;
    completedCaption = new QLabel;
    auto *form = new QFormLayout(page);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
    form->addRow(tr("Name:"), nameField);
    form->addRow(tr("Due:"), dateEditor);
    form->addRow(courseCaption, courseField);
    form->addRow(textbookCaption, textbookField);
    form->addRow(typeCaption, typeField);
    form->addRow(completedCaption, completedCheckbox);
    form->addRow(gradeCaption, gradeField);
    form->addRow(tr("Priority:"), prioritySlider);
    form->addRow(tr("Remind:"), reminderField);
    form->addRow(tr("File:"), filePicker);
    form->addRow(tr("Contacts:"), contactsField);
    form->addRow(tr("Snapshot:"), snapshotButton);
    // A caption names its field for a screen reader only as the field's buddy; a pull-down's own
    // name is its current choice there.
    for (auto [caption, field] : {std::pair<QLabel *, QWidget *>{courseCaption, courseField}, {textbookCaption, textbookField},
                                  {typeCaption, typeField}, {completedCaption, completedCheckbox}, {gradeCaption, gradeField}})
        caption->setBuddy(field);
    return page;
}

void SidebarForm::showReminder(const QVariant &minutes)
{
    bool ok = false;
    const int lead = minutes.toInt(&ok);
    int index = minutes.isValid() && ok && lead >= 0 ? reminderField->findData(lead) : 0;
    if (index < 0) {
        reminderField->addItem(leadText(lead), lead);
        index = reminderField->count() - 1;
    }
    reminderField->setCurrentIndex(index);
}

QVariant SidebarForm::reminder() const
{
    return reminderField->currentData();
}

QWidget *SidebarForm::buildNotes()
{
    auto *page = new QWidget;
    page->setObjectName(QStringLiteral("notesTab"));
    auto *notes = new BVTableView;
    notes->setPlaceholderString(NotesPlaceholder);
    notesField = notes;
    notesField->setObjectName(QStringLiteral("notesField"));
    notesField->setAccessibleName(tr("Notes"));
    notesField->setTabChangesFocus(true);
    auto *layout = new QVBoxLayout(page);
    layout->addWidget(notesField);
    return page;
}

QWidget *SidebarForm::buildSubprojects()
{
    auto *page = new QWidget;
    page->setObjectName(QStringLiteral("subprojectsTab"));
    subprojectsTable = new QTableView;
    subprojectsTable->setObjectName(QStringLiteral("subprojectsTable"));
    subprojectsTable->setAccessibleName(tr("Subprojects"));
    subprojectsTable->setSelectionBehavior(QAbstractItemView::SelectRows);
    subprojectsTable->setSelectionMode(QAbstractItemView::ExtendedSelection);
    subprojectsTable->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed
                                      | QAbstractItemView::AnyKeyPressed);
    subprojectsTable->verticalHeader()->hide();
    subprojectsTable->setShowGrid(false);
    subprojectsTable->setAlternatingRowColors(true);
    subprojectsTable->horizontalHeader()->setStretchLastSection(true);
    subprojectsTable->horizontalHeader()->setSortIndicatorShown(true);
    addSubprojectButton = new QToolButton;
    addSubprojectButton->setObjectName(QStringLiteral("addSubprojectButton"));
    addSubprojectButton->setAccessibleName(tr("Add a subproject"));
    addSubprojectButton->setToolTip(tr("Add a subproject"));
    addSubprojectButton->setIcon(Icons::themed(QStringLiteral("list-add"), QStringLiteral("main-plus")));
    removeSubprojectButton = new QToolButton;
    removeSubprojectButton->setObjectName(QStringLiteral("removeSubprojectButton"));
    removeSubprojectButton->setAccessibleName(tr("Delete the subproject"));
    removeSubprojectButton->setToolTip(tr("Delete the selected subproject"));
    removeSubprojectButton->setIcon(Icons::themed(QStringLiteral("list-remove"), QStringLiteral("main-minus")));
    removeSubprojectButton->setEnabled(false);
    auto *buttons = new QHBoxLayout;
    buttons->setSpacing(0);
    buttons->addWidget(addSubprojectButton);
    buttons->addWidget(removeSubprojectButton);
    buttons->addStretch(1);
    auto *layout = new QVBoxLayout(page);
    layout->addWidget(subprojectsTable, 1);
    layout->addLayout(buttons);
    return page;
}

void SidebarForm::applyLabels()
{
    const std::pair<QLabel *, QString> captions[] = {{courseCaption, LabelKeys::Course},
                                                     {textbookCaption, LabelKeys::Textbook},
                                                     {typeCaption, LabelKeys::Type},
                                                     {gradeCaption, LabelKeys::Grade},
                                                     {completedCaption, LabelKeys::Completed}};
    for (const auto &[caption, key] : captions)
        caption->setText(Labels::label(key) + QLatin1Char(':'));
    // The typing part of each pull-down is read on its own by a screen reader; it carries the label too.
    for (const auto &[field, key] : {std::pair{courseField, LabelKeys::Course}, std::pair{textbookField, LabelKeys::Textbook},
                                     std::pair{typeField, LabelKeys::Type}}) {
        field->setAccessibleName(Labels::label(key));
        field->lineEdit()->setAccessibleName(Labels::label(key));
    }
    gradeField->setAccessibleName(Labels::label(LabelKeys::Grade));
    completedCheckbox->setAccessibleName(Labels::label(LabelKeys::Completed));
}

void SidebarForm::showSnapshot(const QByteArray &data)
{
    snapshotButton->setImageData(data);
}
