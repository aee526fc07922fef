#pragma once

#include <QByteArray>
#include <QString>

// The texts that go to and come from /usr/bin/curl.
class CurlText
{
public:
    CurlText() = delete;

    // The configuration line that hands curl the credentials on its standard input ("-K -"), where
    // no other user can read them: a quoted value with curl's backslash escapes, one line.
    static QByteArray config(const QString &credentials);
    // The URL as curl takes it.
    static QString url(const QString &url);
    // What curl printed, less its progress meter.
    static QString message(const QString &output);
};
