#include "store/Preferences.h"

#include "BuildInfo.h"
#include "platform/Alerts.h"
#include "platform/ColorString.h"
#include "platform/Paths.h"
#include "platform/PropertyList.h"
#include "platform/UserDefaults.h"
#include "store/ColumnKeys.h"
#include "store/GeneralSettings.h"
#include "store/Labels.h"
#include "store/PreferenceKeys.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QProcess>

Q_DECLARE_LOGGING_CATEGORY(lcStore)

using namespace PreferenceKeys;

namespace {

const QStringList AllGroups = {General, UserColumns, Colors, PreferenceKeys::Labels, PersonalInfo};
const QStringList LabelOrder = {
    LabelKeys::Assignment,     LabelKeys::Completed,      LabelKeys::Grade,          LabelKeys::Type,
    LabelKeys::Course,         LabelKeys::CourseField1,   LabelKeys::CourseField2,   LabelKeys::CourseField3,
    LabelKeys::CourseField4,   LabelKeys::CourseField5,   LabelKeys::CourseField6,   LabelKeys::Textbook,
    LabelKeys::TextbookField1, LabelKeys::TextbookField2, LabelKeys::TextbookField3, LabelKeys::TextbookField4,
    LabelKeys::TextbookField5, LabelKeys::Name,           LabelKeys::School,         LabelKeys::StudentID,
};

namespace Old {
const QString LastShownPreferencePane = QStringLiteral("Last Shown Preference Pane");
const QString UniversalTypes = QStringLiteral("Universal Types");
const QString PersonalInfo = QStringLiteral("Personal Info");
const QString StudentID = QStringLiteral("StudentID");
const QString Labels = QStringLiteral("Labels");
const QString Notes = QStringLiteral("Notes");
const QString UserColumns = QStringLiteral("User Columns");
const QString UserColumnsWidth = QStringLiteral("User Columns Width");
const QString ColorFormat = QStringLiteral("Color Format");
const QString Colors = QStringLiteral("Colors");
const QStringList ColorFormats = {QStringLiteral("Due Date"), QStringLiteral("Course"), QStringLiteral("Type"),
                                  QStringLiteral("Priority")};
const QString DomainWord = QStringLiteral("brevandt");
const QString OldDomainWord = QStringLiteral("ostrelle");
} // namespace Old

const QString PreferencesErrorTitle = QStringLiteral("Preferences Error");
const QString PreferencesErrorMessage = QStringLiteral(
    "Pellucard could not rename your preferences file from the previous version.  As a result, your preferences "
    "could not be saved.");

// Widths a column gets when an earlier version left none.
qint64 initialWidth(const QString &identifier)
{
    return ColumnKeys::initialWidth(identifier);
}

QVariantMap column(const QString &identifier, qint64 width)
{
    return {{QStringLiteral("Identifier"), identifier}, {QStringLiteral("Width"), width}};
}

} // namespace

bool Preferences::hasAllGroups()
{
    const QVariantMap all = UserDefaults().all();
    return std::all_of(AllGroups.begin(), AllGroups.end(), [&](const QString &group) { return all.contains(group); });
}

void Preferences::setAllDefaults()
{
    setGeneralDefaults();
    setDefaultTableColumns();
    setDefaultColors();
    setDefaultLabels();
    setPersonalInfoDefaults();
}

void Preferences::setGeneralDefaults()
{
    using namespace GeneralKeys;
    const QVariantMap general{
        {DefaultView, qint64(0)},
        {DefaultCalendarFormat, qint64(0)},
        {DateEntryFormat, qint64(0)},
        {DisplayDuplicateDates, false},
        {DisplayWarningMessages, true},
        {DisplayAdvancedICalSettings, false},
        {DoubleClickCreates, true},
        {DateFormat, DateFormatLong},
        {EnableSuperfluousVisualEffects, true},
        {MainWindowTransition, qint64(3)},
    };
    UserDefaults().setMany({{General, general}, {SUCheckAtStartup, true}});
}

