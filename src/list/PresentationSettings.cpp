#include "list/PresentationSettings.h"

#include "platform/Clock.h"
#include "platform/ColorString.h"
#include "platform/UserDefaults.h"
#include "store/GeneralSettings.h"
#include "store/PreferenceKeys.h"

PresentationSettings PresentationSettings::load()
{
    using namespace PreferenceKeys;
    const UserDefaults defaults;
    const QVariantMap general = defaults.dictionary(General);

    PresentationSettings settings;
    settings.dateFormat = GeneralSettings::storedDateFormat();
    settings.displayDuplicateDates = general.value(GeneralKeys::DisplayDuplicateDates).toBool();
    settings.alternateRowColors = general.value(GeneralKeys::AlternateRowColors).toBool();
    settings.subprojectTitleFormat = GeneralSettings::storedSubprojectTitleFormat();
    settings.colorFormat = defaults.integer(ColorFormat);

    const QVariantMap colors = defaults.dictionary(Colors);
    for (auto it = colors.cbegin(); it != colors.cend(); ++it)
        settings.colors.insert(it.key(), ColorString::toColor(it->toString()));

    settings.today = Clock::now().date();
    return settings;
}
