// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Session/ExportFindings.h"
#include "Session/NewestTask.h"

#include <QObject>

#include <vector>

namespace ferrow {

/// Runs the check in the background while the sheet is open. Lives on the main thread.
class ExportCheck : public QObject {
    Q_OBJECT

public:
    explicit ExportCheck(ExportCheckOperations operations = ExportCheckOperations::system(), QObject* parent = nullptr);

    /// Of the last check that ended; kept while the next one runs.
    [[nodiscard]] const std::vector<ExportFinding>& findings() const { return findings_; }
    [[nodiscard]] bool isChecking() const { return isChecking_; }

    /// Checks; one that runs is given up.
    void start(ExportRequest request);
    void cancel();

signals:
    /// At the end of a check findings() are its.
    void isCheckingChanged();

private:
    void setChecking(bool isChecking);

    ExportCheckOperations operations_;
    std::vector<ExportFinding> findings_;
    bool isChecking_ = false;
    NewestTask check_;
};

} // namespace ferrow
