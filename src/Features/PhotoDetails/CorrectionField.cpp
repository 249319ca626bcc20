// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/PhotoDetails/CorrectionField.h"

#include "Widgets/Icons.h"

#include <QPainter>
#include <QPushButton>

#include <utility>

namespace ferrow {

namespace {

constexpr int barWidth = 3;
constexpr int barInset = 6;
constexpr int textShift = 4; ///< Of the text, to make room for the bar.

} // namespace

CorrectionField::CorrectionField(const QString& name, QWidget* parent)
    : CommitField(name, parent), reset_(makeIconButton(IconName::reset, QStringLiteral("Reset %1").arg(name), this))
{
    reset_->setIconSize({Measure::fieldIcon, Measure::fieldIcon});
    reset_->setFixedSize(Measure::hitArea, Measure::hitArea);
    reset_->setCursor(Qt::ArrowCursor);
    reset_->hide();
    connect(reset_, &QPushButton::clicked, this, &CorrectionField::resetRequested);
}

void CorrectionField::setCorrected(bool isCorrected, const QString& fileSays)
{
    setAccessibleDescription(isCorrected ? QStringLiteral("Corrected. ") + fileSays : QString());
    if (std::exchange(isCorrected_, isCorrected) == isCorrected)
        return;
    // The button goes while it is pressed: keys must not fall to whatever comes next.
    if (!isCorrected && reset_->hasFocus())
        setFocus(Qt::OtherFocusReason);
    reset_->setVisible(isCorrected);
    setTextMargins(isCorrected ? textShift : 0, 0, isCorrected ? Measure::hitArea - Space::iconEdge : 0, 0);
    update();
}

void CorrectionField::paintEvent(QPaintEvent* event)
{
    CommitField::paintEvent(event);
    if (!isCorrected_)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(themeColor(isEnabled() ? &ThemeColors::accent : &ThemeColors::disabled));
    const QRectF bar(barInset, barInset, barWidth, height() - 2 * barInset);
    painter.drawRoundedRect(bar, barWidth / 2.0, barWidth / 2.0);
}

void CorrectionField::resizeEvent(QResizeEvent* event)
{
    CommitField::resizeEvent(event);
    const int inset = (height() - Measure::hitArea) / 2;
    reset_->move(width() - Measure::hitArea - inset, inset);
}

} // namespace ferrow
