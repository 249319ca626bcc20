// SPDX-License-Identifier: GPL-3.0-or-later
// What the window costs: its start, how free the main thread stays, a render of the preview, and ten thousand photos in
// list and contact sheet. With --sheet-only, the last alone.
#include "BenchSupport.h"
#include "SamplePhotos.h"

#include "Features/ContactSheet/SheetGrid.h"
#include "Features/PhotoSidebar/PhotoListView.h"
#include "Imaging/ImageLoader.h"
#include "Imaging/ImageRenderer.h"
#include "Widgets/FerrowStyle.h"
#include "Widgets/Theme.h"
#include "Window/ContentView.h"
#include "Window/FerrowApp.h"
#include "WorkerPool/WorkerPool.h"

#include <QApplication>
#include <QDir>
#include <QEventLoop>
#include <QScrollBar>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <numeric>
#include <thread>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace ferrow;
using Clock = std::chrono::steady_clock;

double milliseconds(Clock::duration duration)
{
    return std::chrono::duration<double, std::milli>(duration).count();
}

double percentile(std::vector<double> values, double part)
{
    std::ranges::sort(values);
    return values.empty() ? 0 : values[std::size_t(part * double(values.size() - 1))];
}

/// Asks the event loop for a turn each millisecond and notes how long the turns keep it waiting, and for how much of
/// that this thread was at work itself: on a machine with all cores busy, the rest is its wait for a core.
class LoopProbe {
public:
    LoopProbe()
    {
        timer_.setTimerType(Qt::PreciseTimer);
        timer_.setInterval(1);
        QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { note(); });
    }
    void start()
    {
        gaps_.clear();
        last_ = Clock::now();
        lastWork_ = bench::threadSeconds();
        timer_.start();
    }
    void report(const char* phase)
    {
        // What came last has its turn, and the time since the last tick counts: the end of a phase is work too.
        QApplication::processEvents();
        timer_.stop();
        note();
        const auto slow = std::ranges::count_if(gaps_, [](const Gap& gap) { return gap.length > 16; });
        const auto busy = std::ranges::count_if(gaps_, [](const Gap& gap) { return gap.work > 16; });
        const Gap longest = *std::ranges::max_element(gaps_, {}, &Gap::length);
        std::printf(
            "  %-24s %6zu ticks, longest gap %5.1f ms, %.1f of it work (target 100); over 16 ms %td, by work %td "
            "= %.2f in 1,000 (target 1)\n",
            phase, gaps_.size(), longest.length, longest.work, slow, busy,
            1000.0 * double(slow) / double(gaps_.size()));
        std::fflush(stdout);
    }

private:
    struct Gap { // Both in milliseconds.
        double length = 0;
        double work = 0;
    };

    void note()
    {
        const Clock::time_point now = Clock::now();
        const double work = bench::threadSeconds();
        gaps_.push_back({milliseconds(now - last_), 1000 * (work - lastWork_)});
        last_ = now;
        lastWork_ = work;
    }

    QTimer timer_;
    Clock::time_point last_;
    double lastWork_ = 0;
    std::vector<Gap> gaps_;
};

/// Tells the first paint of the window by ending the program.
class FirstPaint : public QObject {
public:
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::Paint)
            QTimer::singleShot(0, [] { std::_Exit(0); });
        return false;
    }
};

int startOnly(int argc, char** argv)
{
    static FirstPaint paint;
    return runFerrow(
        argc, argv, [](ContentView& window) { window.installEventFilter(&paint); }, FERROW_WORKER_PROGRAM);
}

void measureStart(const char* program)
{
    std::vector<double> times;
    for (int run = 0; run < 9; ++run) {
        const Clock::time_point begin = Clock::now();
        const pid_t child = ::fork();
        if (child == 0) {
            ::execl(program, program, "--start-only", nullptr);
            std::_Exit(1);
        }
        ::waitpid(child, nullptr, 0);
        times.push_back(milliseconds(Clock::now() - begin));
    }
    times.erase(times.begin()); // The first one is cold.
    std::printf("start to first painted window: median %.0f ms, slowest %.0f ms (target 300)\n", percentile(times, 0.5),
                percentile(times, 1));
}

void waitFor(const std::function<bool()>& done)
{
    while (!done())
        QApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
}

/// Proportional set size of this process and its children, in megabytes.
double residentMegabytes()
{
    double kilobytes = 0;
    for (const auto& name : QDir(QStringLiteral("/proc")).entryList({QStringLiteral("[0-9]*")}, QDir::Dirs)) {
        std::ifstream status("/proc/" + name.toStdString() + "/status");
        std::string line;
        long parent = -1;
        while (std::getline(status, line))
            if (line.starts_with("PPid:"))
                parent = std::strtol(line.c_str() + 5, nullptr, 10);
        if (name.toLong() != ::getpid() && parent != ::getpid())
            continue;
        std::ifstream rollup("/proc/" + name.toStdString() + "/smaps_rollup");
        while (std::getline(rollup, line))
            if (line.starts_with("Pss:"))
                kilobytes += std::strtod(line.c_str() + 4, nullptr);
    }
    return kilobytes / 1000;
}