void Preferences::setDefaultTableColumns()
{
    using namespace ColumnKeys;
    const QVariantList columns{Completed, Name, Date, Course};
    const QVariantList ordering{column(Completed, 20), column(Date, 208), column(Name, 227), column(Course, 107)};
    UserDefaults().setMany({{UserColumns, columns}, {UserColumnsOrdering, ordering}});
}

void Preferences::setDefaultColors()
{
    const QVariantMap colors{
        {ColorKeys::AllOthers, ColorString::black()},
        {ColorKeys::Completed, ColorString::fromComponents(0, 0.6, 0, 1)},
        {ColorKeys::PastDue, ColorString::fromComponents(0.8, 0, 0, 1)},
        {ColorKeys::DueToday, ColorString::fromComponents(0.8, 0.4, 0, 1)},
        {ColorKeys::DueTomorrow, ColorString::fromComponents(0.8, 0.6, 0, 1)},
        {ColorKeys::DueInTwoDays, ColorString::fromComponents(0.8, 0.8, 0, 1)},
    };
    UserDefaults().setMany({{Colors, colors}, {ColorFormat, qint64(0)}});
}

void Preferences::setDefaultLabels()
{
    QVariantMap labels;
    for (const QString &key : LabelOrder)
        labels.insert(key, Labels::defaultLabel(key));
    UserDefaults().set(PreferenceKeys::Labels, labels);
}

void Preferences::setPersonalInfoDefaults()
{
    UserDefaults().set(PersonalInfo, QVariantMap{{PersonalInfoKeys::Name, QString()},
                                                 {PersonalInfoKeys::School, QString()},
                                                 {PersonalInfoKeys::StudentID, QString()}});
}

void Preferences::importEarlierPreferencesFile()
{
    UserDefaults defaults;
    const QVariantMap all = defaults.all();
    if (all.contains(Old::LastShownPreferencePane))
        defaults.setMany({{LastShownPane, all.value(Old::LastShownPreferencePane)}}, {Old::LastShownPreferencePane});
    if (all.contains(Old::UniversalTypes)) {
        Paths::makePrivateFolder(Paths::dataFolder());
        QString error;
        if (PropertyList::writeFile(Paths::universalTypesFile(), all.value(Old::UniversalTypes).toList(), &error))
            defaults.remove(Old::UniversalTypes);
        else
            qCWarning(lcStore) << "Could not move the universal types out of the preferences:" << error;
    }
    GeneralSettings::importEarlierPreferencesFile();
    importEarlierPersonalInfo();
    importEarlierLabels();
    importEarlierMainWindow();
}

void Preferences::importEarlierPersonalInfo()
{
    UserDefaults defaults;
    QVariantMap info = defaults.dictionary(PersonalInfo);
    if (!defaults.contains(Old::PersonalInfo))
        return;
    const QVariantMap old = defaults.dictionary(Old::PersonalInfo);
    // The earlier version filled empty fields with their placeholders; those count as empty.
    const auto take = [&](const QString &oldKey, const QString &placeholder, const QString &newKey) {
        if (!old.contains(oldKey))
            return;
        const QString value = old.value(oldKey).toString();
        info.insert(newKey, value == placeholder ? QString() : value);
    };
    take(PersonalInfoKeys::Name, QStringLiteral("name"), PersonalInfoKeys::Name);
    take(PersonalInfoKeys::School, QStringLiteral("school"), PersonalInfoKeys::School);
    take(Old::StudentID, QStringLiteral("student id"), PersonalInfoKeys::StudentID);
    defaults.setMany({{PersonalInfo, info}}, {Old::PersonalInfo});
}

void Preferences::importEarlierLabels()
{
    UserDefaults defaults;
    const QVariantMap current = defaults.dictionary(PreferenceKeys::Labels);
    const QVariantMap old = defaults.dictionary(Old::Labels);
    QVariantMap labels;
    for (const QString &key : LabelOrder) {
        const QString oldKey = key == LabelKeys::StudentID ? Old::StudentID : key;
        if (old.contains(oldKey))
            labels.insert(key, old.value(oldKey).toString());
        else
            labels.insert(key, current.contains(key) ? current.value(key).toString() : Labels::defaultLabel(key));
    }
    if (defaults.contains(Old::Labels))
        defaults.setMany({{PreferenceKeys::Labels, labels}}, {Old::Labels});
    else
        defaults.set(PreferenceKeys::Labels, labels);
}

