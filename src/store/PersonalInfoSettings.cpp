#include "store/PersonalInfoSettings.h"

#include "platform/UserDefaults.h"
#include "store/PreferenceKeys.h"

#include <QVariantMap>

using namespace PreferenceKeys;

PersonalInfoSettings PersonalInfoSettings::load()
{
    const QVariantMap info = UserDefaults().dictionary(PersonalInfo);
    return {info.value(PersonalInfoKeys::Name).toString(), info.value(PersonalInfoKeys::School).toString(),
            info.value(PersonalInfoKeys::StudentID).toString()};
}

void PersonalInfoSettings::save() const
{
    UserDefaults().set(PersonalInfo, QVariantMap{{PersonalInfoKeys::Name, name},
                                                 {PersonalInfoKeys::School, school},
                                                 {PersonalInfoKeys::StudentID, studentID}});
}
