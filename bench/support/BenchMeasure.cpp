#include "support/BenchMeasure.h"

#include <QApplication>
#include <QFile>
#include <QSaveFile>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

namespace BenchMeasure {

double Pair::time(const std::function<void()> &operation)
{
    const auto start = std::chrono::steady_clock::now();
    operation();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

double Pair::median(std::vector<double> values)
{
    if (values.empty())
        return 0.0;
    std::sort(values.begin(), values.end());
    const size_t middle = values.size() / 2;
    return values.size() % 2 ? values[middle] : (values[middle - 1] + values[middle]) / 2.0;
}

void Pair::report(benchmark::State &state) const
{
    const double measured = median(m_measured);
    const double floorMs = median(m_floor);
    state.counters["median_ms"] = measured;
    state.counters["floor_ms"] = floorMs;
    state.counters["ratio"] = floorMs > 0 ? measured / floorMs : 0.0;
}

QByteArray readAll(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

qint64 readAndCountOpenings(const QString &path)
{
    const QByteArray bytes = readAll(path);
    return std::count(bytes.begin(), bytes.end(), '<');
}

void saveAtomically(const QString &path, const QByteArray &bytes)
{
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly)) {
        file.write(bytes);
        file.commit();
    }
}

namespace {
qint64 statusKilobytes(const char *field)
{
    FILE *status = std::fopen("/proc/self/status", "r");
    if (!status)
        return -1;
    char line[256];
    qint64 value = -1;
    const size_t length = std::strlen(field);
    while (std::fgets(line, sizeof line, status)) {
        if (std::strncmp(line, field, length) == 0 && line[length] == ':') {
            value = std::atoll(line + length + 1);
            break;
        }
    }
    std::fclose(status);
    return value;
}
} // namespace

qint64 peakGrowthBytes(const std::function<void()> &operation)
{
    int pipeFds[2];
    if (pipe(pipeFds) != 0)
        return -1;
    const pid_t child = fork();
    if (child < 0)
        return -1;
    if (child == 0) {
        close(pipeFds[0]);
        // Memory the parent freed is still resident and shared with this child; reusing it would
        // not show as growth. Hand it back first.
        malloc_trim(0);
        // Reset the high-water mark to the present resident size where the kernel allows it.
        if (FILE *refs = std::fopen("/proc/self/clear_refs", "w")) {
            std::fputs("5", refs);
            std::fclose(refs);
        }
        const qint64 before = statusKilobytes("VmRSS");
        operation();
        const qint64 growth = (statusKilobytes("VmHWM") - before) * 1024;
        [[maybe_unused]] ssize_t written = write(pipeFds[1], &growth, sizeof growth);
        _exit(0);
    }
    close(pipeFds[1]);
    qint64 growth = -1;
    if (read(pipeFds[0], &growth, sizeof growth) != sizeof growth)
        growth = -1;
    close(pipeFds[0]);
    waitpid(child, nullptr, 0);
    return growth;
}

int runWindowBenchmarks(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

} // namespace BenchMeasure
