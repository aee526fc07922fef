#include "ProgramProcess.h"

#include "BuildInfo.h"
#include "app/WindowActivation.h"
#include "platform/Paths.h"
#include "platform/PropertyList.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QMap>
#include <QStandardPaths>
#include <QThread>
#include <gtest/gtest.h>

#include <xcb/xcb.h>

#include <csignal>
#include <cstring>
#include <memory>

// The real program's command line, and what a second start does while a first one runs: two real
// processes against the test's home folder, offscreen, each with a log of what it did.
namespace {

// Long enough for a start under the sanitizers on a busy machine; a hand-over takes milliseconds.
constexpr int StartMs = 60000;
constexpr int HandOverMs = 20000;

QString runtimeFolder()
{
    const QString folder = TestEnvironment::home() + QStringLiteral("/runtime");
    QDir().mkpath(folder);
    QFile::setPermissions(folder, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    return folder;
}

// Started the way a desktop starts it, with its log on the merged output channel.
class Program
{
public:
    // `extra`: variables set for this start (an empty value removes one).
    explicit Program(const QStringList &arguments, bool display = true, const QString &workingFolder = QString(),
                     const QMap<QString, QString> &extra = {})
    {
        QMap<QString, QString> variables{{QStringLiteral("XDG_RUNTIME_DIR"), runtimeFolder()},
                                         {QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("quillory.*.info=true")},
                                         {QStringLiteral("DISPLAY"), QString()},
                                         {QStringLiteral("WAYLAND_DISPLAY"), QString()}};
        if (!display)
            variables.insert(QStringLiteral("QT_QPA_PLATFORM"), QString());
        variables.insert(extra);
        const QProcessEnvironment environment = ProgramProcess::environment(variables);
        m_process.setProcessEnvironment(environment);
        m_process.setProcessChannelMode(QProcess::MergedChannels);
        if (!workingFolder.isEmpty())
            m_process.setWorkingDirectory(workingFolder);
        m_process.start(QStringLiteral(QUILLORY_PROGRAM_PATH), arguments);
        EXPECT_TRUE(m_process.waitForStarted());
    }
    ~Program()
    {
        if (m_process.state() != QProcess::NotRunning) {
            m_process.kill();
            m_process.waitForFinished();
        }
    }

    // The exit code, or -1 when it did not end in time or crashed.
    int finish(int milliseconds)
    {
        if (!m_process.waitForFinished(milliseconds) || m_process.exitStatus() != QProcess::NormalExit)
            return -1;
        collect();
        return m_process.exitCode();
    }
    bool running() { return m_process.state() == QProcess::Running; }
    void signal(int number) { ::kill(pid_t(m_process.processId()), number); }

    QString output()
    {
        collect();
        return m_output;
    }
    bool waitForOutput(const QString &text, int milliseconds)
    {
        QDeadlineTimer deadline(milliseconds);
        while (!output().contains(text)) {
            if (deadline.hasExpired() || m_process.state() == QProcess::NotRunning)
                return output().contains(text);
            m_process.waitForReadyRead(100);
        }
        return true;
    }

private:
    void collect() { m_output += QString::fromLocal8Bit(m_process.readAll()); }

    QProcess m_process;
    QString m_output;
};

QStringList sockets()
{
    return QDir(runtimeFolder()).entryList({QStringLiteral("*.socket")}, QDir::System | QDir::Files);
}

// A first copy that runs until told to quit; true once it listens for later starts.
bool waitForListening(Program &program)
{
    QDeadlineTimer deadline(StartMs);
    while (sockets().isEmpty()) {
        if (deadline.hasExpired() || !program.running())
            return false;
        QThread::msleep(50);
    }
    return true;
}

void writeAssignments()
{
    const QVariantList records{QVariantMap{{QStringLiteral("Name"), QStringLiteral("Essay")}}};
    QDir().mkpath(Paths::dataFolder());
    EXPECT_TRUE(PropertyList::writeFile(Paths::assignmentsFile(), records));
}

} // namespace

TEST(CommandLine, HelpAndVersionPrintAndExitWithoutADisplay)
{
    Program version({QStringLiteral("--version")}, false);
    ASSERT_EQ(version.finish(StartMs), 0) << version.output().toStdString();
    EXPECT_EQ(version.output(), QStringLiteral("%1 %2\n").arg(QLatin1String(BuildInfo::BundleName), QLatin1String(BuildInfo::BundleVersion)));

    Program help({QStringLiteral("-h")}, false);
    ASSERT_EQ(help.finish(StartMs), 0) << help.output().toStdString();
    EXPECT_TRUE(help.output().startsWith(QStringLiteral("Usage: quillory"))) << help.output().toStdString();
    EXPECT_TRUE(help.output().contains(QStringLiteral("--version")));

    // A mistyped option says so and starts nothing: no data folder, no socket.
    Program unknown({QStringLiteral("--veriosn")}, true);
    ASSERT_EQ(unknown.finish(StartMs), 2);
    EXPECT_TRUE(unknown.output().contains(QStringLiteral("unknown option '--veriosn'"))) << unknown.output().toStdString();
    Program missing({QStringLiteral("no such backup")}, true);
    ASSERT_EQ(missing.finish(StartMs), 2);
    EXPECT_TRUE(missing.output().contains(QStringLiteral("cannot open 'no such backup'"))) << missing.output().toStdString();
    EXPECT_FALSE(QFileInfo::exists(Paths::dataFolder()));
    EXPECT_TRUE(sockets().isEmpty());
}

TEST(CommandLine, ASecondStartHandsItsBackupToTheRunningCopyAndEnds)
{
    writeAssignments();
    const QString backupFolder = TestEnvironment::home() + QStringLiteral("/Downloads");
    QDir().mkpath(backupFolder);
    const QString backup = backupFolder + QStringLiteral("/Quillory Backup");
    ASSERT_TRUE(PropertyList::writeFile(backup, QVariantList{QVariantList{}, QVariantList{}, QVariantList{}}));

    Program first({});
    ASSERT_TRUE(waitForListening(first)) << first.output().toStdString();

    // Given as a name relative to the second start's own working folder, which the first does not share.
    Program second({QStringLiteral("Quillory Backup")}, true, backupFolder);
    ASSERT_EQ(second.finish(HandOverMs), 0) << second.output().toStdString();
    EXPECT_FALSE(second.output().contains(QStringLiteral("Asking:")));

    // The first copy comes to the front and asks the backup import's question about that file.
    ASSERT_TRUE(first.waitForOutput(QStringLiteral("Import from Backup"), HandOverMs)) << first.output().toStdString();
    EXPECT_TRUE(first.output().contains(QStringLiteral("Raised the window for a later start")));
    // (As start-up repaired it; the import has not written.)
    const QByteArray data = TestEnvironment::readFile(Paths::assignmentsFile());
    EXPECT_TRUE(first.output().contains(QStringLiteral("Opening \"%1\"").arg(backup))) << first.output().toStdString();

    // A logout answers the open question with Cancel: the data is as it was.
    first.signal(SIGTERM);
    ASSERT_EQ(first.finish(StartMs), 0) << first.output().toStdString();
    EXPECT_EQ(TestEnvironment::readFile(Paths::assignmentsFile()), data);
    EXPECT_TRUE(sockets().isEmpty());
}

TEST(CommandLine, ASocketLeftByAKilledCopyDoesNotStopTheNextStart)
{
    {
        Program killed({});
        ASSERT_TRUE(waitForListening(killed)) << killed.output().toStdString();
        killed.signal(SIGKILL);
        ASSERT_EQ(killed.finish(StartMs), -1);
    }
    ASSERT_EQ(sockets().size(), 1);
    writeAssignments();

    // The next start runs, and hands a calendar file given to it to the calendar import, which
    // finds nothing in this one to add.
    const QString calendar = TestEnvironment::home() + QStringLiteral("/term.ics");
    TestEnvironment::writeFile(calendar, "BEGIN:VCALENDAR\r\nEND:VCALENDAR\r\n");
    Program next({calendar});
    ASSERT_TRUE(next.waitForOutput(QStringLiteral("\u201cterm.ics\u201d holds no events or to-dos to import."), StartMs))
        << next.output().toStdString();
    const QByteArray data = TestEnvironment::readFile(Paths::assignmentsFile());
    EXPECT_TRUE(data.contains("Essay"));

    // It is the copy that later starts reach now.
    Program later({});
    ASSERT_EQ(later.finish(HandOverMs), 0) << later.output().toStdString();
    ASSERT_TRUE(next.waitForOutput(QStringLiteral("Raised the window for a later start"), HandOverMs)) << next.output().toStdString();

    next.signal(SIGTERM);
    ASSERT_EQ(next.finish(StartMs), 0) << next.output().toStdString();
    EXPECT_EQ(TestEnvironment::readFile(Paths::assignmentsFile()), data);
}

namespace {

// A real X server of the test's own, and a client on it that hears what other clients send to the
// root window: the startup-notification messages and the requests to activate a window, as a
// window manager and a launcher hear them.
class XServer
{
public:
    XServer()
    {
        const QString xvfb = QStandardPaths::findExecutable(QStringLiteral("Xvfb"));
        if (xvfb.isEmpty())
            return;
        m_server.start(xvfb, {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-nolisten"), QStringLiteral("tcp"),
                              QStringLiteral("-screen"), QStringLiteral("0"), QStringLiteral("800x600x24")});
        QDeadlineTimer deadline(StartMs);
        while (!m_server.canReadLine() && !deadline.hasExpired() && m_server.state() != QProcess::NotRunning)
            m_server.waitForReadyRead(100);
        const QByteArray number = m_server.readLine().trimmed();
        if (number.isEmpty())
            return;
        m_display = QStringLiteral(":") + QString::fromLatin1(number);
        m_connection = xcb_connect(m_display.toLatin1().constData(), nullptr);
        if (xcb_connection_has_error(m_connection))
            return;
        m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
        const quint32 mask = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        xcb_change_window_attributes(m_connection, m_root, XCB_CW_EVENT_MASK, &mask);
        m_startupInfo = atom("_NET_STARTUP_INFO");
        m_startupInfoBegin = atom("_NET_STARTUP_INFO_BEGIN");
        m_activeWindow = atom("_NET_ACTIVE_WINDOW");
        xcb_flush(m_connection);
    }
    ~XServer()
    {
        if (m_connection)
            xcb_disconnect(m_connection);
        if (m_server.state() != QProcess::NotRunning) {
            m_server.terminate();
            if (!m_server.waitForFinished(5000)) {
                m_server.kill();
                m_server.waitForFinished();
            }
        }
    }
    bool running() const { return m_connection && !xcb_connection_has_error(m_connection); }
    QString display() const { return m_display; }

