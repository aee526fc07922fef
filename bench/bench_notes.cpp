// How long the notes field takes to bring its links up to date with a note of 20,000 characters:
// after a keystroke (the paragraph typed in is read again and laid out, the field repainted) and
// after the whole text is set by the program. A keystroke has to fit in one frame of a 60 Hz display
// (16.7 ms) with room to spare. Figures come with their ratio ("x_floor") to the cheapest thing that
// touches the same text, measured in the same run: QTextDocument::setPlainText of the whole note.
// Times are the benchmark thread's own CPU time, as the machines this runs on are shared.

#include "support/BenchMeasure.h"
#include "widgets/BVTableView.h"
#include "widgets/URLTextViewAdditions.h"

#include <QApplication>
#include <QKeyEvent>
#include <QTextDocument>
#include <benchmark/benchmark.h>

#include <algorithm>
#include <ctime>
#include <memory>
#include <vector>

namespace {

constexpr int NoteLength = 20000;
// Argument of the benchmarks: the note as lines of about 90 characters, or as one paragraph.
enum Shape { Lines = 0, OneParagraph = 1 };

double threadNanoseconds()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

// A student's long note: a line per week, two addresses on each.
QString note(Shape shape)
{
    QString text;
    for (int week = 1; text.size() < NoteLength; ++week) {
        text += QStringLiteral("Week %1: read chapter %2 before class, slides at www.course%1.example.edu/slides, "
                               "questions to mailto:ta%1@example.edu.")
                    .arg(week)
                    .arg(week % 17);
        text += shape == Lines ? QLatin1Char('\n') : QLatin1Char(' ');
    }
    text.truncate(NoteLength);
    return text;
}

double floorNanoseconds()
{
    static const double floor = [] {
        const QString text = note(Lines);
        QTextDocument document;
        std::vector<double> rounds;
        for (int round = 0; round < 41; ++round) {
            const double start = threadNanoseconds();
            document.setPlainText(text);
            rounds.push_back(threadNanoseconds() - start);
        }
        std::nth_element(rounds.begin(), rounds.begin() + rounds.size() / 2, rounds.end());
        return rounds[rounds.size() / 2];
    }();
    return floor;
}

void report(benchmark::State &state, double nanoseconds, double perIteration = 1)
{
    state.counters["x_floor"]
        = nanoseconds / perIteration / static_cast<double>(state.iterations()) / floorNanoseconds();
}

void BM_Floor_SetPlainText(benchmark::State &state)
{
    const QString text = note(Lines);
    QTextDocument document;
    double spent = 0;
    for (auto _ : state) {
        const double start = threadNanoseconds();
        document.setPlainText(text);
        const double elapsed = threadNanoseconds() - start;
        state.SetIterationTime(elapsed / 1e9);
        spent += elapsed;
    }
    report(state, spent);
}

// Finding the addresses of the whole note, nothing drawn.
void BM_DetectURLs(benchmark::State &state)
{
    const QString text = note(Shape(state.range(0)));
    double spent = 0;
    for (auto _ : state) {
        const double start = threadNanoseconds();
        benchmark::DoNotOptimize(URLTextViewAdditions::detectURLs(text, Qt::blue));
        const double elapsed = threadNanoseconds() - start;
        state.SetIterationTime(elapsed / 1e9);
        spent += elapsed;
    }
    report(state, spent);
}

struct Field {
    std::unique_ptr<QPlainTextEdit> edit;

    Field(bool links, Shape shape)
        : edit(links ? std::make_unique<BVTableView>() : std::make_unique<QPlainTextEdit>())
    {
        edit->resize(420, 600);
        edit->setPlainText(note(shape));
        edit->show();
        QCoreApplication::processEvents();
        QTextCursor cursor = edit->textCursor();
        cursor.setPosition(NoteLength / 2);
        edit->setTextCursor(cursor);
        edit->centerCursor();
        edit->setFocus();
        edit->viewport()->repaint();
    }

    void key(Qt::Key key, const QString &text)
    {
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, text);
        QApplication::sendEvent(edit.get(), &press);
        QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier, text);
        QApplication::sendEvent(edit.get(), &release);
        edit->viewport()->repaint();
    }
};

// A keystroke in the middle of the note and its frame: the character typed, the links of its
// paragraph found again, the paragraph laid out, the visible part painted. Typed and taken back, so
// every round sees the same note; the figure is per keystroke.
void keystrokes(benchmark::State &state, bool links)
{
    Field field(links, Shape(state.range(0)));
    double spent = 0;
    for (auto _ : state) {
        const double start = threadNanoseconds();
        field.key(Qt::Key_W, QStringLiteral("w"));
        field.key(Qt::Key_Backspace, QString());
        const double elapsed = threadNanoseconds() - start;
        state.SetIterationTime(elapsed / 2 / 1e9);
        spent += elapsed;
    }
    report(state, spent, 2);
}

void BM_Keystroke(benchmark::State &state)
{
    keystrokes(state, true);
}

// The same keystroke in Qt's plain editor, which finds no links: what typing costs anyway.
void BM_Keystroke_PlainEditor(benchmark::State &state)
{
    keystrokes(state, false);
}

// The program setting the whole note (another record shown): every link found and drawn at once.
void setStrings(benchmark::State &state, bool links)
{
    const Shape shape = Shape(state.range(0));
    Field field(links, shape);
    const QString texts[] = {note(shape), note(shape) + QLatin1Char('.')};
    double spent = 0;
    int round = 0;
    for (auto _ : state) {
        const double start = threadNanoseconds();
        if (links)
            static_cast<BVTableView *>(field.edit.get())->setString(texts[round++ % 2]);
        else
            field.edit->setPlainText(texts[round++ % 2]);
        field.edit->viewport()->repaint();
        const double elapsed = threadNanoseconds() - start;
        state.SetIterationTime(elapsed / 1e9);
        spent += elapsed;
    }
    report(state, spent);
}

void BM_SetString(benchmark::State &state)
{
    setStrings(state, true);
}

void BM_SetString_PlainEditor(benchmark::State &state)
{
    setStrings(state, false);
}

void shapes(benchmark::internal::Benchmark *bench)
{
    bench->ArgName("one_paragraph")->Arg(Lines)->Arg(OneParagraph);
    bench->UseManualTime()->Unit(benchmark::kMicrosecond)->Repetitions(5)->ReportAggregatesOnly(true);
}

BENCHMARK(BM_Floor_SetPlainText)->UseManualTime()->Unit(benchmark::kMicrosecond)->Repetitions(5)->ReportAggregatesOnly(true);
BENCHMARK(BM_DetectURLs)->Apply(shapes);
BENCHMARK(BM_Keystroke)->Apply(shapes);
BENCHMARK(BM_Keystroke_PlainEditor)->Apply(shapes);
BENCHMARK(BM_SetString)->Apply(shapes);
BENCHMARK(BM_SetString_PlainEditor)->Apply(shapes);

} // namespace

int main(int argc, char **argv)
{
    return BenchMeasure::runWindowBenchmarks(argc, argv);
}
