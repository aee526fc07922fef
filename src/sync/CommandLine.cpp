#include "sync/CommandLine.h"

#include "platform/Paths.h"
#include "sync/SyncLog.h"

#include <QCoreApplication>
#include <QProcess>
#include <QThread>

CommandLine *CommandLine::sharedController()
{
    static CommandLine instance;
    return &instance;
}

CommandLine::Outcome CommandLine::run(const QString &program, const QStringList &arguments, bool mergeErrors,
                                      const QStringList &environment, const QByteArray &input)
{
    Outcome outcome;
    QProcess process;
    process.setProgram(program);
    process.setArguments(arguments);
    process.setWorkingDirectory(Paths::home());
    process.setProcessChannelMode(mergeErrors ? QProcess::MergedChannels : QProcess::SeparateChannels);
    if (!mergeErrors)
        process.setStandardErrorFile(QProcess::nullDevice());
    if (input.isEmpty())
        process.setStandardInputFile(QProcess::nullDevice());
    if (!environment.isEmpty()) {
        QProcessEnvironment variables = QProcessEnvironment::systemEnvironment();
        for (const QString &variable : environment)
            variables.insert(variable.section(QLatin1Char('='), 0, 0), variable.section(QLatin1Char('='), 1));
        process.setProcessEnvironment(variables);
    }
    process.start();
    if (!process.waitForStarted(-1)) {
        outcome.exitStatus = -1;
        outcome.output = program + QStringLiteral(": ") + process.errorString();
        qCWarning(lcSync) << "could not start" << program << process.errorString();
        return outcome;
    }
    outcome.started = true;
    if (!input.isEmpty()) {
        process.write(input);
        process.closeWriteChannel(); // sent once the loop below runs
    }

    const bool onInterfaceThread = QCoreApplication::instance()
        && QThread::currentThread() == QCoreApplication::instance()->thread();
    QByteArray output;
    if (onInterfaceThread) {
        // Short waits with painting in between; user input stays queued until the child is done.
        while (!process.waitForFinished(40)) {
            output += process.readAll();
            if (process.state() == QProcess::NotRunning)
                break;
            QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        }
    } else {
        process.waitForFinished(-1);
    }
    output += process.readAll();
    outcome.output = QString::fromLatin1(output);
    if (process.exitStatus() == QProcess::CrashExit) {
        outcome.exitStatus = -1;
        if (outcome.output.isEmpty())
            outcome.output = program + QStringLiteral(": ") + process.errorString();
    } else {
        outcome.exitStatus = process.exitCode();
    }
    return outcome;
}

QString CommandLine::runCommand(const QString &line) const
{
    return run(ShellPath, {ShellCommandOption, line}).output;
}

QString CommandLine::runCommand(const QString &program, const QStringList &arguments) const
{
    return run(program, arguments).output;
}
