// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/ElidedLabel.h"

#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QToolTip>

#include <algorithm>

namespace ferrow {

ElidedLabel::ElidedLabel(const QString& text, Qt::TextElideMode mode, QWidget* parent)
    : QLabel(text, parent), mode_(mode)
{
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

QSize ElidedLabel::sizeHint() const
{
    const QMargins margins = contentsMargins();
    return QSize(fontMetrics().horizontalAdvance(text()) + margins.left() + margins.right() + 1,
                 fontMetrics().height() + margins.top() + margins.bottom());
}

QSize ElidedLabel::minimumSizeHint() const
{
    const int ellipsis = fontMetrics().horizontalAdvance(QChar(0x2026)) * 2;
    return QSize(std::min(sizeHint().width(), ellipsis), sizeHint().height());
}

QString ElidedLabel::shownText() const
{
    return fontMetrics().elidedText(text(), mode_, contentsRect().width());
}

void ElidedLabel::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setPen(palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled, foregroundRole()));
    painter.drawText(contentsRect(), int(alignment()) | Qt::TextSingleLine, shownText());
}

bool ElidedLabel::event(QEvent* event)
{
    if (event->type() == QEvent::ToolTip && toolTip().isEmpty()) {
        const bool isElided = shownText() != text();
        QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), isElided ? text() : QString(), this);
        return true;
    }
    return QLabel::event(event);
}

} // namespace ferrow
