#include "store/AssignmentField.h"

const QString &fieldKey(AssignmentField field)
{
    // The strings point into the table itself: the keys exist once, in static storage.
    static const std::array<QString, AssignmentFieldCount> keys = [] {
        std::array<QString, AssignmentFieldCount> made;
        for (std::size_t i = 0; i < AssignmentFieldCount; ++i) {
            const std::u16string_view key = AssignmentFields::Keys[i];
            made[i] = QString::fromRawData(reinterpret_cast<const QChar *>(key.data()), qsizetype(key.size()));
        }
        return made;
    }();
    return keys[std::size_t(field)];
}
