// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/InputRules.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QWheelEvent>

namespace ferrow {

namespace {

/// Turns of the wheel that follow each other sooner are one scrolling.
constexpr quint64 scrollPause = 400; // milliseconds
quint64 scrolledAt = 0;

bool isPress(const QObject* receiver, const QKeyEvent& key)
{
    switch (key.key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return true;
    case Qt::Key_Space:
        return !qobject_cast<const QLineEdit*>(receiver); // There it is a letter.
    default:
        return false;
    }
}

bool isWindowCommand(const QKeyEvent& key)
{
    if (key.modifiers() != Qt::ControlModifier || key.key() < Qt::Key_A || key.key() > Qt::Key_Z)
        return false;
    for (const auto edit : {QKeySequence::Copy, QKeySequence::Cut, QKeySequence::Paste, QKeySequence::SelectAll,
                            QKeySequence::Undo, QKeySequence::Redo})
        if (key.matches(edit))
            return false;
    return true;
}

class KeyRules : public QObject {
public:
    using QObject::QObject;

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::KeyPress) {
            const auto& key = static_cast<const QKeyEvent&>(*event);
            return key.isAutoRepeat() && isPress(watched, key);
        }
        if (event->type() == QEvent::ShortcutOverride && qobject_cast<QLineEdit*>(watched) &&
            isWindowCommand(static_cast<const QKeyEvent&>(*event))) {
            // Where the window has no such command, the key reaches the field all the same.
            event->ignore();
            return true;
        }
        return false;
    }
};

} // namespace

void installKeyRules(QApplication& application)
{
    application.installEventFilter(new KeyRules(&application));
}

void noteScrolling(const QWheelEvent& event)
{
    scrolledAt = event.timestamp();
}

bool wheelIsFor(const QWidget& widget, const QWheelEvent& event)
{
    return widget.hasFocus() && (scrolledAt == 0 || event.timestamp() - scrolledAt > scrollPause);
}

} // namespace ferrow
