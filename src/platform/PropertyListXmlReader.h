#pragma once

#include "platform/PropertyListXmlText.h"

#include <QByteArrayView>
#include <QString>
#include <QVariant>

#include <optional>
#include <string>
#include <string_view>

// The XML half of PropertyList::parse: a single-pass reader that goes straight from the bytes to
// QVariants, with no document tree in between. A store of 100,000 records is 140 MB of XML; a DOM of
// it beside the resulting QVariants would take several times the file's size, this takes the
// QVariants only.
//
// It accepts exactly the property-list subset of XML: a prolog (declaration, DOCTYPE, comments,
// processing instructions), one <plist> root holding one value, the entities of XML, character
// references, CDATA sections and comments inside text. Anything else is an error, reported with its
// line and column; there is never a partial result.
class PropertyListXmlReader
{
public:
    explicit PropertyListXmlReader(QByteArrayView bytes);
    ~PropertyListXmlReader();
    PropertyListXmlReader(const PropertyListXmlReader &) = delete;
    PropertyListXmlReader &operator=(const PropertyListXmlReader &) = delete;

    // When the bytes are a read-only file mapping starting on a page boundary, the reader hands the
    // pages it has passed back to the kernel as it goes, so a big file never sits in memory whole
    // beside the values made from it.
    void setReleasePassedPages(bool release) { m_releasePages = release; }

    // Checks the document by exactly the same rules without keeping the values: for a good document
    // read() gives a value of the root's type with nothing in it. Checking a file whose bytes are
    // then copied elsewhere costs a fraction of reading it.
    void setCheckOnly(bool checkOnly) { m_checkOnly = checkOnly; }

    std::optional<QVariant> read(QString *error);

    // After read(): whether some text was not valid UTF-8 (read as U+FFFD) or holds characters that
    // XML cannot carry (left out when written back), so that a rewrite would change it.
    bool textWillChange() const { return m_strings.textWillChange(); }

private:
    struct Text {
        const char *data;
        qsizetype size;
    };

    bool fail(const QString &message);
    bool failAt(const char *at, const QString &message);
    bool atEnd() const { return m_p >= m_end; }
    bool startsWith(const char *literal, qsizetype length) const;
    void skipWhitespace();
    bool skipUntil(const char *terminator, qsizetype length, const char *what);
    bool skipDoctype();
    bool skipProlog();
    bool skipBetweenElements();
    bool readStartTag(std::string_view &name, bool &selfClosing);
    bool readEndTag(std::string_view name);
    bool readText(std::string_view name, bool selfClosing, Text &text);
    bool appendEntity(const char *ampersand);
    bool readValue(QVariant &value, const char *tag, std::string_view name, bool selfClosing);
    bool readArray(QVariant &value);
    bool readDict(QVariant &value);
    bool readInteger(Text text, QVariant &value);
    bool readReal(Text text, QVariant &value);
    bool readDate(Text text, QVariant &value);
    bool readData(Text text, QVariant &value);
    void releasePassedPages();

    const char *m_begin;
    const char *m_end;
    const char *m_p;
    const char *m_releasedUpTo;
    bool m_releasePages = false;
    bool m_checkOnly = false;
    int m_depth = 0;
    bool m_failed = false;
    const char *m_errorAt = nullptr;
    QString m_error;
    std::string m_scratch;
    PropertyListXmlText m_strings;
};
