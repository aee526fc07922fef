#include "exchange/ExportFields.h"

#include "store/Assignment.h"

ExportFields ExportFields::of(const QVariantMap &record)
{
    ExportFields found;
    for (auto it = record.constBegin(); it != record.constEnd(); ++it) {
        const QString &key = it.key();
        const QVariant *value = &it.value();
        // The length tells most keys apart before any characters are compared.
        switch (key.size()) {
        case 4:
            if (key == AssignmentKeys::Name)
                found.name = value;
            else if (key == AssignmentKeys::Date)
                found.date = value;
            else if (key == AssignmentKeys::Type)
                found.type = value;
            break;
        case 5:
            if (key == AssignmentKeys::Grade)
                found.grade = value;
            else if (key == AssignmentKeys::Notes)
                found.notes = value;
            break;
        case 6:
            if (key == AssignmentKeys::Course)
                found.course = value;
            break;
        case 8:
            if (key == AssignmentKeys::Textbook)
                found.textbook = value;
            break;
        case 9:
            if (key == AssignmentKeys::Completed)
                found.completed = value;
            break;
        default:
            break;
        }
    }
    return found;
}
