// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/ExportCheck.h"

#include "Platform/Base/Cancellation.h"

#include <utility>

namespace ferrow {

ExportCheck::ExportCheck(ExportCheckOperations operations, QObject* parent)
    : QObject(parent), operations_(std::move(operations)), work_(1)
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
        if (findings != findings_) {
            findings_ = std::move(findings);
            emit findingsChanged();
        }
        setChecking(false);
    };
    work_.post([request = std::move(request), operations = operations_, finish, stop = stop_.get_token(),
                sender = relay_.sender()] {
        try {
            sender.post([finish, findings = findingsFor(request, operations, stop)] { finish(findings); });
        } catch (const Cancelled&) {
            // A newer check runs, or nobody asks any more.
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
