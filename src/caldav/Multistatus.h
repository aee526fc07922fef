#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

// A WebDAV multistatus body, read with QXmlStreamReader: for each response its href, its status
// (for sync-collection's removed members) and the properties found (200 propstats only).
struct Multistatus {
    struct Property {
        QString text;          // the text of the property, trimmed
        QStringList hrefs;     // <href> children (principal, home set)
        QStringList children;  // local names of child elements (resourcetype)
        QStringList descendants; // local names of every element inside (supported-report-set)
        QStringList components; // comp name="..." (supported-calendar-component-set)
    };
    struct Response {
        QString href;
        int status = 0; // a response-level status, 0 when the response has propstats
        QMap<QString, Property> properties; // by local name
        bool has(const QString &name) const { return properties.contains(name); }
        QString text(const QString &name) const { return properties.value(name).text; }
    };
    QList<Response> responses;
    QString syncToken;
    bool valid = false;

    static Multistatus parse(const QByteArray &xml);
};
