#pragma once

#include <QString>
#include <QVariant>

// What a report must not carry of the preferences. Course calendar feeds are fetched from addresses
// whose query or path holds the student's private token (anyone with the address reads the
// calendar, on some systems signs in), and a server address may carry a user and password; a report
// keeps the host, which is what helps, and none of that.
namespace ReportRedaction {

// A web, webcal or FTP address with its user, password, query values, fragment and every path
// segment that could be a token (digits, or longer than a word) replaced by "…"; any other text as
// it is.
QString withoutSecrets(const QString &text);
// The value with every string in it passed through withoutSecrets(); `changed` tells whether any was.
QVariant withoutSecrets(const QVariant &value, bool *changed);

} // namespace ReportRedaction
