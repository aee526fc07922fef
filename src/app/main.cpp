#include "Application.h"
#include "BuildInfo.h"
#include "CommandLineOptions.h"
#include "OpenRequests.h"
#include "SingleInstance.h"
#include "WindowActivation.h"
#include "platform/Paths.h"
#include "store/Preferences.h"
#include "support/CrashHandler.h"
#include "support/ui/DebugWindow.h"
#include "widgets/DialogPresenters.h"

#include <QApplication>
#include <QDir>

#include <cstdio>

namespace {
QStringList arguments(int argc, char **argv)
{
    QStringList list;
    for (int i = 1; i < argc; ++i)
        list.append(QString::fromLocal8Bit(argv[i]));
    return list;
}

void print(FILE *stream, const QString &text)
{
    std::fputs(text.toLocal8Bit().constData(), stream);
    std::fflush(stream);
}
} // namespace

int main(int argc, char **argv)
{
    // Answered before QApplication, which would need a display.
    switch (CommandLineOptions::earlyAction(arguments(argc, argv))) {
    case CommandLineOptions::Action::ShowHelp:
        print(stdout, CommandLineOptions::helpText());
        return 0;
    case CommandLineOptions::Action::ShowVersion:
        print(stdout, CommandLineOptions::versionText() + QLatin1Char('\n'));
        return 0;
    default:
        break;
    }

    // Before anything that could crash: a fatal signal from here on leaves a crash log for the
    // crash reporter at the next start.
    CrashHandler::install(Paths::crashLog(), QStringLiteral("%1 %2").arg(QLatin1String(BuildInfo::BundleName),
                                                                         QLatin1String(BuildInfo::BundleVersion)));

    // Taken before QApplication, whose X11 connection removes DESKTOP_STARTUP_ID from the
    // environment; a start that hands over passes it on to the copy that shows the window.
    const WindowActivation activation = WindowActivation::fromEnvironment();

    // QApplication takes its own options (-platform, -style, ...) out of argc and argv.
    QApplication app(argc, argv);
    QApplication::setApplicationName(QString::fromLatin1(BuildInfo::BundleName));
    QApplication::setApplicationVersion(QString::fromLatin1(BuildInfo::ShortVersionString));
    QApplication::setOrganizationDomain(QStringLiteral("brevandt.com"));
    QGuiApplication::setDesktopFileName(QStringLiteral("com.brevandt.Quillory"));

    const CommandLineOptions options = CommandLineOptions::parse(arguments(argc, argv), QDir::currentPath());
    if (options.action() == CommandLineOptions::Action::Fail) {
        print(stderr, QStringLiteral("quillory: %1\nTry 'quillory --help' for more information.\n").arg(options.error()));
        return 2;
    }

    SingleInstance instance(Paths::dataFolder());
    if (instance.claim(options.files(), activation) == SingleInstance::Role::HandedOver)
        return 0;

    // Alt held at launch opens the debug window before anything else is read; whatever it deleted,
    // the program then starts afresh or not at all.
    if (DebugWindow::isRequestedAtLaunch()) {
        DialogPresenters::install();
        if (DebugWindow::sharedController()->showDebugWindow() == DebugWindow::Outcome::Relaunch
            && !Preferences::scheduleRestart(QCoreApplication::applicationFilePath(), QCoreApplication::applicationPid()))
            print(stderr, QStringLiteral("quillory: could not start again\n"));
        return 0;
    }

    Application application;
    OpenRequests requests;
    QObject::connect(&application, &Application::mainWindowShown, &requests, &OpenRequests::windowShown);
    QObject::connect(&instance, &SingleInstance::activationRequested, &requests,
                     [&requests](const QStringList &files, const WindowActivation &later) {
                         requests.add(files, true, [later](QWidget *window) { return later.raise(window); });
                     });
    requests.add(options.files(), false);
    return application.run();
}
