#include "store/ui/GeneralPane.h"

#include "platform/Alerts.h"
#include "platform/Clock.h"
#include "importing/CalendarSubscriptions.h"
#include "platform/DateText.h"
#include "store/DataEraser.h"
#include "store/Labels.h"
#include "store/PreferenceKeys.h"
#include "store/ui/Named.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

using namespace PreferenceKeys;

namespace {
const QString IncompletePrefix = QStringLiteral("Incomplete ");
const QString CompletePrefix = QStringLiteral("Complete ");
const QString AllPrefix = QStringLiteral("All ");
const QString DoubleClickPrefix = QStringLiteral("Double-clicking will create new ");
const QStringList CalendarFormats = {QStringLiteral("List"), QStringLiteral("Weekly"), QStringLiteral("Monthly")};
const QStringList DateEntryFormats = {QStringLiteral("Text Box"), QStringLiteral("Pull Down Boxes")};
const QString CustomFormatTitle = QStringLiteral("Custom");
// The transitions of the main window's animated switch, by index.
const QStringList Transitions = {QStringLiteral("None"),       QStringLiteral("Copy Machine"),
                                 QStringLiteral("Disintegrate"), QStringLiteral("Dissolve"),
                                 QStringLiteral("Flash"),      QStringLiteral("Mod"),
                                 QStringLiteral("Page Curl"),  QStringLiteral("Ripple"),
                                 QStringLiteral("Swipe")};
constexpr int RippleIndex = 7;
const QString DefaultViewCaption = QStringLiteral("Default view:");
const QString CalendarFormatCaption = QStringLiteral("Default format:");
const QString DateEntryCaption = QStringLiteral("Date entry:");
const QString DateFormatCaption = QStringLiteral("Date format:");
const QString CustomFormatCaption = QStringLiteral("Custom format:");
const QString PreviewCaption = QStringLiteral("Custom format preview");
const QString TransitionCaption = QStringLiteral("Transition:");
const QString SubprojectCaption = QStringLiteral("Subproject title:");
const QString SubprojectToolTip = QStringLiteral("%p is replaced by the project's name, %s by the subproject's");
const QString DuplicateDatesText = QStringLiteral("Display duplicate dates");
const QString WarningsText = QStringLiteral("Display warning messages");
const QString AdvancedICalText = QStringLiteral("Display advanced iCal settings");
const QString AlternateRowsText = QStringLiteral("Alternate row colors for each day");
const QString HideWeekendsText = QStringLiteral("Hide weekends in calendar view");
const QString CheckForUpdatesText = QStringLiteral("Check for updates at startup");
const QString ResetTitle = QStringLiteral("Reset to Defaults");
const QString DeleteAllTitle = QStringLiteral("Delete All Data...");
const QString DeleteAllButton = QStringLiteral("Delete All Data");
const QString CancelButton = QStringLiteral("Cancel");
const QString DeleteAllMessage = QStringLiteral("Delete All Data?");
const QString DeleteFailedTitle = QStringLiteral("Error");
const QString DeleteFailedMessage = QStringLiteral("Some of your data could not be deleted: %1");
} // namespace

