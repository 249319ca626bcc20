// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Session/ExportFindings.h"
#include "Session/NewestTask.h"

#include <QObject>

#include <optional>
#include <vector>

namespace ferrow {

/// Runs the check in the background while the sheet is open, and then measures how much room the export takes. Lives on
/// the main thread.
class ExportCheck : public QObject {
    Q_OBJECT

public:
    explicit ExportCheck(ExportCheckOperations operations = ExportCheckOperations::system(), QObject* parent = nullptr);

    /// Of the last check that ended; kept while the next one runs.
    [[nodiscard]] const std::vector<ExportFinding>& findings() const { return findings_.lines; }
    [[nodiscard]] bool isChecking() const { return isChecking_; }

    /// Checks; one that runs is given up.
    void start(ExportRequest request);
    void cancel();

signals:
    /// At the end of a check findings() are its.
    void isCheckingChanged();
    /// One of the findings() has become more exact.
    void spaceMeasured();

private:
    void setChecking(bool isChecking);
    void measure();
    void showSpace();

    ExportCheckOperations operations_;
    ExportFindings findings_;
    std::vector<SpaceSample> measured_;     ///< Those that `estimate_` is of.
    std::optional<SpaceEstimate> estimate_; ///< Absent where it can't be had.
    bool isChecking_ = false;
    NewestTask check_;
    NewestTask measuring_;
};

} // namespace ferrow
