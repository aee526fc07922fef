#include "CommandLineOptions.h"

#include "BuildInfo.h"

#include <QDir>
#include <QFileInfo>

namespace {
const QString DoubleDash = QStringLiteral("--");

bool isHelp(const QString &argument)
{
    return argument == QLatin1String("-h") || argument == QLatin1String("--help") || argument == QLatin1String("-help")
        || argument == QLatin1String("-?");
}

bool isVersion(const QString &argument)
{
    return argument == QLatin1String("-v") || argument == QLatin1String("--version");
}
} // namespace

CommandLineOptions::Action CommandLineOptions::earlyAction(const QStringList &arguments)
{
    for (const QString &argument : arguments) {
        if (argument == DoubleDash)
            break;
        if (isHelp(argument))
            return Action::ShowHelp;
        if (isVersion(argument))
            return Action::ShowVersion;
    }
    return Action::Run;
}

CommandLineOptions CommandLineOptions::parse(const QStringList &arguments, const QString &workingFolder)
{
    CommandLineOptions options;
    bool optionsEnded = false;
    const QDir base(workingFolder);
    for (const QString &argument : arguments) {
        if (!optionsEnded && argument == DoubleDash) {
            optionsEnded = true;
            continue;
        }
        if (!optionsEnded && argument.startsWith(QLatin1Char('-'))) {
            if (isHelp(argument) || isVersion(argument))
                continue;
            options.m_action = Action::Fail;
            options.m_error = QStringLiteral("unknown option '%1'").arg(argument);
            return options;
        }
        const QFileInfo file(base, argument);
        if (!file.exists()) {
            options.m_action = Action::Fail;
            options.m_error = QStringLiteral("cannot open '%1': No such file").arg(argument);
            return options;
        }
        if (file.isDir()) {
            options.m_action = Action::Fail;
            options.m_error = QStringLiteral("cannot open '%1': It is a folder, not a backup file").arg(argument);
            return options;
        }
        options.m_files.append(QDir::cleanPath(file.absoluteFilePath()));
    }
    return options;
}

QString CommandLineOptions::helpText()
{
    return QStringLiteral(
        "Usage: quillory [OPTION]... [BACKUP-FILE]...\n"
        "A planner for students: assignments, courses, grades and calendars.\n"
        "\n"
        "  -h, --help     show this help and exit\n"
        "  -v, --version  show the version and exit\n"
        "\n"
        "Each backup file given is offered for import (merge into your data or replace\n"
        "it), as File > Import Backup does.  When Quillory is already running for your\n"
        "data folder, its window comes to the front and opens the files; no second copy\n"
        "starts.  Qt's own options, such as -platform and -style, are accepted too.\n"
        "\n"
        "Data: ~/Library/Application Support/Quillory/\n"
        "Settings: ~/Library/Preferences/com.brevandt.Quillory.plist\n");
}

QString CommandLineOptions::versionText()
{
    return QStringLiteral("%1 %2").arg(QLatin1String(BuildInfo::BundleName), QLatin1String(BuildInfo::BundleVersion));
}
