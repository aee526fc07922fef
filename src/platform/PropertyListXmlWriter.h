#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QIODevice>
#include <QStringView>
#include <QVariant>

#include <cstring>
#include <string_view>

// The XML half of PropertyList's writing: appends values to a QByteArray in the standard form (tab
// indentation, <true/>, <array/>, base64 in lines of 76). Only what XML 1.0 allows is written:
// control characters other than tab, line feed and carriage return (written as "&#13;", which
// readers keep) and U+FFFE/U+FFFF are left out, a lone surrogate becomes U+FFFD. It writes through a raw cursor into the
// array's spare capacity and settles the array's size once, when it goes out of scope, because a
// store of 100,000 records is millions of small pieces and each QByteArray::append costs more than
// the bytes it copies.
//
// Given a device, it writes to it whenever a megabyte has collected, so a whole document is never
// held in memory and the buffer stays in the processor's cache.
class PropertyListXmlWriter
{
public:
    explicit PropertyListXmlWriter(QByteArray &out, QIODevice *device = nullptr);
    ~PropertyListXmlWriter();
    PropertyListXmlWriter(const PropertyListXmlWriter &) = delete;
    PropertyListXmlWriter &operator=(const PropertyListXmlWriter &) = delete;

    void value(const QVariant &value, int depth);
    void raw(QByteArrayView bytes);
    // A dictionary written entry by entry, for callers that keep their entries in order themselves
    // (a record's fields): begin, then entry() per key in key order, then end.
    void beginDictionary(int depth);
    void endDictionary(int depth);
    void emptyDictionary(int depth);
    void entry(QStringView key, const QVariant &item, int depth);
    // Writes what is left to the device; false when any write to it failed.
    bool flush();

    // A value that no reader would take back was met (a date outside the years 1 to 9999); it was
    // written as the nearest one that can be read. The file writer refuses such a value.
    bool wroteUnreadable() const { return m_wroteUnreadable; }

private:
    char *room(qsizetype bytes)
    {
        if (m_end - m_p < bytes)
            grow(bytes);
        return m_p;
    }
    void grow(qsizetype bytes);
    template<qsizetype N>
    void literal(const char (&text)[N])
    {
        std::memcpy(room(N - 1), text, N - 1);
        m_p += N - 1;
    }
    void tabs(int depth);
    void escaped(QStringView text);
    void string(QStringView text, int depth);
    void number(std::string_view open, const char *text, qsizetype length, std::string_view close, int depth);
    void integer(qint64 number, int depth);
    void unsignedInteger(quint64 number, int depth);
    void real(double real, int depth);
    void realFromFloat(float real, int depth);
    void date(const QDateTime &dateTime, int depth);
    void data(const QByteArray &bytes, int depth);
    void list(const QVariantList &list, int depth);
    void stringList(const QStringList &list, int depth);
    void map(const QVariantMap &map, int depth);
    void hash(const QVariantHash &hash, int depth);

    QByteArray &m_out;
    QIODevice *m_device;
    bool m_deviceFailed = false;
    bool m_wroteUnreadable = false;
    char *m_p;
    char *m_end;
};
