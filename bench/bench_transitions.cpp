// How long one frame of each view transition takes at 1280x800, the size of a large main window.
// A frame is the transition's rendering plus the one drawImage that puts it on screen; it has to stay
// well inside the 16 ms of a 60 Hz display (the goal is 8 ms, leaving the rest to the window system).
// Every figure is also given as a ratio ("x_floor") to the cheapest possible frame, measured in the
// same run: one plain QPainter::drawImage of a 1280x800 picture, which any frame costs at least.
// The set-up of each transition (masks, maps) happens once per switch and is measured separately.
// Times are the benchmark thread's own CPU time: the machines this runs on are shared, and waiting
// for a core says nothing about the code.

#include "widgets/AnimatingTabView.h"
#include "widgets/Transition.h"

#include <QGuiApplication>
#include <QPainter>
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <vector>

namespace
{

const QSize kFrameSize(1280, 800);
const char *const kNames[]
    = { "", "CopyMachine", "DisintegrateWithMask", "Dissolve", "Flash", "Mod", "PageCurl", "Ripple", "Swipe" };

double threadNanoseconds()
{
    timespec now {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

// Something like a window's contents: rows of text over bands of colour.
QImage page(const QColor &background, const QColor &band, const QString &word)
{
    QImage image(kFrameSize, QImage::Format_RGB32);
    image.fill(background);
    QPainter painter(&image);
    for (int y = 0; y < kFrameSize.height(); y += 24) {
        if ((y / 24) % 3 == 0)
            painter.fillRect(0, y, kFrameSize.width(), 24, band);
        for (int x = 8; x < kFrameSize.width(); x += 180)
            painter.drawText(x, y + 17, word + QString::number(x + y));
    }
    return image;
}

const QImage &oldPage()
{
    static const QImage image = page(Qt::white, QColor(255, 220, 200), QStringLiteral("Essay "));
    return image;
}

const QImage &newPage()
{
    static const QImage image = page(QColor(244, 247, 251), QColor(59, 110, 165), QStringLiteral("Week "));
    return image;
}

std::unique_ptr<Transition> makeTransition(int index)
{
    return AnimatingTabView::createTransitionFilterForRect(
        index, QRectF(QPointF(0, 0), QSizeF(kFrameSize)), oldPage(), newPage());
}

// Nanoseconds for one drawImage of a 1280x800 picture: the median of many rounds.
double floorNanoseconds()
{
    static const double floor = [] {
        QImage target(kFrameSize, QImage::Format_RGB32);
        const QImage &source = oldPage();
        std::vector<double> rounds;
        for (int round = 0; round < 60; ++round) {
            const double start = threadNanoseconds();
            QPainter painter(&target);
            painter.drawImage(0, 0, source);
            painter.end();
            benchmark::DoNotOptimize(target.constBits());
            rounds.push_back(threadNanoseconds() - start);
        }
        std::nth_element(rounds.begin(), rounds.begin() + rounds.size() / 2, rounds.end());
        return rounds[rounds.size() / 2];
    }();
    return floor;
}

void reportAgainstFloor(benchmark::State &state, double nanoseconds)
{
    state.counters["x_floor"] = nanoseconds / static_cast<double>(state.iterations()) / floorNanoseconds();
}

void BM_Floor_DrawImage(benchmark::State &state)
{
    QImage target(kFrameSize, QImage::Format_RGB32);
    double spent = 0;
    for (auto _ : state) {
        const double start = threadNanoseconds();
        QPainter painter(&target);
        painter.drawImage(0, 0, oldPage());
        painter.end();
        benchmark::DoNotOptimize(target.constBits());
        const double elapsed = threadNanoseconds() - start;
        state.SetIterationTime(elapsed / 1e9);
        spent += elapsed;
    }
    reportAgainstFloor(state, spent);
}

// One frame: render at a moment of the switch and draw it. The moments cycle through the middle of
// the animation, where every effect has the most to do.
void BM_Frame(benchmark::State &state)
{
    const int index = static_cast<int>(state.range(0));
    auto transition = makeTransition(index);
    QImage frame;
    transition->renderFrame(0.5, frame); // set-up is not part of a frame
    QImage target(kFrameSize, QImage::Format_RGB32);
    const double moments[] = { 0.2, 0.35, 0.5, 0.65, 0.8 };
    size_t step = 0;
    double spent = 0;
    for (auto _ : state) {
        const double start = threadNanoseconds();
        transition->renderFrame(moments[step++ % 5], frame);
        QPainter painter(&target);
        painter.drawImage(0, 0, frame);
        painter.end();
        benchmark::DoNotOptimize(target.constBits());
        const double elapsed = threadNanoseconds() - start;
        state.SetIterationTime(elapsed / 1e9);
        spent += elapsed;
    }
    state.SetLabel(kNames[index]);
    reportAgainstFloor(state, spent);
}

// Once per switch: making the transition and its first frame (masks, maps, the page's back).
void BM_SetUp(benchmark::State &state)
{
    const int index = static_cast<int>(state.range(0));
    double spent = 0;
    for (auto _ : state) {
        const double start = threadNanoseconds();
        auto transition = makeTransition(index);
        QImage frame;
        transition->renderFrame(0.0, frame);
        benchmark::DoNotOptimize(frame.constBits());
        const double elapsed = threadNanoseconds() - start;
        state.SetIterationTime(elapsed / 1e9);
        spent += elapsed;
    }
    state.SetLabel(kNames[index]);
    reportAgainstFloor(state, spent);
}

BENCHMARK(BM_Floor_DrawImage)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Repetitions(5)
    ->ReportAggregatesOnly(true);
BENCHMARK(BM_Frame)
    ->DenseRange(1, 8)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Repetitions(5)
    ->ReportAggregatesOnly(true);
BENCHMARK(BM_SetUp)
    ->DenseRange(1, 8)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Repetitions(3)
    ->ReportAggregatesOnly(true);

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv); // fonts for the sample pages
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    floorNanoseconds();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
