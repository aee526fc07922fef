#include "TestEnvironment.h"

#include "platform/Alerts.h"
#include "platform/ColorString.h"
#include "platform/Paths.h"
#include "platform/PropertyList.h"
#include "platform/UserDefaults.h"
#include "store/GeneralSettings.h"
#include "store/PreferenceKeys.h"
#include "store/Preferences.h"

#include <QDir>
#include <QProcess>
#include <QScopeGuard>
#include <QFileInfo>
#include <gtest/gtest.h>

using namespace PreferenceKeys;

namespace {

QVariantMap column(const char *identifier, qint64 width)
{
    return {{QStringLiteral("Identifier"), QString::fromLatin1(identifier)}, {QStringLiteral("Width"), width}};
}

void writePreferences(const QVariantMap &values, const QString &domain = UserDefaults::ProgramDomain)
{
    QDir().mkpath(Paths::preferencesFolder());
    ASSERT_TRUE(PropertyList::writeFile(Paths::preferencesFile(domain), values));
    UserDefaults::dropCaches();
}

} // namespace

TEST(Preferences, DefaultsKeepTheirTypesAndTheGreyBlack)
{
    Preferences::setAllDefaults();
    const UserDefaults defaults;
    EXPECT_TRUE(Preferences::hasAllGroups());
    // Whole numbers are written as <integer>, widths included, as earlier versions read them.
    EXPECT_EQ(defaults.dictionary(General).value(QStringLiteral("Default View")).typeId(), QMetaType::LongLong);
    EXPECT_EQ(defaults.array(UserColumnsOrdering).value(0).toMap().value(QStringLiteral("Width")).typeId(),
              QMetaType::LongLong);
    // "All Others" is black in the grey colour space, which the colour reader must still take.
    const QString allOthers = defaults.dictionary(Colors).value(QStringLiteral("All Others")).toString();
    EXPECT_FALSE(allOthers.startsWith(QLatin1String(ColorString::RGBSpaceName)));
    EXPECT_EQ(ColorString::toColor(allOthers)->rgba(), QColor(Qt::black).rgba());
}

TEST(Preferences, OldDefaultFormatIsFixed)
{
    for (const auto &[old, expected] : {std::pair{1, 2}, std::pair{0, 0}, std::pair{2, 0}}) {
        Preferences::setAllDefaults();
        QVariantMap general = UserDefaults().dictionary(General);
        general.insert(QStringLiteral("Default Format"), qint64(old));
        UserDefaults().set(General, general);
        EXPECT_TRUE(Preferences::fixOldDefaultFormat());
        general = UserDefaults().dictionary(General);
        EXPECT_FALSE(general.contains(QStringLiteral("Default Format")));
        EXPECT_EQ(general.value(QStringLiteral("Default Calendar Format")).toLongLong(), expected) << old;
    }
    EXPECT_FALSE(Preferences::fixOldDefaultFormat());
}

