#pragma once

#include <QString>

#include <memory>
#include <string>
#include <string_view>

// The text of a property list's XML as strings: the UTF-8 bytes of a <string> or <key> decoded
// (a leading U+FEFF kept), short strings shared between the records that repeat them, and a note
// of whether any text was not valid UTF-8 or held characters XML cannot carry, so that a rewrite
// would change it.
class PropertyListXmlText
{
public:
    PropertyListXmlText();
    ~PropertyListXmlText();
    PropertyListXmlText(const PropertyListXmlText &) = delete;
    PropertyListXmlText &operator=(const PropertyListXmlText &) = delete;

    // The string for these bytes; "" (not a null string) when there are none.
    QString make(const char *data, qsizetype size);
    bool textWillChange() const { return m_textWillChange; }

    // Whether the bytes are UTF-8 text that XML can hold as it is.
    static bool writableUtf8(const char *data, qsizetype size);
    // UTF-8 to QString, keeping a leading U+FEFF.
    static QString fromUtf8(const char *data, qsizetype size);

    // Appends the UTF-8 text of an entity or character reference, given without its "&" and ";".
    enum class Entity { Appended, InvalidReference, Unknown };
    static Entity appendEntity(std::string_view entity, std::string &out);

private:
    struct InternCache;

    std::unique_ptr<InternCache> m_intern;
    bool m_textWillChange = false;
};
