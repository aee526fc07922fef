#include "list/PresentationSettings.h"

#include "platform/Clock.h"
#include "platform/ColorString.h"
#include "platform/UserDefaults.h"
#include "store/PreferenceKeys.h"

PresentationSettings PresentationSettings::load()
{
    using namespace PreferenceKeys;
    const UserDefaults defaults;
    const QVariantMap general = defaults.dictionary(General);

    PresentationSettings settings;
    const QVariant format = general.value(GeneralKeys::DateFormat);
    settings.dateFormat = format.typeId() == QMetaType::QString ? format.toString() : DateFormatLong;
    settings.displayDuplicateDates = general.value(GeneralKeys::DisplayDuplicateDates).toBool();
    settings.alternateRowColors = general.value(GeneralKeys::AlternateRowColors).toBool();
    const QVariant titleFormat = general.value(GeneralKeys::SubprojectTitleFormat);
    settings.subprojectTitleFormat
        = titleFormat.typeId() == QMetaType::QString ? titleFormat.toString() : DefaultSubprojectTitleFormat;
    settings.colorFormat = defaults.integer(ColorFormat);

    const QVariantMap colors = defaults.dictionary(Colors);
    for (auto it = colors.cbegin(); it != colors.cend(); ++it)
        settings.colors.insert(it.key(), ColorString::toColor(it->toString()));

    settings.today = Clock::now().date();
    return settings;
}
