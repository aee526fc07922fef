#pragma once

#include <QHash>
#include <QList>
#include <QString>
#include <QVariant>

// Whole-record comparison of property-list values, as a merge needs it: the same keys with equal
// values, compared deeply. Numbers compare by value whatever their stored kind (1, 1.0 and true are
// one value, as they are when a record has been through other programs), texts exactly, dates by
// instant, data byte for byte, arrays element by element.
//
// hash() agrees with equal(): equal values always hash alike, so a hash table can find a record's
// duplicates in constant time instead of comparing it with every other record.
namespace RecordMatch {

// `skipKey`, when not empty, is left out of a dictionary at the top level on both sides.
bool equal(const QVariant &a, const QVariant &b, const QString &skipKey = {});
quint64 hash(const QVariant &value, const QString &skipKey = {});

// An index over a list of values for asking "does the list hold a value equal to this one?".
class Index
{
public:
    Index(const QVariantList &values, const QString &skipKey = {});
    bool contains(const QVariant &value) const;

private:
    const QVariantList &m_values;
    QString m_skipKey;
    QMultiHash<quint64, qsizetype> m_positions;
};

} // namespace RecordMatch
