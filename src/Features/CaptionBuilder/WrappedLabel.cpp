// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/CaptionBuilder/WrappedLabel.h"

#include "Widgets/Theme.h"

#include <QPainter>
#include <QTextLayout>

#include <cmath>

namespace ferrow {

namespace {

/// Lays the text out and draws it if there is a painter; answers the height in logical pixels.
double layOut(const QLabel& label, int width, QPainter* painter)
{
    const double lineHeight = std::max(label.fontMetrics().height(), Theme::current().lineHeight(TextRole::strong));
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    option.setAlignment(Qt::AlignLeading);
    double y = 0;
    for (const QString& paragraph : label.text().split(u'\n')) {
        QTextLayout layout(paragraph, label.font());
        layout.setTextOption(option);
        layout.beginLayout();
        for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
            line.setLineWidth(width);
            line.setPosition(QPointF(0, y + (lineHeight - line.height()) / 2));
            y += lineHeight;
        }
        layout.endLayout();
        if (painter)
            layout.draw(painter, QPointF());
    }
    return y;
}

} // namespace

WrappedLabel::WrappedLabel(QWidget* parent) : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

QSize WrappedLabel::sizeHint() const
{
    const int width = std::max(this->width(), minimumSizeHint().width());
    return {width, heightForWidth(width)};
}

QSize WrappedLabel::minimumSizeHint() const
{
    return {Theme::current().scaled(80), Theme::current().lineHeight(TextRole::strong)};
}

int WrappedLabel::heightForWidth(int width) const
{
    return int(std::ceil(layOut(*this, width, nullptr)));
}

void WrappedLabel::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setPen(palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::WindowText));
    layOut(*this, width(), &painter);
}

} // namespace ferrow
