// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/PreviewPane/ExportFooter.h"

#include "Session/WindowTexts.h"
#include "Widgets/AccessibleEvents.h"
#include "Widgets/ElidedLabel.h"
#include "Widgets/ProgressLine.h"
#include "Widgets/Theme.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

namespace ferrow {

namespace {

constexpr int footerHeight = 112;

QString titleText(const ExportSession& session)
{
    if (session.isStopping())
        return QStringLiteral("Stopping…");
    if (!session.progress())
        return QStringLiteral("Preparing the export…");
    const BatchExportProgress& counts = session.progress()->counts;
    return WindowTexts::exporting(counts.completed, counts.total);
}

/// "b.jpg", "b.jpg and 2 more".
QString atWork(const ExportSession& session)
{
    const std::vector<FileUrl>& photos = session.photosAtWork();
    if (photos.empty())
        return {};
    const QString first = photos.front().lastPathComponent();
    return photos.size() == 1 ? first : QStringLiteral("%1 and %2 more").arg(first).arg(photos.size() - 1);
}

QString detailText(const ExportSession& session, std::chrono::steady_clock::time_point now)
{
    if (session.isStopping())
        return QStringLiteral("Completed files remain saved.");
    const std::optional<ExportProgress>& progress = session.progress();
    if (!progress)
        return {};
    const BatchExportProgress& counts = progress->counts;
    const auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(now - progress->startedAt);
    const std::optional<QString> left = WindowTexts::remainingTime(elapsed, counts.completed - progress->settledAtStart,
                                                                   counts.total - counts.completed);
    QString text = atWork(session);
    if (left)
        text += text.isEmpty() ? *left : QStringLiteral(" · ") + *left;
    return text;
}

} // namespace

std::optional<int> SpokenTenths::reached(std::int64_t completed, std::int64_t total)
{
    const int tenth = total > 0 ? int(completed * 10 / total) : 0;
    if (tenth <= last_)
        return {};
    last_ = tenth;
    return tenth * 10;
}

ExportFooter::ExportFooter(const ExportSession& session, QWidget* parent) : QWidget(parent), session_(session)
{
    setGround(this, &ThemeColors::window);
    title_ = makeLabel({}, TextRole::title, &ThemeColors::text, this);
    detail_ = new ElidedLabel({}, Qt::ElideMiddle, this);
    setTextRole(detail_, TextRole::body, &ThemeColors::text2);
    cancel_ = new QPushButton(QStringLiteral("Cancel"), this);
    cancel_->setObjectName(QStringLiteral("cancelExportButton"));
    cancel_->setAccessibleName(QStringLiteral("Cancel export"));
    cancel_->setToolTip(QStringLiteral("Stops scheduling new exports; completed files remain saved"));
    cancel_->setAccessibleDescription(cancel_->toolTip());
    bar_ = new ProgressLine(QStringLiteral("Export progress"), this);

    auto* texts = new QVBoxLayout;
    texts->setSpacing(Space::rowGap);
    texts->addWidget(title_);
    texts->addWidget(detail_);
    auto* row = new QHBoxLayout;
    row->setSpacing(Space::sidebar);
    row->addLayout(texts, 1);
    row->addWidget(cancel_, 0, Qt::AlignVCenter);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(Space::sheet, Space::inspector, Space::sheet, Space::sheet);
    column->addLayout(row);
    column->addStretch();
    column->addWidget(bar_);

    clock_.setInterval(1000);
    connect(&clock_, &QTimer::timeout, this, &ExportFooter::renewDetail);
    connect(cancel_, &QPushButton::clicked, this, &ExportFooter::cancelRequested);
    for (const auto signal :
         {&ExportSession::progressChanged, &ExportSession::isPlanningChanged, &ExportSession::isStoppingChanged})
        connect(&session_, signal, this, &ExportFooter::renew);
    connect(&session_, &ExportSession::progressChanged, this, &ExportFooter::speak);
    connect(&session_, &ExportSession::photoStarted, this, &ExportFooter::renewDetail);
}

void ExportFooter::renew()
{
    title_->setText(titleText(session_));
    setAccessibleName(title_->text());
    // A disabled button would hand the focus on to anybody.
    if (session_.isStopping() && cancel_->hasFocus())
        setFocus(Qt::OtherFocusReason);
    cancel_->setEnabled(!session_.isStopping());
    renewDetail();
    // Not at the end, when the footer goes: a progress bar paints at once, and the whole window with it.
    if (!session_.isBusy())
        return;
    const std::optional<ExportProgress>& progress = session_.progress();
    bar_->setRange(0, progress ? int(progress->counts.total) : 0);
    bar_->setValue(progress ? int(progress->counts.completed) : 0);
}

void ExportFooter::renewDetail()
{
    detail_->setText(detailText(session_, std::chrono::steady_clock::now()));
}

void ExportFooter::speak()
{
    if (!session_.progress()) {
        tenths_.reset();
        return;
    }
    const BatchExportProgress& counts = session_.progress()->counts;
    if (const std::optional<int> percent = tenths_.reached(counts.completed, counts.total))
        announceProgress(this, QStringLiteral("Exporting, %1 percent").arg(*percent));
}

QSize ExportFooter::sizeHint() const
{
    return {440, Theme::current().scaled(footerHeight)};
}

QSize ExportFooter::minimumSizeHint() const
{
    return {240, sizeHint().height()};
}

void ExportFooter::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    renew();
    clock_.start();
    cancel_->setFocus(Qt::TabFocusReason);
}

void ExportFooter::hideEvent(QHideEvent* event)
{
    QWidget::hideEvent(event);
    clock_.stop();
}

void ExportFooter::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), themeColor(&ThemeColors::window));
    painter.fillRect(QRectF(0, 0, width(), 1), themeColor(&ThemeColors::line));
}

} // namespace ferrow
