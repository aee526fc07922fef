#include "LocalServers.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>
#include <QThread>

#include <arpa/inet.h>
#include <csignal>
#include <netinet/in.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace LocalServers {

namespace {

const QString Python = QStringLiteral("/usr/bin/python3");
const QString Localhost = QStringLiteral("127.0.0.1");

sockaddr_in loopback(quint16 port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

} // namespace

void endWithTest(QProcess &process)
{
    const pid_t test = ::getpid();
    if (::gettid() != test) {
        qWarning("A test server started off the main thread does not end with a crashed test");
        return;
    }
    process.setChildProcessModifier([test] {
        ::prctl(PR_SET_PDEATHSIG, SIGTERM);
        // The test may have died between the fork and the line above; nobody would signal then.
        if (::getppid() != test)
            ::_exit(1);
    });
}

void stopProcess(std::unique_ptr<QProcess> &process)
{
    if (!process)
        return;
    const qint64 pid = process->processId();
    if (pid > 0 && process->state() != QProcess::NotRunning) {
        ::kill(pid_t(pid), SIGTERM);
        if (!process->waitForFinished(5000)) {
            ::kill(pid_t(pid), SIGKILL);
            process->waitForFinished(5000);
        }
    }
    process.reset();
}

std::unique_ptr<QProcess> serverProcess()
{
    auto process = std::make_unique<QProcess>();
    endWithTest(*process);
    return process;
}

quint16 freePort()
{
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    if (fd < 0)
        return 0;
    sockaddr_in address = loopback(0);
    quint16 port = 0;
    socklen_t length = sizeof address;
    if (::bind(fd, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0
        && ::getsockname(fd, reinterpret_cast<sockaddr *>(&address), &length) == 0)
        port = ntohs(address.sin_port);
    ::close(fd);
    return port;
}

bool waitForPort(quint16 port, int timeoutMs)
{
    QDeadlineTimer deadline(timeoutMs);
    while (!deadline.hasExpired()) {
        const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address = loopback(port);
        const bool connected = ::connect(fd, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0;
        ::close(fd);
        if (connected)
            return true;
        QThread::msleep(50);
    }
    return false;
}

// --- FTP --------------------------------------------------------------------------------------

FtpServer::~FtpServer()
{
    stop();
}

bool FtpServer::start(const QString &root, const QString &user, const QString &password, QString *error)
{
    m_port = freePort();
    m_process = serverProcess();
    m_process->setStandardOutputFile(QProcess::nullDevice());
    m_process->setStandardErrorFile(QProcess::nullDevice()); // pyftpdlib logs every command there
    m_process->start(Python, {QStringLiteral("-m"), QStringLiteral("pyftpdlib"), QStringLiteral("-i"), Localhost,
                              QStringLiteral("-p"), QString::number(m_port), QStringLiteral("-w"),
                              QStringLiteral("-d"), root, QStringLiteral("-u"), user, QStringLiteral("-P"),
                              password});
    if (!m_process->waitForStarted(10000) || !waitForPort(m_port)) {
        if (error)
            *error = QStringLiteral("pyftpdlib did not start: ") + m_process->errorString();
        stop();
        return false;
    }
    return true;
}

void FtpServer::stop()
{
    stopProcess(m_process);
}

QString FtpServer::hostAndPort() const
{
    return Localhost + QLatin1Char(':') + QString::number(m_port);
}

// --- Account check ----------------------------------------------------------------------------

AccountCheckServer::AccountCheckServer() = default;

AccountCheckServer::~AccountCheckServer()
{
    stop();
}

quint16 readPortLine(QProcess &process, int timeoutMs)
{
    QByteArray line;
    QDeadlineTimer deadline(timeoutMs);
    while (!line.contains('\n') && !deadline.hasExpired() && process.state() != QProcess::NotRunning) {
        process.waitForReadyRead(200);
        line += process.readAll();
    }
    return quint16(line.trimmed().toUInt());
}

bool AccountCheckServer::start(QString *error)
{
    m_process = serverProcess();
    m_process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process->start(Python, {QStringLiteral(QUILLORY_TEST_SUPPORT_DIR "/account_check_server.py"), m_folder.path()});
    m_port = readPortLine(*m_process);
    if (m_port == 0 || !waitForPort(m_port)) {
        if (error)
            *error = QStringLiteral("the account check server did not start: ") + m_process->errorString();
        stop();
        return false;
    }
    return true;
}

void AccountCheckServer::stop()
{
    stopProcess(m_process);
}

void AccountCheckServer::setBody(const QByteArray &body)
{
    QFile file(m_folder.filePath(QStringLiteral("body")));
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        file.write(body);
}

QStringList AccountCheckServer::requests() const
{
    QFile file(m_folder.filePath(QStringLiteral("requests.log")));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

QString AccountCheckServer::webAddress() const
{
    return QStringLiteral("http://") + Localhost + QLatin1Char(':') + QString::number(m_port) + QLatin1Char('/');
}

// --- Keyring ----------------------------------------------------------------------------------

PrivateKeyring::PrivateKeyring() = default;

PrivateKeyring::~PrivateKeyring()
{
    stop();
}

bool PrivateKeyring::isRunning() const
{
    return m_keyring && m_keyring->state() == QProcess::Running;
}

bool PrivateKeyring::start(QString *error)
{
    auto fail = [&](const QString &why) {
        if (error)
            *error = why;
        stop();
        return false;
    };
    const QString runtime = m_folder.filePath(QStringLiteral("run"));
    const QString data = m_folder.filePath(QStringLiteral("data"));
    QDir().mkpath(runtime);
    QDir().mkpath(data);
    QFile::setPermissions(runtime, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);

    m_bus = serverProcess();
    m_bus->setProcessChannelMode(QProcess::SeparateChannels);
    m_bus->setStandardErrorFile(QProcess::nullDevice());
    m_bus->start(QStringLiteral("/usr/bin/dbus-daemon"),
                 {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--print-address=1"),
                  QStringLiteral("--address=unix:path=") + m_folder.filePath(QStringLiteral("bus"))});
    QByteArray address;
    QDeadlineTimer deadline(10000);
    while (!address.contains('\n') && !deadline.hasExpired() && m_bus->state() != QProcess::NotRunning) {
        m_bus->waitForReadyRead(200);
        address += m_bus->readAllStandardOutput();
    }
    address = address.trimmed();
    if (address.isEmpty())
        return fail(QStringLiteral("dbus-daemon did not start"));

    m_hadAddress = qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS");
    m_previousAddress = qgetenv("DBUS_SESSION_BUS_ADDRESS");
    m_addressChanged = true;
    qputenv("DBUS_SESSION_BUS_ADDRESS", address);

    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("HOME"), m_folder.path());
    environment.insert(QStringLiteral("XDG_DATA_HOME"), data);
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime);
    environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), QString::fromUtf8(address));
    m_keyring = serverProcess();
    m_keyring->setProcessEnvironment(environment);
    m_keyring->setProcessChannelMode(QProcess::MergedChannels);
    m_keyring->setStandardOutputFile(m_folder.filePath(QStringLiteral("keyring.log")));
    m_keyring->start(QStringLiteral("/usr/bin/gnome-keyring-daemon"),
                     {QStringLiteral("--foreground"), QStringLiteral("--unlock"),
                      QStringLiteral("--components=secrets")});
    if (!m_keyring->waitForStarted(10000))
        return fail(QStringLiteral("gnome-keyring-daemon did not start"));
    m_keyring->write("test-keyring-password");
    m_keyring->waitForBytesWritten(5000);
    m_keyring->closeWriteChannel();

