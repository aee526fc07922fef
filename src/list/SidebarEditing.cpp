#include "list/SidebarEditing.h"

#include "list/CalendarObserver.h"
#include "list/Controller.h"
#include "list/CoursesFile.h"
#include "list/DatePullDowns.h"
#include "list/ListLog.h"
#include "list/ListTexts.h"
#include "list/ToolbarState.h"
#include "platform/Clock.h"
#include "platform/DateText.h"
#include "platform/UserDefaults.h"
#include "reminders/ReminderRecords.h"
#include "store/GeneralSettings.h"
#include "store/PreferenceKeys.h"

using namespace AssignmentKeys;

SidebarEditing::SidebarEditing(Controller &controller)
    : m_controller(controller)
{
}

SidebarValues SidebarEditing::currentValues() const
{
    return m_controller.sidebar() ? m_controller.sidebar()->sidebarValues() : SidebarValues();
}

void SidebarEditing::show(const SidebarValues &values)
{
    if (m_controller.sidebar())
        m_controller.sidebar()->setSidebarValues(values);
}

QStringList SidebarEditing::updateTextbooksForCourse(const QString &course)
{
    const QStringList textbooks = CoursesFile::textbooksOf(CoursesFile::read(m_controller.coursesFilePath()), course);
    m_fill.textbookChoices = textbooks;
    Q_EMIT m_controller.textbookChoicesChanged(textbooks);
    return textbooks;
}

namespace {
// The record's keys that no sidebar field stands for.
QVariantMap keysTheSidebarDoesNotShow(const Assignment &record)
{
    static const QStringList shown{Name,    Date,     Course,    Textbook,   Type,        Grade,
                                   Priority, Completed, Notes,   Contacts,   File,        Snapshot,
                                   Project, Subproject, DateCreated, DateUpdated, ReminderRecords::OverrideKey};
    QVariantMap kept = record.fields();
    for (const QString &key : shown)
        kept.remove(key);
    return kept;
}
} // namespace

