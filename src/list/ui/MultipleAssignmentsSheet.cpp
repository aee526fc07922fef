#include "list/ui/MultipleAssignmentsSheet.h"

#include "list/CoursesFile.h"
#include "list/DatePullDowns.h"
#include "list/ListTexts.h"
#include "list/ui/DateEditor.h"
#include "platform/Clock.h"
#include "platform/DateText.h"
#include "platform/Paths.h"
#include "platform/UserDefaults.h"
#include "store/CoursesDocument.h"
#include "store/CoursesStore.h"
#include "store/GeneralSettings.h"
#include "store/Labels.h"
#include "store/PreferenceKeys.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStackedWidget>
#include <QVBoxLayout>

using namespace PreferenceKeys;

namespace {
const QString NameHint = QStringLiteral("Type %@ where the number of each assignment should go.");
const QStringList RepeatTitles{QStringLiteral("Weekly"), QStringLiteral("Monthly")};
const QStringList EndTitles{QStringLiteral("End after"), QStringLiteral("End on date")};
const QStringList WeekdayTitles{QStringLiteral("S"), QStringLiteral("M"), QStringLiteral("T"), QStringLiteral("W"),
                                QStringLiteral("T"), QStringLiteral("F"), QStringLiteral("S")};
const QStringList WeekdayNames{QStringLiteral("Sunday"),   QStringLiteral("Monday"), QStringLiteral("Tuesday"),
                               QStringLiteral("Wednesday"), QStringLiteral("Thursday"), QStringLiteral("Friday"),
                               QStringLiteral("Saturday")};
constexpr int LastDayOfMonth = 31;

QComboBox *comboBox(const QString &name)
{
    auto *box = new QComboBox;
    box->setObjectName(name);
    box->setEditable(true);
    box->setInsertPolicy(QComboBox::NoInsert);
    box->lineEdit()->setPlaceholderText(ListTexts::NoTextbook);
    return box;
}

void setChoices(QComboBox *box, const QStringList &choices)
{
    const QString text = box->currentText();
    box->clear();
    box->addItems(choices);
    box->setCurrentIndex(box->findText(text));
    box->setEditText(text);
}
} // namespace

