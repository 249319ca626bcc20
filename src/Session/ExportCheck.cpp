// SPDX-License-Identifier: GPL-3.0-or-later
#include "Session/ExportCheck.h"

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
    : QObject(parent), operations_(std::move(operations)), check_({}, patience)
{
}

void ExportCheck::start(ExportRequest request)
{
    setChecking(true);
    const auto finish = [this](std::vector<ExportFinding> findings) {
        findings_ = std::move(findings);
        setChecking(false);
    };
    check_.replace(
        [request = std::move(request), operations = operations_, finish](const std::stop_token& stop) {
            return [finish, findings = findingsFor(request, operations, stop)] { finish(findings); };
        },
        [finish](const std::exception_ptr& error) {
            finish({{ExportFinding::Severity::warning,
                     QStringLiteral("The check could not be completed"),
                     UserFacingError::message(error),
                     {}}});
        });
}

void ExportCheck::cancel()
{
    check_.stop();
    setChecking(false);
}

void ExportCheck::setChecking(bool isChecking)
{
    if (std::exchange(isChecking_, isChecking) != isChecking)
        emit isCheckingChanged();
}

} // namespace ferrow
