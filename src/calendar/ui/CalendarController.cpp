#include "calendar/ui/CalendarController.h"

#include "calendar/CalendarLog.h"
#include "calendar/CalendarTexts.h"
#include "calendar/DueDateMove.h"
#include "calendar/ui/BVCalendarDayCell.h"
#include "calendar/ui/BVCalendarView.h"
#include "calendar/ui/CalendarDisplayCell.h"
#include "list/CellPresentation.h"
#include "list/Controller.h"
#include "list/Editing.h"
#include "platform/PreferencesNotifier.h"
#include "platform/UserDefaults.h"
#include "store/PreferenceKeys.h"

namespace {
CalendarController *g_shared = nullptr;

bool generalSwitch(const QString &key)
{
    return UserDefaults().groupValue(PreferenceKeys::General, key).toBool();
}
} // namespace

CalendarController *CalendarController::sharedController()
{
    if (!g_shared)
        g_shared = new CalendarController;
    return g_shared;
}

CalendarController::CalendarController(QObject *parent)
    : QObject(parent)
    , m_monthlyCalendar(new BVCalendarView)
    , m_weeklyCalendar(new BVCalendarView)
{
    m_monthlyCalendar->setObjectName(QStringLiteral("monthlyCalendar"));
    m_weeklyCalendar->setObjectName(QStringLiteral("weeklyCalendar"));
    m_monthlyCalendar->setDelegate(this);
    m_weeklyCalendar->setDelegate(this);
    m_weeklyCalendar->setWeeklyView();
    m_activeCalendar = m_monthlyCalendar;
    connect(UserDefaults::notifier(), &PreferencesNotifier::changed, this, &CalendarController::preferenceChanged);
}

CalendarController::~CalendarController()
{
    if (m_controller && m_controller->calendar() == this)
        m_controller->setCalendar(nullptr);
    for (BVCalendarView *view : {m_monthlyCalendar.data(), m_weeklyCalendar.data()}) {
        if (!view)
            continue;
        view->setDelegate(nullptr);
        if (!view->parent())
            delete view;
    }
    if (g_shared == this)
        g_shared = nullptr;
}

QString CalendarController::activeCalendar() const
{
    return m_activeCalendar == m_weeklyCalendar ? CalendarTexts::Weekly : CalendarTexts::Monthly;
}

void CalendarController::setController(Controller *controller)
{
    if (m_controller && m_controller->calendar() == this)
        m_controller->setCalendar(nullptr);
    disconnect(m_controllerGone);
    m_controller = controller;
    if (m_controller) {
        m_controller->setCalendar(this);
        m_controllerGone = connect(m_controller, &QObject::destroyed, this, [this] { m_controller = nullptr; });
    }
}

void CalendarController::setActiveCalendar(const QString &name)
{
    BVCalendarView *from = nullptr;
    if (name == CalendarTexts::Weekly) {
        from = m_monthlyCalendar;
        m_activeCalendar = m_weeklyCalendar;
    } else if (name == CalendarTexts::Monthly) {
        from = m_weeklyCalendar;
        m_activeCalendar = m_monthlyCalendar;
    } else {
        return;
    }
    if (from && m_activeCalendar)
        m_activeCalendar->setFocusDate(from->focusDate());
}

void CalendarController::deselectAllAndDeselectListView(bool deselectListView)
{
    if (m_activeCalendar) {
        const bool wasApplying = m_applyingListSelection;
        m_applyingListSelection = true;
        m_activeCalendar->deselectAll();
        m_applyingListSelection = wasApplying;
    }
    if (deselectListView && m_controller) {
        const bool wasApplying = m_applyingCalendarSelection;
        m_applyingCalendarSelection = true;
        m_controller->clearSelection();
        m_applyingCalendarSelection = wasApplying;
    }
}

// --- what the list asks --------------------------------------------------------------------------

void CalendarController::updateCalendar()
{
    BVCalendarView *view = m_activeCalendar;
    if (!view)
        return;
    const bool hide = generalSwitch(PreferenceKeys::GeneralKeys::HideWeekends);
    QList<CalendarEntry> entries;
    if (m_controller) {
        const AssignmentList &records = m_controller->displayAssignments();
        entries.reserve(records.size());
        for (const AssignmentRef &record : records)
            if (const std::optional<QDateTime> due = record->dueDate())
                entries.append(CalendarEntry{CalendarGrid::dateKey(*due), record->string(AssignmentField::Name), record});
    }
    m_settingsLoaded = false;
    // Setting the flag redraws; only a change is worth that, the entries below redraw anyway.
    if (view->hiddenWeekends() != hide)
        view->setHiddenWeekends(hide);
    view->setObjects(entries);
}

