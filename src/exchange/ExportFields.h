#pragma once

#include <QVariant>
#include <QVariantMap>

// The fields an export writes, each searched for once per record instead of once per use:
// over ten thousand records the searches were the largest cost of an export. A field the record does
// not have is a null pointer.
struct ExportFields {
    const QVariant *name = nullptr;
    const QVariant *date = nullptr;
    const QVariant *course = nullptr;
    const QVariant *textbook = nullptr;
    const QVariant *type = nullptr;
    const QVariant *grade = nullptr;
    const QVariant *completed = nullptr;
    const QVariant *notes = nullptr;

    static ExportFields of(const QVariantMap &record);
};
