// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/ExportSheets/ExportCheckList.h"

#include "Widgets/MessageLine.h"
#include "Widgets/Theme.h"

#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace ferrow {

namespace {

Severity shownSeverity(ExportFinding::Severity severity)
{
    switch (severity) {
    case ExportFinding::Severity::ok:
        return Severity::success;
    case ExportFinding::Severity::info:
        return Severity::info;
    case ExportFinding::Severity::warning:
        return Severity::warning;
    case ExportFinding::Severity::error:
        return Severity::error;
    }
    return Severity::plain;
}

QString remedyText(ExportFinding::Remedy remedy)
{
    switch (remedy) {
    case ExportFinding::Remedy::useOwnFraming:
        return QStringLiteral("Use Own Framing");
    case ExportFinding::Remedy::besideEachSource:
        return rawValue(ExportDestinationMode::sourceSubfolder);
    case ExportFinding::Remedy::none:
        break;
    }
    return {};
}

/// Whether a line that shows the one can go on to show the other: its button, if any, is for the same.
bool canShowNext(const ExportFinding& shown, const ExportFinding& next)
{
    return shown.remedy == next.remedy && shown.photos == next.photos &&
           (shown.photos.empty() || shown.title == next.title);
}

} // namespace

std::vector<ExportFinding> inSheetOrder(std::vector<ExportFinding> findings)
{
    // Whether all else is well or merely told makes no difference.
    const auto rank = [](const ExportFinding& finding) {
        return std::max(finding.severity, ExportFinding::Severity::info);
    };
    std::stable_sort(findings.begin(), findings.end(),
                     [&](const auto& first, const auto& second) { return rank(first) > rank(second); });
    return findings;
}

ExportCheckList::ExportCheckList(QWidget* parent) : QWidget(parent), lines_(new QVBoxLayout(this))
{
    lines_->setContentsMargins({});
    lines_->setSpacing(Space::row);
    showChecking();
}

void ExportCheckList::clear()
{
    while (auto* item = lines_->takeAt(0)) {
        // Deleted later: a press on "Show" may be what brought the change about.
        item->widget()->hide();
        item->widget()->deleteLater();
        delete item;
    }
}

void ExportCheckList::showChecking()
{
    setMinimumHeight(isVisible() ? height() : 0);
    clear();
    shown_.clear();
    for (const auto& text : {QStringLiteral("Checking photos…"), QStringLiteral("Checking folders…"),
                             QStringLiteral("Checking names…"), QStringLiteral("Checking captions…")})
        lines_->addWidget(new MessageLine(Severity::info, text));
}

void ExportCheckList::showFindings(const std::vector<ExportFinding>& findings)
{
    const std::vector<ExportFinding> before = std::exchange(shown_, inSheetOrder(findings));
    // What has only become more exact stays where it is, with the focus on its button.
    if (!before.empty() && std::ranges::equal(before, shown_, canShowNext)) {
        for (std::size_t i = 0; i < shown_.size(); ++i)
            show(shown_[i], *qobject_cast<MessageLine*>(lines_->itemAt(int(i))->widget()));
        return;
    }
    setMinimumHeight(0);
    clear();
    for (const auto& finding : shown_)
        addFinding(finding);
}

void ExportCheckList::show(const ExportFinding& finding, MessageLine& line)
{
    line.setMessage(shownSeverity(finding.severity), finding.title, finding.detail.simplified());
}

void ExportCheckList::addFinding(const ExportFinding& finding)
{
    auto* line = new MessageLine(shownSeverity(finding.severity), finding.title);
    show(finding, *line);
    lines_->addWidget(line);
    if (finding.remedy != ExportFinding::Remedy::none) {
        auto* button = line->setButton(remedyText(finding.remedy));
        button->setObjectName(QStringLiteral("remedyButton"));
        connect(button, &QPushButton::clicked, this, [this, remedy = finding.remedy] { emit remedyRequested(remedy); });
        return;
    }
    if (finding.photos.empty())
        return;
    auto* button = line->setButton(QStringLiteral("Show"));
    button->setObjectName(QStringLiteral("showPhotosButton"));
    button->setAccessibleName(
        (finding.photos.size() == 1 ? QStringLiteral("Show photo: %1") : QStringLiteral("Show photos: %1"))
            .arg(finding.title));
    connect(button, &QPushButton::clicked, this, [this, finding] { emit showPhotosRequested(finding); });
}

} // namespace ferrow
