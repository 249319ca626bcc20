// SPDX-License-Identifier: GPL-3.0-or-later
#include "Window/EndingSignals.h"

#include <QSocketNotifier>

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace ferrow {

namespace {

constexpr std::array endingSignals{SIGTERM, SIGINT, SIGHUP};

/// A handler may do little more than write; it is the loop that reads. A pipe, and not a descriptor for blocked
/// signals: workers would inherit the blocking.
int writeEnd = -1;

void noteSignal(int)
{
    const int before = errno;
    (void)!::write(writeEnd, "", 1);
    errno = before;
}

void setHandler(void (*handler)(int))
{
    for (const int number : endingSignals) {
        struct sigaction inherited {};
        if (::sigaction(number, nullptr, &inherited) != 0 || inherited.sa_handler == SIG_IGN)
            continue;
        struct sigaction action {};
        action.sa_handler = handler;
        action.sa_flags = SA_RESTART;
        ::sigaction(number, &action, nullptr);
    }
}

} // namespace

EndingSignals::EndingSignals()
{
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    readEnd_ = ends[0];
    writeEnd = ends[1];
    auto* notifier = new QSocketNotifier(readEnd_, QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this] {
        std::array<char, 16> bytes{};
        (void)!::read(readEnd_, bytes.data(), bytes.size());
        emit received();
    });
    setHandler(&noteSignal);
}

EndingSignals::~EndingSignals()
{
    if (readEnd_ < 0)
        return;
    setHandler(SIG_IGN);
    ::close(writeEnd);
    ::close(readEnd_);
}

} // namespace ferrow
