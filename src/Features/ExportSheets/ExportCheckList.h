// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Session/ExportCheck.h"

#include <QWidget>

class QVBoxLayout;

namespace ferrow {

class MessageLine;

/// The findings in the order that the sheet lists them: what stops the export, then what warns, then all else, so that
/// it is in sight where the sheet has to scroll.
[[nodiscard]] std::vector<ExportFinding> inSheetOrder(std::vector<ExportFinding> findings);

/// The lines of the check before an export.
class ExportCheckList : public QWidget {
    Q_OBJECT

public:
    explicit ExportCheckList(QWidget* parent = nullptr);

    /// Lines that only say what is looked at. They take the room that the findings had: nothing moves twice.
    void showChecking();
    void showFindings(const std::vector<ExportFinding>& findings);

signals:
    /// "Show" was pressed beside this finding.
    void showPhotosRequested(const ferrow::ExportFinding& finding);
    void remedyRequested(ferrow::ExportFinding::Remedy remedy);

private:
    void clear();
    void addFinding(const ExportFinding& finding);
    static void show(const ExportFinding& finding, MessageLine& line);

    QVBoxLayout* lines_ = nullptr;
    std::vector<ExportFinding> shown_; ///< Line by line; empty while something else is shown.
};

} // namespace ferrow
