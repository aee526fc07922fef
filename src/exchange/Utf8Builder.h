#pragma once

#include <QByteArray>
#include <QLatin1StringView>
#include <QString>
#include <QStringEncoder>
#include <QStringView>

// A long text built straight into UTF-8: each piece is encoded as it is appended, so no UTF-16 copy
// of the whole text (twice its size) is built and converted at the end.
class Utf8Builder
{
public:
    explicit Utf8Builder(qsizetype expectedBytes);

    Utf8Builder &operator+=(QStringView text);
    Utf8Builder &operator+=(const QString &text) { return *this += QStringView(text); }
    Utf8Builder &operator+=(QLatin1Char c);

    // The bytes; the builder is empty afterwards.
    QByteArray take();

private:
    char *room(qsizetype bytes);

    QByteArray m_bytes;
    qsizetype m_used = 0;
    QStringEncoder m_encoder{QStringEncoder::Utf8};
};
