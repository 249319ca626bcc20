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
    : QObject(parent), operations_(std::move(operations)), check_({}, patience), measuring_({}, patience)
{
}

void ExportCheck::start(ExportRequest request)
{
    setChecking(true);
    measuring_.stop();
    const auto finish = [this](ExportFindings findings) {
        findings_ = std::move(findings);
        measure();
        setChecking(false);
    };
    check_.replace(
        [request = std::move(request), operations = operations_, finish](const std::stop_token& stop) {
            return [finish, findings = findingsFor(request, operations, stop)] { finish(findings); };
        },
        [finish](const std::exception_ptr& error) {
            finish({{{ExportFinding::Severity::warning,
                      QStringLiteral("The check could not be completed"),
                      UserFacingError::message(error),
                      {}}},
                    {}});
        });
}

void ExportCheck::cancel()
{
    check_.stop();
    measuring_.stop();
    setChecking(false);
}

/// What was measured holds until the photos or how they are framed and written change.
void ExportCheck::measure()
{
    if (!findings_.space || hasErrors(findings_.lines))
        return;
    if (findings_.space->samples == measured_) {
        showSpace();
        return;
    }
    const auto keep = [this, samples = findings_.space->samples](const std::optional<SpaceEstimate>& estimate) {
        measured_ = samples;
        estimate_ = estimate;
        showSpace();
        emit spaceMeasured();
    };
    measuring_.replace(
        [keep, samples = findings_.space->samples, operations = operations_](const std::stop_token& stop) {
            return [keep, estimate = estimatedSpace(samples, operations.encodedSize, stop)] { keep(estimate); };
        },
        [keep](const std::exception_ptr&) { keep(std::nullopt); });
}

void ExportCheck::showSpace()
{
    ExportFinding& folders = findings_.lines[findings_.space->finding];
    if (estimate_)
        folders = withSpace(folders, *estimate_, findings_.space->freeBytes);
}

void ExportCheck::setChecking(bool isChecking)
{
    if (std::exchange(isChecking_, isChecking) != isChecking)
        emit isCheckingChanged();
}

} // namespace ferrow
