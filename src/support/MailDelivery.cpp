#include "support/MailDelivery.h"

#include "support/SupportLog.h"

#include <QProcess>

namespace MailDelivery {

QStringList command()
{
    QStringList line;
    const QString chosen = qEnvironmentVariable(CommandVariable).trimmed();
    if (!chosen.isEmpty())
        line = QProcess::splitCommand(chosen);
    if (line.isEmpty())
        line = {QStringLiteral("/usr/sbin/sendmail")};
    line << QStringLiteral("-t") << QStringLiteral("-oi");
    return line;
}

bool send(const QString &messageFile, QString *error)
{
    const QStringList line = command();
    QProcess process;
    process.setStandardInputFile(messageFile);
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(line.first(), line.mid(1));
    // A mail server that does not answer is given two minutes.
    const bool finished = process.waitForStarted(10000) && process.waitForFinished(120000);
    const QString output = QString::fromLocal8Bit(process.readAll()).trimmed();
    if (!finished) {
        process.kill();
        process.waitForFinished(5000);
    }
    const bool sent = finished && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
    if (!sent) {
        const QString why = !finished ? process.errorString()
                                      : QStringLiteral("%1 exited with %2: %3")
                                            .arg(line.first())
                                            .arg(process.exitCode())
                                            .arg(output);
        qCWarning(lcSupport).noquote() << "Mail delivery failed:" << why;
        if (error)
            *error = why;
    }
    return sent;
}

} // namespace MailDelivery
