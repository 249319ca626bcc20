// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/MessageLine.h"

#include "Widgets/FerrowStyle.h"
#include "Widgets/IconLabel.h"
#include "Widgets/Icons.h"
#include "Widgets/StyleDrawing.h"
#include "Widgets/Theme.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

namespace ferrow {

namespace {

constexpr int iconGap = 10;
constexpr int smallIconGap = 6;

QLabel* wrappedLabel(TextRole role, ColorRole color)
{
    QLabel* label = makeLabel(QString(), role, color);
    label->setWordWrap(true);
    return label;
}

ColorRole groundOf(Severity severity)
{
    switch (severity) {
    case Severity::warning:
        return &ThemeColors::warningGround;
    case Severity::error:
        return &ThemeColors::errorGround;
    case Severity::plain:
    case Severity::info:
    case Severity::success:
        return &ThemeColors::fill;
    }
    Q_UNREACHABLE();
}

} // namespace

ColorRole severityColor(Severity severity)
{
    switch (severity) {
    case Severity::plain:
        return &ThemeColors::text;
    case Severity::info:
        return &ThemeColors::text2;
    case Severity::success:
        return &ThemeColors::success;
    case Severity::warning:
        return &ThemeColors::warning;
    case Severity::error:
        return &ThemeColors::error;
    }
    Q_UNREACHABLE();
}

IconName severityIcon(Severity severity)
{
    switch (severity) {
    case Severity::success:
        return IconName::check;
    case Severity::warning:
        return IconName::warning;
    case Severity::error:
        return IconName::error;
    case Severity::plain:
    case Severity::info:
        return IconName::info;
    }
    Q_UNREACHABLE();
}

MessageLine::MessageLine(Severity severity, const QString& text, Ground ground, QWidget* parent)
    : QWidget(parent), severity_(severity), ground_(ground), icon_(new IconLabel(IconName::info, Measure::icon)),
      text_(wrappedLabel(TextRole::body, &ThemeColors::text)),
      detail_(wrappedLabel(TextRole::small, &ThemeColors::text2))
{
    const bool isTinted = ground == Ground::tinted;
    auto* layout = new QHBoxLayout(this);
    const int inset = isTinted ? Space::row : 0;
    layout->setContentsMargins(inset, inset, inset, inset);
    layout->setSpacing(iconGap);
    layout->addWidget(icon_, 0, Qt::AlignTop);
    auto* lines = new QVBoxLayout;
    lines->setSpacing(2);
    lines->addWidget(text_);
    lines->addWidget(detail_);
    layout->addLayout(lines, 1);
    role_ = isTinted ? TextRole::strong : TextRole::body;
    setMessage(severity, text);
}

void MessageLine::setMessage(Severity severity, const QString& text, const QString& detail)
{
    severity_ = severity;
    text_->setText(text);
    detail_->setText(detail);
    renew();
}

void MessageLine::setRole(TextRole role)
{
    role_ = role;
    renew();
}

void MessageLine::renew()
{
    const bool isSmall = role_ == TextRole::small;
    // A small plain line is a hint.
    const bool isHint = isSmall && severity_ == Severity::plain;
    const ColorRole color = isHint ? &ThemeColors::text2 : severityColor(severity_);
    icon_->setIconSize(isSmall ? Measure::fieldIcon : Measure::icon);
    icon_->setIcon(severityIcon(severity_), color);
    icon_->setVisible(severity_ != Severity::plain);
    layout()->setSpacing(isSmall ? smallIconGap : iconGap);
    // Small lines stand alone and take the color; larger ones have the icon to say it.
    setTextRole(text_, role_, isSmall ? color : &ThemeColors::text);
    detail_->setVisible(!detail_->text().isEmpty());
    update();
}

QPushButton* MessageLine::setButton(const QString& text)
{
    if (!button_) {
        button_ = new QPushButton(this);
        setSmallControl(button_);
        layout()->addWidget(button_);
    }
    button_->setText(text);
    return button_;
}

QString MessageLine::text() const
{
    return text_->text();
}

void MessageLine::paintEvent(QPaintEvent*)
{
    if (ground_ == Ground::tinted) {
        QPainter painter(this);
        StyleDrawing::paintBox(painter, rect(), Radius::row, themeColor(groundOf(severity_)),
                               themeColor(&ThemeColors::fillEdge));
    }
}

} // namespace ferrow
