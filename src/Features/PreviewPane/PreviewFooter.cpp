// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/PreviewPane/PreviewFooter.h"

#include "Features/PreviewPane/StepButtons.h"
#include "Session/WindowTexts.h"
#include "Widgets/BackdropDots.h"
#include "Widgets/ElidedLabel.h"
#include "Widgets/Theme.h"

#include <QEvent>
#include <QLabel>
#include <QPainter>
#include <QPushButton>

#include <algorithm>

namespace ferrow {

namespace {

/// A name is not elided below this while there is anything else to leave out.
constexpr int leastName = 80;

} // namespace

QColor backdropColor(PreviewBackdrop backdrop)
{
    return Theme::backdrops().at(int(backdrop));
}

FooterFit fitFooter(int room, int name, const std::vector<int>& details, int backdropLabel, int gap)
{
    const auto fits = [&](bool withLabel, int detail, int nameWidth) {
        const int label = withLabel ? gap + backdropLabel : 0;
        return nameWidth + (detail > 0 ? gap + detail : 0) + label <= room;
    };
    const int last = int(details.size()) - 1;
    for (int i = 0; i <= last; ++i)
        if (fits(true, details[std::size_t(i)], name))
            return {true, i, name};
    const int shortest = last < 0 ? 0 : details.back();
    if (fits(false, shortest, std::min(name, leastName)))
        return {false, last, std::min(name, room - (shortest > 0 ? gap + shortest : 0))};
    return {false, -1, std::clamp(name, 0, std::max(room, 0))};
}

PreviewFooter::PreviewFooter(QWidget* parent) : QWidget(parent)
{
    setGround(this, &ThemeColors::window);
    buildPager();
    name_ = new ElidedLabel({}, Qt::ElideMiddle, this);
    setTextRole(name_, TextRole::strong);
    name_->setTextInteractionFlags(Qt::NoTextInteraction);
    detail_ = makeLabel({}, TextRole::small, &ThemeColors::text2, this);
    backdropLabel_ = makeLabel(QStringLiteral("Backdrop"), TextRole::small, &ThemeColors::text2, this);
    buildDots();
    connect(&Theme::current(), &Theme::changed, this, &PreviewFooter::arrange);
}

void PreviewFooter::buildPager()
{
    pager_ = new StepButtons(QStringLiteral("Previous photo"), QStringLiteral("Next photo"), this);
    pager_->previous()->setObjectName(QStringLiteral("previousPhotoButton"));
    pager_->next()->setObjectName(QStringLiteral("nextPhotoButton"));
    connect(pager_, &StepButtons::stepRequested, this, &PreviewFooter::stepRequested);
    pager_->hide();
}

void PreviewFooter::buildDots()
{
    QStringList names;
    for (const auto& entry : CodedCases<PreviewBackdrop>::table)
        names << rawValue(entry.value);
    dots_ = new BackdropDots(QStringLiteral("Backdrop"), names, this);
    dots_->setObjectName(QStringLiteral("backdropDots"));
    connect(dots_, &BackdropDots::indexChosen, this,
            [this](int index) { emit backdropChosen(static_cast<PreviewBackdrop>(index)); });
}

void PreviewFooter::setPhoto(const QString& name, const std::vector<QString>& details)
{
    if (name_->text() == name && details_ == details)
        return;
    name_->setText(name);
    details_ = details;
    arrange();
}

void PreviewFooter::setBackdrop(PreviewBackdrop backdrop)
{
    dots_->setCurrentIndex(int(backdrop));
}

void PreviewFooter::setPosition(int index, int count)
{
    pager_->setText(index < 0 ? QString() : WindowTexts::outOf(index + 1, count));
    pager_->setStepsEnabled(index > 0, index >= 0 && index + 1 < count);
    arrange();
}

void PreviewFooter::setPagerShown(bool isShown)
{
    pager_->setVisible(isShown);
    arrange();
}

void PreviewFooter::setTool(QWidget* tool)
{
    tool_ = tool;
    tool_->setParent(this);
    tool_->hide();
    setTabOrder(pager_, tool_);
}

void PreviewFooter::setToolShown(bool isShown)
{
    tool_->setVisible(isShown);
    arrange();
}

QSize PreviewFooter::sizeHint() const
{
    return {440, Theme::current().scaled(Measure::footer)};
}

QSize PreviewFooter::minimumSizeHint() const
{
    return {240, sizeHint().height()};
}

void PreviewFooter::resizeEvent(QResizeEvent*)
{
    arrange();
}

bool PreviewFooter::event(QEvent* event)
{
    // Fonts and texts of the parts have changed.
    if (event->type() == QEvent::LayoutRequest)
        arrange();
    return QWidget::event(event);
}

void PreviewFooter::arrange()
{
    const auto place = [this](QWidget* widget, int x, int width) {
        const int height = widget->sizeHint().height();
        widget->setGeometry(x, (this->height() - height + 1) / 2, width, height);
    };
    int left = Space::sidebar;
    if (!pager_->isHidden()) {
        left = Space::group;
        const int width = pager_->sizeHint().width();
        place(pager_, left, width);
        left += width + Space::sidebar;
    }
    // The targets of the dots are wider than the dots.
    const int dotsWidth = dots_->sizeHint().width();
    int right = width() - Space::row - dotsWidth;
    place(dots_, right, dotsWidth);
    right -= Space::group;

    const QFontMetrics detailMetrics = detail_->fontMetrics();
    std::vector<int> widths;
    for (const QString& detail : details_)
        widths.push_back(detailMetrics.horizontalAdvance(detail));
    const int nameWidth = name_->fontMetrics().horizontalAdvance(name_->text()) + 1;
    const int labelWidth = backdropLabel_->sizeHint().width();
    const int toolWidth = tool_ && !tool_->isHidden() ? tool_->sizeHint().width() + Space::inspector : 0;
    const FooterFit fit = fitFooter(right - left - toolWidth, nameWidth, widths, labelWidth, Space::row);

    backdropLabel_->setVisible(fit.showsBackdropLabel);
    place(backdropLabel_, right - labelWidth, labelWidth);
    if (toolWidth > 0) {
        const int end = fit.showsBackdropLabel ? right - labelWidth - Space::inspector : right - Space::group;
        place(tool_, end - tool_->sizeHint().width(), tool_->sizeHint().width());
    }
    place(name_, left, fit.nameWidth);
    detail_->setVisible(fit.detail >= 0);
    if (fit.detail < 0)
        return;
    detail_->setText(details_[std::size_t(fit.detail)]);
    detail_->setToolTip(details_.front());
    place(detail_, left + fit.nameWidth + Space::row, detail_->sizeHint().width());
}

void PreviewFooter::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), themeColor(&ThemeColors::window));
    painter.fillRect(QRectF(0, 0, width(), 1), themeColor(&ThemeColors::line));
}

} // namespace ferrow
