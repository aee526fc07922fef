#pragma once

#include <QString>
#include <QStringList>

// Runs child processes synchronously, the way the program has always run its tools: the home
// folder as working folder, standard output and standard error merged into one pipe, the output
// read to its end and the child waited for.
class CommandLine
{
public:
    static CommandLine *sharedController();

    struct Outcome {
        QString output;     // everything the child printed, decoded as ASCII (bytes above 127 kept as Latin-1)
        int exitStatus = 0; // non-zero also when the program could not be started or crashed
        bool started = false;
    };

    // The runner underneath both forms. On the interface thread it keeps the windows painted (but
    // takes no user input) while the child runs, so a progress sheet does not look frozen.
    // With `mergeErrors` false, standard error is dropped and only standard output is kept.
    // `environment` adds or replaces variables ("NAME=value") for this child only. `input` is
    // written to the child's standard input, which is then closed (the empty device when none):
    // the way to hand a child a secret, which its arguments would show to every user.
    static Outcome run(const QString &program, const QStringList &arguments, bool mergeErrors = true,
                       const QStringList &environment = {}, const QByteArray &input = {});

    // A shell command line, run as "/bin/sh" "-c" line; returns the output whatever the exit status.
    QString runCommand(const QString &line) const;
    // A program with its arguments; returns the output whatever the exit status.
    QString runCommand(const QString &program, const QStringList &arguments) const;

    static inline const QString ShellPath = QStringLiteral("/bin/sh");
    static inline const QString ShellCommandOption = QStringLiteral("-c");
};
