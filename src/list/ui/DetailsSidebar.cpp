#include "list/ui/DetailsSidebar.h"

#include "camera/ui/NSButton_Snapshot.h"
#include "camera/ui/VideoController.h"
#include "contacts/ui/ContactTokenField.h"
#include "list/Controller.h"
#include "list/CoursesFile.h"
#include "list/Editing.h"
#include "list/ui/DateEditor.h"
#include "list/ui/FilePicker.h"
#include "list/ui/SidebarForm.h"
#include "list/ui/SubprojectsModel.h"
#include "platform/Paths.h"
#include "platform/UserDefaults.h"
#include "store/CoursesDocument.h"
#include "store/CoursesStore.h"
#include "store/Labels.h"
#include "store/PreferenceKeys.h"
#include "widgets/ReadableColors.h"

#include <QAbstractItemDelegate>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QGroupBox>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPointer>
#include <QSlider>
#include <QStackedWidget>
#include <QTabWidget>
#include <QTableView>
#include <QToolButton>
#include <QVBoxLayout>

#include <utility>

using namespace PreferenceKeys;
using Sender = SidebarEditing::Sender;


void DetailsSidebar::focusName()
{
    applyFill();
    if (page() != AssignmentPage)
        return;
    m_form->tabs->setCurrentIndex(SidebarForm::DetailsTab);
    m_form->nameField->setFocus(Qt::OtherFocusReason);
    m_form->nameField->selectAll();
}

