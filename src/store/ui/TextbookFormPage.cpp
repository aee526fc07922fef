#include "store/ui/TextbookFormPage.h"

#include "store/Labels.h"
#include "store/PreferenceKeys.h"
#include "store/ui/Named.h"
#include "widgets/BVTableView.h"
#include "widgets/FieldUndo.h"

#include <QComboBox>
#include <QEvent>
#include <QFocusEvent>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QVBoxLayout>

#include <algorithm>

namespace {
const QString NamePlaceholder = QStringLiteral("name");
const QString NotesPlaceholder = QStringLiteral("notes");

QString textbookFieldKey(int number)
{
    return QStringLiteral("TextbookField%1").arg(number);
}
} // namespace

TextbookFormPage::TextbookFormPage(QWidget *parent)
    : QWidget(parent)
{
    named(this, QStringLiteral("textbookForm"), Labels::label(PreferenceKeys::LabelKeys::Textbook));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(12, 12, 12, 12);

    m_name = titleField(QStringLiteral("textbookName"), NamePlaceholder);
    layout->addWidget(m_name);

    auto *form = new QFormLayout;
    form->setLabelAlignment(Qt::AlignRight);
    // The course is chosen from the existing courses: a textbook under a course that does not
    // exist could not be shown, and regrouping would drop it.
    m_course = named(new QComboBox, QStringLiteral("textbookCourse"), QString());
    m_courseCaption = new QLabel;
    m_courseCaption->setObjectName(QStringLiteral("textbookCourseCaption"));
    m_courseCaption->setBuddy(m_course);
    form->addRow(m_courseCaption, m_course);
    connect(m_course, &QComboBox::activated, this, &TextbookFormPage::endEditing);
    addNumberedFields(form, QStringLiteral("textbookField"), 5, m_fields, m_fieldCaptions);
    layout->addLayout(form);

    auto *notes = named(new BVTableView, QStringLiteral("textbookNotes"), NotesPlaceholder);
    notes->setPlaceholderString(NotesPlaceholder);
    m_notes = notes;
    m_notes->setTabChangesFocus(true);
    m_notes->installEventFilter(this);
    layout->addWidget(m_notes, 1);

    // Typing is handed on when a field ends editing, and as soon as the keyboard is about to leave
    // it, before another window becomes active and rereads the files.
    QList<QLineEdit *> texts = m_fields;
    texts << m_name;
    for (QLineEdit *field : std::as_const(texts)) {
        connect(field, &QLineEdit::editingFinished, this, [this] {
            if (hasPendingTyping())
                endEditing();
        });
        field->installEventFilter(this);
    }
    updateLabels();
}

void TextbookFormPage::updateLabels()
{
    const QString course = Labels::label(PreferenceKeys::LabelKeys::Course).toLower();
    m_courseCaption->setText(course);
    m_course->setAccessibleName(course);
    for (int i = 0; i < 5; ++i) {
        const QString caption = Labels::label(textbookFieldKey(i + 1)).toLower();
        m_fieldCaptions[i]->setText(caption);
        m_fields[i]->setAccessibleName(caption);
    }
    m_name->setAccessibleName(Labels::label(PreferenceKeys::LabelKeys::Textbook) + QLatin1Char(' ') + NamePlaceholder);
}

void TextbookFormPage::fill(const QVariantMap &record, const QStringList &courses)
{
    m_name->setText(record.value(CourseKeys::Name).toString());
    const QString course = record.value(CourseKeys::Course).toString();
    m_course->clear();
    m_course->addItems(courses);
    m_course->setCurrentIndex(std::max(0, m_course->findText(course, Qt::MatchExactly)));
    for (int i = 0; i < 5; ++i)
        m_fields[i]->setText(record.value(CourseKeys::field(i + 1)).toString());
    m_notes->setPlainText(record.value(CourseKeys::Notes).toString());
    m_notes->document()->setModified(false);
}

bool TextbookFormPage::hasPendingTyping() const
{
    if (m_name->isModified() || m_notes->document()->isModified())
        return true;
    return std::any_of(m_fields.cbegin(), m_fields.cend(), [](const QLineEdit *field) { return field->isModified(); });
}

void TextbookFormPage::endEditing()
{
    const bool renamed = m_name->isModified();
    m_name->setModified(false);
    for (QLineEdit *field : std::as_const(m_fields))
        field->setModified(false);
    m_notes->document()->setModified(false);
    // What was typed is now a step of the courses' history.
    FieldUndo::forgetTyping(this);
    Q_EMIT editingEnded(renamed);
}

void TextbookFormPage::commitPendingEdit()
{
    if (hasPendingTyping())
        endEditing();
}

CoursesStore::TextbookForm TextbookFormPage::form() const
{
    CoursesStore::TextbookForm form;
    form.name = m_name->text();
    form.course = m_course->currentText();
    for (int i = 0; i < 5; ++i)
        form.fields[i] = m_fields[i]->text();
    form.notes = m_notes->toPlainText();
    return form;
}

bool TextbookFormPage::eventFilter(QObject *watched, QEvent *event)
{
    const bool leaving = event->type() == QEvent::FocusOut
        || (event->type() == QEvent::FocusAboutToChange
            && static_cast<QFocusEvent *>(event)->reason() != Qt::PopupFocusReason);
    if (leaving && watched->isWidgetType() && isAncestorOf(static_cast<QWidget *>(watched)) && hasPendingTyping())
        endEditing();
    return QWidget::eventFilter(watched, event);
}
