#pragma once

#include <QColor>
#include <QList>
#include <QString>
#include <QStringView>
#include <QTextLayout>

// Finding the web, FTP, gopher, mail and "nap:" addresses in a piece of text. A word (a run of
// characters that are not blanks or line breaks) is an address when it contains "://" or begins with
// one of the known prefixes, case-sensitive; the whole word is the address, punctuation and all, so
// what the user sees underlined is exactly what opens. A word whose address the desktop's URL type
// refuses (a host ending in a comma) is no link.
namespace URLTextViewAdditions {

// The address a word stands for, or an empty string when the word is no address or what it would
// stand for is no well-formed URL.
QString linkTarget(QStringView word);

// Whether text is a well-formed absolute URL: a scheme, then only characters a URL may hold, percent
// signs followed by two hex digits, at most one fragment, a port of digits. Host names are read as
// the URL syntax has them; letters beyond ASCII are allowed as in internationalised addresses.
bool isWellFormedUrl(QStringView text);

// Every address among the words of text, in order, as formats to draw them with: the target in the
// anchor, a single underline and the given colour. The text is never changed; only formats come back.
QList<QTextLayout::FormatRange> detectURLs(QStringView text, const QColor &colour);

} // namespace URLTextViewAdditions
