// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/ExportSheets/ReportSheet.h"

#include "Features/ExportSheets/ExportTexts.h"
#include "Features/ExportSheets/ReportList.h"
#include "Platform/Base/Localization.h"
#include "Widgets/AccessibleEvents.h"
#include "Widgets/HairLine.h"
#include "Widgets/IconLabel.h"
#include "Widgets/Icons.h"
#include "Widgets/Theme.h"
#include "Widgets/ToggleSwitch.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

namespace ferrow {

namespace {

constexpr int bodyInset = 12; // Rows reach nearer to the sides than texts, for their focus ring.
constexpr int textInset = Space::sheet - bodyInset;
constexpr int countsHeight = 44;
constexpr int copiedMilliseconds = 2000;

/// The counts side by side on a quiet ground.
class CountsBar : public QWidget {
public:
    explicit CountsBar(const std::vector<ExportTexts::ReportCount>& counts)
    {
        setMinimumHeight(Theme::current().scaled(countsHeight));
        auto* layout = new QHBoxLayout(this);
        layout->setContentsMargins(Space::sidebar, 0, Space::sidebar, 0);
        layout->setSpacing(0);
        for (const auto& count : counts)
            layout->addLayout(column(count), 1);
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(themeColor(&ThemeColors::fill));
        painter.drawRoundedRect(rect(), Radius::row, Radius::row);
    }

private:
    static IconLabel* iconOf(const ExportTexts::ReportCount& count)
    {
        using Kind = ExportTexts::ReportCount::Kind;
        // A count of nothing is no news, good or bad.
        const auto color = [&](ColorRole role) { return count.count == 0 ? &ThemeColors::text2 : role; };
        switch (count.kind) {
        case Kind::exported:
            return new IconLabel(IconName::check, Measure::icon, color(&ThemeColors::success));
        case Kind::skipped:
            return new IconLabel(IconName::info, Measure::icon, &ThemeColors::text2);
        case Kind::failed:
            return new IconLabel(IconName::error, Measure::icon, color(&ThemeColors::error));
        case Kind::canceled:
            break;
        }
        return new IconLabel(IconName::close, Measure::icon, &ThemeColors::text2);
    }

