#include "store/ui/TextbookFormPage.h"

#include "store/Labels.h"
#include "store/PreferenceKeys.h"
#include "store/ui/Named.h"

#include <QComboBox>
#include <QEvent>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QVBoxLayout>

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
    connect(m_course, &QComboBox::activated, this, [this] { Q_EMIT editingEnded(false); });
    addNumberedFields(form, QStringLiteral("textbookField"), 5, m_fields, m_fieldCaptions);
    for (QLineEdit *field : std::as_const(m_fields))
        connect(field, &QLineEdit::editingFinished, this, [this] { Q_EMIT editingEnded(false); });
    layout->addLayout(form);

    m_notes = named(new QPlainTextEdit, QStringLiteral("textbookNotes"), NotesPlaceholder);
    m_notes->setPlaceholderText(NotesPlaceholder);
    m_notes->setTabChangesFocus(true);
    m_notes->installEventFilter(this);
    layout->addWidget(m_notes, 1);

    connect(m_name, &QLineEdit::editingFinished, this, [this] { Q_EMIT editingEnded(true); });
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
    if (watched == m_notes && event->type() == QEvent::FocusOut && m_notes->document()->isModified()) {
        m_notes->document()->setModified(false);
        Q_EMIT editingEnded(false);
    }
    return QWidget::eventFilter(watched, event);
}
