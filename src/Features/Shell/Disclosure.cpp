// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Shell/Disclosure.h"

#include "Shared/Widgets/FocusRing.h"
#include "Shared/Widgets/Icons.h"
#include "Shared/Widgets/Theme.h"

#include <QPainter>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>
#include <QVariantAnimation>

namespace ferrow {

/// Chevron and text, the chevron under the labels' first letters.
class DisclosureLine : public QPushButton, public FocusShape {
public:
    DisclosureLine(const QString& text, QWidget* parent) : QPushButton(text, parent) { setAttribute(Qt::WA_Hover); }

    void setOpen(bool open)
    {
        isOpen_ = open;
        setAccessibleDescription(open ? QStringLiteral("Expanded") : QStringLiteral("Collapsed"));
        update();
    }

    QSize sizeHint() const override
    {
        const QFontMetrics metrics(Theme::current().font(TextRole::strong));
        return {textLeft + metrics.horizontalAdvance(text()) + 1, Theme::current().scaled(Measure::smallControl)};
    }

    QRectF focusRect() const override { return QRectF(rect()).adjusted(0, 2, 4, -2); }
    double focusRadius() const override { return Radius::control; }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        if (!isEnabled())
            painter.setOpacity(disabledOpacity);
        const QColor color = themeColor(underMouse() ? &ThemeColors::text : &ThemeColors::text2);
        const auto placed = [this](const QRect& part) { return QStyle::visualRect(layoutDirection(), rect(), part); };
        const IconName sign = isOpen_ ? IconName::chevronDown : IconName::chevronRight;
        paintIcon(painter, sign, placed(QRect(-1, 0, chevron, height())), chevron, color);
        painter.setFont(Theme::current().font(TextRole::strong));
        painter.setPen(color);
        const Qt::Alignment start = isRightToLeft() ? Qt::AlignRight : Qt::AlignLeft;
        painter.drawText(placed(rect().adjusted(textLeft, 0, 0, 0)), int(Qt::AlignVCenter | start), text());
    }

private:
    static constexpr int chevron = 14;
    static constexpr int textLeft = 18;
    bool isOpen_ = false;
};

Disclosure::Disclosure(const QString& text, const QString& name, QWidget* parent)
    : QWidget(parent), line_(new DisclosureLine(text, this)), clip_(new QWidget(this)), content_(new QWidget(clip_)),
      rows_(new QVBoxLayout(content_)), animation_(new QVariantAnimation(this))
{
    line_->setAccessibleName(name);
    connect(line_, &QPushButton::clicked, this, [this] { unfold(!expanded_); });

    rows_->setContentsMargins(0, Space::row, 0, 0);
    rows_->setSpacing(Space::row);
    auto* clipLayout = new QVBoxLayout(clip_);
    clipLayout->setContentsMargins(0, 0, 0, 0);
    clipLayout->addWidget(content_);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(line_, 0, Qt::AlignLeft);
    column->addWidget(clip_);

    animation_->setEasingCurve(QEasingCurve::OutCubic);
    connect(animation_, &QVariantAnimation::valueChanged, clip_,
            [this](const QVariant& height) { clip_->setFixedHeight(height.toInt()); });
    connect(animation_, &QVariantAnimation::finished, this, [this] { setExpanded(expanded_); });
    setExpanded(false);
}

void Disclosure::setExpanded(bool expanded)
{
    expanded_ = expanded;
    clip_->setMinimumHeight(0);
    clip_->setMaximumHeight(QWIDGETSIZE_MAX);
    clip_->setVisible(expanded);
    showState();
}

void Disclosure::unfold(bool expanded)
{
    expanded_ = expanded;
    showState();
    const int from = clip_->isVisible() ? clip_->height() : 0;
    clip_->setFixedHeight(from);
    clip_->show();
    animation_->stop();
    animation_->setDuration(Theme::current().duration(Motion::unfold));
    animation_->setStartValue(from);
    animation_->setEndValue(expanded ? content_->sizeHint().height() : 0);
    animation_->start();
}

void Disclosure::showState()
{
    line_->setOpen(expanded_);
}

} // namespace ferrow