    // Waits for a startup-notification message that starts with `prefix`.
    bool waitForStartupMessage(const QByteArray &prefix, int milliseconds)
    {
        return waitFor([&] {
            return std::any_of(m_messages.cbegin(), m_messages.cend(), [&](const QByteArray &m) { return m.startsWith(prefix); });
        }, milliseconds);
    }
    // Waits for a request to activate a window with the time stamp `time`.
    bool waitForActivation(quint32 time, int milliseconds)
    {
        return waitFor([&] { return m_activationTimes.contains(time); }, milliseconds);
    }
    QList<QByteArray> messages() const { return m_messages; }

private:
    xcb_atom_t atom(const char *name)
    {
        auto *reply = xcb_intern_atom_reply(m_connection, xcb_intern_atom(m_connection, false, quint16(std::strlen(name)), name), nullptr);
        const xcb_atom_t result = reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
        std::free(reply);
        return result;
    }
    template <typename Done>
    bool waitFor(Done done, int milliseconds)
    {
        QDeadlineTimer deadline(milliseconds);
        while (!done()) {
            if (deadline.hasExpired() || !running())
                return false;
            while (xcb_generic_event_t *event = xcb_poll_for_event(m_connection)) {
                if ((event->response_type & 0x7f) == XCB_CLIENT_MESSAGE)
                    take(reinterpret_cast<xcb_client_message_event_t *>(event));
                std::free(event);
            }
            QThread::msleep(20);
        }
        return true;
    }
    void take(const xcb_client_message_event_t *event)
    {
        if (event->type == m_activeWindow && event->format == 32) {
            m_activationTimes.append(event->data.data32[1]);
            return;
        }
        if ((event->type != m_startupInfoBegin && event->type != m_startupInfo) || event->format != 8)
            return;
        QByteArray &message = m_partial[event->window];
        if (event->type == m_startupInfoBegin)
            message.clear();
        const char *bytes = reinterpret_cast<const char *>(event->data.data8);
        const qsizetype length = qsizetype(strnlen(bytes, 20));
        message.append(bytes, length);
        if (length < 20)
            m_messages.append(m_partial.take(event->window));
    }

