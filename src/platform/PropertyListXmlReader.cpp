#include "platform/PropertyListXmlReader.h"

#include "platform/PropertyListXmlScalars.h"

#include <QVariantList>
#include <QVariantMap>

#include <cstring>
#include <map>
#include <sys/mman.h>
#include <unistd.h>

namespace {

// Deeper nesting than this is not a property list anyone wrote by hand or by program; refusing it
// keeps the recursion (and the recursive destruction of the result) far from the stack's end.
constexpr int MaxDepth = 512;
// Pages of a mapped file are handed back in steps of this size.
constexpr qsizetype ReleaseStep = qsizetype(8) << 20;

bool isSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

std::string_view trimmed(const char *data, qsizetype size)
{
    return PropertyListXmlScalars::trimmed(std::string_view(data, size_t(size)));
}

QString quoted(std::string_view name)
{
    return QLatin1Char('<') + QString::fromUtf8(name.data(), qsizetype(name.size())) + QLatin1Char('>');
}

} // namespace

PropertyListXmlReader::PropertyListXmlReader(QByteArrayView bytes)
    : m_begin(bytes.data())
    , m_end(bytes.data() + bytes.size())
    , m_p(bytes.data())
    , m_releasedUpTo(bytes.data())
{
}

PropertyListXmlReader::~PropertyListXmlReader()
{
}

bool PropertyListXmlReader::fail(const QString &message)
{
    return failAt(m_p, message);
}

bool PropertyListXmlReader::failAt(const char *at, const QString &message)
{
    if (!m_failed) {
        m_failed = true;
        m_errorAt = std::min(std::max(at, m_begin), m_end);
        m_error = message;
    }
    return false;
}

bool PropertyListXmlReader::startsWith(const char *literal, qsizetype length) const
{
    return m_end - m_p >= length && std::memcmp(m_p, literal, size_t(length)) == 0;
}

void PropertyListXmlReader::skipWhitespace()
{
    while (m_p < m_end && isSpace(*m_p))
        ++m_p;
}

bool PropertyListXmlReader::skipUntil(const char *terminator, qsizetype length, const char *what)
{
    const char *start = m_p;
    std::string_view rest(m_p, size_t(m_end - m_p));
    const size_t found = rest.find(std::string_view(terminator, size_t(length)));
    if (found == std::string_view::npos)
        return failAt(start, QStringLiteral("the document ends inside %1").arg(QLatin1String(what)));
    m_p += found + size_t(length);
    return true;
}

bool PropertyListXmlReader::skipDoctype()
{
    // <!DOCTYPE plist PUBLIC "..." "..." [ internal subset ]>: quoted strings and the bracketed
    // subset may hold '>' of their own.
    const char *start = m_p;
    char quote = 0;
    int brackets = 0;
    for (; m_p < m_end; ++m_p) {
        const char c = *m_p;
        if (quote) {
            if (c == quote)
                quote = 0;
        } else if (c == '"' || c == '\'') {
            quote = c;
        } else if (c == '[') {
            ++brackets;
        } else if (c == ']') {
            --brackets;
        } else if (c == '>' && brackets <= 0) {
            ++m_p;
            return true;
        }
    }
    return failAt(start, QStringLiteral("the document ends inside the DOCTYPE"));
}

bool PropertyListXmlReader::skipProlog()
{
    if (startsWith("\xEF\xBB\xBF", 3))
        m_p += 3;
    while (true) {
        skipWhitespace();
        if (startsWith("<?", 2)) {
            if (!skipUntil("?>", 2, "a processing instruction"))
                return false;
        } else if (startsWith("<!--", 4)) {
            if (!skipUntil("-->", 3, "a comment"))
                return false;
        } else if (startsWith("<!DOCTYPE", 9)) {
            if (!skipDoctype())
                return false;
        } else {
            return true;
        }
    }
}

bool PropertyListXmlReader::skipBetweenElements()
{
    while (true) {
        skipWhitespace();
        if (atEnd() || *m_p != '<')
            return atEnd() || fail(QStringLiteral("unexpected text between elements"));
        if (startsWith("<!--", 4)) {
            if (!skipUntil("-->", 3, "a comment"))
                return false;
        } else if (startsWith("<?", 2)) {
            if (!skipUntil("?>", 2, "a processing instruction"))
                return false;
        } else {
            return true;
        }
    }
}