void import(ContentView& window, const FileUrl& folder)
{
    window.importRoots({folder});
    waitFor([&] { return !window.session().isImporting(); });
}

void measureLoop(ContentView& window, const FileUrl& many, const FileUrl& few, const FileUrl& output)
{
    std::printf("main thread, active phases only (platform %s):\n", qPrintable(QGuiApplication::platformName()));
    LoopProbe probe;
    probe.start();
    import(window, many);
    probe.report("importing 1,000 photos");
    window.history().clearAll();

    import(window, few);
    QTest::qWait(500);
    auto* width = window.findChild<QWidget*>(QStringLiteral("borderWidthField"));
    auto* field = width->parentWidget()->findChild<QSlider*>();
    QWidget* slider = field ? static_cast<QWidget*>(field) : width;
    const QPoint middle = slider->mapTo(&window, slider->rect().center());
    QTest::mousePress(window.windowHandle(), Qt::LeftButton, {}, middle);
    probe.start();
    for (int step = 0; step < 500; ++step) {
        QTest::mouseMove(window.windowHandle(), middle + QPoint(step % 80 - 40, 0));
        const Clock::time_point next = Clock::now() + std::chrono::milliseconds(8);
        while (Clock::now() < next)
            QApplication::processEvents(QEventLoop::WaitForMoreEvents, 1);
    }
    probe.report("dragging a slider, 4 s");
    QTest::mouseRelease(window.windowHandle(), Qt::LeftButton, {}, middle);

    BatchExportConfiguration configuration;
    configuration.chosenFolder = output;
    window.exportSession().setConfiguration(configuration);
    import(window, many);
    QTest::qWait(500);
    probe.start();
    window.exportSession().planAndStart(window.exportSession().requestFor(window.session()));
    waitFor([&] { return window.exportSession().report().has_value(); });
    probe.report("exporting 1,011 photos");

    const Clock::time_point begin = Clock::now();
    window.presetLibrary().save(QStringLiteral("Bench"),
                                PresetPayload::make(window.session().batchRecipe(), window.exportSession().settings(),
                                                    window.exportSession().configuration()));
    std::printf("  apart: writing a preset %.1f ms; names are planned on a worker thread\n",
                milliseconds(Clock::now() - begin));
}

void measureRender(const FileUrl& photo)
{
    const ImportedPhoto preview = ImageLoader::load(photo);
    RenderRecipe recipe;
    recipe.captions.front().setCaptionTemplate(QStringLiteral("{camera} · {captureDate} · {artist}"));
    std::vector<double> times;
    for (int run = 0; run < 300; ++run) {
        recipe.border.width = 60 + run % 120;
        const Clock::time_point begin = Clock::now();
        (void)ImageRenderer::render(preview.previewSource, preview.pixelSize, recipe, preview.metadata, {},
                                    ImageRenderer::SourceScale::fromSource, {});
        times.push_back(milliseconds(Clock::now() - begin));
    }
    std::printf("render at %lld pixels: median %.1f ms, 99th percentile %.1f ms (target 10)\n",
                static_cast<long long>(preview.previewSource.size().longestSide()), percentile(times, 0.5),
                percentile(times, 0.99));
}

void measureTenThousand(ContentView& window, const FileUrl& folder)
{
    window.history().clearAll();
    import(window, folder);
    std::printf("%zu photos: %.0f MB in all processes (target 400)\n", window.session().photos().size(),
                residentMegabytes());
    auto* list = window.findChild<PhotoListView*>();
    std::vector<double> frames;
    for (int step = 0; step < 400; ++step) {
        const Clock::time_point begin = Clock::now();
        list->verticalScrollBar()->setValue(step * 997 % list->verticalScrollBar()->maximum());
        list->viewport()->repaint();
        frames.push_back(milliseconds(Clock::now() - begin));
        QApplication::processEvents();
    }
    std::printf("  a frame of scrolling: median %.1f ms, 99th percentile %.1f ms (target 16)\n",
                percentile(frames, 0.5), percentile(frames, 0.99));
    const auto timed = [&](const char* what, const std::function<void(std::size_t)>& verb) {
        std::vector<double> times;
        for (std::size_t run = 0; run < 40; ++run) {
            const Clock::time_point begin = Clock::now();
            verb(run);
            window.repaint();
            list->viewport()->repaint();
            times.push_back(milliseconds(Clock::now() - begin));
            QApplication::processEvents();
        }
        std::printf("  %s: median %.1f ms, slowest %.1f ms (target 50)\n", what, percentile(times, 0.5),
                    percentile(times, 1));
    };
    timed("selecting",
          [&](std::size_t run) { window.session().setSelectedPhotoID(window.session().photos()[run * 241 + 3].id()); });
    timed("removing", [&](std::size_t) { window.history().removeSelected(); });
}

