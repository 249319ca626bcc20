// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/FerrowApp.h"

#include "App/Background.h"
#include "App/ContentView.h"
#include "App/Preferences.h"
#include "Platform/Desktop/DesktopAppearance.h"
#include "Shared/Widgets/FerrowStyle.h"
#include "Shared/Widgets/Theme.h"
#include "WorkerPool/WorkerPool.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QFileOpenEvent>
#include <QIcon>
#include <QSettings>

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <clocale>
#include <cstdlib>
#include <memory>
#include <optional>

namespace ferrow {

namespace {

/// A launcher may have closed them. The next file opened would then take such a number, and what is printed would go
/// into it.
void occupyStandardDescriptors()
{
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (::fcntl(descriptor, F_GETFD) < 0)
            (void)::open("/dev/null", O_RDWR); // Takes the lowest free number: this one.
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

std::vector<FileUrl> namedPlaces(int argc, char** argv)
{
    std::vector<FileUrl> places;
    for (int i = 1; i < argc; ++i) {
        const QByteArray word(argv[i]);
        if (const auto url = FileUrl::fromUrl(QUrl::fromEncoded(word)); word.startsWith("file:") && url)
            places.push_back(*url);
        else
            places.push_back(FileUrl::fromPath(word));
    }
    return places;
}

} // namespace

int runFerrow(int argc, char** argv, const std::function<void(ContentView&)>& shown)
{
    occupyStandardDescriptors();
    ::signal(SIGPIPE, SIG_IGN);
    ::signal(SIGXFSZ, SIG_IGN);

    // The toolkit's own file panel would keep the folders that were visited in settings of its own.
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("/dev/null"));
    QApplication application(argc, argv); // Takes its own options out of the words.
    std::setlocale(LC_NUMERIC, "C");
    QApplication::setApplicationName(QStringLiteral("Ferrow"));
    QApplication::setApplicationDisplayName(QStringLiteral("Ferrow"));
    QApplication::setApplicationVersion(QStringLiteral(FERROW_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral("app.ferrow.Ferrow"));
    QApplication::setWindowIcon(QIcon::fromTheme(QStringLiteral("app.ferrow.Ferrow")));

    std::optional<WorkerPool::Installation> workers(WorkerPool::installWorkers());
    const bool isPaletteDark = application.palette().color(QPalette::Window).lightnessF() < 0.5F;
    Preferences preferences;
    DesktopAppearance desktop;
    const auto dress = [&] {
        Theme& theme = Theme::current();
        theme.setAppearance(wantedAppearance(preferences, desktop, isPaletteDark));
        theme.setContrast(desktop.prefersMoreContrast() ? Contrast::more : Contrast::normal);
        theme.setReducedMotion(desktop.prefersReducedMotion());
    };
    dress();
    FerrowStyle::install(application);
    QObject::connect(&preferences, &Preferences::appearanceChanged, &application, dress);
    QObject::connect(&desktop, &DesktopAppearance::changed, &application, dress);

    auto window = std::make_unique<ContentView>(preferences);
    window->show();
    if (shown)
        shown(*window);
    if (const std::vector<FileUrl> places = namedPlaces(argc, argv); !places.empty())
        window->importRoots(places);
    const int status = QApplication::exec();

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