MultipleAssignmentsSheet::MultipleAssignmentsSheet(QWidget *parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("multipleSheet"));
    setAccessibleName(SheetTitle);
    setWindowTitle(SheetTitle);
    setWindowModality(Qt::WindowModal);
    m_courses = CoursesDocument::open();
    const auto coursesChanged = [this] {
        updateCourses();
        updateTextbooks();
        updateTypes();
    };
    connect(m_courses.get(), &CoursesDocument::coursesChanged, this, coursesChanged);
    connect(m_courses.get(), &CoursesDocument::universalTypesChanged, this, coursesChanged);
    connect(m_courses.get(), &CoursesDocument::reset, this, coursesChanged);

    nameField = new QLineEdit;
    nameField->setObjectName(QStringLiteral("multipleNameField"));
    nameField->setAccessibleName(tr("Name"));
    nameField->setToolTip(NameHint);
    courseField = comboBox(QStringLiteral("multipleCourseField"));
    textbookField = comboBox(QStringLiteral("multipleTextbookField"));
    typeField = comboBox(QStringLiteral("multipleTypeField"));
    completedField = new QCheckBox;
    completedField->setObjectName(QStringLiteral("multipleCompletedField"));
    gradeField = new QLineEdit;
    gradeField->setObjectName(QStringLiteral("multipleGradeField"));
    notesField = new QPlainTextEdit;
    notesField->setObjectName(QStringLiteral("multipleNotesField"));
    notesField->setAccessibleName(tr("Notes"));
    notesField->setPlaceholderText(QStringLiteral("notes"));
    notesField->setTabChangesFocus(true);
    notesField->setFixedHeight(60);
    labelsCourseField = new QLabel;
    labelsTextbookField = new QLabel;
    labelsTypeField = new QLabel;
    labelsGradeField = new QLabel;
    const std::pair<QLabel *, QString> labels[] = {{labelsCourseField, LabelKeys::Course},
                                                   {labelsTextbookField, LabelKeys::Textbook},
                                                   {labelsTypeField, LabelKeys::Type},
                                                   {labelsGradeField, LabelKeys::Grade}};
    for (const auto &[label, key] : labels)
        label->setText(Labels::label(key) + QLatin1Char(':'));
    for (const auto &[field, key] : {std::pair{courseField, LabelKeys::Course}, std::pair{textbookField, LabelKeys::Textbook},
                                     std::pair{typeField, LabelKeys::Type}}) {
        field->setAccessibleName(Labels::label(key));
        field->lineEdit()->setAccessibleName(Labels::label(key));
    }
    gradeField->setAccessibleName(Labels::label(LabelKeys::Grade));
    completedField->setAccessibleName(Labels::label(LabelKeys::Completed));

    auto *fields = new QFormLayout;
    fields->addRow(tr("Name:"), nameField);
    fields->addRow(labelsCourseField, courseField);
    fields->addRow(labelsTextbookField, textbookField);
    fields->addRow(labelsTypeField, typeField);
    fields->addRow(labelsGradeField, gradeField);
    for (auto [caption, field] : {std::pair<QLabel *, QWidget *>{labelsCourseField, courseField},
                                  {labelsTextbookField, textbookField}, {labelsTypeField, typeField},
                                  {labelsGradeField, gradeField}})
        caption->setBuddy(field);
    fields->addRow(Labels::label(LabelKeys::Completed) + QLatin1Char(':'), completedField);
    fields->addRow(tr("Notes:"), notesField);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    QPushButton *add = buttons->addButton(tr("Add"), QDialogButtonBox::AcceptRole);
    add->setObjectName(QStringLiteral("multipleAddButton"));
    add->setDefault(true);
    buttons->button(QDialogButtonBox::Cancel)->setObjectName(QStringLiteral("multipleCancelButton"));
    connect(buttons, &QDialogButtonBox::accepted, this, &MultipleAssignmentsSheet::addMultipleAssignments);
    connect(buttons, &QDialogButtonBox::rejected, this, &MultipleAssignmentsSheet::hideMultiplePanel);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(fields);
    layout->addWidget(buildRepeat());
    QWidget *end = buildEnd();
    layout->addWidget(end);
    layout->addWidget(buttons);
    // The buttons were made before the repeat and end controls, so Tab would come to them out of
    // turn (and pass one by): the end settings lead to the buttons, in the order the desktop's
    // button layout shows them.
    QWidget *previous = end;
    for (int i = 0; i < buttons->layout()->count(); ++i) {
        if (auto *button = qobject_cast<QPushButton *>(buttons->layout()->itemAt(i)->widget())) {
            setTabOrder(previous, button);
            previous = button;
        }
    }

    connect(courseField, &QComboBox::activated, this, &MultipleAssignmentsSheet::changedCourse);
    connect(courseField->lineEdit(), &QLineEdit::editingFinished, this, &MultipleAssignmentsSheet::changedCourse);
}

