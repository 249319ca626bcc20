// SPDX-License-Identifier: GPL-3.0-or-later
#include "Command/Arguments.h"
#include "Command/Commands.h"
#include "Command/Output.h"
#include "Platform/Base/ProgramStart.h"
#include "Shared/UserFacingError.h"
#include "WorkerPool/WorkerPool.h"

#include <QGuiApplication>

#include <signal.h>

#include <clocale>
#include <ctime>
#include <exception>
#include <optional>
#include <system_error>
#include <thread>

namespace {

using namespace ferrow;

/// Turns Ctrl-C and its kin into a stop request. Built before any other thread, so that all of them leave the signals
/// to this one; a second Ctrl-C changes nothing: what is half-written is being removed.
class StopOnSignal {
public:
    StopOnSignal()
    {
        ::sigemptyset(&signals_);
        ::sigaddset(&signals_, wakingSignal);
        for (const int number : {SIGINT, SIGTERM, SIGHUP})
            if (!isIgnored(number))
                ::sigaddset(&signals_, number);
        ::pthread_sigmask(SIG_BLOCK, &signals_, nullptr);
        // Writing to a reader that went away, or beyond a limit on file sizes, must be an error of that write, not the
        // end of the process.
        ::signal(SIGPIPE, SIG_IGN);
        ::signal(SIGXFSZ, SIG_IGN);
        try {
            waiter_ = std::jthread([this](const std::stop_token& ending) { wait(ending); });
        } catch (const std::system_error&) {
            // The system allows no more threads: a signal ends the process as it does any other.
            ::pthread_sigmask(SIG_UNBLOCK, &signals_, nullptr);
        }
    }

    [[nodiscard]] std::stop_token token() const { return source_.get_token(); }

private:
    void wait(const std::stop_token& ending)
    {
        const std::stop_callback wake(ending, [thread = ::pthread_self()] { ::pthread_kill(thread, wakingSignal); });
        while (!ending.stop_requested())
            if (const int number = ::sigwaitinfo(&signals_, nullptr); number > 0 && number != wakingSignal)
                source_.request_stop();
    }

    /// By whoever started us, as nohup does. Waiting for such a signal would bring it back.
    static bool isIgnored(int number)
    {
        struct sigaction inherited {};
        return ::sigaction(number, nullptr, &inherited) == 0 && inherited.sa_handler == SIG_IGN;
    }

    /// Nobody sends it, and one who does is passed over, as by every program.
    static constexpr int wakingSignal = SIGURG;

    sigset_t signals_{};
    std::stop_source source_;
    std::jthread waiter_;
};

/// Captions are drawn by the text engine, which asks for a platform but needs no display. Our own words never reach it:
/// it has options of its own.
void startTextEngine(char* program)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    std::optional<ProgramStart::TemporaryRuntimeFolder> folder(std::in_place);
    static int count = 1;
    static char* words[] = {program, nullptr};
    // It lives as long as the process: where no font was needed, its end would load their configuration to give it
    // back.
    new QGuiApplication(count, words);
    folder.reset();
    std::setlocale(LC_NUMERIC, "C");
}

int run(const Command::Arguments& arguments, char* program, const std::stop_token& stop)
{
    if (arguments.mode == Command::Arguments::Mode::help) {
        Command::printText(Command::helpText());
        return Command::allDone;
    }
    if (arguments.mode == Command::Arguments::Mode::report)
        return Command::runReport(arguments);
    // Workers get ready while the text engine does.
    const WorkerPool::Installation workers = WorkerPool::installWorkers();
    startTextEngine(program);
    switch (arguments.mode) {
    case Command::Arguments::Mode::help:
    case Command::Arguments::Mode::report:
        break;
    case Command::Arguments::Mode::version:
        Command::printLine(QStringLiteral("ferrow-batch " FERROW_VERSION));
        Command::printLine(workers.confinementInForce());
        return Command::allDone;
    case Command::Arguments::Mode::plan:
        return Command::runPlan(arguments, stop);
    case Command::Arguments::Mode::inspect:
        return Command::runInspect(arguments, stop);
    case Command::Arguments::Mode::filter:
        return Command::runFilter(arguments, stop);
    case Command::Arguments::Mode::frame:
        return Command::runBatch(arguments, stop);
    }
    return Command::somePhotoFailed;
}

/// Says what went wrong, and answers the exit status.
int runWords(const std::vector<QByteArray>& words, char* program, const std::stop_token& stop)
{
    try {
        return run(Command::parseArguments(words), program, stop);
    } catch (const Command::UsageError& error) {
        Command::printError(QStringLiteral("ferrow-batch: ") + error.message);
        Command::printError(QStringLiteral("Try “ferrow-batch --help”."));
        return Command::wrongUsage;
    } catch (...) {
        Command::printError(QStringLiteral("ferrow-batch: ") +
                            Command::onOneLine(UserFacingError::message(std::current_exception())));
    }
    return Command::somePhotoFailed;
}

} // namespace

int main(int argc, char** argv)
{
    ProgramStart::occupyStandardDescriptors();
    const StopOnSignal interruption;
    // The toolkit's remarks on the desktop session are no concern of a script's standard error.
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
        if (type == QtCriticalMsg || type == QtFatalMsg)
            Command::printError(QStringLiteral("ferrow-batch: ") + text);
    });
    const int status = runWords(std::vector<QByteArray>(argv + 1, argv + argc), argv[0], interruption.token());
    if (!Command::standardOutputFailed())
        return status;
    Command::printError(QStringLiteral("ferrow-batch: not all of the output could be written."));
    return status == Command::allDone ? Command::somePhotoFailed : status;
}
