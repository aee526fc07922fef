#include "store/ui/CourseFormPage.h"

#include "contacts/ui/ContactTokenField.h"
#include "store/Labels.h"
#include "store/PreferenceKeys.h"
#include "store/ui/DragRows.h"
#include "store/ui/ListEditing.h"
#include "store/ui/Named.h"
#include "store/ui/TypesListModel.h"
#include "widgets/BVTableView.h"
#include "widgets/FieldUndo.h"
#include "widgets/Icons.h"

#include <QComboBox>
#include <QEvent>
#include <QFocusEvent>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPlainTextEdit>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>

namespace {
const QString NamePlaceholder = QStringLiteral("name");
const QString NotesPlaceholder = QStringLiteral("notes");
const QString ContactsPlaceholder = QStringLiteral("none");
const QString ContactsCaption = QStringLiteral("contacts");
const QString DefaultCaptionPrefix = QStringLiteral("default ");
const QString AddTypeTitle = QStringLiteral("Add Type");
const QString RemoveTypeTitle = QStringLiteral("Remove Type");

QString courseFieldKey(int number)
{
    return QStringLiteral("CourseField%1").arg(number);
}
} // namespace

CourseFormPage::CourseFormPage(QWidget *parent)
    : QWidget(parent)
{
    named(this, QStringLiteral("courseForm"), Labels::label(PreferenceKeys::LabelKeys::Course));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(12, 12, 12, 12);

    m_name = titleField(QStringLiteral("courseName"), NamePlaceholder);
    layout->addWidget(m_name);

    auto *form = new QFormLayout;
    form->setLabelAlignment(Qt::AlignRight);
    addNumberedFields(form, QStringLiteral("courseField"), 6, m_fields, m_fieldCaptions);
    m_defaultTextbook = named(new QComboBox, QStringLiteral("courseDefaultTextbook"), QString());
    m_defaultTextbookCaption = new QLabel;
    m_defaultTextbookCaption->setObjectName(QStringLiteral("courseDefaultTextbookCaption"));
    m_defaultTextbookCaption->setBuddy(m_defaultTextbook);
    form->addRow(m_defaultTextbookCaption, m_defaultTextbook);
    connect(m_defaultTextbook, &QComboBox::activated, this, &CourseFormPage::endEditing);

    m_contacts = named(new ContactTokenField, QStringLiteral("addressBookField"), ContactsCaption);
    m_contacts->lineEdit()->setAccessibleName(ContactsCaption);
    m_contacts->setPlaceholderText(ContactsPlaceholder);
    auto *contactsCaption = new QLabel(ContactsCaption);
    contactsCaption->setObjectName(QStringLiteral("addressBookFieldCaption"));
    contactsCaption->setBuddy(m_contacts);
    form->addRow(contactsCaption, m_contacts);
    layout->addLayout(form);

    auto *notes = named(new BVTableView, QStringLiteral("courseNotes"), NotesPlaceholder);
    notes->setPlaceholderString(NotesPlaceholder);
    m_notes = notes;
    m_notes->setTabChangesFocus(true);
    m_notes->setMinimumHeight(60);
    m_notes->installEventFilter(this);
    layout->addWidget(m_notes, 1);

    m_typesCaption = new QLabel;
    m_typesCaption->setObjectName(QStringLiteral("courseTypesCaption"));
    layout->addWidget(m_typesCaption);
    m_types = new TypesListModel(DragRows::CourseTypesDragType, this);
    m_typesTable = named(new QListView, QStringLiteral("courseTypesTable"), QString());
    m_typesTable->setModel(m_types);
    m_typesTable->setDragDropMode(QAbstractItemView::InternalMove);
    m_typesTable->setDefaultDropAction(Qt::MoveAction);
    m_typesTable->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed);
    m_typesTable->setMinimumHeight(70);
    m_typesCaption->setBuddy(m_typesTable);
    layout->addWidget(m_typesTable, 1);

    auto *buttons = new QHBoxLayout;
    buttons->setSpacing(0);
    m_addType = named(new QToolButton, QStringLiteral("addCourseType"), AddTypeTitle);
    m_addType->setIcon(Icons::themed(QStringLiteral("list-add"), QStringLiteral("courses-plus")));
    m_addType->setToolTip(AddTypeTitle);
    m_removeType = named(new QToolButton, QStringLiteral("removeCourseType"), RemoveTypeTitle);
    m_removeType->setIcon(Icons::themed(QStringLiteral("list-remove"), QStringLiteral("courses-minus")));
    m_removeType->setToolTip(RemoveTypeTitle);
    m_removeType->setEnabled(false);
    buttons->addWidget(m_addType);
    buttons->addWidget(m_removeType);
    buttons->addStretch();
    layout->addLayout(buttons);

    // Every text field hands its typing on when it ends editing, and also as soon as the keyboard is
    // about to leave it: that is before another window becomes active and rereads the files.
    QList<QLineEdit *> texts = m_fields;
    texts << m_name;
    for (QLineEdit *field : std::as_const(texts)) {
        connect(field, &QLineEdit::editingFinished, this, [this] {
            if (hasPendingTyping())
                endEditing();
        });
        field->installEventFilter(this);
    }
    connect(m_contacts, &ContactTokenField::editingFinished, this, [this] {
        if (hasPendingTyping())
            endEditing();
    });
    m_contacts->lineEdit()->installEventFilter(this);
    ListEditing::onDeleteKey(m_typesTable, this, &CourseFormPage::removeType);
    connect(m_addType, &QToolButton::clicked, this, &CourseFormPage::addType);
    connect(m_removeType, &QToolButton::clicked, this, &CourseFormPage::removeType);
    connect(m_types, &TypesListModel::typesEdited, this, &CourseFormPage::endEditing);
    connect(m_types, &TypesListModel::typeMoved, this,
            [this](int row) { m_typesTable->setCurrentIndex(m_types->index(row)); });
    connect(m_typesTable->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this] { m_removeType->setEnabled(m_typesTable->selectionModel()->hasSelection()); });
    connect(m_types, &QAbstractItemModel::modelReset, this, [this] { m_removeType->setEnabled(false); });
    updateLabels();
}