TEST(Preferences, EarlierVersionKeysAreMigrated)
{
    writePreferences({
        {QStringLiteral("Last Shown Preference Pane"), QStringLiteral("Labels")},
        {QStringLiteral("Universal Types"), QVariantList{QStringLiteral("Essay"), QStringLiteral("Quiz")}},
        {QStringLiteral("Date Entry Format"), QStringLiteral("Pull Down Boxes")},
        {QStringLiteral("Date Format"), QStringLiteral("%m/%d/%y")},
        {QStringLiteral("Default View"), qint64(2)},
        {QStringLiteral("Display iCal Export Advanced Settings"), true},
        {QStringLiteral("Display Warning Messages"), false},
        {QStringLiteral("Personal Info"), QVariantMap{{QStringLiteral("Name"), QStringLiteral("Ada")},
                                                      {QStringLiteral("School"), QStringLiteral("school")},
                                                      {QStringLiteral("StudentID"), QStringLiteral("12345")}}},
        {QStringLiteral("Labels"), QVariantMap{{QStringLiteral("Course"), QStringLiteral("Class")},
                                               {QStringLiteral("StudentID"), QStringLiteral("Matrikel")},
                                               {QStringLiteral("Notes"), QStringLiteral("Remarks")}}},
        {QStringLiteral("User Columns"), QVariantList{QStringLiteral("Name"), QStringLiteral("Grade")}},
        {QStringLiteral("User Columns Width"), QStringLiteral("150 61")},
        {QStringLiteral("Color Format"), QStringLiteral("Type")},
        {QStringLiteral("Colors"), QVariantMap{{QStringLiteral("Essay"), QStringLiteral("NSCalibratedRGBColorSpace 1 0 0 1")}}},
    });
    ASSERT_FALSE(Preferences::hasAllGroups());
    Preferences::setAllDefaults();
    Preferences::importEarlierPreferencesFile();

    const UserDefaults defaults;
    const QVariantMap all = defaults.all();
    for (const char *old : {"Last Shown Preference Pane", "Universal Types", "Date Entry Format", "Date Format",
                            "Default View", "Display iCal Export Advanced Settings", "Display Warning Messages",
                            "Personal Info", "Labels", "User Columns", "User Columns Width", "Color Format", "Colors"})
        EXPECT_FALSE(all.contains(QString::fromLatin1(old))) << old;

    EXPECT_EQ(defaults.string(LastShownPane), QStringLiteral("Labels"));
    auto types = PropertyList::readFile(Paths::universalTypesFile());
    ASSERT_TRUE(types);
    EXPECT_EQ(types->toList(), (QVariantList{QStringLiteral("Essay"), QStringLiteral("Quiz")}));

    const QVariantMap general = defaults.dictionary(General);
    EXPECT_EQ(general.value(QStringLiteral("Date Entry Format")).toLongLong(), 1);
    EXPECT_EQ(general.value(QStringLiteral("Date Format")).toString(), QStringLiteral("%m/%d/%y"));
    EXPECT_EQ(general.value(QStringLiteral("Default View")).toLongLong(), 2);
    EXPECT_TRUE(general.value(QStringLiteral("Display Advanced iCal Settings")).toBool());
    EXPECT_FALSE(general.value(QStringLiteral("Display Warning Messages")).toBool());

    EXPECT_EQ(defaults.dictionary(PersonalInfo),
              (QVariantMap{{QStringLiteral("Name"), QStringLiteral("Ada")}, {QStringLiteral("School"), QString()},
                           {QStringLiteral("Student ID"), QStringLiteral("12345")}}));
    const QVariantMap labels = defaults.dictionary(PreferenceKeys::Labels);
    EXPECT_EQ(labels.value(QStringLiteral("Course")).toString(), QStringLiteral("Class"));
    EXPECT_EQ(labels.value(QStringLiteral("Student ID")).toString(), QStringLiteral("Matrikel"));
    EXPECT_FALSE(labels.contains(QStringLiteral("Notes")));
    EXPECT_FALSE(labels.contains(QStringLiteral("StudentID")));
    EXPECT_EQ(labels.value(QStringLiteral("Textbook")).toString(), QStringLiteral("Textbook"));

    EXPECT_EQ(defaults.array(UserColumnsOrdering), (QVariantList{column("Name", 150), column("Grade", 61)}));
    EXPECT_EQ(defaults.integer(ColorFormat), 2);
    EXPECT_EQ(defaults.dictionary(Colors).value(QStringLiteral("Essay")).toString(),
              QStringLiteral("NSCalibratedRGBColorSpace 1 0 0 1"));
    EXPECT_TRUE(defaults.dictionary(Colors).contains(QStringLiteral("Past Due")));
}

TEST(Preferences, AFirstStartLeavesThePaneOnlyKeysUnwrittenAndAnEmptiedTitleFormatIsStored)
{
    ASSERT_FALSE(Preferences::hasAllGroups());
    Preferences::setAllDefaults();
    Preferences::importEarlierPreferencesFile();
    QVariantMap general = UserDefaults().dictionary(General);
    for (const QString &key : {GeneralKeys::AlternateRowColors, GeneralKeys::HideWeekends,
                               GeneralKeys::SubprojectTitleFormat})
        EXPECT_FALSE(general.contains(key)) << key.toStdString();
    // What the list uses when the key is absent is what the pane shows.
    EXPECT_EQ(GeneralSettings::load().subprojectTitleFormat, QStringLiteral("%p - %s"));

    GeneralSettings settings = GeneralSettings::load();
    settings.subprojectTitleFormat.clear();
    settings.save();
    general = UserDefaults().dictionary(General);
    ASSERT_TRUE(general.contains(GeneralKeys::SubprojectTitleFormat));
    EXPECT_EQ(general.value(GeneralKeys::SubprojectTitleFormat), QVariant(QString()));
    EXPECT_TRUE(general.contains(GeneralKeys::AlternateRowColors));
    EXPECT_EQ(GeneralSettings::load().subprojectTitleFormat, QString());

    // An earlier version's import keeps what the pane had written.
    Preferences::importEarlierPreferencesFile();
    general = UserDefaults().dictionary(General);
    EXPECT_EQ(general.value(GeneralKeys::SubprojectTitleFormat), QVariant(QString()));
    EXPECT_TRUE(general.contains(GeneralKeys::HideWeekends));
}

