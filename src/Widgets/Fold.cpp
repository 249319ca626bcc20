// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/Fold.h"

#include "Widgets/AccessibleEvents.h"
#include "Widgets/ScrollPane.h"
#include "Widgets/Theme.h"

#include <QTimer>
#include <QVBoxLayout>

#include <utility>

namespace ferrow {

void ExpanderButton::setOpen(bool open)
{
    if (std::exchange(open_, open) == open)
        return;
    update();
    QAccessible::State changed;
    changed.expanded = true;
    changed.collapsed = true;
    QAccessibleStateChangeEvent event(this, changed);
    sendAccessible(event);
}

double FoldButton::focusRadius() const
{
    return Radius::control;
}

Fold::Fold(FoldButton* opener, QWidget* parent)
    : QWidget(parent), opener_(opener), content_(new QWidget(this)), rows_(new QVBoxLayout(content_))
{
    rows_->setSpacing(Space::row);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSizeConstraint(QLayout::SetNoConstraint);
    layout->addWidget(content_);

    animation_.setEasingCurve(QEasingCurve::OutCubic);
    connect(opener, &QPushButton::clicked, this, &Fold::unfold);
    connect(&animation_, &QVariantAnimation::valueChanged, this, [this](const QVariant& height) {
        setFixedHeight(height.toInt());
        comeIntoSight();
    });
    connect(&animation_, &QVariantAnimation::finished, this, &Fold::finish);
}

void Fold::setOpen(bool open)
{
    animation_.stop();
    opener_->setOpen(open);
    finish();
}

int Fold::contentHeight() const
{
    // While it is hidden, only what it lies in knows the width.
    return rows_->hasHeightForWidth() ? rows_->heightForWidth(parentWidget()->width()) : rows_->sizeHint().height();
}

void Fold::unfold()
{
    const bool open = !opener_->isOpen();
    const int duration = Theme::current().duration(Motion::unfold);
    if (duration == 0 || !opener_->isVisible()) {
        setOpen(open);
        return;
    }
    const int from = isVisible() ? height() : 0;
    animation_.stop();
    opener_->setOpen(open);
    // The content keeps its height while the clip over it moves.
    content_->setFixedHeight(contentHeight());
    setFixedHeight(from);
    show();
    animation_.setDuration(duration);
    animation_.setStartValue(from);
    animation_.setEndValue(open ? contentHeight() : 0);
    animation_.start();
}

void Fold::finish()
{
    setVisible(opener_->isOpen());
    for (QWidget* widget : {static_cast<QWidget*>(this), content_}) {
        widget->setMinimumHeight(0);
        widget->setMaximumHeight(QWIDGETSIZE_MAX);
    }
    comeIntoSight();
}

void Fold::comeIntoSight()
{
    if (!opener_->isOpen() || !opener_->isVisible())
        return;
    // Once the layouts around have given it its place.
    QTimer::singleShot(0, this, [this] { ScrollPane::reveal(parentWidget()); });
}

} // namespace ferrow