QWidget *MultipleAssignmentsSheet::buildRepeat()
{
    auto *box = new QGroupBox(tr("Repeat"));
    box->setObjectName(QStringLiteral("multipleRepeatBox"));
    repeatPopUp = new QComboBox;
    repeatPopUp->setObjectName(QStringLiteral("repeatPopUp"));
    repeatPopUp->setAccessibleName(tr("Repeat"));
    repeatPopUp->addItems(RepeatTitles);
    startingDate = new DateEditor(tr("Starting date"), QStringLiteral("startingDate"));

    auto *weekly = new QWidget;
    auto *weeklyLayout = new QGridLayout(weekly);
    numberOfWeeks = new QLineEdit(QStringLiteral("1"));
    numberOfWeeks->setObjectName(QStringLiteral("numberOfWeeks"));
    numberOfWeeks->setAccessibleName(tr("Week interval"));
    numberOfWeeks->setMaximumWidth(50);
    weeklyLayout->addWidget(new QLabel(tr("Every")), 0, 0);
    weeklyLayout->addWidget(numberOfWeeks, 0, 1);
    weeklyLayout->addWidget(new QLabel(tr("week(s) on")), 0, 2);
    auto *days = new QHBoxLayout;
    for (int day = 0; day < 7; ++day) {
        auto *check = new QCheckBox(WeekdayTitles[day]);
        check->setObjectName(QStringLiteral("weekMatrix%1").arg(day));
        check->setAccessibleName(WeekdayNames[day]);
        weekMatrix.append(check);
        days->addWidget(check);
    }
    weeklyLayout->addLayout(days, 1, 0, 1, 4);

    auto *monthly = new QWidget;
    auto *grid = new QGridLayout(monthly);
    grid->setSpacing(2);
    grid->addWidget(new QLabel(tr("On these days of the month:")), 0, 0, 1, RecurringSeries::GridColumns);
    for (int row = 0; row < RecurringSeries::GridRows; ++row) {
        QList<QCheckBox *> cells;
        for (int column = 0; column < RecurringSeries::GridColumns; ++column) {
            const int day = row * 7 + column + 1;
            if (day > LastDayOfMonth) {
                cells.append(nullptr);
                continue;
            }
            auto *check = new QCheckBox(QString::number(day));
            check->setObjectName(QStringLiteral("calendarMatrix_%1_%2").arg(row).arg(column));
            check->setAccessibleName(tr("Day %1").arg(day));
            // The seventh column's days are never generated; the box is kept, as the grid has it.
            cells.append(check);
            grid->addWidget(check, row + 1, column);
        }
        calendarMatrix.append(cells);
    }

    m_repeatPages = new QStackedWidget;
    m_repeatPages->addWidget(weekly);
    m_repeatPages->addWidget(monthly);
    connect(repeatPopUp, &QComboBox::currentIndexChanged, m_repeatPages, &QStackedWidget::setCurrentIndex);
    m_repeatPages->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);

    auto *form = new QFormLayout(box);
    form->addRow(tr("Repeat:"), repeatPopUp);
    form->addRow(tr("Starting:"), startingDate);
    form->addRow(m_repeatPages);
    connect(startingDate, &DateEditor::todayClicked, this, [this] { setDateToToday(startingDate); });
    connect(startingDate, &DateEditor::stepped, this, [this](int d) { dateIncreaseOrDecrease(startingDate, d); });
    connect(startingDate, &DateEditor::pullDownChanged, this,
            [this](bool month) { changeDateWithPullDownBoxes(startingDate, month); });
    return box;
}

QWidget *MultipleAssignmentsSheet::buildEnd()
{
    auto *box = new QGroupBox(tr("End"));
    box->setObjectName(QStringLiteral("multipleEndBox"));
    endPopUp = new QComboBox;
    endPopUp->setObjectName(QStringLiteral("endPopUp"));
    endPopUp->setAccessibleName(tr("End"));
    endPopUp->addItems(EndTitles);
    numberOfOccurances = new QLineEdit;
    numberOfOccurances->setObjectName(QStringLiteral("numberOfOccurances"));
    numberOfOccurances->setAccessibleName(tr("Number of occurrences"));
    endingDate = new DateEditor(tr("Ending date"), QStringLiteral("endingDate"));

    auto *count = new QWidget;
    auto *countLayout = new QHBoxLayout(count);
    countLayout->setContentsMargins(0, 0, 0, 0);
    countLayout->addWidget(numberOfOccurances);
    countLayout->addWidget(new QLabel(tr("occurrences")));
    m_endPages = new QStackedWidget;
    m_endPages->addWidget(count);
    m_endPages->addWidget(endingDate);
    connect(endPopUp, &QComboBox::currentIndexChanged, m_endPages, &QStackedWidget::setCurrentIndex);
    connect(endingDate, &DateEditor::todayClicked, this, [this] { setDateToToday(endingDate); });
    connect(endingDate, &DateEditor::stepped, this, [this](int d) { dateIncreaseOrDecrease(endingDate, d); });
    connect(endingDate, &DateEditor::pullDownChanged, this,
            [this](bool month) { changeDateWithPullDownBoxes(endingDate, month); });

    auto *layout = new QHBoxLayout(box);
    layout->addWidget(endPopUp);
    layout->addWidget(m_endPages, 1);
    return box;
}

void MultipleAssignmentsSheet::showMultiplePanel()
{
    const int face = int(UserDefaults().groupValue(General, GeneralKeys::DateEntryFormat).toLongLong());
    startingDate->setFace(face);
    endingDate->setFace(face);
    updateCourses();
    updateTextbooks();
    updateTypes();
    open();
    nameField->setFocus(Qt::OtherFocusReason);
}

