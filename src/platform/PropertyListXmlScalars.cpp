#include "platform/PropertyListXmlScalars.h"

#include <QByteArray>
#include <QDateTime>

#include <array>
#include <charconv>

namespace {

int digits(const char *p, int count)
{
    int value = 0;
    for (int i = 0; i < count; ++i) {
        if (p[i] < '0' || p[i] > '9')
            return -1;
        value = value * 10 + (p[i] - '0');
    }
    return value;
}

} // namespace

namespace PropertyListXmlScalars {

std::string_view trimmed(std::string_view text)
{
    const auto space = [](char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; };
    size_t b = 0;
    size_t e = text.size();
    while (b < e && space(text[b]))
        ++b;
    while (e > b && space(text[e - 1]))
        --e;
    return text.substr(b, e - b);
}

bool integer(std::string_view digitsText, QVariant &value)
{
    if (!digitsText.empty() && digitsText[0] == '+')
        digitsText.remove_prefix(1);
    const char *first = digitsText.data();
    const char *last = first + digitsText.size();
    qint64 number = 0;
    auto result = std::from_chars(first, last, number);
    if (result.ec == std::errc::result_out_of_range && first < last && *first != '-') {
        // Unsigned 64-bit values above the signed range are valid property-list integers.
        quint64 big = 0;
        result = std::from_chars(first, last, big);
        if (result.ec == std::errc() && result.ptr == last) {
            value = QVariant::fromValue(big);
            return true;
        }
    }
    if (first == last || result.ec != std::errc() || result.ptr != last)
        return false;
    value = QVariant::fromValue(number);
    return true;
}

bool real(std::string_view number, QVariant &value)
{
    if (!number.empty() && number[0] == '+')
        number.remove_prefix(1);
    const char *first = number.data();
    const char *last = first + number.size();
    double real = 0;
    // from_chars reads "nan", "inf" and "-inf" too, which is how non-finite reals are written.
    const auto result = std::from_chars(first, last, real);
    if (first == last || result.ec != std::errc() || result.ptr != last)
        return false;
    value = QVariant(real);
    return true;
}

bool date(std::string_view date, QVariant &value)
{
    const char *d = date.data();
    if (date.size() != 20 || d[4] != '-' || d[7] != '-' || d[10] != 'T' || d[13] != ':' || d[16] != ':'
        || d[19] != 'Z')
        return false;
    // digits() answers -1 for anything but digits, which QDate would take for the year 1 BC.
    const int year = digits(d, 4);
    const QDate day(year, digits(d + 5, 2), digits(d + 8, 2));
    const QTime time(digits(d + 11, 2), digits(d + 14, 2), digits(d + 17, 2));
    if (year < 1 || !day.isValid() || !time.isValid())
        return false;
    value = QDateTime(day, time, Qt::UTC);
    return true;
}

bool data(std::string_view text, QVariant &value)
{
    static const auto table = [] {
        std::array<qint8, 256> t;
        t.fill(-1);
        for (int i = 0; i < 26; ++i) {
            t['A' + i] = qint8(i);
            t['a' + i] = qint8(26 + i);
        }
        for (int i = 0; i < 10; ++i)
            t['0' + i] = qint8(52 + i);
        t['+'] = 62;
        t['/'] = 63;
        t[' '] = t['\t'] = t['\n'] = t['\r'] = -2;
        t['='] = -3;
        return t;
    }();
    QByteArray bytes(qsizetype(text.size()) * 3 / 4 + 3, Qt::Uninitialized);
    char *out = bytes.data();
    quint32 bits = 0;
    int count = 0;
    bool padding = false;
    const auto *in = reinterpret_cast<const quint8 *>(text.data());
    for (qsizetype i = 0; i < qsizetype(text.size()); ++i) {
        const qint8 code = table[in[i]];
        if (code >= 0 && !padding) {
            bits = (bits << 6) | quint32(code);
            if (++count == 4) {
                *out++ = char(bits >> 16);
                *out++ = char(bits >> 8);
                *out++ = char(bits);
                bits = 0;
                count = 0;
            }
        } else if (code == -3) {
            padding = true;
        } else if (code != -2) {
            return false;
        }
    }
    if (count == 1)
        return false;
    if (count == 2) {
        *out++ = char(bits >> 4);
    } else if (count == 3) {
        *out++ = char(bits >> 10);
        *out++ = char(bits >> 2);
    }
    bytes.truncate(out - bytes.data());
    value = bytes;
    return true;
}

} // namespace PropertyListXmlScalars
