#include "widgets/URLTextViewAdditions.h"

#include <QTextCharFormat>
#include <QUrl>

namespace {

struct Prefix {
    QStringView prefix;
    QStringView scheme; // put before the word; empty where the word is already the whole address
};

// In the order they are tried; "://" anywhere in the word is tried before all of them.
constexpr Prefix Prefixes[] = {
    {u"www.", u"http://"},
    {u"ftp.", u"ftp://"},
    {u"gopher.", u"gopher://"},
    {u"mailto:", u""},
    {u"nap:", u""},
};

bool isBreak(QChar c)
{
    // Blanks, tabs, line and paragraph separators, the no-break space: whatever QChar calls space is
    // also what ends a word for the reader.
    return c.isSpace();
}

bool isAsciiLetter(char16_t c)
{
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
}

bool isDigit(char16_t c)
{
    return c >= u'0' && c <= u'9';
}

bool isHex(char16_t c)
{
    return isDigit(c) || (c >= u'a' && c <= u'f') || (c >= u'A' && c <= u'F');
}

bool isUnreserved(char16_t c)
{
    return isAsciiLetter(c) || isDigit(c) || c == u'-' || c == u'.' || c == u'_' || c == u'~';
}

bool isSubDelimiter(char16_t c)
{
    switch (c) {
    case u'!': case u'$': case u'&': case u'\'': case u'(': case u')':
    case u'*': case u'+': case u',': case u';': case u'=':
        return true;
    default:
        return false;
    }
}

// A character beyond ASCII that may stand in an internationalised address (not a control, not a
// space: words hold no spaces anyway).
bool isInternational(char16_t c)
{
    return c >= 0xA0 && !QChar(c).isSpace() && QChar(c).category() != QChar::Other_Control;
}

// Checks text[i] as one character of a part that allows `extra` besides the unreserved characters,
// the sub-delimiters and percent escapes; moves i past it. False for anything else.
bool takeCharacter(QStringView text, qsizetype &i, QStringView extra)
{
    const char16_t c = text[i].unicode();
    if (c == u'%') {
        if (i + 2 >= text.size() || !isHex(text[i + 1].unicode()) || !isHex(text[i + 2].unicode()))
            return false;
        i += 3;
        return true;
    }
    if (isUnreserved(c) || isSubDelimiter(c) || isInternational(c) || extra.contains(QChar(c))) {
        ++i;
        return true;
    }
    return false;
}

bool isWellFormedAuthority(QStringView authority)
{
    const qsizetype at = authority.lastIndexOf(u'@');
    if (at >= 0) {
        const QStringView user = authority.first(at);
        for (qsizetype i = 0; i < user.size();)
            if (!takeCharacter(user, i, u":"))
                return false;
        authority = authority.sliced(at + 1);
    }
    qsizetype i = 0;
    if (authority.startsWith(u'[')) {
        // An address literal: IPv6 or a future form, hex digits, colons and full stops in brackets.
        const qsizetype close = authority.indexOf(u']');
        if (close < 0)
            return false;
        for (qsizetype j = 1; j < close; ++j) {
            const char16_t c = authority[j].unicode();
            if (!isUnreserved(c) && !isSubDelimiter(c) && c != u':')
                return false;
        }
        i = close + 1;
    } else {
        while (i < authority.size() && authority[i] != u':')
            if (!takeCharacter(authority, i, u""))
                return false;
    }
    if (i == authority.size())
        return true;
    if (authority[i] != u':')
        return false;
    for (++i; i < authority.size(); ++i)
        if (!isDigit(authority[i].unicode()))
            return false;
    return true;
}

} // namespace

bool URLTextViewAdditions::isWellFormedUrl(QStringView text)
{
    if (text.isEmpty() || !isAsciiLetter(text[0].unicode()))
        return false;
    qsizetype i = 1;
    while (i < text.size()) {
        const char16_t c = text[i].unicode();
        if (!isAsciiLetter(c) && !isDigit(c) && c != u'+' && c != u'-' && c != u'.')
            break;
        ++i;
    }
    if (i == text.size() || text[i] != u':')
        return false;
    ++i;
    if (text.sliced(i).startsWith(u"//")) {
        i += 2;
        qsizetype end = i;
        while (end < text.size() && text[end] != u'/' && text[end] != u'?' && text[end] != u'#')
            ++end;
        if (!isWellFormedAuthority(text.sliced(i, end - i)))
            return false;
        i = end;
    }
    bool inFragment = false;
    while (i < text.size()) {
        if (text[i] == u'#') {
            if (inFragment)
                return false;
            inFragment = true;
            ++i;
        } else if (!takeCharacter(text, i, u":@/?")) {
            return false;
        }
    }
    return true;
}

QString URLTextViewAdditions::linkTarget(QStringView word)
{
    QString target;
    if (word.contains(u"://")) {
        target = word.toString();
    } else {
        for (const Prefix &rule : Prefixes) {
            if (word.startsWith(rule.prefix, Qt::CaseSensitive)) {
                target.reserve(rule.scheme.size() + word.size());
                target.append(rule.scheme).append(word);
                break;
            }
        }
    }
    if (target.isEmpty() || !isWellFormedUrl(target))
        return {};
    // A click hands the target to the desktop as a QUrl, which takes host names more strictly than
    // the URL syntax: a comma or bracket that ends a typed host ("www.example.com,") names no host it
    // could open. Such a word is no link, so that no link is drawn that opens nothing.
    if (!QUrl(target).isValid())
        return {};
    return target;
}

QList<QTextLayout::FormatRange> URLTextViewAdditions::detectURLs(QStringView text, const QColor &colour)
{
    QList<QTextLayout::FormatRange> links;
    const qsizetype length = text.size();
    qsizetype i = 0;
    while (i < length) {
        while (i < length && isBreak(text[i]))
            ++i;
        const qsizetype start = i;
        while (i < length && !isBreak(text[i]))
            ++i;
        if (i == start)
            break;
        const QString target = linkTarget(text.sliced(start, i - start));
        if (target.isEmpty())
            continue;
        QTextLayout::FormatRange range;
        range.start = int(start);
        range.length = int(i - start);
        range.format.setAnchor(true);
        range.format.setAnchorHref(target);
        range.format.setUnderlineStyle(QTextCharFormat::SingleUnderline);
        range.format.setForeground(colour);
        links.append(range);
    }
    return links;
}
