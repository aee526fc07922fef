#include "exchange/ExportFields.h"

#include "store/Assignment.h"

ExportFields ExportFields::of(const QVariantMap &record)
{
    using namespace AssignmentKeys;
    // Keys of other lengths are told apart by the size alone, before any character is compared.
    const std::pair<const QString *, const QVariant *ExportFields::*> wanted[] = {
        {&Name, &ExportFields::name},         {&Date, &ExportFields::date},
        {&Course, &ExportFields::course},     {&Textbook, &ExportFields::textbook},
        {&Type, &ExportFields::type},         {&Grade, &ExportFields::grade},
        {&Completed, &ExportFields::completed}, {&Notes, &ExportFields::notes},
    };
    ExportFields found;
    for (auto it = record.constBegin(); it != record.constEnd(); ++it) {
        for (const auto &[key, field] : wanted) {
            if (it.key() == *key) {
                found.*field = &it.value();
                break;
            }
        }
    }
    return found;
}