void Preferences::importEarlierMainWindow()
{
    UserDefaults defaults;
    const QVariantMap all = defaults.all();
    QVariantMap changes;
    QStringList removals;

    if (all.contains(Old::UserColumns)) {
        const QStringList identifiers = all.value(Old::UserColumns).toStringList();
        const QStringList widths = all.value(Old::UserColumnsWidth).toString().split(QLatin1Char(' '));
        QVariantList ordering;
        QVariantList columns;
        for (qsizetype i = 0; i < identifiers.size(); ++i) {
            bool ok = false;
            const qint64 width = i < widths.size() ? widths[i].toLongLong(&ok) : 0;
            ordering.append(column(identifiers[i], ok ? width : initialWidth(identifiers[i])));
            columns.append(identifiers[i]);
        }
        changes.insert(UserColumns, columns);
        changes.insert(UserColumnsOrdering, ordering);
        removals << Old::UserColumns << Old::UserColumnsWidth;
    }
    if (all.contains(Old::ColorFormat)) {
        const qsizetype index = Old::ColorFormats.indexOf(all.value(Old::ColorFormat).toString());
        if (index >= 0)
            changes.insert(ColorFormat, qint64(index));
        removals << Old::ColorFormat;
    }
    if (all.contains(Old::Colors)) {
        QVariantMap colors = defaults.dictionary(Colors);
        const QVariantMap old = all.value(Old::Colors).toMap();
        for (auto it = old.begin(); it != old.end(); ++it)
            colors.insert(it.key(), it.value());
        changes.insert(Colors, colors);
        removals << Old::Colors;
    }
    if (!changes.isEmpty() || !removals.isEmpty())
        defaults.setMany(changes, removals);
}

bool Preferences::fixOldDefaultFormat()
{
    UserDefaults defaults;
    QVariantMap general = defaults.dictionary(General);
    if (!general.contains(GeneralKeys::OldDefaultFormat))
        return false;
    qCInfo(lcStore) << "fix old calendar";
    const qint64 old = general.value(GeneralKeys::OldDefaultFormat).toLongLong();
    general.insert(GeneralKeys::DefaultCalendarFormat, qint64(old == 1 ? 2 : 0));
    general.remove(GeneralKeys::OldDefaultFormat);
    defaults.set(General, general);
    return true;
}

Preferences::FileMove Preferences::moveEarlierPreferencesFile()
{
    const QString identifier = QString::fromLatin1(BuildInfo::BundleIdentifier);
    QString oldIdentifier = identifier;
    oldIdentifier.replace(Old::DomainWord, Old::OldDomainWord);
    const QString current = Paths::preferencesFile(identifier);
    const QString old = Paths::preferencesFile(oldIdentifier);
    if (QFileInfo::exists(current) || !QFileInfo::exists(old))
        return FileMove::NothingToMove;

    qCInfo(lcStore) << "Moving com.ostrelle preferences file to com.brevandt";
    if (!QFile::rename(old, current)) {
        Alerts::inform(PreferencesErrorTitle, PreferencesErrorMessage);
        return FileMove::Failed;
    }
    UserDefaults::dropCaches();
    return FileMove::Moved;
}

bool Preferences::scheduleRestart(const QString &program, qint64 pid)
{
    // 3000 naps of 0.2 s: at most ten minutes of waiting for this run to end.
    const QString loop = QStringLiteral(
        "i=0; while [ $i -lt 3000 ] && kill -0 \"$QUILLORY_WAIT_PID\" 2>/dev/null; do sleep 0.2; i=$((i+1)); done; "
        "exec \"$LAUNCH_PATH\"");
    QProcess process;
    process.setProgram(QStringLiteral("/bin/sh"));
    process.setArguments({QStringLiteral("-c"), loop});
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LAUNCH_PATH"), program);
    environment.insert(QStringLiteral("QUILLORY_WAIT_PID"), QString::number(pid));
    process.setProcessEnvironment(environment);
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.setWorkingDirectory(Paths::home());
    return process.startDetached();
}
