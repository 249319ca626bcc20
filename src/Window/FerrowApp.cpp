// SPDX-License-Identifier: GPL-3.0-or-later
#include "Window/FerrowApp.h"

#include "Platform/Base/ProgramStart.h"
#include "Platform/Desktop/ApplicationService.h"
#include "Platform/Desktop/DesktopAppearance.h"
#include "Session/Background.h"
#include "Session/Preferences.h"
#include "Widgets/FerrowStyle.h"
#include "Widgets/Theme.h"
#include "Window/ContentView.h"
#include "Window/EndingSignals.h"
#include "WorkerPool/WorkerPool.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QIcon>
#include <QSettings>

#include <signal.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <system_error>
#include <thread>
#include <vector>

namespace ferrow {

namespace {

/// While the application object is made; here for whoever ends the program in the midst of that.
std::optional<ProgramStart::TemporaryRuntimeFolder> runtimeFolder;

/// While the toolkit looks for a display: it has much to say where there is none, and then ends the program.
void tellOfNoDisplay(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    if (type == QtFatalMsg) {
        std::fputs("ferrow: there is no display to open a window on.\n"
                   "ferrow-batch frames photos without one: see ferrow-batch --help.\n",
                   stderr);
        runtimeFolder.reset();
        std::_Exit(EXIT_FAILURE);
    }
    if (!QByteArray(context.category).startsWith("qt.qpa"))
        std::fprintf(stderr, "%s\n", qPrintable(text));
}

/// Those that the toolkit starts for the display and for the session bus, and some to spare. Where one can't be had it
/// waits for it for ever, without a window.
constexpr int threadsAtStart = 6;

bool canHaveThreads(int count)
{
    std::atomic<bool> isCounted = false;
    std::vector<std::jthread> threads;
    bool hasAll = true;
    try {
        for (int i = 0; i < count; ++i)
            threads.emplace_back([&] { isCounted.wait(false); });
    } catch (const std::system_error&) {
        hasAll = false;
    }
    isCounted = true;
    isCounted.notify_all();
    return hasAll;
}

/// Takes the toolkit's own options out of `words`, of which there are `count` and then a null.
std::unique_ptr<QApplication> makeApplication(int& count, char** words)
{
    runtimeFolder.emplace();
    const QtMessageHandler usual = qInstallMessageHandler(tellOfNoDisplay);
    auto application = std::make_unique<QApplication>(count, words);
    qInstallMessageHandler(usual);
    runtimeFolder.reset();
    return application;
}

/// Light or dark: the user's choice, else the desktop's, else that of the palette it gave.
Appearance wantedAppearance(const Preferences& preferences, const DesktopAppearance& desktop, bool isPaletteDark)
{
    switch (preferences.appearance()) {
    case AppearancePreference::light:
        return Appearance::light;
    case AppearancePreference::dark:
        return Appearance::dark;
    case AppearancePreference::system:
        break;
    }
    return desktop.prefersDark().value_or(isPaletteDark) ? Appearance::dark : Appearance::light;
}

/// How long a closed window's program may take to finish the files in hand.
constexpr std::chrono::milliseconds lastMoment(1'000);

void waitAtMost(std::chrono::milliseconds most, const std::function<bool()>& done)
{
    for (const QDeadlineTimer deadline(most); !done() && !deadline.hasExpired();)
        QApplication::processEvents(QEventLoop::ExcludeUserInputEvents, 20);
}

constexpr int wrongUsage = 2;

constexpr auto helpText = R"(Usage: ferrow [OPTION]... [--] [PATH]...

Opens a window in which photos are framed. Each PATH is a photo, or a folder
that is searched for photos with all its subfolders.

  -h, --help     these lines
  -V, --version  the version
  --             what follows is a PATH, even if it starts with "-"

Options of the Qt toolkit, such as -platform, are heeded as well.
For scripts there is ferrow-batch.
)";

/// Answers what needs neither a display nor workers.
bool answersAtOnce(const std::vector<char*>& options)
{
    const auto isThere = [&](const char* option, const char* letter) {
        return std::ranges::any_of(
            options, [&](const char* word) { return qstrcmp(word, option) == 0 || qstrcmp(word, letter) == 0; });
    };
    if (isThere("--help", "-h"))
        std::fputs(helpText, stdout);
    else if (isThere("--version", "-V"))
        std::puts("ferrow " FERROW_VERSION);
    else
        return false;
    return true;
}

std::vector<FileUrl> namedPlaces(const std::vector<char*>& words)
{
    std::vector<FileUrl> places;
    for (const QByteArray word : words)
        if (const auto url = FileUrl::fromUrl(QUrl::fromEncoded(word)); word.startsWith("file:") && url)
            places.push_back(*url);
        else
            places.push_back(FileUrl::fromPath(word));
    return places;
}

} // namespace

int runFerrow(int argc, char** argv, const std::function<void(ContentView&)>& shown, const QByteArray& workerProgram)
{
    ProgramStart::occupyStandardDescriptors();
    // The toolkit knows of no end of options: it sees those before it alone.
    std::vector<char*> words(argv, argv + argc);
    const auto end = std::ranges::find_if(words, [](const char* word) { return qstrcmp(word, "--") == 0; });
    std::vector<char*> places;
    if (end != words.end())
        places.assign(end + 1, words.end());
    words.erase(end, words.end());
    if (answersAtOnce(words))
        return std::fflush(stdout) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
    ::signal(SIGPIPE, SIG_IGN);
    ::signal(SIGXFSZ, SIG_IGN);

    if (!canHaveThreads(threadsAtStart)) {
        std::fputs("ferrow: no more processes or threads are to be had.\n"
                   "End other programs or raise the limit (see ulimit -u), then start Ferrow again.\n",
                   stderr);
        return EXIT_FAILURE;
    }
    const QByteArray activationToken = activationTokenOfThisStart();
    // The toolkit's own file panel would keep the folders that were visited in settings of its own.
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("/dev/null"));
    int count = int(words.size());
    words.push_back(nullptr);
    const auto application = makeApplication(count, words.data());
    words.resize(std::size_t(count));
    for (const char* word : words) {
        if (*word == '-') {
            std::fprintf(stderr, "ferrow: there is no option %s; try ferrow --help\n", word);
            return wrongUsage;
        }
    }
    places.insert(places.begin(), words.begin() + std::min(count, 1), words.end());
    std::setlocale(LC_NUMERIC, "C");
    // The program speaks English alone, and the toolkit's option to mirror every view would set it from the wrong side.
    QApplication::setLayoutDirection(Qt::LeftToRight);
    QApplication::setApplicationName(QStringLiteral("Ferrow"));
    QApplication::setApplicationDisplayName(QStringLiteral("Ferrow"));
    QApplication::setApplicationVersion(QStringLiteral(FERROW_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral("app.ferrow.Ferrow"));
    QApplication::setWindowIcon(QIcon::fromTheme(QStringLiteral("app.ferrow.Ferrow")));

    auto service = std::make_unique<ApplicationService>(QGuiApplication::desktopFileName());
    if (service->handOver(namedPlaces(places), activationToken))
        return EXIT_SUCCESS;

    std::optional<WorkerPool::Installation> workers(WorkerPool::installWorkers(workerProgram));
    const bool isPaletteDark = application->palette().color(QPalette::Window).lightnessF() < 0.5F;
    Preferences preferences;
    DesktopAppearance desktop;
    const auto dress = [&] {
        Theme& theme = Theme::current();
        theme.setAppearance(wantedAppearance(preferences, desktop, isPaletteDark));
        theme.setContrast(desktop.prefersMoreContrast() ? Contrast::more : Contrast::normal);
        theme.setReducedMotion(desktop.prefersReducedMotion());
    };
    dress();
    FerrowStyle::install(*application);
    QObject::connect(&preferences, &Preferences::appearanceChanged, application.get(), dress);
    QObject::connect(&desktop, &DesktopAppearance::changed, application.get(), dress);

    WindowServices services = WindowServices::system();
    services.missingWallsNote = [&workers] { return workers ? workers->missingWallsNote() : QString(); };
    auto window = std::make_unique<ContentView>(preferences, std::move(services));
    window->show();
    if (shown)
        shown(*window);
    window->importWhenFree(namedPlaces(places));
    QObject::connect(service.get(), &ApplicationService::called, window.get(),
                     [&](const std::vector<FileUrl>& files, const QByteArray& token) {
                         window->present(token);
                         window->importWhenFree(files);
                     });
    const EndingSignals endingSignals;
    QObject::connect(&endingSignals, &EndingSignals::received, window.get(), [&] {
        window->closeAtOnce();
        QApplication::quit();
    });
    const int status = QApplication::exec();
    service.reset(); // From here on a start opens a window of its own.

    // What is being written may be finished, for a moment. Without workers all else that waits for one gives up at once
    // and cleans up after itself.
    window->hide();
    waitAtMost(lastMoment, [&] { return !window->exportSession().isRunning(); });
    workers.reset();
    window.reset();
    // A thread may still be about to end; what it uses must not be taken down around it.
    waitAtMost(lastMoment / 4, [] { return WorkQueue::threadsLeftBehind() == 0; });
    if (WorkQueue::threadsLeftBehind() > 0)
        std::_Exit(status);
    return status;
}

} // namespace ferrow