    // Ready once the Secret Service's name is owned on the bus.
    while (!deadline.hasExpired()) {
        QProcess ask;
        ask.setProcessEnvironment(environment);
        ask.start(QStringLiteral("/usr/bin/dbus-send"),
                  {QStringLiteral("--session"), QStringLiteral("--print-reply"),
                   QStringLiteral("--dest=org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
                   QStringLiteral("org.freedesktop.DBus.NameHasOwner"), QStringLiteral("string:org.freedesktop.secrets")});
        ask.waitForFinished(5000);
        if (ask.readAllStandardOutput().contains("boolean true"))
            return true;
        if (m_keyring->state() != QProcess::Running)
            return fail(QStringLiteral("gnome-keyring-daemon stopped"));
        QThread::msleep(50);
    }
    QFile log(m_folder.filePath(QStringLiteral("keyring.log")));
    log.open(QIODevice::ReadOnly);
    return fail(QStringLiteral("the Secret Service did not appear on the private bus: ") + QString::fromUtf8(log.readAll()));
}

void PrivateKeyring::stop()
{
    stopProcess(m_keyring);
    stopProcess(m_bus);
    if (!m_addressChanged)
        return;
    if (m_hadAddress)
        qputenv("DBUS_SESSION_BUS_ADDRESS", m_previousAddress);
    else
        qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    m_addressChanged = false;
}

} // namespace LocalServers

