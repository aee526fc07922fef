#pragma once

#include <QString>
#include <QStringList>

// Hands a finished message to the system's mail-delivery service: `/usr/sbin/sendmail -t -oi`, the
// Unix interface that msmtp, exim and postfix all provide, which reads the recipients from the
// message's own headers. QUILLORY_SENDMAIL names another command line to use in its place, split at
// blanks with double quotes grouping (QProcess::splitCommand); "-t -oi" are added to it.
namespace MailDelivery {

inline constexpr auto CommandVariable = "QUILLORY_SENDMAIL";

// The command line used: program first.
QStringList command();

// Sends the message in `messageFile`; true when the service took it (exited with 0). Waits for the
// service; call it off the interface thread when the wait matters.
bool send(const QString &messageFile, QString *error = nullptr);

} // namespace MailDelivery