    QProcess m_server;
    QString m_display;
    xcb_connection_t *m_connection = nullptr;
    xcb_window_t m_root = 0;
    xcb_atom_t m_startupInfo = 0, m_startupInfoBegin = 0, m_activeWindow = 0;
    QHash<xcb_window_t, QByteArray> m_partial;
    QList<QByteArray> m_messages;
    QList<quint32> m_activationTimes;
};

} // namespace

TEST(CommandLine, StartupIdsAreReadWithTheirTimeAndEndedWithAQuotedRemoveMessage)
{
    EXPECT_EQ(WindowActivation::startupTime("nautilus-1234-host-quillory-5_TIME87654321"), 87654321u);
    EXPECT_EQ(WindowActivation::startupTime("kde-launch-no-time"), 0u);
    EXPECT_EQ(WindowActivation::startupTime("x_TIMEnot-a-number"), 0u);
    EXPECT_EQ(WindowActivation::removeMessage("id_TIME5"), QByteArray("remove: ID=id_TIME5"));
    EXPECT_EQ(WindowActivation::removeMessage("a b\"c\\"), QByteArray("remove: ID=\"a b\\\"c\\\\\""));
}

TEST(CommandLine, ASecondStartOnX11EndsItsLaunchFeedbackAndActivatesTheFirstWithTheClickTime)
{
    XServer x;
    if (!x.running())
        GTEST_SKIP() << "Xvfb could not be started";
    writeAssignments();
    const QMap<QString, QString> onX{{QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb")},
                                     {QStringLiteral("DISPLAY"), x.display()},
                                     {QStringLiteral("XDG_ACTIVATION_TOKEN"), QString()}};
    Program first({}, true, QString(), onX);
    ASSERT_TRUE(waitForListening(first)) << first.output().toStdString();

    QMap<QString, QString> launched = onX;
    launched.insert(QStringLiteral("DESKTOP_STARTUP_ID"), QStringLiteral("files-42-host-quillory-7_TIME4242"));
    Program second({}, true, QString(), launched);
    ASSERT_EQ(second.finish(HandOverMs), 0) << second.output().toStdString();

    EXPECT_TRUE(x.waitForStartupMessage("remove: ID=files-42-host-quillory-7_TIME4242", HandOverMs))
        << first.output().toStdString();
    EXPECT_TRUE(x.waitForActivation(4242, HandOverMs)) << first.output().toStdString();
    EXPECT_TRUE(first.waitForOutput(QStringLiteral("Raised the window for a later start: activated with the time"), HandOverMs))
        << first.output().toStdString();

    first.signal(SIGTERM);
    ASSERT_EQ(first.finish(StartMs), 0) << first.output().toStdString();
}

TEST(CommandLine, ASecondStartPassesItsWaylandTokenToTheFirst)
{
    Program first({});
    ASSERT_TRUE(waitForListening(first)) << first.output().toStdString();
    Program second({}, true, QString(), {{QStringLiteral("XDG_ACTIVATION_TOKEN"), QStringLiteral("token-from-the-launcher")}});
    ASSERT_EQ(second.finish(HandOverMs), 0) << second.output().toStdString();
    // Offscreen has no compositor to give it to; the first copy has it and says it cannot use it here.
    ASSERT_TRUE(first.waitForOutput(QStringLiteral("Raised the window for a later start"), HandOverMs)) << first.output().toStdString();
    EXPECT_TRUE(first.output().contains(QStringLiteral("The later start brought an activation token (Wayland)")));
    EXPECT_TRUE(first.output().contains(QStringLiteral("the later start's token is not for this platform")));
    first.signal(SIGTERM);
    ASSERT_EQ(first.finish(StartMs), 0) << first.output().toStdString();
}
