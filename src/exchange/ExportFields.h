#pragma once

#include <QString>
#include <QVariant>
#include <QVariantMap>

class Assignment;

// The fields an export writes, each found once per record instead of once per use. A field the
// record does not have is a null pointer.
struct ExportFields {
    const QVariant *name = nullptr;
    const QVariant *date = nullptr;
    const QVariant *course = nullptr;
    const QVariant *textbook = nullptr;
    const QVariant *type = nullptr;
    const QVariant *grade = nullptr;
    const QVariant *completed = nullptr;
    const QVariant *notes = nullptr;

    // One walk through the record's keys, which is cheaper than looking up eight keys one by one
    // in a record of a dozen.
    static ExportFields of(const QVariantMap &record);
    // Straight from the record's slots; the pointers live as long as the record is unchanged.
    static ExportFields of(const Assignment &record);

    // The string a value holds, when it holds one (the usual case); null otherwise.
    static const QString *stringIn(const QVariant *value)
    {
        return value && value->metaType() == QMetaType::fromType<QString>()
            ? static_cast<const QString *>(value->constData())
            : nullptr;
    }
    // Appends the value as text (nothing for an absent one), without a copy when it is text.
    static void append(QString &out, const QVariant *value)
    {
        if (const QString *text = stringIn(value))
            out += *text;
        else if (value)
            out += value->toString();
    }
};
