#include "sync/CurlText.h"

#include <QRegularExpression>
#include <QStringList>

QByteArray CurlText::config(const QString &credentials)
{
    // A quoted value of curl's configuration syntax: backslash escapes, one line.
    QByteArray quoted;
    for (const char c : credentials.toUtf8()) {
        switch (c) {
        case '\\':
            quoted += "\\\\";
            break;
        case '"':
            quoted += "\\\"";
            break;
        case '\n':
            quoted += "\\n";
            break;
        case '\r':
            quoted += "\\r";
            break;
        case '\t':
            quoted += "\\t";
            break;
        case '\v':
            quoted += "\\v";
            break;
        default:
            quoted += c;
        }
    }
    return "user = \"" + quoted + "\"\n";
}

// curl draws a progress meter on its error output, which the user has no use for in an alert;
// the meter's lines go and the tool's own message stays.
QString CurlText::message(const QString &output)
{
    static const QRegularExpression meterRow(
        QStringLiteral("^\\s*\\d+\\s+[\\d.]+[kMGTP]?\\s+\\d+\\s+[\\d.]+[kMGTP]?\\s+\\d+\\s+[\\d.]+[kMGTP]?\\s"));
    QStringList kept;
    for (const QString &line : output.split(QLatin1Char('\n'))) {
        const QString shown = line.section(QLatin1Char('\r'), -1).trimmed();
        if (shown.isEmpty() || shown.startsWith(QLatin1String("% Total")) || shown.startsWith(QLatin1String("Dload"))
            || meterRow.match(shown).hasMatch())
            continue;
        kept << shown;
    }
    return kept.isEmpty() ? output : kept.join(QLatin1Char('\n'));
}

// curl of today refuses a blank in a URL, where the curl of old took it as typed; a blank is the
// one character escaped, so paths and user names with blanks keep working.
QString CurlText::url(const QString &url)
{
    QString escaped = url;
    return escaped.replace(QLatin1Char(' '), QStringLiteral("%20"));
}
