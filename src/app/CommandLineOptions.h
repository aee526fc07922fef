#pragma once

#include <QString>
#include <QStringList>

// What the program was asked to do on its command line. --help and --version are answered before
// anything touches the display, so they work on a console, over ssh and in build scripts; the rest
// (backup files to open) goes to the window, this program's or the one already running.
class CommandLineOptions
{
public:
    enum class Action { Run, ShowHelp, ShowVersion, Fail };

    // ShowHelp or ShowVersion when the raw arguments (argv[0] left out) ask for either, whichever
    // comes first, else Run. These are answered before the display is opened, so Qt's own options
    // are still among the arguments here. Anything after "--" is a file name, never an option.
    static Action earlyAction(const QStringList &arguments);

    // Parses the arguments left once Qt has taken its own (-platform, -style, ...), argv[0] left
    // out; --help and --version were answered already. Files are made absolute against `workingFolder`, since the window that opens them may be
    // another process with another working folder.
    static CommandLineOptions parse(const QStringList &arguments, const QString &workingFolder);

    static QString helpText();
    // "Quillory 1.0.0"
    static QString versionText();

    Action action() const { return m_action; }
    QStringList files() const { return m_files; }
    // What went wrong, for Fail: one line without the program's name.
    QString error() const { return m_error; }

private:
    Action m_action = Action::Run;
    QStringList m_files;
    QString m_error;
};