bool SidebarEditing::editAssignment(Sender sender)
{
    Controller &c = m_controller;
    const int row = c.singleSelectedRow();
    if (row < 0 || !c.sidebar())
        return false;
    const AssignmentRef target = c.actualSelectedObject();
    if (!target)
        return false;
    const AssignmentRef kept = Assignments::copy(c.displayAssignments()[row]);
    const AssignmentRef original = Assignments::copy(target);
    SidebarValues values = currentValues();

    // The sidebar rebuilds the record from what it shows; keys it does not show (a feed's or a
    // calendar server's identity, a later version's fields) are carried over untouched.
    QVariantMap fields = keysTheSidebarDoesNotShow(*target);
    for (const QString &key : {Project, Subproject, DateCreated})
        if (target->has(key))
            fields.insert(key, target->value(key));
    fields.insert(DateUpdated, DateText::nowStoredForm());

    // Only values that are not empty are stored: a field the user emptied loses its key.
    const auto putText = [&fields](const QString &key, const QString &text) {
        if (!text.isEmpty())
            fields.insert(key, text);
    };
    putText(Name, values.name);
    if (!values.dateText.isEmpty()) {
        const std::optional<QDateTime> due
            = DateText::parseNatural(values.dateText, GeneralSettings::storedDateFormat(), Clock::now());
        if (!due) {
            qCInfo(lcList) << "edit abandoned: no date in" << values.dateText;
            return false;
        }
        fields.insert(Date, DateText::toStoredForm(*due));
    }
    putText(Course, values.course);
    putText(Textbook, values.textbook);
    fields.insert(Completed, values.completed);
    putText(Type, values.type);
    putText(Grade, values.grade);
    fields.insert(Priority, values.priority);
    if (!values.contacts.isEmpty())
        fields.insert(Contacts, values.contacts);
    putText(File, values.file);
    if (!values.snapshot.isEmpty())
        fields.insert(Snapshot, values.snapshot);
    putText(Notes, values.notes);
    if (values.reminder.isValid())
        fields.insert(ReminderRecords::OverrideKey, values.reminder);

    if (sender == Sender::CourseField && m_originalCourseString && values.course != *m_originalCourseString) {
        m_fill.textbookChoices = updateTextbooksForCourse(values.course);
        values.textbook = QString("");
        fields.insert(Textbook, QString("")); // stored empty here, as the course change leaves it
        const QVariantList courses = CoursesFile::read(c.coursesFilePath());
        if (const std::optional<QString> textbook = CoursesFile::defaultTextbook(courses, values.course)) {
            values.textbook = *textbook;
            fields.insert(Textbook, *textbook);
        }
        m_originalCourseString.reset();
        show(values);
    }

    const AssignmentRef edited = Assignments::make(fields);
    if (edited->isProject()) {
        // Subprojects carry their project's course, textbook, type, grade, priority and notes, and
        // nothing else of their own but name, date and completion.
        const QString identifier = edited->string(Project);
        for (const AssignmentRef &subproject : c.subprojectsForProject(identifier)) {
            QVariantMap own = keysTheSidebarDoesNotShow(*subproject);
            own.insert({{Date, subproject->has(Date) ? subproject->value(Date) : QVariant(QString(""))},
                        {Name, subproject->has(Name) ? subproject->value(Name) : QVariant(QString(""))},
                        {Completed, subproject->isCompleted()},
                        {Subproject, identifier}});
            for (const auto &[key, text] : {std::pair{Course, values.course}, std::pair{Textbook, values.textbook},
                                            std::pair{Type, values.type}, std::pair{Grade, values.grade},
                                            std::pair{Notes, values.notes}})
                if (!text.isEmpty())
                    own.insert(key, text);
            own.insert(Priority, values.priority);
            subproject->setFields(own);
        }
    }

    // Saved at once; should the file have changed underneath, the edit goes to the reread record.
    if (!c.replaceRecord(target, *original, edited)) {
        qCWarning(lcList) << "edited record is no longer in the list";
        return false;
    }

    // The lists took the edit in where it sorts (or reloaded); a record this list added before it
    // was saved still needs the filter and the sort.
    const bool inPlace = c.lists().canUpdateRows();
    if (!inPlace)
        c.filterWithViews();
    c.clearSelection();
    Q_EMIT c.sidebarNoSelection();
    qsizetype reselect = c.displayAssignments().indexOf(edited);
    if (*kept != *original || reselect < 0) {
        // A subproject row stays selected (the edit went to its project), else the row showing the edit.
        if (const qsizetype equal = Assignments::indexOfEqual(c.displayAssignments(), *kept); equal >= 0)
            reselect = equal;
    }
    if (reselect >= 0)
        c.selectRowAlone(int(reselect));

    c.lists().updateCalendar();
    if (!inPlace)
        c.sortColumn();
    return true;
}

void SidebarEditing::dateToToday()
{
    if (!m_controller.sidebar())
        return;
    SidebarValues values = currentValues();
    // The field's formatter reads the word and shows the day it names.
    const std::optional<QDateTime> today
        = DateText::parseNatural(ListTexts::Today, GeneralSettings::storedDateFormat(), Clock::now());
    values.dateText = today ? DateText::format(*today, GeneralSettings::storedDateFormat()) : ListTexts::Today;
    show(values);
    editAssignment(Sender::Other);
}

void SidebarEditing::addDay(int days)
{
    if (!m_controller.sidebar())
        return;
    SidebarValues values = currentValues();
    if (values.dateText.isEmpty())
        return;
    const AssignmentRef target = m_controller.actualSelectedObject();
    if (!target)
        return;
    // The stored date, not the field's text, is where the count starts.
    const std::optional<QDateTime> due = target->dueDate();
    if (!due)
        return;
    const QDateTime moved = due->toLocalTime().addDays(days);
    values.dateText = DateText::format(moved, GeneralSettings::storedDateFormat());
    show(values);
    editAssignment(Sender::Other);
}

void SidebarEditing::changeDateWithPullDownBoxes(bool fromMonthMenu)
{
    if (!m_controller.sidebar())
        return;
    SidebarValues values = currentValues();
    if (fromMonthMenu)
        values.dayTitle = DatePullDowns::reselectDay(values.monthTitle, values.dayTitle);
    if (values.monthTitle.isEmpty() || values.dayTitle.isEmpty() || values.yearTitle.isEmpty()) {
        show(values);
        return;
    }
    values.dateText = DatePullDowns::fieldText(values.monthTitle, values.dayTitle, values.yearTitle);
    show(values);
    editAssignment(Sender::Other);
}

