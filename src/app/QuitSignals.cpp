#include "QuitSignals.h"

#include <QSocketNotifier>

#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

namespace {
int g_sockets[2] = {-1, -1};

void onSignal(int signal)
{
    const char byte = char(signal);
    [[maybe_unused]] ssize_t written = ::write(g_sockets[0], &byte, 1);
}
} // namespace

QuitSignals::QuitSignals(QObject *parent)
    : QObject(parent)
{
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, g_sockets) != 0)
        return;
    m_notifier = new QSocketNotifier(g_sockets[1], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &QuitSignals::readSignal);

    struct sigaction action = {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    sigaction(SIGTERM, &action, nullptr);
    sigaction(SIGINT, &action, nullptr);
}

QuitSignals::~QuitSignals()
{
    signal(SIGTERM, SIG_DFL);
    signal(SIGINT, SIG_DFL);
}

void QuitSignals::readSignal()
{
    char byte = 0;
    if (::read(g_sockets[1], &byte, 1) == 1)
        Q_EMIT quitRequested(int(byte));
}
