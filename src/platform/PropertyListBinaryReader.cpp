#include "platform/PropertyListBinaryReader.h"

#include "platform/PropertyList.h"

#include <QDateTime>
#include <QVariantList>
#include <QVariantMap>

#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <optional>
#include <vector>

// Our own reader of "bplist00". libplist 2.2 was the first choice, but it stops the whole process
// with a failed assertion on a dictionary key holding a NUL byte, so one damaged file would take the
// program down; this reader checks every offset, length and reference against the buffer instead.
namespace {

const char BinaryMagic[] = "bplist00";
constexpr qsizetype TrailerSize = 32;
// Seconds from 1970-01-01 to 2001-01-01, the epoch of binary property-list dates.
constexpr double BinaryDateEpoch = 978307200.0;
constexpr int MaxDepth = 512;
// How a keyed archive's object reference looks in XML, so both forms read alike.
const QString UidKey = QStringLiteral("CF$UID");
// The seconds since 1970 of 0001-01-01T00:00:00Z and 9999-12-31T23:59:59Z: the dates that the XML
// form can hold.
constexpr qint64 FirstWritableSecond = -62135596800;
constexpr qint64 LastWritableSecond = 253402300799;

// Roughly the bytes each kind of value takes when written as XML, without its indentation; what
// matters is that a value shared a million times costs a million times.
constexpr quint64 ScalarCost = 32;
constexpr quint64 StringCost = 18;
constexpr quint64 ContainerCost = 16;

// What a value costs when written out in full: its values and its bytes.
struct Cost {
    quint64 objects = 0;
    quint64 bytes = 0;
    Cost &operator+=(const Cost &other)
    {
        objects += other.objects;
        bytes += other.bytes;
        return *this;
    }
};

// Whether a character can be written into XML as it is.
bool writableUnit(char16_t c)
{
    return c >= 0x20 ? c < 0xFFFE : (c == '\t' || c == '\n' || c == '\r');
}

quint64 bigEndian(const quint8 *p, int size)
{
    quint64 value = 0;
    for (int i = 0; i < size; ++i)
        value = (value << 8) | p[i];
    return value;
}

class Reader
{
public:
    explicit Reader(QByteArrayView bytes)
        : m_data(reinterpret_cast<const quint8 *>(bytes.data()))
        , m_size(bytes.size())
    {
    }

    std::optional<QVariant> read(QString &error)
    {
        m_byteLimit = std::max<quint64>(PropertyList::MinExpandedLimit, quint64(m_size) * PropertyList::MaxExpansion);
        if (m_size < qsizetype(sizeof BinaryMagic - 1) + TrailerSize + 1)
            return failure(error, QStringLiteral("the binary property list is truncated"));
        const quint8 *trailer = m_data + m_size - TrailerSize;
        m_offsetSize = trailer[6];
        m_refSize = trailer[7];
        const quint64 count = bigEndian(trailer + 8, 8);
        const quint64 top = bigEndian(trailer + 16, 8);
        const quint64 table = bigEndian(trailer + 24, 8);
        m_objectsEnd = m_size - TrailerSize;
        if (m_offsetSize < 1 || m_offsetSize > 8 || m_refSize < 1 || m_refSize > 8 || count == 0 || top >= count
            || table < 8 || table >= quint64(m_objectsEnd) || count > table - 8
            || count > (quint64(m_objectsEnd) - table) / quint64(m_offsetSize))
            return failure(error, QStringLiteral("the binary property list has a damaged trailer"));
        m_table = qsizetype(table);
        m_count = qsizetype(count);
        m_done.assign(size_t(m_count), QVariant());
        m_cost.assign(size_t(m_count), Cost());
        m_state.assign(size_t(m_count), Unseen);
        QVariant root;
        Cost cost;
        if (!object(qsizetype(top), 0, root, cost))
            return failure(error, m_error);
        return root;
    }

    bool textWillChange() const { return m_textWillChange; }

private:
    enum State : quint8 { Unseen, InProgress, Done };

    static std::optional<QVariant> failure(QString &error, const QString &message)
    {
        error = message;
        return std::nullopt;
    }

    bool fail(const QString &message)
    {
        if (m_error.isEmpty())
            m_error = message;
        return false;
    }

    bool damaged() { return fail(QStringLiteral("the binary property list is damaged")); }

    // Where the payload of the object at `offset` starts and how many units it holds: the count is
    // in the marker's low nibble, or in an integer object after it when the nibble is 0xF.
    bool lengthOf(qsizetype offset, qsizetype &start, quint64 &length)
    {
        const quint8 info = m_data[offset] & 0x0F;
        start = offset + 1;
        if (info != 0x0F) {
            length = info;
            return true;
        }
        if (start >= m_objectsEnd || (m_data[start] & 0xF0) != 0x10 || (m_data[start] & 0x0F) > 3)
            return damaged();
        const int size = 1 << (m_data[start] & 0x0F);
        if (m_objectsEnd - start - 1 < size)
            return damaged();
        length = bigEndian(m_data + start + 1, size);
        start += 1 + size;
        return true;
    }