DetailsSidebar::DetailsSidebar(Controller *controller, QWidget *parent)
    : QWidget(parent)
    , m_controller(controller)
    , m_courses(CoursesDocument::open())
    , m_pages(new QStackedWidget(this))
    , m_form(new SidebarForm)
    , m_subprojects(new SubprojectsModel(controller, this))
    , m_coursesBox(new QGroupBox)
    , m_coursesList(new QListWidget)
    , m_multipleLabel(new QLabel)
    , m_nothingLabel(new QLabel)
{
    setObjectName(QStringLiteral("detailsSidebar"));
    setAccessibleName(tr("Details sidebar"));
    setMinimumWidth(240);

    auto *noSelection = new QWidget;
    noSelection->setObjectName(QStringLiteral("noSelectionView"));
    auto *noSelectionLayout = new QVBoxLayout(noSelection);
    for (const QString &name : {QStringLiteral("personalName"), QStringLiteral("personalSchool"),
                                QStringLiteral("personalStudentID")}) {
        auto *label = new QLabel;
        label->setObjectName(name);
        label->setAlignment(Qt::AlignHCenter);
        if (m_personalInfo.isEmpty()) {
            QFont font = label->font();
            font.setBold(true);
            font.setPointSizeF(font.pointSizeF() * 1.2);
            label->setFont(font);
        }
        m_personalInfo.append(label);
        noSelectionLayout->addWidget(label);
    }
    m_coursesBox->setObjectName(QStringLiteral("coursesBox"));
    m_coursesList->setObjectName(QStringLiteral("sidebarCoursesList"));
    applyCoursesColours();
    m_coursesList->setSelectionMode(QAbstractItemView::NoSelection);
    auto *boxLayout = new QVBoxLayout(m_coursesBox);
    boxLayout->addWidget(m_coursesList);
    noSelectionLayout->addWidget(m_coursesBox, 1);

    auto *multiple = new QWidget;
    multiple->setObjectName(QStringLiteral("multipleSelectionView"));
    auto *multipleLayout = new QVBoxLayout(multiple);
    m_multipleLabel->setObjectName(QStringLiteral("multipleSelectionLabel"));
    m_multipleLabel->setAlignment(Qt::AlignCenter);
    m_multipleLabel->setWordWrap(true);
    multipleLayout->addWidget(m_multipleLabel);

    auto *nothing = new QWidget;
    nothing->setObjectName(QStringLiteral("orphanSubprojectView"));
    auto *nothingLayout = new QVBoxLayout(nothing);
    m_nothingLabel->setAlignment(Qt::AlignCenter);
    m_nothingLabel->setWordWrap(true);
    m_nothingLabel->setText(tr("The project of this subproject no longer exists."));
    nothingLayout->addWidget(m_nothingLabel);

    m_pages->addWidget(noSelection);
    m_pages->addWidget(multiple);
    m_pages->addWidget(m_form);
    m_pages->addWidget(nothing);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_pages);

    m_form->subprojectsTable->setModel(m_subprojects);
    m_form->subprojectsTable->horizontalHeader()->setSectionResizeMode(SubprojectsModel::CompletedColumn,
                                                                      QHeaderView::Fixed);
    m_form->subprojectsTable->horizontalHeader()->resizeSection(SubprojectsModel::CompletedColumn, 24);
    m_form->subprojectsTable->horizontalHeader()->setSortIndicator(SubprojectsModel::DateColumn, Qt::AscendingOrder);

    connectEditors();
    controller->setSidebar(this);
    connect(controller, &Controller::selectionDidChange, this, &DetailsSidebar::applyFill);
    connect(controller, &Controller::sidebarNoSelection, this, [this] {
        if (!m_editing)
            m_pages->setCurrentIndex(NoSelectionPage);
    });
    connect(controller, &Controller::sidebarCleared, this, [this] {
        if (!m_editing)
            setSidebarValues(SidebarValues());
    });
    connect(controller, &Controller::focusNameField, this, &DetailsSidebar::focusName);
    connect(controller, &Controller::subprojectsChanged, m_subprojects, &SubprojectsModel::reload);
    connect(controller, &Controller::showSubprojectsTab, this, [this] {
        applyFill();
        showTab(SidebarForm::SubprojectsTab);
    });
    connect(controller, &Controller::textbookChoicesChanged, this, [this](const QStringList &textbooks) {
        const QSignalBlocker blocker(m_form->textbookField);
        setChoices(m_form->textbookField, textbooks, m_form->textbookField->currentText());
        fillTypes(m_form->courseField->currentText());
    });
    connect(controller, &Controller::labelsChanged, this, &DetailsSidebar::applyLabelsAndInformation);
    connect(m_courses.get(), &CoursesDocument::coursesChanged, this, &DetailsSidebar::coursesChanged);
    connect(m_courses.get(), &CoursesDocument::universalTypesChanged, this, &DetailsSidebar::coursesChanged);
    connect(m_courses.get(), &CoursesDocument::reset, this, &DetailsSidebar::coursesChanged);
    applyLabelsAndInformation();
    applyFill();
}

