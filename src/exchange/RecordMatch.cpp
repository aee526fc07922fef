#include "exchange/RecordMatch.h"

#include <QDateTime>

#include <cmath>
#include <cstring>

namespace RecordMatch {

namespace {

enum class Kind { Number, Text, Date, Data, Array, Dictionary, Other };

Kind kindOf(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
    case QMetaType::Float:
        return Kind::Number;
    case QMetaType::QString:
        return Kind::Text;
    case QMetaType::QDateTime:
        return Kind::Date;
    case QMetaType::QByteArray:
        return Kind::Data;
    case QMetaType::QVariantList:
    case QMetaType::QStringList:
        return Kind::Array;
    case QMetaType::QVariantMap:
        return Kind::Dictionary;
    default:
        return Kind::Other;
    }
}

// Integers beyond 2^53 lose precision as doubles; compare those exactly as integers.
bool isLargeInteger(const QVariant &value)
{
    const int type = value.typeId();
    if (type == QMetaType::LongLong || type == QMetaType::ULongLong) {
        const qint64 v = value.toLongLong();
        return v > (qint64(1) << 53) || v < -(qint64(1) << 53);
    }
    return false;
}

bool numbersEqual(const QVariant &a, const QVariant &b)
{
    if (isLargeInteger(a) || isLargeInteger(b)) {
        const bool aIsInteger = a.typeId() != QMetaType::Double && a.typeId() != QMetaType::Float;
        const bool bIsInteger = b.typeId() != QMetaType::Double && b.typeId() != QMetaType::Float;
        if (aIsInteger && bIsInteger)
            return a.toLongLong() == b.toLongLong();
    }
    return a.toDouble() == b.toDouble();
}

quint64 mix(quint64 seed, quint64 value)
{
    // The 64-bit finaliser of MurmurHash3, folded into a running seed.
    value ^= value >> 33;
    value *= 0xff51afd7ed558ccdULL;
    value ^= value >> 33;
    value *= 0xc4ceb9fe1a85ec53ULL;
    value ^= value >> 33;
    return (seed ^ value) * 0x100000001b3ULL + 0x9e3779b97f4a7c15ULL;
}

quint64 numberHash(const QVariant &value)
{
    double d = value.toDouble();
    if (d == 0)
        d = 0; // -0.0 and 0.0 are equal
    quint64 bits;
    std::memcpy(&bits, &d, sizeof bits);
    return bits;
}

} // namespace

bool equal(const QVariant &a, const QVariant &b, const QString &skipKey)
{
    const Kind kind = kindOf(a);
    if (kind != kindOf(b))
        return false;
    switch (kind) {
    case Kind::Number:
        return numbersEqual(a, b);
    case Kind::Text:
        return a.toString() == b.toString();
    case Kind::Date:
        return a.toDateTime() == b.toDateTime();
    case Kind::Data:
        return a.toByteArray() == b.toByteArray();
    case Kind::Array: {
        const QVariantList left = a.toList();
        const QVariantList right = b.toList();
        if (left.size() != right.size())
            return false;
        for (qsizetype i = 0; i < left.size(); ++i) {
            if (!equal(left.at(i), right.at(i)))
                return false;
        }
        return true;
    }
    case Kind::Dictionary: {
        const QVariantMap left = a.toMap();
        const QVariantMap right = b.toMap();
        // Both maps iterate in key order, so one walk over each compares keys and values.
        auto l = left.constBegin();
        auto r = right.constBegin();
        while (true) {
            while (l != left.constEnd() && !skipKey.isEmpty() && l.key() == skipKey)
                ++l;
            while (r != right.constEnd() && !skipKey.isEmpty() && r.key() == skipKey)
                ++r;
            if (l == left.constEnd() || r == right.constEnd())
                return l == left.constEnd() && r == right.constEnd();
            if (l.key() != r.key() || !equal(l.value(), r.value()))
                return false;
            ++l;
            ++r;
        }
    }
    case Kind::Other:
        return a == b;
    }
    return false;
}

quint64 hash(const QVariant &value, const QString &skipKey)
{
    const Kind kind = kindOf(value);
    quint64 seed = mix(0, quint64(kind) + 1);
    switch (kind) {
    case Kind::Number:
        return mix(seed, numberHash(value));
    case Kind::Text:
        return mix(seed, qHash(value.toString()));
    case Kind::Date:
        return mix(seed, quint64(value.toDateTime().toMSecsSinceEpoch()));
    case Kind::Data:
        return mix(seed, qHash(value.toByteArray()));
    case Kind::Array: {
        const QVariantList list = value.toList();
        for (const QVariant &element : list)
            seed = mix(seed, hash(element));
        return mix(seed, quint64(list.size()));
    }
    case Kind::Dictionary: {
        const QVariantMap map = value.toMap();
        for (auto it = map.constBegin(); it != map.constEnd(); ++it) {
            if (!skipKey.isEmpty() && it.key() == skipKey)
                continue;
            seed = mix(seed, qHash(it.key()));
            seed = mix(seed, hash(it.value()));
        }
        return seed;
    }
    case Kind::Other:
        return seed;
    }
    return seed;
}

Index::Index(const QVariantList &values, const QString &skipKey)
    : m_values(values)
    , m_skipKey(skipKey)
{
    m_positions.reserve(values.size());
    for (qsizetype i = 0; i < values.size(); ++i)
        m_positions.insert(hash(values.at(i), skipKey), i);
}

bool Index::contains(const QVariant &value) const
{
    const quint64 key = hash(value, m_skipKey);
    for (auto it = m_positions.constFind(key); it != m_positions.constEnd() && it.key() == key; ++it) {
        if (equal(m_values.at(it.value()), value, m_skipKey))
            return true;
    }
    return false;
}

} // namespace RecordMatch
