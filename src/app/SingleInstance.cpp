#include "SingleInstance.h"

#include <QCryptographicHash>
#include <QDataStream>
#include <QDir>
#include <QFileInfo>
#include <QLocalServer>
#include <QLocalSocket>
#include <QLockFile>
#include <QLoggingCategory>
#include <QTimer>

#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

Q_LOGGING_CATEGORY(lcInstance, "quillory.app.instance")

namespace {
// The first thing on the wire, so that a stray client (or a future format) is told apart.
constexpr quint32 RequestMagic = 0x51494f32; // "QIO2": files, then the activation tokens
// What a copy from before the tokens sends: files only. Still read, so that an update installed
// while a copy runs does not leave the new start unanswered.
constexpr quint32 FilesOnlyMagic = 0x51494f31; // "QIO1"
constexpr char Acknowledgement = 'k';
constexpr int ConnectTimeoutMs = 2000;
// A running copy answers at once from its event loop, but one busy at start-up (a download, a
// question) reads the request only later; the request waits in the socket for it either way.
constexpr int AcknowledgementTimeoutMs = 5000;
// Two starts at the same moment take turns; the lock of one that died is taken over.
constexpr int LockTimeoutMs = 10000;
constexpr int ClientTimeoutMs = 10000;

// A folder only this user can enter, or false.
bool isPrivateFolder(const QString &path)
{
    struct stat status {};
    if (::lstat(QFile::encodeName(path).constData(), &status) != 0)
        return false;
    return S_ISDIR(status.st_mode) && status.st_uid == ::getuid() && (status.st_mode & 077) == 0;
}

QString privateRuntimeFolder()
{
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (!runtime.isEmpty() && QDir::isAbsolutePath(runtime) && isPrivateFolder(runtime))
        return runtime;
    // Without a session's runtime folder (a plain console, some containers): a folder of our own
    // in the temporary folder. One that exists must be ours and closed to others, else someone
    // else made it to catch our requests, and we go without the guard rather than use it.
    const QString fallback = QDir::tempPath() + QStringLiteral("/quillory-%1").arg(::getuid());
    ::mkdir(QFile::encodeName(fallback).constData(), 0700);
    return isPrivateFolder(fallback) ? fallback : QString();
}
} // namespace

SingleInstance::SingleInstance(const QString &dataFolder, QObject *parent)
    : QObject(parent)
    , m_path(socketPath(dataFolder))
{
}

SingleInstance::~SingleInstance()
{
    // Closing removes the socket file, so the next start finds no one and runs.
    if (m_server)
        m_server->close();
}

QString SingleInstance::socketPath(const QString &dataFolder)
{
    QString folder = privateRuntimeFolder();
    if (folder.isEmpty())
        return QString();
    // Named after the data folder: copies for different homes (another account's data folder
    // mounted elsewhere, the tests' temporary homes) do not write the same files and may run
    // side by side.
    const QByteArray key = QFile::encodeName(QDir::cleanPath(QFileInfo(dataFolder).absoluteFilePath()));
    const QString name = QStringLiteral("/quillory-%1.socket")
                             .arg(QString::fromLatin1(QCryptographicHash::hash(key, QCryptographicHash::Sha256).toHex().left(16)));
    // A socket's path must fit sockaddr_un; a deep runtime folder falls back to the short one.
    if (QFile::encodeName(folder + name).size() >= qsizetype(sizeof(sockaddr_un{}.sun_path))) {
        folder = QDir::tempPath() + QStringLiteral("/quillory-%1").arg(::getuid());
        ::mkdir(QFile::encodeName(folder).constData(), 0700);
        if (!isPrivateFolder(folder))
            return QString();
    }
    return folder + name;
}

SingleInstance::Role SingleInstance::claim(const QStringList &files, const WindowActivation &activation)
{
    if (m_path.isEmpty()) {
        qCWarning(lcInstance) << "No private folder for the socket that keeps this to one running copy; running without it";
        return Role::Alone;
    }
    // Between looking for a running copy and listening, another start must not do the same, or
    // both would find no one and both would run.
    QLockFile lock(m_path + QStringLiteral(".lock"));
    if (!lock.tryLock(LockTimeoutMs))
        qCWarning(lcInstance) << "Could not take" << lock.error() << m_path << "; going on without it";
    if (handOver(files, activation))
        return Role::HandedOver;
    return listen() ? Role::Primary : Role::Alone;
}

bool SingleInstance::handOver(const QStringList &files, const WindowActivation &activation)
{
    QLocalSocket socket;
    socket.connectToServer(m_path);
    if (!socket.waitForConnected(ConnectTimeoutMs))
        return false; // nobody there, or a socket left by a copy that was killed

    QByteArray request;
    QDataStream out(&request, QIODevice::WriteOnly);
    out.setVersion(QDataStream::Qt_6_4);
    out << RequestMagic << files << activation.waylandToken << activation.startupId;
    socket.write(request);
    if (!socket.waitForBytesWritten(ConnectTimeoutMs) && socket.bytesToWrite() > 0) {
        qCWarning(lcInstance) << "The running copy did not take the request:" << socket.errorString();
        return false;
    }
    if (socket.waitForReadyRead(AcknowledgementTimeoutMs) && socket.read(1) == QByteArray(1, Acknowledgement))
        qCInfo(lcInstance) << "Handed" << files << "to the copy already running";
    else
        qCInfo(lcInstance) << "The copy already running is busy; it opens" << files << "when it is free";
    socket.disconnectFromServer();
    return true;
}

bool SingleInstance::listen()
{
    m_server = new QLocalServer(this);
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    // Nobody answered on the socket (see claim()), so a file there is left from a copy that died.
    QLocalServer::removeServer(m_path);
    if (!m_server->listen(m_path)) {
        qCWarning(lcInstance) << "Cannot listen on" << m_path << ":" << m_server->errorString()
                              << "; running without the guard against a second copy";
        delete m_server;
        m_server = nullptr;
        return false;
    }
    connect(m_server, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket *socket = m_server->nextPendingConnection()) {
            connect(socket, &QLocalSocket::readyRead, this, [this, socket] { readRequest(socket); });
            connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
            // A client that connects and never finishes its request is not kept forever.
            QTimer::singleShot(ClientTimeoutMs, socket, [socket] { socket->abort(); socket->deleteLater(); });
            if (socket->bytesAvailable() > 0)
                readRequest(socket);
        }
    });
    return true;
}

void SingleInstance::readRequest(QLocalSocket *socket)
{
    QDataStream in(socket);
    in.setVersion(QDataStream::Qt_6_4);
    in.startTransaction();
    quint32 magic = 0;
    QStringList files;
    WindowActivation activation;
    in >> magic;
    if (in.status() == QDataStream::Ok && magic != RequestMagic && magic != FilesOnlyMagic) {
        qCWarning(lcInstance) << "Ignoring a connection that is not a later start of Quillory";
        socket->abort();
        return;
    }
    in >> files;
    if (magic == RequestMagic)
        in >> activation.waylandToken >> activation.startupId;
    if (!in.commitTransaction())
        return; // the rest is still on its way
    socket->write(&Acknowledgement, 1);
    socket->flush();
    if (!activation.isEmpty())
        qCInfo(lcInstance) << "The later start brought an activation token" << (activation.waylandToken.isEmpty() ? "(X11 startup ID)" : "(Wayland)");
    Q_EMIT activationRequested(files, activation);
}