GeneralPane::GeneralPane(QWidget *parent)
    : PreferencePane(parent)
{
    named(this, QStringLiteral("generalView"), QStringLiteral("General"));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(16, 12, 16, 12);
    auto *form = new QFormLayout;
    form->setLabelAlignment(Qt::AlignRight);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);

    m_defaultView = popUp(QStringLiteral("defaultView"), DefaultViewCaption, {QString(), QString(), QString()});
    form->addRow(captionFor(m_defaultView, DefaultViewCaption), m_defaultView);
    m_calendarFormat = popUp(QStringLiteral("defaultCalendarFormat"), CalendarFormatCaption, CalendarFormats);
    form->addRow(captionFor(m_calendarFormat, CalendarFormatCaption), m_calendarFormat);
    m_dateEntry = popUp(QStringLiteral("dateEntryFormat"), DateEntryCaption, DateEntryFormats);
    form->addRow(captionFor(m_dateEntry, DateEntryCaption), m_dateEntry);

    // The offered formats are shown as today's date written in them.
    const QDateTime now = Clock::now();
    m_dateFormat = popUp(QStringLiteral("dateFormat"), DateFormatCaption,
                         {DateText::format(now, DateFormatLong), DateText::format(now, DateFormatShort),
                          DateText::format(now, DateFormatNumeric), CustomFormatTitle});
    form->addRow(captionFor(m_dateFormat, DateFormatCaption), m_dateFormat);
    m_customFormat = named(new QLineEdit, QStringLiteral("customDateFormat"), CustomFormatCaption);
    m_preview = named(new QLabel, QStringLiteral("customDateFormatPreview"), PreviewCaption);
    m_preview->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto *custom = new QHBoxLayout;
    custom->addWidget(m_customFormat, 1);
    custom->addWidget(m_preview, 1);
    form->addRow(captionFor(m_customFormat, CustomFormatCaption), custom);

    m_transition = popUp(QStringLiteral("mainWindowTransition"), TransitionCaption, Transitions);
    for (int i = 0; i < m_transition->count(); ++i)
        m_transition->setItemData(i, i);
    form->addRow(captionFor(m_transition, TransitionCaption), m_transition);
    m_subprojectFormat = named(new QLineEdit, QStringLiteral("subprojectTitleFormat"), SubprojectCaption);
    m_subprojectFormat->setToolTip(SubprojectToolTip);
    form->addRow(captionFor(m_subprojectFormat, SubprojectCaption), m_subprojectFormat);
    layout->addLayout(form);

    m_duplicateDates = checkBox(QStringLiteral("displayDuplicateDates"), DuplicateDatesText);
    m_warnings = checkBox(QStringLiteral("displayWarningMessages"), WarningsText);
    m_advancedICal = checkBox(QStringLiteral("displayAdvancedICalSettings"), AdvancedICalText);
    m_doubleClick = checkBox(QStringLiteral("doubleClickCreates"), QString());
    m_alternateRows = checkBox(QStringLiteral("alternateRowColors"), AlternateRowsText);
    m_hideWeekends = checkBox(QStringLiteral("hideWeekends"), HideWeekendsText);
    m_checkForUpdates = checkBox(QStringLiteral("checkForUpdates"), CheckForUpdatesText);
    for (QCheckBox *box : {m_duplicateDates, m_warnings, m_advancedICal, m_doubleClick, m_alternateRows,
                           m_hideWeekends, m_checkForUpdates})
        layout->addWidget(box);

    auto *buttons = new QHBoxLayout;
    m_reset = named(new QPushButton(ResetTitle), QStringLiteral("resetGeneral"), ResetTitle);
    m_deleteAll = named(new QPushButton(DeleteAllTitle), QStringLiteral("deleteAllData"), DeleteAllButton);
    buttons->addWidget(m_reset);
    buttons->addStretch();
    buttons->addWidget(m_deleteAll);
    layout->addSpacing(6);
    layout->addLayout(buttons);
    layout->addStretch();

    // Choosing "Custom" starts from the format in use rather than from nothing, which would show no
    // dates at all.
    connect(m_dateFormat, &QComboBox::currentIndexChanged, this, [this](int index) {
        if (index == 3 && m_customFormat->text().isEmpty() && !m_filling) {
            const QSignalBlocker blocker(m_customFormat);
            m_customFormat->setText(GeneralSettings::load().dateFormat());
        }
    });
    for (QComboBox *box : {m_defaultView, m_calendarFormat, m_dateEntry, m_dateFormat, m_transition})
        connect(box, &QComboBox::currentIndexChanged, this, [this] {
            updateCustomFormat();
            setGeneral();
        });
    for (QCheckBox *box : {m_duplicateDates, m_warnings, m_advancedICal, m_doubleClick, m_alternateRows,
                           m_hideWeekends, m_checkForUpdates})
        connect(box, &QCheckBox::toggled, this, &GeneralPane::setGeneral);
    connect(m_customFormat, &QLineEdit::textChanged, this, [this] {
        updateCustomFormat();
        setGeneral();
    });
    connect(m_subprojectFormat, &QLineEdit::textChanged, this, &GeneralPane::setGeneral);
    connect(m_reset, &QPushButton::clicked, this, &GeneralPane::setGeneralDefaultsAndSave);
    connect(m_deleteAll, &QPushButton::clicked, this, &GeneralPane::deleteAllData);

    updateLabels();
    fill(GeneralSettings::load());
}

QComboBox *GeneralPane::popUp(const QString &objectName, const QString &accessibleName, const QStringList &items)
{
    auto *box = named(new QComboBox, objectName, accessibleName);
    box->addItems(items);
    return box;
}

QCheckBox *GeneralPane::checkBox(const QString &objectName, const QString &text)
{
    return named(new QCheckBox(text), objectName, text);
}

