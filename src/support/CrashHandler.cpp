#include "support/CrashHandler.h"

#include <QFile>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>
#include <execinfo.h>
#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

// Everything the handler reads is made here before any crash: fixed buffers in static storage.
constexpr int FatalSignals[] = {SIGSEGV, SIGABRT, SIGBUS, SIGFPE, SIGILL};
constexpr size_t TextSize = PATH_MAX;
char g_logPath[TextSize];
char g_temporaryPath[TextSize];
char g_folderPath[TextSize];
char g_build[256];
// The handler's own stack: a stack overflow leaves none to run on. Larger than SIGSTKSZ because
// backtrace() and the unwinder below it want room.
alignas(16) char g_alternateStack[256 * 1024];
std::atomic<bool> g_handling{false};

bool copyText(char *target, const QByteArray &text)
{
    if (size_t(text.size()) >= TextSize)
        return false;
    std::memcpy(target, text.constData(), size_t(text.size()));
    target[text.size()] = '\0';
    return true;
}

// --- Async-signal-safe writing: write(2) only, with our own number formatting. -------------------

class Output
{
public:
    explicit Output(int fd)
        : m_fd(fd)
    {
    }

    void text(const char *text) { bytes(text, std::strlen(text)); }

    void bytes(const char *data, size_t length)
    {
        while (length > 0) {
            const ssize_t written = ::write(m_fd, data, length);
            if (written < 0 && errno == EINTR)
                continue;
            if (written <= 0)
                return;
            data += written;
            length -= size_t(written);
        }
    }

    void decimal(unsigned long long value, int width = 0)
    {
        char digits[24];
        int count = 0;
        do {
            digits[count++] = char('0' + value % 10);
            value /= 10;
        } while (value > 0 && count < 24);
        while (count < width && count < 24)
            digits[count++] = '0';
        char ordered[24];
        for (int i = 0; i < count; ++i)
            ordered[i] = digits[count - 1 - i];
        bytes(ordered, size_t(count));
    }

    void hexadecimal(unsigned long long value)
    {
        static const char digits[] = "0123456789abcdef";
        char text[2 + 16];
        text[0] = '0';
        text[1] = 'x';
        for (int i = 0; i < 16; ++i)
            text[2 + i] = digits[(value >> (60 - 4 * i)) & 0xf];
        bytes(text, sizeof text);
    }

    int fd() const { return m_fd; }

private:
    int m_fd;
};

// UTC from seconds since 1970 without gmtime (not async-signal-safe): the days-to-civil algorithm.
void writeUtc(Output &out, time_t seconds)
{
    long long days = seconds / 86400;
    long long rest = seconds % 86400;
    if (rest < 0) {
        rest += 86400;
        --days;
    }
    days += 719468;
    const long long era = (days >= 0 ? days : days - 146096) / 146097;
    const long long dayOfEra = days - era * 146097;
    const long long yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const long long dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const long long monthIndex = (5 * dayOfYear + 2) / 153;
    const long long day = dayOfYear - (153 * monthIndex + 2) / 5 + 1;
    const long long month = monthIndex < 10 ? monthIndex + 3 : monthIndex - 9;
    const long long year = yearOfEra + era * 400 + (month <= 2 ? 1 : 0);
    out.decimal((unsigned long long)year, 4);
    out.text("-");
    out.decimal((unsigned long long)month, 2);
    out.text("-");
    out.decimal((unsigned long long)day, 2);
    out.text(" ");
    out.decimal((unsigned long long)(rest / 3600), 2);
    out.text(":");
    out.decimal((unsigned long long)(rest / 60 % 60), 2);
    out.text(":");
    out.decimal((unsigned long long)(rest % 60), 2);
    out.text(" UTC");
}

const char *signalName(int signal)
{
    switch (signal) {
    case SIGSEGV:
        return "SIGSEGV (segmentation fault)";
    case SIGABRT:
        return "SIGABRT (abort)";
    case SIGBUS:
        return "SIGBUS (bus error)";
    case SIGFPE:
        return "SIGFPE (arithmetic exception)";
    case SIGILL:
        return "SIGILL (illegal instruction)";
    default:
        return "signal";
    }
}

// The executable mappings, so that the addresses above can be turned into file and line later with
// addr2line, whatever address the program was loaded at.
void writeExecutableMappings(Output &out)
{
    const int maps = ::open("/proc/self/maps", O_RDONLY | O_CLOEXEC);
    if (maps < 0)
        return;
    out.text("\nExecutable mappings:\n");
    char line[1024];
    size_t length = 0;
    bool overlong = false;
    char chunk[4096];
    for (;;) {
        const ssize_t got = ::read(maps, chunk, sizeof chunk);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            break;
        for (ssize_t i = 0; i < got; ++i) {
            if (chunk[i] != '\n') {
                if (length < sizeof line)
                    line[length++] = chunk[i];
                else
                    overlong = true;
                continue;
            }
            // "start-end perms offset dev inode path": the permissions are the second field.
            const char *space = static_cast<const char *>(std::memchr(line, ' ', length));
            const size_t at = space ? size_t(space - line) : length;
            if (!overlong && at + 3 < length && line[at + 3] == 'x') {
                out.bytes(line, length);
                out.text("\n");
            }
            length = 0;
            overlong = false;
        }
    }
    ::close(maps);
}

