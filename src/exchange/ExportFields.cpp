#include "exchange/ExportFields.h"

#include "store/Assignment.h"

ExportFields ExportFields::of(const QVariantMap &record)
{
    using namespace AssignmentKeys;
    const std::pair<const QString *, const QVariant *ExportFields::*> wanted[] = {
        {&Name, &ExportFields::name},         {&Date, &ExportFields::date},
        {&Course, &ExportFields::course},     {&Textbook, &ExportFields::textbook},
        {&Type, &ExportFields::type},         {&Grade, &ExportFields::grade},
        {&Completed, &ExportFields::completed}, {&Notes, &ExportFields::notes},
    };
    ExportFields found;
    for (auto it = record.constBegin(); it != record.constEnd(); ++it) {
        const QString &candidate = it.key();
        if (candidate.isEmpty())
            continue;
        for (const auto &[key, field] : wanted) {
            // The length and first letter tell nearly every other key apart without a call to
            // compare the whole text; this runs for every key of every record exported.
            if (candidate.size() == key->size() && candidate.front() == key->front() && candidate == *key) {
                found.*field = &it.value();
                break;
            }
        }
    }
    return found;
}

ExportFields ExportFields::of(const Assignment &record)
{
    auto slot = [&](AssignmentField field) { return record.has(field) ? &record.value(field) : nullptr; };
    ExportFields found;
    found.name = slot(AssignmentField::Name);
    found.date = slot(AssignmentField::Date);
    found.course = slot(AssignmentField::Course);
    found.textbook = slot(AssignmentField::Textbook);
    found.type = slot(AssignmentField::Type);
    found.grade = slot(AssignmentField::Grade);
    found.completed = slot(AssignmentField::Completed);
    found.notes = slot(AssignmentField::Notes);
    return found;
}