void DetailsSidebar::connectEditors()
{
    SidebarForm *f = m_form;
    connect(f->nameField, &QLineEdit::editingFinished, this, [this] { edit(Sender::Other); });
    connect(f->gradeField, &QLineEdit::editingFinished, this, [this] { edit(Sender::Other); });
    connect(f->contactsField, &ContactTokenField::editingFinished, this, [this] { edit(Sender::Other); });
    connect(f->courseField, &QComboBox::activated, this, [this] { edit(Sender::CourseField); });
    connect(f->courseField->lineEdit(), &QLineEdit::editingFinished, this, [this] { edit(Sender::CourseField); });
    for (QComboBox *box : {f->textbookField, f->typeField}) {
        connect(box, &QComboBox::activated, this, [this] { edit(Sender::Other); });
        connect(box->lineEdit(), &QLineEdit::editingFinished, this, [this] { edit(Sender::Other); });
    }
    // Toggled, not clicked: an assistive tool's toggle action ticks the box without a click.
    connect(f->completedCheckbox, &QCheckBox::toggled, this, [this] { edit(Sender::Other); });
    connect(f->prioritySlider, &QSlider::valueChanged, this, [this] {
        if (!m_form->prioritySlider->isSliderDown())
            edit(Sender::Other);
    });
    connect(f->prioritySlider, &QSlider::sliderReleased, this, [this] { edit(Sender::Other); });
    connect(f->reminderField, &QComboBox::activated, this, [this] { edit(Sender::Other); });
    connect(f->filePicker, &FilePicker::pathChanged, this, [this] { edit(Sender::Other); });
    connect(f->snapshotButton, &QToolButton::clicked, this, [this] {
        // The button takes no focus: a field still being typed in is handed over first.
        commitPendingEdit();
        VideoController::sharedController()->showVideoWindowWithInitialImage(m_form->snapshotButton->image(), this);
    });
    f->notesField->installEventFilter(this);

    DateEditor *date = f->dateEditor;
    connect(date, &DateEditor::textEditingFinished, this, [this] { edit(Sender::Other); });
    connect(date, &DateEditor::todayClicked, this, [this] {
        if (m_filling)
            return;
        m_editing = true;
        m_controller->sidebarEditing().dateToToday();
        m_editing = false;
        applyFill();
    });
    connect(date, &DateEditor::stepped, this, [this](int days) {
        m_editing = true;
        m_controller->sidebarEditing().addDay(days);
        m_editing = false;
        applyFill();
    });
    connect(date, &DateEditor::pullDownChanged, this, [this](bool month) {
        m_editing = true;
        m_controller->sidebarEditing().changeDateWithPullDownBoxes(month);
        m_editing = false;
        applyFill();
    });

    connect(f->addSubprojectButton, &QToolButton::clicked, this, [this] { m_controller->editing().addSubproject(); });
    // The remove button asks nothing; Del in the table asks as deleting from the list does.
    connect(f->removeSubprojectButton, &QToolButton::clicked, this, [this] { deleteSelectedSubprojects(false); });
    f->subprojectsTable->installEventFilter(this);
    connect(m_subprojects, &QAbstractItemModel::modelReset, this,
            [this] { m_form->removeSubprojectButton->setEnabled(false); });
    connect(m_form->subprojectsTable->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        m_form->removeSubprojectButton->setEnabled(m_form->subprojectsTable->selectionModel()->hasSelection());
    });
}

// --- values ----------------------------------------------------------------------------------------

SidebarValues DetailsSidebar::sidebarValues() const
{
    SidebarForm *f = m_form;
    SidebarValues values;
    values.name = f->nameField->text();
    values.dateText = f->dateEditor->text();
    values.monthTitle = f->dateEditor->monthTitle();
    values.dayTitle = f->dateEditor->dayTitle();
    values.yearTitle = f->dateEditor->yearTitle();
    values.course = f->courseField->currentText();
    values.textbook = f->textbookField->currentText();
    values.completed = f->completedCheckbox->isChecked();
    values.type = f->typeField->currentText();
    values.grade = f->gradeField->text();
    // The slider moves in whole steps; a stored fraction stays until the slider is moved.
    values.priority = f->prioritySlider->value() == qRound(m_shown.priority) ? m_shown.priority
                                                                              : double(f->prioritySlider->value());
    values.notes = f->notesField->toPlainText();
    // The field keeps each token as it was given, so a record comes back exactly as stored.
    values.contactsText = f->contactsField->text();
    values.contacts = f->contactsField->tokens();
    values.file = f->filePicker->path();
    values.snapshot = f->snapshotButton->imageData();
    values.reminder = f->reminder();
    return values;
}

void DetailsSidebar::setChoices(QComboBox *box, const QStringList &choices, const QString &text)
{
    QStringList current;
    for (int i = 0; i < box->count(); ++i)
        current.append(box->itemText(i));
    if (current != choices) {
        box->clear();
        box->addItems(choices);
    }
    box->setCurrentIndex(box->findText(text));
    box->setEditText(text);
}

void DetailsSidebar::fillTypes(const QString &course)
{
    setChoices(m_form->typeField, CoursesStore().typesForCourse(course), m_form->typeField->currentText());
}