void makeFolders()
{
    // Each ancestor in turn; the ones that exist answer EEXIST.
    char partial[TextSize];
    const size_t length = std::strlen(g_folderPath);
    for (size_t i = 1; i <= length; ++i) {
        if (i < length && g_folderPath[i] != '/')
            continue;
        std::memcpy(partial, g_folderPath, i);
        partial[i] = '\0';
        ::mkdir(partial, 0700);
    }
}

void writeLog(int signal, const siginfo_t *info)
{
    makeFolders();
    const int fd = ::open(g_temporaryPath, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (fd < 0)
        return;
    Output out(fd);
    out.text(g_build);
    out.text(" crashed.\n\nProcess:    ");
    out.decimal((unsigned long long)::getpid());
    out.text("\nThread:     ");
    out.decimal((unsigned long long)::syscall(SYS_gettid));
    out.text("\nDate/Time:  ");
    writeUtc(out, ::time(nullptr));
    out.text("\nSignal:     ");
    out.decimal((unsigned long long)signal);
    out.text(" ");
    out.text(signalName(signal));
    if (info) {
        out.text("\nCode:       ");
        if (info->si_code < 0) {
            out.text("-");
            out.decimal((unsigned long long)(-(long long)info->si_code));
        } else {
            out.decimal((unsigned long long)info->si_code);
        }
        if (signal != SIGABRT) {
            out.text("\nAddress:    ");
            out.hexadecimal((unsigned long long)(uintptr_t)info->si_addr);
        }
    }
    // Return addresses point at the instruction after a call, which lies past the end of a
    // function that ends in a call to one that never returns (abort(), qFatal()): one byte back
    // keeps every frame inside the function that made the call, so it is named.
    out.text("\n\nBacktrace of the crashing thread (return addresses less one):\n");
    void *frames[128];
    const int count = ::backtrace(frames, 128);
    for (int i = 0; i < count; ++i)
        frames[i] = static_cast<char *>(frames[i]) - 1;
    ::backtrace_symbols_fd(frames, count, fd);
    writeExecutableMappings(out);
    ::fsync(fd);
    ::close(fd);
    ::rename(g_temporaryPath, g_logPath);
}

void onFatalSignal(int signal, siginfo_t *info, void *)
{
    const int savedErrno = errno;
    // A second thread crashing while the first writes waits for the first to end the process.
    if (g_handling.exchange(true)) {
        const timespec nap{1, 0};
        for (;;)
            ::nanosleep(&nap, nullptr);
    }
    writeLog(signal, info);

    // The default action, raised again: the process ends with this very signal.
    struct sigaction fallback = {};
    fallback.sa_handler = SIG_DFL;
    sigemptyset(&fallback.sa_mask);
    ::sigaction(signal, &fallback, nullptr);
    sigset_t unblock;
    sigemptyset(&unblock);
    sigaddset(&unblock, signal);
    ::pthread_sigmask(SIG_UNBLOCK, &unblock, nullptr);
    ::raise(signal);
    errno = savedErrno;
}

} // namespace

namespace CrashHandler {

bool install(const QString &logPath, const QString &buildVersion)
{
    const QByteArray path = QFile::encodeName(logPath);
    const qsizetype slash = path.lastIndexOf('/');
    if (slash <= 0 || !copyText(g_logPath, path) || !copyText(g_temporaryPath, path + ".writing")
        || !copyText(g_folderPath, path.left(slash)))
        return false;
    const QByteArray build = buildVersion.toUtf8().left(sizeof g_build - 1);
    std::memcpy(g_build, build.constData(), size_t(build.size()));
    g_build[build.size()] = '\0';

    // The first backtrace() loads the unwinder, which allocates: done now, never in the handler.
    void *frames[4];
    ::backtrace(frames, 4);

    stack_t stack = {};
    stack.ss_sp = g_alternateStack;
    stack.ss_size = sizeof g_alternateStack;
    if (::sigaltstack(&stack, nullptr) != 0)
        return false;

    struct sigaction action = {};
    action.sa_sigaction = onFatalSignal;
    sigemptyset(&action.sa_mask);
    // The other fatal signals wait while one is handled.
    for (int signal : FatalSignals)
        sigaddset(&action.sa_mask, signal);
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    for (int signal : FatalSignals)
        ::sigaction(signal, &action, nullptr);
    return true;
}

} // namespace CrashHandler