bool PropertyListXmlReader::readStartTag(std::string_view &name, bool &selfClosing)
{
    const char *tag = m_p;
    ++m_p; // '<'
    const char *nameStart = m_p;
    while (m_p < m_end && !isSpace(*m_p) && *m_p != '>' && *m_p != '/' && *m_p != '<')
        ++m_p;
    name = std::string_view(nameStart, size_t(m_p - nameStart));
    if (name.empty() || name[0] == '!' || name[0] == '?')
        return failAt(tag, QStringLiteral("expected an element"));
    // Attributes are read over and ignored: only <plist version="1.0"> has any.
    while (true) {
        skipWhitespace();
        if (atEnd())
            return failAt(tag, QStringLiteral("the document ends inside the tag %1").arg(quoted(name)));
        if (*m_p == '>') {
            ++m_p;
            selfClosing = false;
            return true;
        }
        if (*m_p == '/') {
            if (m_end - m_p < 2 || m_p[1] != '>')
                return fail(QStringLiteral("malformed tag %1").arg(quoted(name)));
            m_p += 2;
            selfClosing = true;
            return true;
        }
        while (m_p < m_end && !isSpace(*m_p) && *m_p != '=' && *m_p != '>' && *m_p != '/' && *m_p != '<')
            ++m_p;
        skipWhitespace();
        if (atEnd() || *m_p != '=')
            return fail(QStringLiteral("malformed attribute in %1").arg(quoted(name)));
        ++m_p;
        skipWhitespace();
        if (atEnd() || (*m_p != '"' && *m_p != '\''))
            return fail(QStringLiteral("malformed attribute in %1").arg(quoted(name)));
        const char quote = *m_p++;
        const void *close = std::memchr(m_p, quote, size_t(m_end - m_p));
        if (!close)
            return failAt(tag, QStringLiteral("the document ends inside the tag %1").arg(quoted(name)));
        m_p = static_cast<const char *>(close) + 1;
    }
}

bool PropertyListXmlReader::readEndTag(std::string_view name)
{
    const char *tag = m_p;
    if (!startsWith("</", 2))
        return fail(QStringLiteral("expected </%1>").arg(QString::fromUtf8(name.data(), qsizetype(name.size()))));
    m_p += 2;
    if (m_end - m_p < qsizetype(name.size()) || std::memcmp(m_p, name.data(), name.size()) != 0)
        return failAt(tag, QStringLiteral("expected </%1>").arg(QString::fromUtf8(name.data(), qsizetype(name.size()))));
    m_p += name.size();
    skipWhitespace();
    if (atEnd() || *m_p != '>')
        return failAt(tag, QStringLiteral("expected </%1>").arg(QString::fromUtf8(name.data(), qsizetype(name.size()))));
    ++m_p;
    return true;
}

bool PropertyListXmlReader::appendEntity(const char *ampersand)
{
    const qsizetype window = std::min<qsizetype>(m_end - ampersand, 12);
    const void *semicolon = std::memchr(ampersand, ';', size_t(window));
    if (!semicolon)
        return failAt(ampersand, QStringLiteral("malformed entity"));
    const std::string_view entity(ampersand + 1, size_t(static_cast<const char *>(semicolon) - ampersand - 1));
    m_p = static_cast<const char *>(semicolon) + 1;
    switch (PropertyListXmlText::appendEntity(entity, m_scratch)) {
    case PropertyListXmlText::Entity::Appended:
        return true;
    case PropertyListXmlText::Entity::InvalidReference:
        return failAt(ampersand, QStringLiteral("invalid character reference"));
    case PropertyListXmlText::Entity::Unknown:
        break;
    }
    return failAt(ampersand,
                  QStringLiteral("unknown entity &%1;").arg(QString::fromUtf8(entity.data(), qsizetype(entity.size()))));
}

