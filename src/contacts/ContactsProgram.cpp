#include "contacts/ContactsProgram.h"

#include "contacts/ContactRecord.h"

#include <QLoggingCategory>
#include <QProcess>
#include <QStandardPaths>

Q_DECLARE_LOGGING_CATEGORY(lcVCardFolder)

namespace ContactsProgram {

QString executable()
{
    return QStandardPaths::findExecutable(GnomeContacts);
}

QStringList argumentsFor(const QVariantMap &record)
{
    const QStringList addresses = ContactRecord::emails(record);
    if (!addresses.isEmpty())
        return {QStringLiteral("--email"), addresses.first()};
    const QString name = (record.value(ContactRecord::FirstName).toString() + QLatin1Char(' ')
                          + record.value(ContactRecord::LastName).toString())
                             .trimmed();
    return {QStringLiteral("--search"), name};
}

bool open(const QVariantMap &record)
{
    const QString program = executable();
    if (program.isEmpty())
        return false;
    if (!QProcess::startDetached(program, argumentsFor(record))) {
        qCWarning(lcVCardFolder) << "Could not start" << program;
        return false;
    }
    return true;
}

} // namespace ContactsProgram
