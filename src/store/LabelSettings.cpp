#include "store/LabelSettings.h"

#include "platform/UserDefaults.h"
#include "store/Labels.h"
#include "store/PreferenceKeys.h"
#include "store/Preferences.h"

namespace LabelSettings {

const QStringList &orderedKeys()
{
    using namespace PreferenceKeys::LabelKeys;
    static const QStringList keys = {
        Assignment,     Completed,      Grade,          Type,           Course,         CourseField1, CourseField2,
        CourseField3,   CourseField4,   CourseField5,   CourseField6,   Textbook,       TextbookField1,
        TextbookField2, TextbookField3, TextbookField4, TextbookField5, Name,           School,       StudentID,
    };
    return keys;
}

QVariantMap load()
{
    QVariantMap labels;
    for (const QString &key : orderedKeys())
        labels.insert(key, Labels::label(key));
    return labels;
}

void save(const QVariantMap &labels)
{
    QVariantMap stored = load();
    for (auto it = labels.begin(); it != labels.end(); ++it) {
        if (orderedKeys().contains(it.key()))
            stored.insert(it.key(), it.value().toString());
    }
    UserDefaults().set(PreferenceKeys::Labels, stored);
}

void resetToDefaults()
{
    Preferences::setDefaultLabels();
}

} // namespace LabelSettings