bool PropertyListXmlReader::readText(std::string_view name, bool selfClosing, Text &text)
{
    if (selfClosing) {
        text = {m_p, 0};
        return true;
    }
    const char *start = m_p;
    const auto *lt = static_cast<const char *>(std::memchr(m_p, '<', size_t(m_end - m_p)));
    if (!lt)
        return failAt(start, QStringLiteral("the document ends inside %1").arg(quoted(name)));
    if (lt + 1 < m_end && lt[1] == '/' && !std::memchr(start, '&', size_t(lt - start))) {
        // The common case: plain text, taken straight from the input.
        text = {start, lt - start};
        m_p = lt;
        return readEndTag(name);
    }
    m_scratch.clear();
    while (true) {
        lt = static_cast<const char *>(std::memchr(m_p, '<', size_t(m_end - m_p)));
        if (!lt)
            return failAt(start, QStringLiteral("the document ends inside %1").arg(quoted(name)));
        const auto *amp = static_cast<const char *>(std::memchr(m_p, '&', size_t(lt - m_p)));
        const char *stop = amp ? amp : lt;
        m_scratch.append(m_p, size_t(stop - m_p));
        m_p = stop;
        if (amp) {
            if (!appendEntity(amp))
                return false;
        } else if (startsWith("<![CDATA[", 9)) {
            m_p += 9;
            const char *content = m_p;
            if (!skipUntil("]]>", 3, "a CDATA section"))
                return false;
            m_scratch.append(content, size_t(m_p - 3 - content));
        } else if (startsWith("<!--", 4)) {
            if (!skipUntil("-->", 3, "a comment"))
                return false;
        } else if (startsWith("<?", 2)) {
            if (!skipUntil("?>", 2, "a processing instruction"))
                return false;
        } else if (startsWith("</", 2)) {
            break;
        } else {
            return fail(QStringLiteral("unexpected element inside %1").arg(quoted(name)));
        }
    }
    text = {m_scratch.data(), qsizetype(m_scratch.size())};
    return readEndTag(name);
}

bool PropertyListXmlReader::readInteger(Text text, QVariant &value)
{
    return PropertyListXmlScalars::integer(trimmed(text.data, text.size), value)
        || failAt(m_p, QStringLiteral("invalid <integer>"));
}

bool PropertyListXmlReader::readReal(Text text, QVariant &value)
{
    return PropertyListXmlScalars::real(trimmed(text.data, text.size), value)
        || failAt(m_p, QStringLiteral("invalid <real>"));
}

bool PropertyListXmlReader::readDate(Text text, QVariant &value)
{
    return PropertyListXmlScalars::date(trimmed(text.data, text.size), value)
        || failAt(m_p, QStringLiteral("invalid <date>"));
}

bool PropertyListXmlReader::readData(Text text, QVariant &value)
{
    return PropertyListXmlScalars::data(std::string_view(text.data, size_t(text.size)), value)
        || failAt(m_p, QStringLiteral("invalid base64 in <data>"));
}

bool PropertyListXmlReader::readValue(QVariant &value, const char *tag, std::string_view name, bool selfClosing)
{
    Text text;
    if (name == "dict")
        return selfClosing ? (value = QVariantMap(), true) : readDict(value);
    if (name == "array")
        return selfClosing ? (value = QVariantList(), true) : readArray(value);
    if (name == "string") {
        if (!readText(name, selfClosing, text))
            return false;
        if (!m_checkOnly)
            value = m_strings.make(text.data, text.size);
        return true;
    }
    if (name == "integer")
        return readText(name, selfClosing, text) && readInteger(text, value);
    if (name == "real")
        return readText(name, selfClosing, text) && readReal(text, value);
    if (name == "true" || name == "false") {
        if (!readText(name, selfClosing, text))
            return false;
        if (!trimmed(text.data, text.size).empty())
            return failAt(tag, QStringLiteral("%1 holds text").arg(quoted(name)));
        value = QVariant(name == "true");
        return true;
    }
    if (name == "date")
        return readText(name, selfClosing, text) && readDate(text, value);
    if (name == "data")
        return readText(name, selfClosing, text) && readData(text, value);
    if (name == "key")
        return failAt(tag, QStringLiteral("<key> outside a <dict>"));
    return failAt(tag, QStringLiteral("unknown element %1").arg(quoted(name)));
}

bool PropertyListXmlReader::readArray(QVariant &value)
{
    const char *open = m_p;
    if (++m_depth > MaxDepth)
        return fail(QStringLiteral("arrays and dictionaries are nested too deeply"));
    QVariantList list;
    while (true) {
        if (!skipBetweenElements())
            return false;
        if (atEnd())
            return failAt(open, QStringLiteral("the document ends inside <array>"));
        if (startsWith("</", 2)) {
            if (!readEndTag("array"))
                return false;
            break;
        }
        const char *tag = m_p;
        std::string_view name;
        bool selfClosing = false;
        if (!readStartTag(name, selfClosing))
            return false;
        QVariant item;
        if (!readValue(item, tag, name, selfClosing))
            return false;
        if (!m_checkOnly)
            list.emplaceBack(std::move(item));
        if (m_releasePages)
            releasePassedPages();
    }
    --m_depth;
    value = list;
    return true;
}

