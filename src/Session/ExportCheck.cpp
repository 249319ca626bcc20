// SPDX-License-Identifier: GPL-3.0-or-later
#include "Session/ExportCheck.h"

#include "Platform/Base/Cancellation.h"
#include "Shared/UserFacingError.h"

#include <chrono>
#include <utility>

namespace ferrow {

namespace {

/// A sheet that closes waits for nothing: what a stop does not end at once, such as a question to a slow folder,
/// changes nothing and is left behind.
constexpr std::chrono::milliseconds patience{0};

} // namespace

ExportCheck::ExportCheck(ExportCheckOperations operations, QObject* parent)
    : QObject(parent), operations_(std::move(operations)), work_(1, patience)
{
}

ExportCheck::~ExportCheck()
{
    stop_.request_stop();
}

void ExportCheck::start(ExportRequest request)
{
    stop_.request_stop();
    stop_ = {};
    setChecking(true);
    const auto finish = [this, number = ++generation_](std::vector<ExportFinding> findings) {
        if (number != generation_)
            return;
        findings_ = std::move(findings);
        setChecking(false);
    };
    work_.post([request = std::move(request), operations = operations_, finish, stop = stop_.get_token(),
                sender = relay_.sender()] {
        try {
            sender.post([finish, findings = findingsFor(request, operations, stop)] { finish(findings); });
        } catch (const Cancelled&) {
            // A newer check runs, or nobody asks any more.
        } catch (...) {
            sender.post([finish, message = UserFacingError::message(std::current_exception())] {
                finish({{ExportFinding::Severity::warning,
                         QStringLiteral("The check could not be completed"),
                         message,
                         {}}});
            });
        }
    });
}

void ExportCheck::cancel()
{
    stop_.request_stop();
    ++generation_;
    setChecking(false);
}

void ExportCheck::setChecking(bool isChecking)
{
    if (std::exchange(isChecking_, isChecking) != isChecking)
        emit isCheckingChanged();
}

} // namespace ferrow
