// SPDX-License-Identifier: GPL-3.0-or-later
#include "Shared/Widgets/Section.h"

#include "Shared/Widgets/Icons.h"
#include "Shared/Widgets/SmallParts.h"
#include "Shared/Widgets/ToggleSwitch.h"

#include <QAccessible>
#include <QPainter>
#include <QStyle>
#include <QVBoxLayout>
#include <QVariantAnimation>

#include <utility>

namespace ferrow {

namespace {

constexpr int chevron = 16;
constexpr int chevronLeft = 15;
constexpr int titleLeft = 38;
constexpr int ringInset = 8;

} // namespace

SectionHeader::SectionHeader(const QString& title, QWidget* parent) : QPushButton(title, parent)
{
    setAccessibleName(title);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void SectionHeader::setOpen(bool open)
{
    if (std::exchange(open_, open) == open) {
        return;
    }
    update();
    QAccessible::State changed;
    changed.expanded = true;
    changed.collapsed = true;
    QAccessibleStateChangeEvent event(this, changed);
    QAccessible::updateAccessibility(&event);
}

void SectionHeader::setSummary(const QString& summary)
{
    summary_ = summary;
    update();
}

void SectionHeader::setReservedWidth(int width)
{
    reserved_ = width;
    update();
}

QSize SectionHeader::sizeHint() const
{
    return QSize(titleLeft + 2 * Space::inspector, Theme::current().scaled(Measure::sectionHeader));
}

QRectF SectionHeader::focusRect() const
{
    const QRect inside = rect().adjusted(ringInset, ringInset, -ringInset - reserved_, -ringInset);
    return QStyle::visualRect(layoutDirection(), rect(), inside);
}

double SectionHeader::focusRadius() const
{
    return Radius::control;
}

void SectionHeader::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const ThemeColors& colors = Theme::current().colors();
    const auto placed = [this](const QRect& part) { return QStyle::visualRect(layoutDirection(), rect(), part); };
    const QColor ink = isEnabled() ? colors.text : colors.disabled;
    const QRect mark(chevronLeft, 0, chevron, height());
    paintIcon(painter, open_ ? IconName::chevronDown : IconName::chevronRight, placed(mark), chevron, ink);

    const Qt::Alignment start = isRightToLeft() ? Qt::AlignRight : Qt::AlignLeft;
    const Qt::Alignment end = isRightToLeft() ? Qt::AlignLeft : Qt::AlignRight;
    painter.setFont(Theme::current().font(TextRole::section));
    painter.setPen(ink);
    const int titleWidth = painter.fontMetrics().horizontalAdvance(text());
    painter.drawText(placed(QRect(titleLeft, 0, titleWidth + 1, height())), Qt::AlignVCenter | start, text());
    if (open_ || summary_.isEmpty()) {
        return;
    }
    const int left = titleLeft + titleWidth + Space::row;
    const QRect room(left, 0, width() - Space::inspector - reserved_ - left, height());
    painter.setFont(Theme::current().font(TextRole::small));
    painter.setPen(isEnabled() ? colors.text2 : colors.disabled);
    painter.drawText(placed(room), Qt::AlignVCenter | end,
                     painter.fontMetrics().elidedText(summary_, Qt::ElideRight, room.width()));
}

Section::Section(const QString& title, QWidget* parent)
    : QWidget(parent), header_(new SectionHeader(title, this)), clip_(new QWidget(this)), content_(new QWidget(clip_)),
      body_(new QVBoxLayout(content_)), animation_(new QVariantAnimation(this))
{
    body_->setContentsMargins(Space::inspector, 0, Space::inspector, Space::inspector);
    body_->setSpacing(Space::row);

    auto* clipLayout = new QVBoxLayout(clip_);
    clipLayout->setContentsMargins(0, 0, 0, 0);
    clipLayout->setSizeConstraint(QLayout::SetNoConstraint);
    clipLayout->addWidget(content_);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(header_);
    layout->addWidget(clip_);
    layout->addWidget(new HairLine(Qt::Horizontal, this));
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);

    animation_->setEasingCurve(QEasingCurve::OutCubic);
    connect(header_, &QPushButton::clicked, this, [this] { unfold(!expanded_); });
    connect(animation_, &QVariantAnimation::valueChanged, this,
            [this](const QVariant& height) { clip_->setFixedHeight(height.toInt()); });
    connect(animation_, &QVariantAnimation::finished, this, &Section::finishUnfolding);
}

ToggleSwitch* Section::addSwitch(const QString& name)
{
    if (!switch_) {
        switch_ = new ToggleSwitch(name, this);
        header_->setReservedWidth(Measure::switchWidth + Space::group);
        setTabOrder(header_, switch_);
        placeSwitch();
    }
    return switch_;
}

void Section::setSummary(const QString& summary)
{
    header_->setSummary(summary);
}

void Section::setExpanded(bool expanded)
{
    animation_->stop();
    const bool isChange = std::exchange(expanded_, expanded) != expanded;
    header_->setOpen(expanded);
    finishUnfolding();
    if (isChange) {
        emit expandedChanged(expanded);
    }
}

int Section::contentHeight() const
{
    return body_->hasHeightForWidth() ? body_->heightForWidth(width()) : body_->sizeHint().height();
}

void Section::unfold(bool expanded)
{
    const int duration = Theme::current().duration(Motion::unfold);
    if (duration == 0 || !isVisible()) {
        setExpanded(expanded);
        return;
    }
    const int from = clip_->isVisible() ? clip_->height() : 0;
    animation_->stop();
    expanded_ = expanded;
    header_->setOpen(expanded);
    // The content keeps its height while the clip over it moves.
    content_->setFixedHeight(contentHeight());
    clip_->setFixedHeight(from);
    clip_->show();
    animation_->setDuration(duration);
    animation_->setStartValue(from);
    animation_->setEndValue(expanded ? contentHeight() : 0);
    animation_->start();
    emit expandedChanged(expanded);
}

void Section::finishUnfolding()
{
    clip_->setVisible(expanded_);
    for (QWidget* widget : {clip_, content_}) {
        widget->setMinimumHeight(0);
        widget->setMaximumHeight(QWIDGETSIZE_MAX);
    }
}

void Section::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    placeSwitch();
}

void Section::placeSwitch()
{
    if (!switch_) {
        return;
    }
    const QSize size = switch_->sizeHint();
    const int headerHeight = header_->sizeHint().height();
    const QRect place(width() - Space::inspector - size.width(), (headerHeight - size.height()) / 2, size.width(),
                      size.height());
    switch_->setGeometry(QStyle::visualRect(layoutDirection(), rect(), place));
    switch_->raise();
}

} // namespace ferrow
