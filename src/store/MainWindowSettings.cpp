#include "store/MainWindowSettings.h"

#include "platform/ColorString.h"
#include "platform/UserDefaults.h"
#include "store/ColumnKeys.h"
#include "store/CoursesStore.h"
#include "store/PreferenceKeys.h"
#include "store/Preferences.h"

#include <QHash>
#include <QSet>
#include <QVariantMap>

using namespace PreferenceKeys;

namespace MainWindowSettings {

namespace {
const QString IdentifierKey = QStringLiteral("Identifier");
const QString WidthKey = QStringLiteral("Width");
} // namespace

const QStringList &columnIdentifiers()
{
    return ColumnKeys::all();
}

qint64 initialWidth(const QString &identifier)
{
    return ColumnKeys::initialWidth(identifier);
}

QStringList shownColumns()
{
    return UserDefaults().object(UserColumns).toStringList();
}

QVariantList orderingFor(const QStringList &shown, const QVariantList &previousOrdering)
{
    QVariantList ordering;
    QSet<QString> placed;
    for (const QVariant &value : previousOrdering) {
        const QVariantMap entry = value.toMap();
        const QString identifier = entry.value(IdentifierKey).toString();
        if (!shown.contains(identifier) || placed.contains(identifier))
            continue;
        placed.insert(identifier);
        bool ok = false;
        const qint64 width = entry.value(WidthKey).toLongLong(&ok);
        ordering.append(QVariantMap{{IdentifierKey, identifier}, {WidthKey, ok ? width : initialWidth(identifier)}});
    }
    for (const QString &identifier : columnIdentifiers()) {
        if (shown.contains(identifier) && !placed.contains(identifier))
            ordering.append(QVariantMap{{IdentifierKey, identifier}, {WidthKey, initialWidth(identifier)}});
    }
    return ordering;
}

void saveColumns(const QStringList &shown)
{
    UserDefaults defaults;
    QVariantList columns;
    for (const QString &identifier : columnIdentifiers()) {
        if (shown.contains(identifier))
            columns.append(identifier);
    }
    defaults.setMany({{UserColumns, columns}, {UserColumnsOrdering, orderingFor(shown, defaults.array(UserColumnsOrdering))}});
}

void resetColumns()
{
    Preferences::setDefaultTableColumns();
}

int colorFormat()
{
    return int(UserDefaults().integer(PreferenceKeys::ColorFormat));
}

void setColorFormat(int format)
{
    UserDefaults().set(PreferenceKeys::ColorFormat, qint64(format));
}

const QStringList &colorFormatTitles()
{
    static const QStringList titles = {QStringLiteral("Due Date"), QStringLiteral("Course"), QStringLiteral("Type"),
                                       QStringLiteral("Priority")};
    return titles;
}

QStringList categoryRows(int format)
{
    QStringList rows;
    switch (format) {
    case ByDueDate:
        rows = {ColorKeys::PastDue, ColorKeys::DueToday, ColorKeys::DueTomorrow, ColorKeys::DueInTwoDays};
        break;
    case ByCourse:
        rows = CoursesStore().getCoursesArray();
        break;
    case ByType: {
        const CoursesStore store;
        for (const QVariant &value : store.getCombined()) {
            const QVariantMap record = value.toMap();
            if (CoursesStore::isCourse(record))
                rows += record.value(CourseKeys::Types).toStringList();
        }
        rows += store.universalTypes();
        rows.removeDuplicates();
        break;
    }
    case ByPriority:
        for (int priority = 1; priority <= 5; ++priority)
            rows.append(QString::number(priority));
        break;
    default:
        break;
    }
    return rows.mid(0, MaxCategoryRows);
}

QString colorText(const QString &key)
{
    const QVariant stored = UserDefaults().groupValue(Colors, key);
    return stored.typeId() == QMetaType::QString ? stored.toString() : QString();
}

void setColorText(const QString &key, const QString &text)
{
    UserDefaults defaults;
    QVariantMap colors = defaults.dictionary(Colors);
    colors.insert(key, text);
    defaults.set(Colors, colors);
}

QColor fallbackColor(const QString &key)
{
    if (key == ColorKeys::Completed)
        return QColor::fromRgbF(0, 0.6f, 0);
    return QColor(Qt::black);
}

} // namespace MainWindowSettings