// --- Mail sink --------------------------------------------------------------------------------

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace LocalServers {

QString MailSink::Message::header(const QString &name) const
{
    for (const auto &[key, value] : headers)
        if (key.compare(name, Qt::CaseInsensitive) == 0)
            return value;
    return QString();
}

int MailSink::Message::headerCount(const QString &name) const
{
    int count = 0;
    for (const auto &each : headers)
        count += each.first.compare(name, Qt::CaseInsensitive) == 0 ? 1 : 0;
    return count;
}

MailSink::MailSink() = default;

MailSink::~MailSink()
{
    stop();
}

bool MailSink::start(bool refuse, QString *error)
{
    m_port = freePort();
    m_process = serverProcess();
    m_process->setProcessChannelMode(QProcess::SeparateChannels);
    m_process->setStandardErrorFile(m_folder.filePath(QStringLiteral("sink.log")));
    QStringList arguments{QStringLiteral(QUILLORY_TEST_SUPPORT_DIR "/mail_sink.py"), m_folder.path(),
                          QString::number(m_port)};
    if (refuse)
        arguments << QStringLiteral("--refuse");
    m_process->start(Python, arguments);
    QByteArray line;
    QDeadlineTimer deadline(15000);
    while (!line.contains('\n') && !deadline.hasExpired() && m_process->state() != QProcess::NotRunning) {
        m_process->waitForReadyRead(200);
        line += m_process->readAllStandardOutput();
    }
    if (!line.startsWith("ready") || !waitForPort(m_port)) {
        if (error) {
            QFile log(m_folder.filePath(QStringLiteral("sink.log")));
            log.open(QIODevice::ReadOnly);
            *error = QStringLiteral("the mail sink did not start: ") + QString::fromUtf8(log.readAll());
        }
        stop();
        return false;
    }
    return true;
}

void MailSink::stop()
{
    stopProcess(m_process);
}

bool MailSink::configureSendmail(const QString &home) const
{
    QFile file(home + QStringLiteral("/.msmtprc"));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    file.write(QStringLiteral("defaults\nauth off\ntls off\n\naccount local\nhost 127.0.0.1\nport %1\n"
                              "from student@quillory.test\n\naccount default : local\n")
                   .arg(m_port)
                   .toUtf8());
    file.close();
    return file.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
}

QList<MailSink::Message> MailSink::messages() const
{
    QList<Message> messages;
    for (int number = 1;; ++number) {
        const QDir folder(m_folder.filePath(QString::number(number)));
        if (!folder.exists())
            break;
        auto read = [&](const char *name) {
            QFile file(folder.filePath(QLatin1String(name)));
            file.open(QIODevice::ReadOnly);
            return file.readAll();
        };
        Message message;
        message.raw = read("message.eml");
        for (const QJsonValue &pair : QJsonDocument::fromJson(read("headers.json")).array())
            message.headers.append({pair.toArray().at(0).toString(), pair.toArray().at(1).toString()});
        for (const QJsonValue &to : QJsonDocument::fromJson(read("envelope.json")).object().value(QStringLiteral("to")).toArray())
            message.recipients.append(to.toString());
        for (const QJsonValue &value : QJsonDocument::fromJson(read("parts.json")).array()) {
            const QJsonObject part = value.toObject();
            message.parts.append({part.value(QStringLiteral("content_type")).toString(),
                                  part.value(QStringLiteral("filename")).toString(),
                                  part.value(QStringLiteral("disposition")).toString(),
                                  part.value(QStringLiteral("charset")).toString(),
                                  read(part.value(QStringLiteral("file")).toString().toUtf8().constData())});
        }
        messages.append(message);
    }
    return messages;
}

} // namespace LocalServers