void CourseFormPage::updateLabels()
{
    for (int i = 0; i < 6; ++i) {
        const QString caption = Labels::label(courseFieldKey(i + 1)).toLower();
        m_fieldCaptions[i]->setText(caption);
        m_fields[i]->setAccessibleName(caption);
    }
    const QString textbook = DefaultCaptionPrefix + Labels::label(PreferenceKeys::LabelKeys::Textbook).toLower();
    m_defaultTextbookCaption->setText(textbook);
    m_defaultTextbook->setAccessibleName(textbook);
    const QString types = Labels::label(PreferenceKeys::LabelKeys::Type).toLower() + QLatin1Char('s');
    m_typesCaption->setText(types);
    m_typesTable->setAccessibleName(types);
    m_name->setAccessibleName(Labels::label(PreferenceKeys::LabelKeys::Course) + QLatin1Char(' ') + NamePlaceholder);
}

void CourseFormPage::fill(const QVariantMap &record, const QStringList &textbooks)
{
    m_name->setText(record.value(CourseKeys::Name).toString());
    for (int i = 0; i < 6; ++i)
        m_fields[i]->setText(record.value(CourseKeys::field(i + 1)).toString());
    m_contacts->setTokens(record.value(CourseKeys::Contacts).toList());
    m_notes->setPlainText(record.value(CourseKeys::Notes).toString());
    m_notes->document()->setModified(false);
    m_types->setTypes(record.value(CourseKeys::Types).toStringList());
    setTextbookChoices(textbooks, record.value(CourseKeys::DefaultTextbook).toString());
}

bool CourseFormPage::hasPendingTyping() const
{
    if (m_name->isModified() || m_contacts->isModified() || m_notes->document()->isModified())
        return true;
    return std::any_of(m_fields.cbegin(), m_fields.cend(), [](const QLineEdit *field) { return field->isModified(); });
}

void CourseFormPage::endEditing()
{
    // A rename is any change of the name since the last save, whichever control ends the edit:
    // saved as a plain edit it would leave the assignments and textbooks on the old name.
    const bool renamed = m_name->isModified();
    m_name->setModified(false);
    m_contacts->setModified(false);
    for (QLineEdit *field : std::as_const(m_fields))
        field->setModified(false);
    m_notes->document()->setModified(false);
    // What was typed is now a step of the courses' history.
    FieldUndo::forgetTyping(this);
    Q_EMIT editingEnded(renamed);
}

void CourseFormPage::commitPendingEdit()
{
    ListEditing::commitOpenEditor(m_typesTable);
    if (hasPendingTyping())
        endEditing();
}

void CourseFormPage::setTextbookChoices(const QStringList &textbooks, const QString &selected)
{
    m_defaultTextbook->clear();
    m_defaultTextbook->addItem(CourseKeys::NoTextbook);
    m_defaultTextbook->addItems(textbooks);
    const int index = selected.isEmpty() ? 0 : m_defaultTextbook->findText(selected, Qt::MatchExactly);
    m_defaultTextbook->setCurrentIndex(index > 0 ? index : 0);
}

CoursesStore::CourseForm CourseFormPage::form() const
{
    CoursesStore::CourseForm form;
    form.name = m_name->text();
    for (int i = 0; i < 6; ++i)
        form.fields[i] = m_fields[i]->text();
    // Each token as it was given: a stored record is never rebuilt from its shown name.
    form.contacts = m_contacts->tokens();
    form.defaultTextbook = m_defaultTextbook->currentIndex() > 0 ? m_defaultTextbook->currentText() : QString();
    form.notes = m_notes->toPlainText();
    form.types = m_types->types();
    return form;
}

void CourseFormPage::addType()
{
    ListEditing::commitOpenEditor(m_typesTable);
    const int row = m_types->addType();
    const QModelIndex index = m_types->index(row);
    m_typesTable->setCurrentIndex(index);
    m_typesTable->edit(index);
}

void CourseFormPage::removeType()
{
    ListEditing::commitOpenEditor(m_typesTable);
    const QModelIndex current = m_typesTable->currentIndex();
    if (current.isValid() && m_typesTable->selectionModel()->isSelected(current))
        m_types->removeType(current.row());
}

bool CourseFormPage::eventFilter(QObject *watched, QEvent *event)
{
    const bool leaving = event->type() == QEvent::FocusOut
        || (event->type() == QEvent::FocusAboutToChange
            && static_cast<QFocusEvent *>(event)->reason() != Qt::PopupFocusReason);
    if (leaving && watched->isWidgetType() && isAncestorOf(static_cast<QWidget *>(watched)) && hasPendingTyping())
        endEditing();
    return QWidget::eventFilter(watched, event);
}
