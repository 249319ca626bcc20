// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/CommitField.h"

#include "Widgets/FerrowStyle.h"

#include <QKeyEvent>

#include <utility>

namespace ferrow {

CommitField::CommitField(const QString& name, QWidget* parent) : QLineEdit(parent)
{
    setAccessibleName(name);
    connect(this, &QLineEdit::textEdited, this, [this] { setError(QString()); });
}

void CommitField::showText(const QString& text)
{
    shown_ = text;
    if (!hasFocus() || !isModified())
        restore();
}

void CommitField::setError(const QString& message)
{
    if (std::exchange(error_, message) != message) {
        setErrorEdge(this, hasError());
        emit errorChanged(message);
    }
}

void CommitField::restore()
{
    if (text() != shown_) {
        const bool wasSelected = hasSelectedText();
        setText(shown_);
        if (wasSelected)
            selectAll();
    }
    setModified(false);
    setError(QString());
}

void CommitField::commit()
{
    if (!isModified())
        return;
    if (text() == shown_) {
        restore();
        return;
    }
    setModified(false);
    emit committed(text());
}

bool CommitField::event(QEvent* event)
{
    if (event->type() == QEvent::ShortcutOverride && !isModified()) {
        auto* key = static_cast<QKeyEvent*>(event);
        if (key->matches(QKeySequence::Undo) || key->matches(QKeySequence::Redo)) {
            event->ignore();
            return true;
        }
    }
    return QLineEdit::event(event);
}

void CommitField::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Enter:
    case Qt::Key_Return:
        // A typed text takes the key; without one, a sheet's main button may have it.
        if (isModified() || hasError()) {
            commit();
            selectAll();
        } else {
            event->ignore();
        }
        return;
    case Qt::Key_Escape:
        if (isModified() || hasError()) {
            restore();
            selectAll();
        } else {
            event->ignore();
        }
        return;
    default:
        QLineEdit::keyPressEvent(event);
    }
}

void CommitField::focusOutEvent(QFocusEvent* event)
{
    QLineEdit::focusOutEvent(event);
    if (event->reason() == Qt::PopupFocusReason || event->reason() == Qt::ActiveWindowFocusReason)
        return;
    commit();
    if (hasError())
        restore();
}

} // namespace ferrow