    static QLayout* column(const ExportTexts::ReportCount& count)
    {
        auto* row = new QHBoxLayout;
        row->setSpacing(0);
        auto* number = makeLabel(Localization::number(count.count), TextRole::title);
        number->setAccessibleName(QStringLiteral("%1 %2").arg(number->text(), count.word));
        row->addWidget(iconOf(count));
        row->addSpacing(Space::group);
        row->addWidget(number);
        row->addSpacing(Space::iconEdge);
        row->addWidget(makeLabel(count.word, TextRole::body, &ThemeColors::text2), 1);
        return row;
    }
};

QWidget* allWellBlock(const BatchExportReport& report)
{
    auto* block = new QWidget;
    auto* layout = new QVBoxLayout(block);
    layout->setContentsMargins(0, Space::sheet, 0, Space::preview);
    layout->setSpacing(Space::rowGap);
    layout->addWidget(new IconLabel(IconName::check, Measure::emptyIcon, &ThemeColors::success), 0, Qt::AlignHCenter);
    layout->addSpacing(Space::group);
    const auto counted = ExportTexts::allWellSentence(report);
    layout->addWidget(makeLabel(counted, TextRole::section), 0, Qt::AlignHCenter);
    auto* where = makeLabel(ExportTexts::whereTo(report.outputFolders), TextRole::body, &ThemeColors::text2);
    where->setWordWrap(true);
    where->setAlignment(Qt::AlignHCenter);
    layout->addWidget(where);
    return block;
}

} // namespace

ReportSheet::ReportSheet(const BatchExportReport& report, PhotoSession& session, Preferences& preferences,
                         QWidget* window, const std::vector<FileUrl>& skippedPhotos)
    : Sheet(window, ExportTexts::reportTitle(report)), report_(report), skippedPhotos_(skippedPhotos)
{
    setObjectName(QStringLiteral("reportSheet"));
    setBodyInset(bodyInset);
    body()->setSpacing(0);
    buildBody(session);
    addOpenFolders(preferences);
    buildFoot();
}

void ReportSheet::open()
{
    Sheet::open(mainButton());
}

void ReportSheet::buildBody(PhotoSession& session)
{
    if (ExportTexts::isAllWell(report_)) {
        body()->addWidget(allWellBlock(report_));
        return;
    }
    auto* counts = new QHBoxLayout;
    counts->setContentsMargins(textInset, 0, textInset, Space::group);
    counts->addWidget(new CountsBar(ExportTexts::reportCounts(report_)));
    body()->addLayout(counts);
    auto rows = ExportTexts::reportRows(report_, skippedPhotos_);
    if (rows.empty())
        return;
    auto* list = new ReportList(std::move(rows), session);
    body()->addWidget(list);
    auto* line = new QHBoxLayout;
    line->setContentsMargins(textInset, 0, textInset, 0);
    line->addWidget(new HairLine);
    body()->addLayout(line);
    connect(list, &ReportList::showInFolderRequested, this, &ReportSheet::showInFolderRequested);
}

void ReportSheet::addOpenFolders(Preferences& preferences)
{
    if (report_.outputFolders.empty())
        return;
    auto* opens = new ToggleSwitch(QStringLiteral("Open folders when finished"));
    opens->setObjectName(QStringLiteral("openFoldersSwitch"));
    opens->setText(opens->accessibleName());
    opens->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    const auto show = [opens, &preferences] { opens->setChecked(preferences.opensExportFolders()); };
    connect(opens, &ToggleSwitch::clicked, &preferences, &Preferences::setOpensExportFolders);
    connect(&preferences, &Preferences::opensExportFoldersChanged, opens, show);
    show();
    auto* row = new QHBoxLayout;
    row->setContentsMargins(textInset, Space::row, textInset, 0);
    row->addWidget(opens);
    body()->addLayout(row);
}

void ReportSheet::buildFoot()
{
    if (!report_.outputFolders.empty()) {
        auto* open = addHelperButton(report_.outputFolders.size() == 1 ? QStringLiteral("Show in Folder")
                                                                       : QStringLiteral("Show in Folders"));
        open->setObjectName(QStringLiteral("openFoldersButton"));
        open->setIcon(icon(IconName::showInFolder));
        connect(open, &QPushButton::clicked, this, [this] { emit openFoldersRequested(report_.outputFolders); });
    }
    copy_ = addHelperButton(QStringLiteral("Copy Report"));
    copy_->setObjectName(QStringLiteral("copyReportButton"));
    connect(copy_, &QPushButton::clicked, this, &ReportSheet::copyReport);

    const auto failed = ExportTexts::failedPhotos(report_);
    if (!failed.empty()) {
        auto* again = setLeaveButton(QStringLiteral("Try Failed Again"));
        again->setObjectName(QStringLiteral("tryAgainButton"));
        // The receiver hears of it before the sheet closes: to begin again is another thing than to be done.
        again->disconnect();
        connect(again, &QPushButton::clicked, this, [this, failed] {
            emit tryAgainRequested(failed);
            dismiss();
        });
    }
    setMainButton(QStringLiteral("Done"))->setObjectName(QStringLiteral("reportDoneButton"));
    connect(this, &Sheet::mainRequested, this, &Overlay::dismiss);
}

void ReportSheet::copyReport()
{
    QGuiApplication::clipboard()->setText(ExportTexts::reportText(report_, skippedPhotos_));
    copy_->setMinimumWidth(copy_->width());
    copy_->setText(QStringLiteral("Copied"));
    announce(this, QStringLiteral("Report copied"));
    QTimer::singleShot(copiedMilliseconds, copy_, [this] { copy_->setText(QStringLiteral("Copy Report")); });
}

} // namespace ferrow