void DetailsSidebar::setSidebarValues(const SidebarValues &values)
{
    SidebarForm *f = m_form;
    m_filling = true;
    const QSignalBlocker blockSlider(f->prioritySlider);
    if (f->nameField->text() != values.name)
        f->nameField->setText(values.name);
    f->dateEditor->setText(values.dateText);
    f->dateEditor->setTitles(values.monthTitle, values.dayTitle, values.yearTitle);
    setChoices(f->courseField, m_controller->sidebarEditing().fill().courseChoices, values.course);
    setChoices(f->textbookField, CoursesStore().textbooksOfCourse(values.course), values.textbook);
    setChoices(f->typeField, CoursesStore().typesForCourse(values.course), values.type);
    f->completedCheckbox->setChecked(values.completed);
    if (f->gradeField->text() != values.grade)
        f->gradeField->setText(values.grade);
    f->prioritySlider->setValue(qRound(values.priority));
    if (f->notesField->toPlainText() != values.notes)
        f->notesField->setPlainText(values.notes);
    f->contactsField->setTokens(values.contacts);
    f->filePicker->setPath(values.file);
    f->showSnapshot(values.snapshot);
    f->showReminder(values.reminder);
    m_shown = values;
    m_shown.reminder = f->reminder();
    m_shown.contactsText = f->contactsField->text();
    m_filling = false;
}

// --- editing ---------------------------------------------------------------------------------------

void DetailsSidebar::snapshotImageWasTaken(const QImage &image)
{
    m_form->snapshotButton->setImage(image);
    edit(Sender::Other);
}

void DetailsSidebar::edit(Sender sender)
{
    if (m_filling || m_editing || page() != AssignmentPage)
        return;
    // Leaving a field that was not changed is no edit.
    if (sidebarValues() == m_shown)
        return;
    QPointer<QWidget> focused = QApplication::focusWidget();
    m_editing = true;
    m_controller->sidebarEditing().editAssignment(sender);
    m_editing = false;
    applyFill();
    // The list reselects the edited row; the field the user was in keeps the keyboard.
    if (focused && focused->isVisible() && focused != QApplication::focusWidget())
        focused->setFocus(Qt::OtherFocusReason);
}

void DetailsSidebar::commitPendingEdit()
{
    if (m_committing || m_filling || m_editing)
        return;
    m_committing = true;
    QTableView *table = m_form->subprojectsTable;
    QPointer<QWidget> editor = QApplication::focusWidget();
    if (editor && editor != table && table->isAncestorOf(editor)) {
        // An open cell: its editor is the viewport's child that holds the keyboard.
        while (editor->parentWidget() && editor->parentWidget() != table->viewport())
            editor = editor->parentWidget();
        if (QAbstractItemDelegate *delegate = table->itemDelegateForIndex(table->currentIndex())) {
            Q_EMIT delegate->commitData(editor);
            if (editor)
                Q_EMIT delegate->closeEditor(editor, QAbstractItemDelegate::NoHint);
        }
    }
    const QWidget *focus = QApplication::focusWidget();
    const bool inCourse = focus && (focus == m_form->courseField || m_form->courseField->isAncestorOf(focus));
    edit(inCourse ? Sender::CourseField : Sender::Other);
    m_committing = false;
}

QList<int> DetailsSidebar::selectedSubprojectRows() const
{
    QList<int> rows;
    for (const QModelIndex &index : m_form->subprojectsTable->selectionModel()->selectedRows())
        rows.append(index.row());
    std::sort(rows.begin(), rows.end());
    return rows;
}

void DetailsSidebar::deleteSelectedSubprojects(bool ask)
{
    const QList<int> rows = selectedSubprojectRows();
    if (!rows.isEmpty())
        m_controller->editing().deleteSubprojects(rows, ask);
}