void GeneralPane::updateLabels()
{
    const QString assignments = Labels::plural(LabelKeys::Assignment);
    m_defaultView->setItemText(0, IncompletePrefix + assignments);
    m_defaultView->setItemText(1, CompletePrefix + assignments);
    m_defaultView->setItemText(2, AllPrefix + assignments);
    const QString doubleClick = DoubleClickPrefix + Labels::label(LabelKeys::Assignment).toLower();
    m_doubleClick->setText(doubleClick);
    m_doubleClick->setAccessibleName(doubleClick);
}

void GeneralPane::fill(const GeneralSettings &s)
{
    m_filling = true;
    m_defaultView->setCurrentIndex(std::clamp(s.defaultView, 0, 2));
    m_calendarFormat->setCurrentIndex(std::clamp(s.defaultCalendarFormat, 0, 2));
    m_dateEntry->setCurrentIndex(std::clamp(s.dateEntryFormat, 0, 1));
    m_dateFormat->setCurrentIndex(std::clamp(s.dateFormatChoice, 0, 3));
    m_customFormat->setText(s.customDateFormat);
    // Indexes past the last named one play the ripple; such a value is shown as it is and kept.
    if (s.mainWindowTransition >= int(Transitions.size()) && m_transition->findData(s.mainWindowTransition) < 0)
        m_transition->addItem(Transitions[RippleIndex], s.mainWindowTransition);
    m_transition->setCurrentIndex(std::max(0, m_transition->findData(s.mainWindowTransition)));
    m_duplicateDates->setChecked(s.displayDuplicateDates);
    m_warnings->setChecked(s.displayWarningMessages);
    m_advancedICal->setChecked(s.displayAdvancedICalSettings);
    m_doubleClick->setChecked(s.doubleClickCreates);
    m_alternateRows->setChecked(s.alternateRowColors);
    m_hideWeekends->setChecked(s.hideWeekends);
    m_checkForUpdates->setChecked(s.checkForUpdates);
    m_subprojectFormat->setText(s.subprojectTitleFormat);
    updateCustomFormat();
    m_filling = false;
}

GeneralSettings GeneralPane::fromControls() const
{
    GeneralSettings s;
    s.defaultView = m_defaultView->currentIndex();
    s.defaultCalendarFormat = m_calendarFormat->currentIndex();
    s.dateEntryFormat = m_dateEntry->currentIndex();
    s.dateFormatChoice = m_dateFormat->currentIndex();
    s.customDateFormat = m_customFormat->text();
    s.mainWindowTransition = m_transition->currentData().toInt();
    s.displayDuplicateDates = m_duplicateDates->isChecked();
    s.displayWarningMessages = m_warnings->isChecked();
    s.displayAdvancedICalSettings = m_advancedICal->isChecked();
    s.doubleClickCreates = m_doubleClick->isChecked();
    s.alternateRowColors = m_alternateRows->isChecked();
    s.hideWeekends = m_hideWeekends->isChecked();
    s.checkForUpdates = m_checkForUpdates->isChecked();
    s.subprojectTitleFormat = m_subprojectFormat->text();
    return s;
}

QString GeneralPane::customPreview() const
{
    return DateText::format(Clock::now(), m_customFormat->text());
}

void GeneralPane::updateCustomFormat()
{
    const bool custom = m_dateFormat->currentIndex() == 3;
    m_customFormat->setEnabled(custom);
    m_preview->setEnabled(custom);
    m_preview->setText(customPreview());
}

void GeneralPane::setGeneral()
{
    if (m_filling)
        return;
    fromControls().save();
}

void GeneralPane::setGeneralDefaultsAndSave()
{
    GeneralSettings s = fromControls();
    s.resetToDefaults();
    fill(s);
    s.save();
}

void GeneralPane::deleteAllData()
{
    using namespace LabelKeys;
    const QString informative = QStringLiteral("Continuing will delete all ") + Labels::plural(Assignment)
        + QStringLiteral(", ") + Labels::plural(Type) + QStringLiteral(", ") + Labels::plural(Course)
        + QStringLiteral(" and ") + Labels::plural(Textbook) + QStringLiteral(".  Are you sure you want to do this?");
    const QString answer =
        Alerts::run({QString(), DeleteAllMessage, informative, {DeleteAllButton, CancelButton}, Alerts::Style::Critical});
    // Only the explicit choice deletes: an alert that could not be shown or was dismissed keeps the data.
    if (answer != DeleteAllButton)
        return;
    QString error;
    if (!DataEraser::deleteAllData(&error)) {
        Alerts::inform(DeleteFailedTitle, DeleteFailedMessage.arg(error));
        return;
    }
    CalendarSubscriptions::forgetAll();
}
