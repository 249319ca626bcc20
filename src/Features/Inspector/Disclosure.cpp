// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/Disclosure.h"

#include "Widgets/Icons.h"
#include "Widgets/Theme.h"

#include <QPainter>
#include <QVBoxLayout>

namespace ferrow {

namespace {

/// Chevron and text, the chevron under the labels' first letters.
class DisclosureLine : public FoldButton {
public:
    DisclosureLine(const QString& text, QWidget* parent) : FoldButton(text, parent) { setAttribute(Qt::WA_Hover); }

    QSize sizeHint() const override
    {
        const QFontMetrics metrics(Theme::current().font(TextRole::strong));
        return {textLeft + metrics.horizontalAdvance(text()) + 1, Theme::current().scaled(Measure::smallControl)};
    }

    QRectF focusRect() const override { return QRectF(rect()).adjusted(0, 2, 4, -2); }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        if (!isEnabled())
            painter.setOpacity(disabledOpacity);
        const QColor color = themeColor(underMouse() ? &ThemeColors::text : &ThemeColors::text2);
        const IconName sign = isOpen() ? IconName::chevronDown : IconName::chevronRight;
        paintIcon(painter, sign, QRect(-1, 0, chevron, height()), chevron, color);
        painter.setFont(Theme::current().font(TextRole::strong));
        painter.setPen(color);
        painter.drawText(rect().adjusted(textLeft, 0, 0, 0), int(Qt::AlignVCenter | Qt::AlignLeft), text());
    }

private:
    static constexpr int chevron = 14;
    static constexpr int textLeft = 18;
};

} // namespace

Disclosure::Disclosure(const QString& text, const QString& name, QWidget* parent) : QWidget(parent)
{
    auto* line = new DisclosureLine(text, this);
    line->setAccessibleName(name);
    fold_ = new Fold(line, this);
    rows()->setContentsMargins(0, Space::row, 0, 0);
    fold_->setOpen(false);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(line, 0, Qt::AlignLeft);
    column->addWidget(fold_);
}

} // namespace ferrow
