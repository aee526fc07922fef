#pragma once

#include "TestEnvironment.h"

#include <QMap>
#include <QProcessEnvironment>

// The environment the real program is started in by the tests that run it: the test's home
// folder, offscreen, New York time, and no quit after start-up unless asked for.
namespace ProgramProcess {

// `extra`: variables set for this start (an empty value removes one).
inline QProcessEnvironment environment(const QMap<QString, QString> &extra = {})
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("HOME"), TestEnvironment::home());
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    environment.insert(QStringLiteral("TZ"), QStringLiteral("America/New_York"));
    environment.remove(QStringLiteral("QUILLORY_QUIT_AFTER_STARTUP"));
    for (auto it = extra.cbegin(); it != extra.cend(); ++it) {
        if (it.value().isEmpty())
            environment.remove(it.key());
        else
            environment.insert(it.key(), it.value());
    }
    return environment;
}

} // namespace ProgramProcess