    bool fits(qsizetype start, quint64 length, quint64 unit)
    {
        return unit == 0 || length <= quint64(m_objectsEnd - start) / unit;
    }

    bool reference(qsizetype at, qsizetype &index)
    {
        const quint64 ref = bigEndian(m_data + at, m_refSize);
        if (ref >= quint64(m_count))
            return damaged();
        index = qsizetype(ref);
        return true;
    }

    // Adds a value's cost to its container's; fails once the whole would pass the limits. Each
    // part is within the limits when it is added, so the sums cannot overflow.
    bool charge(Cost &total, const Cost &part)
    {
        total += part;
        if (total.objects > PropertyList::MaxExpandedObjects)
            return fail(QStringLiteral("the binary property list would expand to more than %1 values when written out "
                                       "(it refers to the same values over and over); it is treated as damaged")
                            .arg(PropertyList::MaxExpandedObjects));
        if (total.bytes > m_byteLimit)
            return fail(QStringLiteral("the binary property list would expand to more than %1 MB when written out "
                                       "(it refers to the same values over and over); it is treated as damaged")
                            .arg(m_byteLimit >> 20));
        return true;
    }

    bool object(qsizetype index, int depth, QVariant &value, Cost &cost)
    {
        if (m_state[size_t(index)] == Done) {
            // Shared objects (a writer stores each distinct key or string once) are converted once
            // and shared in the result too, but every save writes each reference in full: what
            // they add up to is what is checked.
            value = m_done[size_t(index)];
            return charge(cost, m_cost[size_t(index)]);
        }
        if (m_state[size_t(index)] == InProgress)
            return fail(QStringLiteral("the binary property list refers to itself"));
        if (depth > MaxDepth)
            return fail(QStringLiteral("arrays and dictionaries are nested too deeply"));
        const quint64 offset = bigEndian(m_data + m_table + index * m_offsetSize, m_offsetSize);
        if (offset < 8 || offset >= quint64(m_objectsEnd))
            return damaged();
        m_state[size_t(index)] = InProgress;
        Cost own{1, ScalarCost};
        if (!convert(qsizetype(offset), depth, value, own))
            return false;
        m_state[size_t(index)] = Done;
        m_done[size_t(index)] = value;
        m_cost[size_t(index)] = own;
        return charge(cost, own);
    }

    void checkText(const QString &text)
    {
        if (m_textWillChange)
            return;
        const char16_t *s = reinterpret_cast<const char16_t *>(text.utf16());
        const qsizetype length = text.size();
        for (qsizetype i = 0; i < length; ++i) {
            const char16_t c = s[i];
            if (QChar::isHighSurrogate(c) && i + 1 < length && QChar::isLowSurrogate(s[i + 1])) {
                ++i;
            } else if (QChar::isSurrogate(c) || !writableUnit(c)) {
                m_textWillChange = true;
                return;
            }
        }
    }

