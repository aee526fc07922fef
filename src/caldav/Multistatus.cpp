#include "caldav/Multistatus.h"

#include <QXmlStreamReader>

namespace {

int statusCode(const QString &line)
{
    // "HTTP/1.1 404 Not Found"
    return line.section(QLatin1Char(' '), 1, 1).toInt();
}

Multistatus::Property readProperty(QXmlStreamReader &xml)
{
    Multistatus::Property property;
    int depth = 1;
    QString text;
    while (depth > 0 && !xml.atEnd()) {
        switch (xml.readNext()) {
        case QXmlStreamReader::StartElement:
            ++depth;
            property.descendants << xml.name().toString();
            if (depth == 2)
                property.children << xml.name().toString();
            if (xml.name() == QLatin1String("comp"))
                property.components << xml.attributes().value(QLatin1String("name")).toString().toUpper();
            if (xml.name() == QLatin1String("href"))
                property.hrefs << xml.readElementText().trimmed(), --depth;
            break;
        case QXmlStreamReader::EndElement:
            --depth;
            break;
        case QXmlStreamReader::Characters:
            text += xml.text();
            break;
        default:
            break;
        }
    }
    property.text = text.trimmed();
    return property;
}

} // namespace

Multistatus Multistatus::parse(const QByteArray &bytes)
{
    Multistatus out;
    QXmlStreamReader xml(bytes);
    Response *current = nullptr;
    QMap<QString, Property> pending; // properties of the propstat being read
    bool inProp = false;
    bool inPropstat = false;
    int propstatStatus = 0; // servers put it before or after the properties
    while (!xml.atEnd()) {
        const auto token = xml.readNext();
        if (token == QXmlStreamReader::StartElement) {
            const auto name = xml.name();
            if (name == QLatin1String("multistatus")) {
                out.valid = true;
            } else if (name == QLatin1String("response")) {
                out.responses.append(Response());
                current = &out.responses.last();
            } else if (name == QLatin1String("href") && current && !inProp) {
                current->href = xml.readElementText().trimmed();
            } else if (name == QLatin1String("status") && current && !inProp) {
                const int code = statusCode(xml.readElementText().trimmed());
                if (!inPropstat)
                    current->status = code;
                else
                    propstatStatus = code;
            } else if (name == QLatin1String("propstat")) {
                pending.clear();
                inPropstat = true;
                propstatStatus = 0;
            } else if (name == QLatin1String("prop") && current) {
                inProp = true;
            } else if (inProp) {
                // The name views the reader's buffer, which reading the property moves on: copy it first.
                const QString key = name.toString();
                pending.insert(key, readProperty(xml));
            } else if (name == QLatin1String("sync-token") && !current) {
                out.syncToken = xml.readElementText().trimmed();
            }
        } else if (token == QXmlStreamReader::EndElement) {
            if (xml.name() == QLatin1String("prop"))
                inProp = false;
            else if (xml.name() == QLatin1String("propstat")) {
                inPropstat = false;
                if (current && propstatStatus >= 200 && propstatStatus < 300)
                    current->properties.insert(pending);
                pending.clear();
            }
            else if (xml.name() == QLatin1String("response"))
                current = nullptr;
        }
    }
    if (xml.hasError())
        out.valid = false;
    return out;
}
