// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/Disclosure.h"

#include "Widgets/FerrowStyle.h"
#include "Widgets/Icons.h"
#include "Widgets/Theme.h"
#include "Widgets/ToggleSwitch.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

namespace ferrow {

/// Chevron and text, the chevron under the labels' first letters.
class DisclosureLine : public FoldButton {
public:
    DisclosureLine(const QString& text, QWidget* parent) : FoldButton(text, parent)
    {
        setAttribute(Qt::WA_Hover);
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    }

    [[nodiscard]] QString summary() const override { return summary_; }
    void setSummary(const QString& summary)
    {
        summary_ = summary;
        update();
    }

    QSize sizeHint() const override { return {textEnd(), Theme::current().scaled(Measure::smallControl)}; }

    QRectF focusRect() const override
    {
        const double end = showsSummary() ? width() : textEnd();
        return QRectF(0, 0, end, height()).adjusted(0, 2, 4, -2);
    }

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
        if (!showsSummary())
            return;
        const QRect room = rect().adjusted(textEnd() + Space::row, 0, 0, 0);
        painter.setFont(Theme::current().font(TextRole::small));
        painter.setPen(themeColor(&ThemeColors::text2));
        painter.drawText(room, int(Qt::AlignVCenter | Qt::AlignRight),
                         painter.fontMetrics().elidedText(summary_, Qt::ElideRight, room.width()));
    }

private:
    [[nodiscard]] bool showsSummary() const { return !isOpen() && !summary_.isEmpty(); }
    [[nodiscard]] int textEnd() const
    {
        return textLeft + QFontMetrics(Theme::current().font(TextRole::strong)).horizontalAdvance(text()) + 1;
    }

    static constexpr int chevron = 14;
    static constexpr int textLeft = 18;

    QString summary_;
};

Disclosure::Disclosure(const QString& text, const QString& name, QWidget* parent) : QWidget(parent)
{
    line_ = new DisclosureLine(text, this);
    line_->setAccessibleName(name);
    fold_ = new Fold(line_, this);
    rows()->setContentsMargins(0, Space::row, 0, 0);
    fold_->setOpen(false);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    head_ = new QHBoxLayout;
    head_->setSpacing(Space::group);
    head_->addWidget(line_);
    column->addLayout(head_);
    column->addWidget(fold_);
}

ToggleSwitch* Disclosure::addSwitch(const QString& name)
{
    auto* toggle = new ToggleSwitch(name);
    head_->addWidget(toggle);
    setTabOrder(line_, toggle);
    return toggle;
}

FoldButton* Disclosure::line() const
{
    return line_;
}

void Disclosure::setSummary(const QString& summary)
{
    line_->setSummary(summary);
}

QPushButton* Disclosure::addButton(const QString& text)
{
    auto* button = new QPushButton(text);
    setSmallControl(button);
    head_->addWidget(button);
    return button;
}

} // namespace ferrow
