#include "importing/HtmlText.h"

#include <QHash>
#include <QRegularExpression>
#include <QStringList>

namespace HtmlText {

namespace {

// Elements after which a reader sees a new line.
bool breaksLine(const QString &tag)
{
    static const QStringList blocks = {QStringLiteral("br"),  QStringLiteral("p"),   QStringLiteral("div"),
                                       QStringLiteral("li"),  QStringLiteral("tr"),  QStringLiteral("h1"),
                                       QStringLiteral("h2"),  QStringLiteral("h3"),  QStringLiteral("h4"),
                                       QStringLiteral("h5"),  QStringLiteral("h6"),  QStringLiteral("ul"),
                                       QStringLiteral("ol"),  QStringLiteral("table"), QStringLiteral("blockquote"),
                                       QStringLiteral("hr"),  QStringLiteral("pre")};
    return blocks.contains(tag);
}

QString entity(const QString &name)
{
    static const QHash<QString, QString> named = {
        {QStringLiteral("amp"), QStringLiteral("&")},       {QStringLiteral("lt"), QStringLiteral("<")},
        {QStringLiteral("gt"), QStringLiteral(">")},        {QStringLiteral("quot"), QStringLiteral("\"")},
        {QStringLiteral("apos"), QStringLiteral("'")},      {QStringLiteral("nbsp"), QStringLiteral(" ")},
        {QStringLiteral("ndash"), QString(QChar(0x2013))}, {QStringLiteral("mdash"), QString(QChar(0x2014))},
        {QStringLiteral("rsquo"), QString(QChar(0x2019))}, {QStringLiteral("lsquo"), QString(QChar(0x2018))},
        {QStringLiteral("rdquo"), QString(QChar(0x201D))}, {QStringLiteral("ldquo"), QString(QChar(0x201C))},
        {QStringLiteral("hellip"), QString(QChar(0x2026))}};
    if (name.startsWith(QLatin1Char('#'))) {
        bool ok = false;
        const uint code = name.startsWith(QLatin1String("#x"), Qt::CaseInsensitive) ? name.mid(2).toUInt(&ok, 16)
                                                                                     : name.mid(1).toUInt(&ok, 10);
        if (ok && code > 0 && code <= 0x10FFFF && !(code >= 0xD800 && code <= 0xDFFF)) {
            const char32_t c = code;
            return QString::fromUcs4(&c, 1);
        }
        return {};
    }
    return named.value(name.toLower());
}

// The link target inside an anchor's tag text (`a href="..."`), or empty.
QString hrefOf(const QString &tagText)
{
    static const QRegularExpression pattern(QStringLiteral("\\bhref\\s*=\\s*(?:\"([^\"]*)\"|'([^']*)'|([^\\s>]+))"),
                                            QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch match = pattern.match(tagText);
    if (!match.hasMatch())
        return {};
    for (int group = 1; group <= 3; ++group)
        if (match.capturedLength(group) > 0)
            return match.captured(group);
    return {};
}

QString decodeEntities(const QString &text)
{
    QString out;
    out.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == QLatin1Char('&')) {
            const qsizetype end = text.indexOf(QLatin1Char(';'), i + 1);
            if (end > i + 1 && end - i <= 10) {
                const QString decoded = entity(text.mid(i + 1, end - i - 1));
                if (!decoded.isEmpty()) {
                    out += decoded;
                    i = end;
                    continue;
                }
            }
        }
        out += text[i];
    }
    return out;
}

} // namespace

bool looksLikeHtml(const QString &text)
{
    static const QRegularExpression markup(QStringLiteral("<\\s*/?\\s*[A-Za-z][^>]*>|&(#\\d+|#x[0-9A-Fa-f]+|[A-Za-z]+);"));
    return markup.match(text).hasMatch();
}

QString toPlainText(const QString &html)
{
    QString out;
    out.reserve(html.size());
    QString pendingHref;
    qsizetype i = 0;
    qsizetype linkStart = -1;
    bool skipping = false; // inside <script> or <style>
    while (i < html.size()) {
        const QChar c = html[i];
        if (c != QLatin1Char('<')) {
            const qsizetype next = html.indexOf(QLatin1Char('<'), i);
            const qsizetype end = next < 0 ? html.size() : next;
            if (!skipping) {
                // Source line breaks and runs of blanks are layout, as a browser treats them.
                QString chunk = decodeEntities(html.mid(i, end - i));
                for (QChar ch : chunk) {
                    const bool blank = ch.isSpace() && ch != QChar(0x00A0);
                    if (blank) {
                        if (!out.isEmpty() && !out.back().isSpace())
                            out += QLatin1Char(' ');
                    } else {
                        out += ch == QChar(0x00A0) ? QLatin1Char(' ') : ch;
                    }
                }
            }
            i = end;
            continue;
        }
        const qsizetype close = html.indexOf(QLatin1Char('>'), i + 1);
        if (close < 0) { // a lone '<' is text
            if (!skipping)
                out += c;
            ++i;
            continue;
        }
        const QString tagText = html.mid(i + 1, close - i - 1).trimmed();
        i = close + 1;
        const bool closing = tagText.startsWith(QLatin1Char('/'));
        // The element's name: the letters and digits up to the first blank or slash.
        QString name;
        for (QChar ch : QStringView(tagText).mid(closing ? 1 : 0).trimmed()) {
            if (!ch.isLetterOrNumber())
                break;
            name += ch.toLower();
        }
        if (name == QLatin1String("script") || name == QLatin1String("style")) {
            skipping = !closing;
            continue;
        }
        if (skipping)
            continue;
        if (name == QLatin1String("a")) {
            if (!closing) {
                pendingHref = hrefOf(tagText);
                linkStart = out.size();
            } else if (!pendingHref.isEmpty() && linkStart >= 0) {
                const QString shown = out.mid(linkStart).trimmed();
                if (shown != pendingHref && !pendingHref.startsWith(QLatin1String("javascript:")))
                    out += QStringLiteral(" (%1)").arg(pendingHref);
                pendingHref.clear();
                linkStart = -1;
            }
            continue;
        }
        if (breaksLine(name)) {
            while (out.endsWith(QLatin1Char(' ')))
                out.chop(1);
            if (name == QLatin1String("li") && !closing)
                out += out.isEmpty() || out.endsWith(QLatin1Char('\n')) ? QStringLiteral("- ") : QStringLiteral("\n- ");
            else if (!out.isEmpty())
                out += QLatin1Char('\n');
        }
    }
    // At most one blank line between paragraphs, no blanks at line ends.
    QStringList lines = out.split(QLatin1Char('\n'));
    QStringList kept;
    for (QString &line : lines) {
        line = line.trimmed();
        if (line.isEmpty() && (kept.isEmpty() || kept.back().isEmpty()))
            continue;
        kept.append(line);
    }
    while (!kept.isEmpty() && kept.back().isEmpty())
        kept.removeLast();
    return kept.join(QLatin1Char('\n'));
}

} // namespace HtmlText