std::optional<QDateTime> CalendarController::focusDate() const
{
    if (!m_activeCalendar)
        return std::nullopt;
    return m_activeCalendar->focusDate();
}

void CalendarController::selectAssignment(const AssignmentRef &record)
{
    if (m_applyingCalendarSelection || !record)
        return;
    m_applyingListSelection = true;
    const std::optional<QDateTime> due = record->dueDate();
    for (BVCalendarView *view : {m_monthlyCalendar.data(), m_weeklyCalendar.data()}) {
        if (!view)
            continue;
        view->deselectAll();
        if (due)
            view->selectObject(record, *due);
    }
    m_applyingListSelection = false;
}

void CalendarController::clearSelection()
{
    if (m_applyingCalendarSelection)
        return;
    m_applyingListSelection = true;
    for (BVCalendarView *view : {m_monthlyCalendar.data(), m_weeklyCalendar.data()})
        if (view)
            view->deselectAll();
    m_applyingListSelection = false;
}

// --- what the calendars report -------------------------------------------------------------------

void CalendarController::selectInList(BVCalendarView *view)
{
    if (m_applyingListSelection || !m_controller)
        return;
    m_applyingCalendarSelection = true;
    if (const AssignmentRef record = view->selectedObject()) {
        const qsizetype row = m_controller->displayAssignments().indexOf(record);
        if (row >= 0)
            m_controller->selectRowAlone(int(row));
    } else {
        m_controller->clearSelection();
    }
    m_applyingCalendarSelection = false;
}

void CalendarController::calendarViewSelectionDidChange(BVCalendarView *view)
{
    selectInList(view);
}

void CalendarController::calendarViewEventWillMove(BVCalendarView *view)
{
    selectInList(view);
}

void CalendarController::calendarViewEventDidMove(BVCalendarView *view)
{
    if (!m_controller)
        return;
    const QDateTime day = view->selectedDate();
    if (!day.isValid())
        return;
    if (!DueDateMove::changeDueDay(*m_controller, view->selectedObject(), day.date()))
        return;
    m_controller->updateWindowInformation();
}

void CalendarController::calendarViewDidDoubleClick(BVCalendarView *view)
{
    if (!m_controller || !generalSwitch(PreferenceKeys::GeneralKeys::DoubleClickCreates))
        return;
    m_controller->editing().addAssignmentWithDate(view->focusDate());
}

void CalendarController::calendarViewOpenSelection(BVCalendarView *view)
{
    const AssignmentRef record = view->selectedObject();
    if (!record)
        return;
    selectInList(view);
    Q_EMIT openAssignmentRequested(record);
}

void CalendarController::preferenceChanged(const QString &group, const QString &key)
{
    using namespace PreferenceKeys;
    if (group == General && (key == GeneralKeys::HideWeekends || key.isEmpty())) {
        const bool hide = generalSwitch(GeneralKeys::HideWeekends);
        if (m_activeCalendar && m_activeCalendar->hiddenWeekends() != hide)
            m_activeCalendar->setHiddenWeekends(hide);
    }
    if (group == Colors || (group.isEmpty() && key == ColorFormat)) {
        m_settingsLoaded = false;
        for (BVCalendarView *view : {m_monthlyCalendar.data(), m_weeklyCalendar.data()})
            if (view)
                view->redrawEntries();
    }
}

const PresentationSettings &CalendarController::settingsFor(const BVCalendarView *view)
{
    // Read once for each day cell drawn, so a changed colour shows at the next redraw without
    // reading the preferences for every row.
    if (!m_settingsLoaded || m_settingsView != view || m_settingsPass != view->paintPass()) {
        m_settings = PresentationSettings::load();
        m_settingsView = view;
        m_settingsPass = view->paintPass();
        m_settingsLoaded = true;
    }
    return m_settings;
}

void CalendarController::calendarViewWillDisplayCell(BVCalendarView *view, BVCalendarDayCell *cell,
                                                     CalendarDisplayCell &display, const QString &column, int row)
{
    const QList<CalendarEntry> &entries = view->data().entries(cell->date());
    if (row < 1 || row > entries.size() || !display.textColor.isValid())
        return;
    const AssignmentRef &record = entries.at(row - 1).object;
    if (!record)
        return;
    if (const std::optional<QColor> colour =
            CellPresentation::textColor(*record, column, display.selected, settingsFor(view)))
        display.textColor = *colour;
}