SidebarValues SidebarEditing::valuesFor(const Assignment &record) const
{
    SidebarValues values;
    values.name = record.string(Name);
    if (const std::optional<QDateTime> due = record.dueDate()) {
        const QDateTime local = due->toLocalTime();
        values.dateText = DateText::format(local, GeneralSettings::storedDateFormat());
        DatePullDowns::titlesFor(local, values.monthTitle, values.dayTitle, values.yearTitle);
    }
    values.course = record.string(Course);
    values.textbook = record.string(Textbook);
    values.completed = record.isCompleted();
    values.type = record.string(Type);
    values.grade = record.string(Grade);
    values.priority = record.has(Priority) ? record.value(Priority).toDouble() : 1.0;
    values.notes = record.string(Notes);
    values.contacts = record.value(Contacts).toList();
    values.contactsText = contactsText(values.contacts);
    values.file = record.string(File);
    values.snapshot = record.value(Snapshot).toByteArray();
    values.reminder = record.value(ReminderRecords::OverrideKey);
    return values;
}

namespace {
const QString ContactSeparator = QStringLiteral(", ");
// How the address book's records print a value they lack.
const QString AbsentValue = QStringLiteral("(null)");
const QString FirstName = QStringLiteral("firstName");
const QString LastName = QStringLiteral("lastName");
} // namespace

QString SidebarEditing::contactName(const QVariant &contact)
{
    if (contact.typeId() != QMetaType::QVariantMap)
        return contact.toString();
    const QVariantMap person = contact.toMap();
    const QString first = person.contains(FirstName) ? person.value(FirstName).toString() : AbsentValue;
    const QString last = person.contains(LastName) ? person.value(LastName).toString() : AbsentValue;
    // A person without a last name has "" there; the blank after the first name is not shown.
    return QStringLiteral("%1 %2").arg(first, last).trimmed();
}

QString SidebarEditing::contactsText(const QVariantList &contacts)
{
    QStringList names;
    names.reserve(contacts.size());
    for (const QVariant &contact : contacts)
        names.append(contactName(contact));
    return names.join(ContactSeparator);
}

void SidebarEditing::tableViewSelectionDidChange()
{
    Controller &c = m_controller;
    const QList<int> rows = c.selectedRows();
    Fill fill;
    if (rows.isEmpty()) {
        fill.mode = Fill::Mode::NoSelection;
        m_fill = fill;
        if (c.calendar()) {
            c.calendar()->clearSelection();
            if (!c.toolbar() || c.toolbar()->formatSegment() == 0)
                c.calendar()->updateCalendar();
        }
        return;
    }
    if (rows.size() > 1) {
        fill.mode = Fill::Mode::Multiple;
        m_fill = fill;
        if (c.calendar())
            c.calendar()->clearSelection();
        return;
    }

    const AssignmentRef selected = c.displayAssignments()[rows.first()];
    const AssignmentRef record = c.actualSelectedObject();
    if (!record) {
        // A subproject whose project is gone: the sidebar shows nothing for it.
        fill.mode = Fill::Mode::Nothing;
        m_fill = fill;
        return;
    }
    fill.mode = Fill::Mode::Assignment;
    if (c.calendar())
        c.calendar()->selectAssignment(record);
    fill.enabledTabs = record->isProject() ? 3 : 2;
    if (selected->isSubproject())
        fill.subprojectRow = int(c.subprojectsForProject(record->string(Project)).indexOf(selected));
    fill.dateFace = int(UserDefaults()
                            .groupValue(PreferenceKeys::General, PreferenceKeys::GeneralKeys::DateEntryFormat)
                            .toLongLong());
    const QVariantList courses = CoursesFile::read(c.coursesFilePath());
    fill.courseChoices = CoursesFile::courseNames(courses);
    fill.textbookChoices = CoursesFile::textbooksOf(courses, record->string(Course));
    fill.values = valuesFor(*record);
    m_fill = fill;
    // A record without a course leaves nothing to compare with, so typing a course into it brings in
    // no default textbook.
    m_originalCourseString = record->has(Course) ? std::optional<QString>(record->string(Course)) : std::nullopt;
    show(fill.values);
}