void MultipleAssignmentsSheet::hideMultiplePanel()
{
    reject();
}

void MultipleAssignmentsSheet::updateCourses()
{
    setChoices(courseField, CoursesStore().getCoursesArray());
}

void MultipleAssignmentsSheet::updateTextbooks()
{
    setChoices(textbookField, CoursesStore().textbooksOfCourse(courseField->currentText()));
}

void MultipleAssignmentsSheet::updateTypes()
{
    setChoices(typeField, CoursesStore().typesForCourse(courseField->currentText()));
}

void MultipleAssignmentsSheet::changedCourse()
{
    const QString course = courseField->currentText();
    if (course == m_originalCourseString)
        return;
    m_originalCourseString = course;
    textbookField->setEditText(QString());
    updateTextbooks();
    updateTypes();
    if (const std::optional<QString> textbook = CoursesFile::defaultTextbook(CoursesStore().getCombined(), course))
        textbookField->setEditText(*textbook);
}

QString MultipleAssignmentsSheet::dateText(const DateEditor *editor)
{
    if (editor->face() == DateEditor::PullDownFace) {
        if (editor->monthTitle().isEmpty() || editor->dayTitle().isEmpty() || editor->yearTitle().isEmpty())
            return QString();
        return DatePullDowns::fieldText(editor->monthTitle(), editor->dayTitle(), editor->yearTitle());
    }
    return editor->text();
}

void MultipleAssignmentsSheet::setDateToToday(DateEditor *editor)
{
    const QDateTime today = Clock::now().toLocalTime();
    editor->setText(DateText::format(today, GeneralSettings::storedDateFormat()));
    QString month, day, year;
    DatePullDowns::titlesFor(today, month, day, year);
    editor->setTitles(month, day, year);
}

void MultipleAssignmentsSheet::dateIncreaseOrDecrease(DateEditor *editor, int days)
{
    const std::optional<QDateTime> date
        = DateText::parseNatural(editor->text(), GeneralSettings::storedDateFormat(), Clock::now());
    if (!date)
        return;
    const QDateTime moved = date->toLocalTime().addDays(days);
    editor->setText(DateText::format(moved, GeneralSettings::storedDateFormat()));
    QString month, day, year;
    DatePullDowns::titlesFor(moved, month, day, year);
    editor->setTitles(month, day, year);
}

void MultipleAssignmentsSheet::changeDateWithPullDownBoxes(DateEditor *editor, bool month)
{
    QString day = editor->dayTitle();
    if (month)
        day = DatePullDowns::reselectDay(editor->monthTitle(), day);
    editor->setTitles(editor->monthTitle(), day, editor->yearTitle());
    if (!editor->monthTitle().isEmpty() && !day.isEmpty() && !editor->yearTitle().isEmpty())
        editor->setText(DatePullDowns::fieldText(editor->monthTitle(), day, editor->yearTitle()));
}

RecurringSeries::Entries MultipleAssignmentsSheet::entries() const
{
    RecurringSeries::Entries entries;
    entries.name = nameField->text();
    entries.course = courseField->currentText();
    entries.textbook = textbookField->currentText();
    entries.completed = completedField->isChecked();
    entries.type = typeField->currentText();
    entries.grade = gradeField->text();
    entries.notes = notesField->toPlainText();
    entries.repeat = RecurringSeries::Repeat(repeatPopUp->currentIndex());
    entries.end = RecurringSeries::End(endPopUp->currentIndex());
    entries.startingDate = dateText(startingDate);
    for (int day = 0; day < 7; ++day)
        entries.weekdays[day] = weekMatrix[day]->isChecked();
    entries.weekInterval = numberOfWeeks->text();
    for (int row = 0; row < RecurringSeries::GridRows; ++row)
        for (int column = 0; column < RecurringSeries::GridColumns; ++column)
            entries.dayGrid[row][column] = calendarMatrix[row][column] && calendarMatrix[row][column]->isChecked();
    entries.occurrences = numberOfOccurances->text();
    entries.endingDate = dateText(endingDate);
    return entries;
}

bool MultipleAssignmentsSheet::addMultipleAssignments()
{
    if (!RecurringSeries::addMultipleAssignments(entries()))
        return false;
    accept();
    return true;
}