double processorSeconds()
{
    rusage used{};
    ::getrusage(RUSAGE_SELF, &used);
    const auto seconds = [](const timeval& time) { return double(time.tv_sec) + double(time.tv_usec) / 1e6; };
    return seconds(used.ru_utime) + seconds(used.ru_stime);
}

void measureSheet(ContentView& window)
{
    auto* grid = window.findChild<SheetGrid*>();
    auto* pictures = window.findChild<CellPictures*>();
    const auto isFilled = [&] { return grid->isVisible() && !pictures->isBusy(); };
    const auto timed = [&](const char* what, double target, const std::function<void()>& verb) {
        const Clock::time_point begin = Clock::now();
        verb();
        waitFor(isFilled);
        grid->viewport()->repaint();
        std::printf("  %s: %.0f ms (target %.0f)\n", what, milliseconds(Clock::now() - begin), target);
    };
    std::printf("contact sheet of %zu photos:\n", window.session().photos().size());
    LoopProbe probe;
    probe.start();
    timed("first screen after the switch", 300, [&] {
        for (QAction* action : window.actions())
            if (action->shortcuts().contains(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_G)))
                action->trigger();
    });
    for (const double width : {90, 120, 150})
        timed("a screen after an edit of the batch", 400, [&] {
            window.history().editRecipe(QStringLiteral("Border"),
                                        [width](RenderRecipe& recipe) { recipe.border.width = width; });
        });
    probe.report("switch and edits");
    QScrollBar* bar = grid->verticalScrollBar();
    std::vector<double> frames;
    probe.start();
    for (int step = 0; step < 1'500; ++step) {
        const Clock::time_point begin = Clock::now();
        bar->setValue(step < 500 ? step * 23 : int(std::int64_t(step) * 104'729 % std::max(bar->maximum(), 1)));
        grid->viewport()->repaint();
        frames.push_back(milliseconds(Clock::now() - begin));
        const Clock::time_point next = begin + std::chrono::milliseconds(16);
        while (Clock::now() < next)
            QApplication::processEvents(QEventLoop::WaitForMoreEvents, 1);
    }
    probe.report("scrolling");
    std::printf("  a frame of scrolling: median %.1f ms, 99th percentile %.1f ms (target 16)\n",
                percentile(frames, 0.5), percentile(frames, 0.99));
    waitFor(isFilled);
    QTest::qWait(20'000);
    std::printf("  %.0f MB in all processes (target 450)\n", residentMegabytes());
    const double before = processorSeconds();
    QEventLoop rest; // Waiting in slices would be work.
    QTimer::singleShot(10'000, &rest, &QEventLoop::quit);
    rest.exec();
    std::printf("  at rest: %.2f %% of a core\n", 10 * (processorSeconds() - before));
}

} // namespace

int main(int argc, char** argv)
{
    if (argc > 1 && qstrcmp(argv[1], "--start-only") == 0) {
        argc = 1;
        return startOnly(argc, argv);
    }
    const bench::ScratchFolder scratch;
    const FileUrl root = FileUrl::fromPath(QByteArray::fromStdString(scratch.path()));
    ::setenv("XDG_DATA_HOME", root.appending("data").path().constData(), 1);
    ::setenv("XDG_CONFIG_HOME", root.appending("config").path().constData(), 1);
    const bool isSheetOnly = argc > 1 && qstrcmp(argv[1], "--sheet-only") == 0;
    if (!isSheetOnly)
        measureStart(argv[0]);

    QApplication application(argc, argv);
    FerrowStyle::install(application);
    const WorkerPool::Installation workers = WorkerPool::installWorkers(FERROW_WORKER_PROGRAM);
    const auto folder = [&](const char* name) {
        const FileUrl made = root.appending(name);
        QDir().mkpath(made.displayPath());
        return made;
    };
    const FileUrl few = folder("few");
    const FileUrl many = folder("many");
    const FileUrl all = folder("all");
    const std::vector<FileUrl> photos = tools::writeSamplePhotos(few);
    tools::writeManySmallPhotos(all, 10'000);
    if (isSheetOnly) {
        Preferences preferences;
        ContentView window(preferences);
        window.show();
        import(window, all);
        measureSheet(window);
        return 0;
    }
    tools::writeManySmallPhotos(many, 1'000);

    measureRender(photos.front());
    Preferences preferences;
    ContentView window(preferences);
    window.show();
    QTest::qWait(300);
    measureLoop(window, many, few, folder("out"));
    QTest::qWait(300);
    for (QWidget* sheet : window.findChildren<QWidget*>(QStringLiteral("reportSheet")))
        sheet->setVisible(false);
    window.exportSession().clearReport();
    measureTenThousand(window, all);
    measureSheet(window);
    return 0;
}
