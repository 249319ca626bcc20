// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/Popover.h"

#include "Widgets/FerrowStyle.h"
#include "Widgets/Shadow.h"
#include "Widgets/StyleDrawing.h"
#include "Widgets/Theme.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

namespace ferrow {

namespace {

constexpr int openerGap = 6;
constexpr int windowInset = 8;
constexpr int paneInset = 12;
constexpr int widest = 320;

} // namespace

QRect popoverRect(const QRect& opener, const QSize& size, const QRect& pane, const QSize& window)
{
    const int left = pane.isNull() ? opener.left() : pane.left() + (pane.width() - size.width()) / 2;
    const int below = opener.bottom() + 1 + openerGap;
    const int above = opener.top() - openerGap - size.height();
    const bool fitsBelow = below + size.height() <= window.height() - windowInset;
    const int top = fitsBelow || above < windowInset ? below : above;
    const auto clamped = [](int at, int length, int room) {
        return std::max(windowInset, std::min(at, room - windowInset - length));
    };
    return QRect(QPoint(clamped(left, size.width(), window.width()), clamped(top, size.height(), window.height())),
                 size);
}

Popover::Popover(QWidget* opener, const QString& title) : Overlay(opener, title), opener_(opener)
{
    setOutsidePress(OutsidePress::closes);
    setWindowShortcuts(WindowShortcuts::work);
    body_ = new QVBoxLayout(card());
    body_->setContentsMargins(Space::inspector, Space::inspector, Space::inspector, Space::inspector);
    body_->setSpacing(Space::row);
    title_ = new QHBoxLayout;
    title_->addWidget(makeLabel(title, TextRole::section), 1);
    body_->addLayout(title_);
}

void Popover::setTitleButton(QPushButton* button)
{
    title_->addWidget(button);
}

void Popover::setPane(QWidget* pane)
{
    pane_ = pane;
    relayout();
}

QRect Popover::cardRect()
{
    const auto inWindow = [this](const QWidget* widget) {
        return widget ? QRect(widget->mapTo(parentWidget(), QPoint()), widget->size()) : QRect();
    };
    const QRect pane = inWindow(pane_);
    const Theme& theme = Theme::current();
    const int most = theme.scaled(widest);
    const int width = pane_ ? std::min(most, pane.width() - 2 * paneInset) : most;
    const int natural =
        body_->hasHeightForWidth() ? body_->totalHeightForWidth(width) : body_->totalSizeHint().height();
    const int height = std::min(natural, parentWidget()->height() - 2 * windowInset);
    return popoverRect(inWindow(opener_), QSize(width, height), pane, parentWidget()->size());
}

void Popover::paintGround(QPainter& painter) const
{
    const QRectF rect = card()->geometry();
    paintShadow(painter, rect, ShadowKind::popover);
    StyleDrawing::paintBox(painter, rect, Radius::popover, themeColor(&ThemeColors::raised),
                           themeColor(&ThemeColors::popoverEdge));
}

bool Popover::handleEnter()
{
    dismiss();
    return true;
}

void Popover::aboutToOpen()
{
    if (opener_) {
        setReturnFocus(opener_);
        setOpenEdge(opener_, true);
    }
}

void Popover::aboutToClose()
{
    if (opener_)
        setOpenEdge(opener_, false);
}

} // namespace ferrow
