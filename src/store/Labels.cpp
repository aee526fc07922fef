#include "store/Labels.h"

#include "platform/UserDefaults.h"
#include "store/PreferenceKeys.h"

#include <QHash>

namespace Labels {

QString defaultLabel(const QString &key)
{
    using namespace PreferenceKeys::LabelKeys;
    static const QHash<QString, QString> defaults = {
        {CourseField1, QStringLiteral("Units")},      {CourseField2, QStringLiteral("Room")},
        {CourseField3, QStringLiteral("Time")},       {CourseField4, QStringLiteral("Dates")},
        {CourseField5, QStringLiteral("Instructor")}, {CourseField6, QStringLiteral("Office Hours")},
        {TextbookField1, QStringLiteral("Edition")},  {TextbookField2, QStringLiteral("Pages")},
        {TextbookField3, QStringLiteral("Publisher")}, {TextbookField4, QStringLiteral("Price")},
        {TextbookField5, QStringLiteral("Condition")}, {StudentID, QStringLiteral("Concentration")},
    };
    return defaults.value(key, key);
}

QString label(const QString &key)
{
    const QVariant stored = UserDefaults().groupValue(PreferenceKeys::Labels, key);
    if (stored.typeId() == QMetaType::QString)
        return stored.toString();
    return defaultLabel(key);
}

QString plural(const QString &key)
{
    return label(key) + QLatin1Char('s');
}

} // namespace Labels