bool DetailsSidebar::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_form->notesField && event->type() == QEvent::FocusOut)
        edit(Sender::Other);
    if (watched == m_form->subprojectsTable
        && (event->type() == QEvent::ShortcutOverride || event->type() == QEvent::KeyPress)) {
        // Del belongs to the table while it has the keyboard: it deletes subprojects, not the
        // list's selection through the window's Delete command.
        const auto *key = static_cast<QKeyEvent *>(event);
        if (key->key() == Qt::Key_Delete && key->modifiers() == Qt::NoModifier) {
            event->accept();
            if (event->type() == QEvent::KeyPress)
                deleteSelectedSubprojects(true);
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

// --- pages -----------------------------------------------------------------------------------------

DetailsSidebar::Page DetailsSidebar::page() const
{
    return Page(m_pages->currentIndex());
}

int DetailsSidebar::enabledTabCount() const
{
    int count = 0;
    for (int tab = 0; tab < m_form->tabs->count(); ++tab)
        count += m_form->tabs->isTabEnabled(tab) ? 1 : 0;
    return count;
}

void DetailsSidebar::showTab(int tab)
{
    if (page() == AssignmentPage && m_form->tabs->isTabEnabled(tab))
        m_form->tabs->setCurrentIndex(tab);
}

void DetailsSidebar::applyFill()
{
    if (m_editing)
        return;
    const SidebarEditing::Fill &fill = m_controller->sidebarEditing().fill();
    switch (fill.mode) {
    case SidebarEditing::Fill::Mode::NoSelection:
        m_pages->setCurrentIndex(NoSelectionPage);
        break;
    case SidebarEditing::Fill::Mode::Multiple:
        m_multipleLabel->setText(tr("%1 %2 selected")
                                     .arg(m_controller->selectedRows().size())
                                     .arg(Labels::plural(LabelKeys::Assignment).toLower()));
        m_pages->setCurrentIndex(MultiplePage);
        break;
    case SidebarEditing::Fill::Mode::Nothing:
        m_pages->setCurrentIndex(NothingPage);
        break;
    case SidebarEditing::Fill::Mode::Assignment: {
        m_pages->setCurrentIndex(AssignmentPage);
        QTabWidget *tabs = m_form->tabs;
        // Disabling the showing tab moves the tab widget to a neighbour on its own; Details is the
        // one to show.
        const bool onSubprojects = tabs->currentIndex() == SidebarForm::SubprojectsTab;
        tabs->setTabEnabled(SidebarForm::SubprojectsTab, fill.enabledTabs >= 3);
        if (onSubprojects && fill.enabledTabs < 3)
            tabs->setCurrentIndex(SidebarForm::DetailsTab);
        m_form->dateEditor->setFace(fill.dateFace);
        m_subprojects->reload();
        if (fill.subprojectRow >= 0)
            m_form->subprojectsTable->selectRow(fill.subprojectRow);
        break;
    }
    }
}

void DetailsSidebar::applyLabelsAndInformation()
{
    m_form->applyLabels();
    m_coursesBox->setTitle(Labels::plural(LabelKeys::Course) + QStringLiteral(" and ")
                           + Labels::plural(LabelKeys::Textbook));
    m_coursesList->setAccessibleName(m_coursesBox->title());

    // Each detail in lower case; an empty one shows its label instead.
    const QVariantMap info = UserDefaults().dictionary(PersonalInfo);
    const QStringList keys{PersonalInfoKeys::Name, PersonalInfoKeys::School, PersonalInfoKeys::StudentID};
    const QStringList labels{LabelKeys::Name, LabelKeys::School, LabelKeys::StudentID};
    for (int i = 0; i < keys.size(); ++i) {
        const QString value = info.value(keys[i]).toString();
        m_personalInfo[i]->setText(value.isEmpty() ? Labels::label(labels[i]).toLower() : value.toLower());
        m_personalInfo[i]->setAccessibleName(Labels::label(labels[i]));
    }

    fillCoursesBox();
}