TEST(Preferences, EarlierPreferencesFileIsMovedOnlyWhenTheNewOneIsMissing)
{
    const QString oldDomain = QStringLiteral("com.ostrelle.Quillory");
    writePreferences({{QStringLiteral("Marker"), QStringLiteral("old")}}, oldDomain);
    writePreferences({{QStringLiteral("Marker"), QStringLiteral("new")}});
    EXPECT_EQ(Preferences::moveEarlierPreferencesFile(), Preferences::FileMove::NothingToMove);
    EXPECT_TRUE(QFileInfo::exists(Paths::preferencesFile(oldDomain)));
    EXPECT_EQ(UserDefaults().string(QStringLiteral("Marker")), QStringLiteral("new"));

    QFile::remove(Paths::preferencesFile(UserDefaults::ProgramDomain));
    EXPECT_EQ(Preferences::moveEarlierPreferencesFile(), Preferences::FileMove::Moved);
    EXPECT_FALSE(QFileInfo::exists(Paths::preferencesFile(oldDomain)));
    EXPECT_EQ(UserDefaults().string(QStringLiteral("Marker")), QStringLiteral("old"));
    EXPECT_EQ(Preferences::moveEarlierPreferencesFile(), Preferences::FileMove::NothingToMove);
}

TEST(Preferences, AFailedMoveSaysSoAndLeavesTheOldFile)
{
    const QString oldDomain = QStringLiteral("com.ostrelle.Quillory");
    writePreferences({{QStringLiteral("Marker"), QStringLiteral("old")}}, oldDomain);
    // A folder whose entries cannot change makes the move fail: read-only for a user, immutable
    // for root (who ignores permissions).
    const QString folder = Paths::preferencesFolder();
    const bool root = geteuid() == 0;
    if (root) {
        if (QProcess::execute(QStringLiteral("chattr"), {QStringLiteral("+i"), folder}) != 0)
            GTEST_SKIP() << "this file system cannot make a folder immutable";
    } else {
        QFile::setPermissions(folder, QFileDevice::ReadOwner | QFileDevice::ExeOwner);
    }
    const auto restore = qScopeGuard([&] {
        if (root)
            QProcess::execute(QStringLiteral("chattr"), {QStringLiteral("-i"), folder});
        else
            QFile::setPermissions(folder, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    });
    Alerts::queueAnswer(QStringLiteral("OK"));
    EXPECT_EQ(Preferences::moveEarlierPreferencesFile(), Preferences::FileMove::Failed);
    const auto asked = Alerts::takeAsked();
    ASSERT_EQ(asked.size(), 1);
    EXPECT_EQ(asked[0].title, QStringLiteral("Preferences Error"));
    EXPECT_EQ(asked[0].message, QStringLiteral("Pellucard could not rename your preferences file from the previous "
                                               "version.  As a result, your preferences could not be saved."));
    EXPECT_TRUE(QFileInfo::exists(Paths::preferencesFile(oldDomain)));
}

TEST(UserDefaults, ReadsSeeChangesMadeByOthersAtOnce)
{
    UserDefaults defaults;
    defaults.set(QStringLiteral("Count"), qint64(1));
    EXPECT_EQ(defaults.integer(QStringLiteral("Count")), 1);
    // Another writer (another window, or by hand) replaces the file.
    writePreferences({{QStringLiteral("Count"), qint64(2)}});
    EXPECT_EQ(UserDefaults().integer(QStringLiteral("Count")), 2);
}