bool PropertyListXmlReader::readDict(QVariant &value)
{
    const char *open = m_p;
    if (++m_depth > MaxDepth)
        return fail(QStringLiteral("arrays and dictionaries are nested too deeply"));
    // Built as a std::map and handed to QMap whole: keys come sorted from any writer that sorts
    // them, so each insertion at the end is constant time, and nothing is copied.
    std::map<QString, QVariant> map;
    while (true) {
        if (!skipBetweenElements())
            return false;
        if (atEnd())
            return failAt(open, QStringLiteral("the document ends inside <dict>"));
        if (startsWith("</", 2)) {
            if (!readEndTag("dict"))
                return false;
            break;
        }
        const char *tag = m_p;
        std::string_view name;
        bool selfClosing = false;
        if (!readStartTag(name, selfClosing))
            return false;
        if (name != "key")
            return failAt(tag, QStringLiteral("expected <key> in <dict>, found %1").arg(quoted(name)));
        Text text;
        if (!readText(name, selfClosing, text))
            return false;
        // Only an error message needs the key when the values are not made.
        QString key = m_checkOnly ? QString() : m_strings.make(text.data, text.size);
        if (!skipBetweenElements())
            return false;
        if (atEnd())
            return failAt(open, QStringLiteral("the document ends inside <dict>"));
        const char *valueTag = m_p;
        if (startsWith("</", 2))
            return failAt(valueTag,
                          QStringLiteral("the key \"%1\" has no value").arg(m_checkOnly ? m_strings.make(text.data, text.size) : key));
        if (!readStartTag(name, selfClosing))
            return false;
        if (name == "key")
            return failAt(valueTag,
                          QStringLiteral("the key \"%1\" has no value").arg(m_checkOnly ? m_strings.make(text.data, text.size) : key));
        QVariant item;
        if (!readValue(item, valueTag, name, selfClosing))
            return false;
        if (!m_checkOnly)
            map.insert_or_assign(map.end(), std::move(key), std::move(item));
        if (m_releasePages)
            releasePassedPages();
    }
    --m_depth;
    value = QVariantMap(std::move(map));
    return true;
}

void PropertyListXmlReader::releasePassedPages()
{
    if (m_p - m_releasedUpTo < ReleaseStep)
        return;
    static const qsizetype pageSize = qsizetype(sysconf(_SC_PAGESIZE));
    const char *until = m_begin + ((m_p - m_begin) / pageSize) * pageSize;
    if (until > m_releasedUpTo) {
        madvise(const_cast<char *>(m_releasedUpTo), size_t(until - m_releasedUpTo), MADV_DONTNEED);
        m_releasedUpTo = until;
    }
}

std::optional<QVariant> PropertyListXmlReader::read(QString *error)
{
    QVariant root;
    const bool ok = [&] {
        if (!skipProlog())
            return false;
        if (atEnd())
            return fail(QStringLiteral("the document is empty"));
        if (*m_p != '<')
            return fail(QStringLiteral("expected <plist>"));
        const char *tag = m_p;
        std::string_view name;
        bool selfClosing = false;
        if (!readStartTag(name, selfClosing))
            return false;
        if (name != "plist")
            return failAt(tag, QStringLiteral("the root element is %1, not <plist>").arg(quoted(name)));
        if (!selfClosing && !skipBetweenElements())
            return false;
        if (selfClosing || startsWith("</", 2))
            return failAt(tag, QStringLiteral("<plist> holds no value"));
        if (atEnd())
            return failAt(tag, QStringLiteral("the document ends inside <plist>"));
        const char *valueTag = m_p;
        if (!readStartTag(name, selfClosing) || !readValue(root, valueTag, name, selfClosing))
            return false;
        if (!skipBetweenElements())
            return false;
        if (atEnd())
            return failAt(tag, QStringLiteral("the document ends inside <plist>"));
        if (!startsWith("</", 2))
            return fail(QStringLiteral("<plist> holds more than one value"));
        if (!readEndTag("plist"))
            return false;
        if (!skipBetweenElements())
            return false;
        return atEnd() || fail(QStringLiteral("unexpected content after </plist>"));
    }();
    if (ok)
        return root;
    if (error) {
        qsizetype line = 1;
        const char *lineStart = m_begin;
        for (const char *p = m_begin; p < m_errorAt; ++p) {
            if (*p == '\n') {
                ++line;
                lineStart = p + 1;
            }
        }
        *error = QStringLiteral("line %1, column %2: %3").arg(line).arg(m_errorAt - lineStart + 1).arg(m_error);
    }
    return std::nullopt;
}