    bool convert(qsizetype offset, int depth, QVariant &value, Cost &cost)
    {
        const quint8 marker = m_data[offset];
        const quint8 info = marker & 0x0F;
        const qsizetype available = m_objectsEnd - offset - 1;
        const quint8 *payload = m_data + offset + 1;
        switch (marker >> 4) {
        case 0x0:
            if (marker == 0x08 || marker == 0x09) {
                value = QVariant(marker == 0x09);
                return true;
            }
            return fail(QStringLiteral("the binary property list holds a value of an unknown type"));
        case 0x1: {
            if (info > 4 || available < (1 << info))
                return damaged();
            if (info == 4) {
                // 128-bit integers: only the unsigned 64-bit values above the signed range need them.
                const quint64 high = bigEndian(payload, 8);
                const quint64 low = bigEndian(payload + 8, 8);
                if (high == 0 && low > quint64(std::numeric_limits<qint64>::max()))
                    value = QVariant::fromValue(low);
                else
                    value = QVariant::fromValue(qint64(low));
            } else {
                // 1, 2 and 4 bytes are unsigned; 8 bytes are signed.
                value = QVariant::fromValue(qint64(bigEndian(payload, 1 << info)));
            }
            return true;
        }
        case 0x2: {
            if ((info != 2 && info != 3) || available < (1 << info))
                return damaged();
            const quint64 bits = bigEndian(payload, 1 << info);
            if (info == 2) {
                float real;
                const quint32 narrow = quint32(bits);
                std::memcpy(&real, &narrow, sizeof real);
                value = QVariant(double(real));
            } else {
                double real;
                std::memcpy(&real, &bits, sizeof real);
                value = QVariant(real);
            }
            return true;
        }
        case 0x3: {
            if (marker != 0x33 || available < 8)
                return damaged();
            const quint64 bits = bigEndian(payload, 8);
            double seconds;
            std::memcpy(&seconds, &bits, sizeof seconds);
            // Only the years 1 to 9999: nothing else can be written back as a property-list date.
            const double since1970 = std::isfinite(seconds) ? std::floor(seconds + BinaryDateEpoch) : 0.0;
            if (!std::isfinite(seconds) || since1970 < double(FirstWritableSecond)
                || since1970 > double(LastWritableSecond))
                return fail(QStringLiteral("the binary property list holds a date outside the years 1 to 9999"));
            value = QDateTime::fromMSecsSinceEpoch(qint64(since1970) * 1000, Qt::UTC);
            return true;
        }
        case 0x4:
        case 0x5:
        case 0x6: {
            qsizetype start = 0;
            quint64 length = 0;
            const quint64 unit = (marker >> 4) == 0x6 ? 2 : 1;
            if (!lengthOf(offset, start, length) || !fits(start, length, unit))
                return damaged();
            const auto *bytes = reinterpret_cast<const char *>(m_data + start);
            if ((marker >> 4) == 0x4) {
                value = QByteArray(bytes, qsizetype(length));
                cost.bytes = StringCost + length / 3 * 4 + length / 57 + 4;
            } else if ((marker >> 4) == 0x5) {
                const QString text = QString::fromLatin1(bytes, qsizetype(length));
                checkText(text);
                value = text;
                cost.bytes = StringCost + 2 * length;
            } else {
                QString text(qsizetype(length), Qt::Uninitialized);
                char16_t *out = reinterpret_cast<char16_t *>(text.data());
                for (quint64 i = 0; i < length; ++i)
                    out[i] = char16_t((m_data[start + 2 * i] << 8) | m_data[start + 2 * i + 1]);
                checkText(text);
                value = text;
                cost.bytes = StringCost + 3 * length;
            }
            return true;
        }
        case 0x8: {
            if (available < info + 1)
                return damaged();
            value = QVariantMap{{UidKey, QVariant::fromValue(qint64(bigEndian(payload, info + 1)))}};
            return true;
        }
        case 0xA:
        case 0xC: { // arrays, and sets read as arrays
            qsizetype start = 0;
            quint64 length = 0;
            if (!lengthOf(offset, start, length) || !fits(start, length, quint64(m_refSize)))
                return damaged();
            QVariantList list;
            list.reserve(qsizetype(length));
            for (quint64 i = 0; i < length; ++i) {
                qsizetype index = 0;
                QVariant item;
                if (!reference(start + qsizetype(i) * m_refSize, index) || !object(index, depth + 1, item, cost))
                    return false;
                list.append(item);
            }
            cost.bytes += ContainerCost;
            value = list;
            return true;
        }
        case 0xD: {
            qsizetype start = 0;
            quint64 length = 0;
            if (!lengthOf(offset, start, length) || !fits(start, length, 2 * quint64(m_refSize)))
                return damaged();
            std::map<QString, QVariant> map;
            const qsizetype values = start + qsizetype(length) * m_refSize;
            for (quint64 i = 0; i < length; ++i) {
                qsizetype keyIndex = 0;
                qsizetype valueIndex = 0;
                QVariant key;
                QVariant item;
                if (!reference(start + qsizetype(i) * m_refSize, keyIndex)
                    || !object(keyIndex, depth + 1, key, cost))
                    return false;
                if (key.typeId() != QMetaType::QString)
                    return fail(QStringLiteral("the binary property list has a dictionary key that is not text"));
                if (!reference(values + qsizetype(i) * m_refSize, valueIndex)
                    || !object(valueIndex, depth + 1, item, cost))
                    return false;
                map.insert_or_assign(key.toString(), std::move(item));
            }
            cost.bytes += ContainerCost;
            value = QVariantMap(std::move(map));
            return true;
        }
        default:
            return fail(QStringLiteral("the binary property list holds a value of an unknown type"));
        }
    }

    const quint8 *m_data;
    qsizetype m_size;
    qsizetype m_objectsEnd = 0;
    qsizetype m_table = 0;
    qsizetype m_count = 0;
    int m_offsetSize = 0;
    int m_refSize = 0;
    quint64 m_byteLimit = 0;
    bool m_textWillChange = false;
    std::vector<QVariant> m_done;
    std::vector<Cost> m_cost;
    std::vector<State> m_state;
    QString m_error;
};

} // namespace

namespace PropertyListBinaryReader {

bool isBinary(QByteArrayView bytes)
{
    return bytes.startsWith(QByteArrayView(BinaryMagic, 6));
}

std::optional<QVariant> read(QByteArrayView bytes, QString *error, bool *textWillChange)
{
    QString message;
    std::optional<QVariant> value;
    if (!bytes.startsWith(QByteArrayView(BinaryMagic, 8))) {
        message = QStringLiteral("unsupported binary property-list version");
    } else {
        Reader reader(bytes);
        value = reader.read(message);
        if (textWillChange)
            *textWillChange = value && reader.textWillChange();
    }
    if (!value && error)
        *error = message;
    return value;
}

} // namespace PropertyListBinaryReader
