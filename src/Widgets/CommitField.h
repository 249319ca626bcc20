// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLineEdit>

namespace ferrow {

/// A line of text that counts when it is committed: Enter and leaving commit, Esc restores what was shown. While
/// nothing is being typed, undo and redo are left to the window, so that they take back edits and not letters.
class CommitField : public QLineEdit {
    Q_OBJECT

public:
    explicit CommitField(const QString& name, QWidget* parent = nullptr);

    /// What counts now. While the user is typing, the typed text stays; Esc shows this one.
    void showText(const QString& text);
    /// Shows the error edge and tells the reason; an empty text takes both away.
    void setError(const QString& message);
    [[nodiscard]] bool hasError() const { return !error_.isEmpty(); }
    /// Shows what counts and forgets what was typed.
    void restore();
    void commit();

signals:
    /// The user has typed something and wants it taken. The receiver answers with `showText` or `setError`.
    void committed(const QString& text);
    /// The reason why a text can't be taken, or an empty text when all is well again.
    void errorChanged(const QString& message);

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    QString shown_;
    QString error_;
};

} // namespace ferrow
