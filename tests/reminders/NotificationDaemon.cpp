#include "NotificationDaemon.h"

#include "LocalServers.h"

#include <QDBusConnectionInterface>
#include <QFile>
#include <QProcess>
#include <QTest>

NotificationDaemon::NotificationDaemon() = default;

NotificationDaemon::~NotificationDaemon()
{
    if (!m_connectionName.isEmpty())
        QDBusConnection::disconnectFromBus(m_connectionName);
    LocalServers::stopProcess(m_dunst);
    LocalServers::stopProcess(m_bus);
    LocalServers::stopProcess(m_xvfb);
}

bool NotificationDaemon::start(const QList<std::pair<QString, QString>> &actionRules, QString *error, bool markup)
{
    // A display number nobody uses.
    int number = 70 + int(QCoreApplication::applicationPid() % 200);
    while (QFile::exists(QStringLiteral("/tmp/.X11-unix/X%1").arg(number)) ||
           QFile::exists(QStringLiteral("/tmp/.X%1-lock").arg(number)))
        ++number;
    m_display = QStringLiteral(":%1").arg(number);
    m_xvfb = LocalServers::serverProcess();
    m_xvfb->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_xvfb->start(QStringLiteral("Xvfb"), {m_display, QStringLiteral("-screen"), QStringLiteral("0"),
                                          QStringLiteral("1024x768x24"), QStringLiteral("-nolisten"),
                                          QStringLiteral("tcp")});
    if (!QTest::qWaitFor([&] { return QFile::exists(QStringLiteral("/tmp/.X11-unix/X%1").arg(number)); }, 10000)) {
        *error = QStringLiteral("Xvfb did not start");
        return false;
    }

    m_bus = LocalServers::serverProcess();
    m_bus->start(QStringLiteral("dbus-daemon"),
                 {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--print-address")});
    if (!m_bus->waitForStarted() ||
        !QTest::qWaitFor([&] { return m_bus->canReadLine(); }, 10000)) {
        *error = QStringLiteral("dbus-daemon did not start");
        return false;
    }
    m_address = QString::fromUtf8(m_bus->readLine()).trimmed();

    const QString log = m_folder.filePath(QStringLiteral("received.log"));
    const QString script = m_folder.filePath(QStringLiteral("log.sh"));
    QFile scriptFile(script);
    scriptFile.open(QIODevice::WriteOnly);
    // dunst calls the script with: appname summary body icon urgency. One record per notification,
    // fields separated by US (0x1f), records by RS (0x1e), so bodies may hold new lines.
    scriptFile.write("#!/bin/sh\nprintf '%s\\037%s\\037%s\\037%s\\036' \"$1\" \"$2\" \"$3\" \"$4\" >> '" +
                     log.toUtf8() + "'\n");
    scriptFile.close();
    scriptFile.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);

    QByteArray config = "[global]\n"
                        "  font = Monospace 10\n"
                        "  geometry = \"400x5-10+10\"\n"
                        "  width = 400\n"
                        "  origin = top-right\n"
                        "  offset = 10x10\n"
                        "  show_indicators = no\n"
                        "  markup = " +
                        QByteArray(markup ? "full" : "no") +
                        "\n"
                        "  mouse_left_click = do_action, close_current\n"
                        "[log]\n"
                        "  summary = \"*\"\n"
                        "  script = \"" +
                        script.toUtf8() + "\"\n";
    int rule = 0;
    for (const auto &[summary, action] : actionRules)
        config += "[action" + QByteArray::number(rule++) + "]\n  summary = \"" + summary.toUtf8() +
                  "\"\n  action_name = \"" + action.toUtf8() + "\"\n";
    const QString configPath = m_folder.filePath(QStringLiteral("dunstrc"));
    QFile configFile(configPath);
    configFile.open(QIODevice::WriteOnly);
    configFile.write(config);
    configFile.close();

    m_environment = QProcessEnvironment::systemEnvironment();
    m_environment.insert(QStringLiteral("DISPLAY"), m_display);
    m_environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), m_address);
    m_environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
    m_dunst = LocalServers::serverProcess();
    m_dunst->setProcessEnvironment(m_environment);
    m_dunst->setProcessChannelMode(QProcess::MergedChannels);
    m_dunst->start(QStringLiteral("dunst"), {QStringLiteral("-config"), configPath});

    m_connectionName = QStringLiteral("notification-test-%1").arg(number);
    QDBusConnection bus = QDBusConnection::connectToBus(m_address, m_connectionName);
    if (!bus.isConnected()) {
        *error = QStringLiteral("cannot connect to the private bus");
        return false;
    }
    const bool registered = QTest::qWaitFor(
        [&] {
            return bus.interface()->isServiceRegistered(QStringLiteral("org.freedesktop.Notifications")).value();
        },
        10000);
    if (!registered) {
        *error = QStringLiteral("dunst did not take the notification service: ") +
                 QString::fromUtf8(m_dunst->readAll());
        return false;
    }
    return true;
}

QDBusConnection NotificationDaemon::connection() const
{
    return QDBusConnection(m_connectionName);
}

QList<NotificationDaemon::Received> NotificationDaemon::received() const
{
    QFile file(m_folder.filePath(QStringLiteral("received.log")));
    QList<Received> list;
    if (!file.open(QIODevice::ReadOnly))
        return list;
    const QList<QByteArray> records = file.readAll().split('\x1e');
    for (const QByteArray &record : records) {
        const QList<QByteArray> fields = record.split('\x1f');
        if (fields.size() == 4)
            list.append({QString::fromUtf8(fields[0]), QString::fromUtf8(fields[1]), QString::fromUtf8(fields[2]),
                         QString::fromUtf8(fields[3])});
    }
    return list;
}

bool NotificationDaemon::dunstctl(const QStringList &arguments, QString *output) const
{
    QProcess process;
    process.setProcessEnvironment(m_environment);
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QStringLiteral("dunstctl"), arguments);
    if (!process.waitForFinished(10000))
        return false;
    if (output)
        *output = QString::fromUtf8(process.readAll());
    return process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

bool NotificationDaemon::waitForDisplayed(int count) const
{
    return QTest::qWaitFor(
        [&] {
            QString output;
            return dunstctl({QStringLiteral("count"), QStringLiteral("displayed")}, &output)
                && output.trimmed() == QString::number(count);
        },
        10000);
}
