#include "exchange/Utf8Builder.h"

#include <algorithm>

Utf8Builder::Utf8Builder(qsizetype expectedBytes)
{
    m_bytes.resize(std::max<qsizetype>(expectedBytes, 64));
}

char *Utf8Builder::room(qsizetype bytes)
{
    if (m_used + bytes > m_bytes.size())
        m_bytes.resize(std::max(m_bytes.size() * 2, m_used + bytes));
    return m_bytes.data() + m_used;
}

Utf8Builder &Utf8Builder::operator+=(QStringView text)
{
    char *out = room(m_encoder.requiredSpace(text.size()));
    m_used = m_encoder.appendToBuffer(out, text) - m_bytes.data();
    return *this;
}

Utf8Builder &Utf8Builder::operator+=(QLatin1Char c)
{
    if (c.unicode() < 0x80) {
        *room(1) = c.toLatin1();
        ++m_used;
        return *this;
    }
    const QChar wide(c);
    return *this += QStringView(&wide, 1);
}

QByteArray Utf8Builder::take()
{
    m_bytes.truncate(m_used);
    m_used = 0;
    return std::exchange(m_bytes, QByteArray());
}
