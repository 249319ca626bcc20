// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/CaptionBuilder/PaletteButton.h"

#include "Widgets/FerrowStyle.h"
#include "Widgets/Theme.h"

#include <QKeyEvent>
#include <QMouseEvent>

#include <utility>

namespace ferrow {

namespace {

constexpr int dragDistance = 6;
/// The icon and the 4 that Qt sets between it and the text.
constexpr int iconPart = Measure::fieldIcon + 4;

} // namespace

PaletteButton::PaletteButton(CaptionChips::Kind kind, IconName iconName, const QString& text, QWidget* parent)
    : QPushButton(text, parent), kind_(kind), icon_(ferrow::icon(iconName))
{
    setSmallControl(this);
    setIconSize(QSize(Measure::fieldIcon, Measure::fieldIcon));
    setIcon(icon_);
    setAutoDefault(false);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void PaletteButton::setShowsIcon(bool shows)
{
    if (shows == icon().isNull())
        setIcon(shows ? icon_ : QIcon());
}

int PaletteButton::widthWithIcon() const
{
    return sizeHint().width() + (icon().isNull() ? iconPart : 0);
}

QSize PaletteButton::minimumSizeHint() const
{
    return {widthWithIcon() - iconPart, sizeHint().height()};
}

bool PaletteButton::event(QEvent* event)
{
    if (event->type() == QEvent::ShortcutOverride && isDragging_ &&
        static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape)
        event->accept();
    return QPushButton::event(event);
}

void PaletteButton::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape && isDragging_)
        giveUp();
    else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        click();
    else
        QPushButton::keyPressEvent(event);
}

void PaletteButton::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        pressed_ = event->position().toPoint();
    QPushButton::mousePressEvent(event);
}

void PaletteButton::mouseMoveEvent(QMouseEvent* event)
{
    const QPoint pointer = event->globalPosition().toPoint();
    if (isDragging_) {
        emit dragMoved(pointer);
        return;
    }
    if (pressed_ && (event->position().toPoint() - *pressed_).manhattanLength() >= dragDistance) {
        isDragging_ = true;
        setDown(false);
        setCursor(Qt::ClosedHandCursor);
        emit dragStarted(pointer);
        return;
    }
    QPushButton::mouseMoveEvent(event);
}

void PaletteButton::mouseReleaseEvent(QMouseEvent* event)
{
    // After a drag, also one that was given up, the release is no click.
    const bool isClick = std::exchange(pressed_, std::nullopt).has_value() && !isDragging_;
    if (std::exchange(isDragging_, false)) {
        unsetCursor();
        emit dropped();
    }
    if (!isClick)
        setDown(false);
    QPushButton::mouseReleaseEvent(event);
}

void PaletteButton::focusOutEvent(QFocusEvent* event)
{
    giveUp();
    QPushButton::focusOutEvent(event);
}

void PaletteButton::giveUp()
{
    if (!std::exchange(isDragging_, false))
        return;
    pressed_.reset();
    unsetCursor();
    emit dragGivenUp();
}

} // namespace ferrow
