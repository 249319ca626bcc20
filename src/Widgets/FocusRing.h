// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPointer>
#include <QRectF>
#include <QWidget>

#include <vector>

namespace ferrow {

enum class FocusLook {
    ring, ///< 2 px outside the control, for keyboard focus alone. The default of everything but fields.
    own   ///< The widget draws its own: fields (their edge), list rows, chips, spots.
};

void setFocusLook(QWidget* widget, FocusLook look);

/// Implemented by widgets whose ring goes round a part of them: a slider's thumb, the box of a check box.
class FocusShape {
public:
    virtual ~FocusShape() = default;
    /// What the ring surrounds, in the widget's coordinates.
    [[nodiscard]] virtual QRectF focusRect() const = 0;
    [[nodiscard]] virtual double focusRadius() const = 0;
};

/// The one ring of the application: a widget that no mouse sees, laid over the focused control, clipped by the scrolled
/// page that the control is on.
class FocusRing : public QObject {
    Q_OBJECT

public:
    /// Begins to follow the application's focus.
    static void install();
    /// The focused widget's shape has changed.
    static void refresh(const QWidget* widget);
    /// True when focus came by keyboard, so that it has to be shown. Widgets that draw their own ask this.
    [[nodiscard]] static bool isKeyboardFocus();

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    explicit FocusRing(QObject* parent);
    void noteFocus(Qt::FocusReason reason);
    void setByKeyboard(bool byKeyboard);
    void follow(QWidget* target);
    void place();

    QPointer<QWidget> target_;
    QPointer<QWidget> ring_;
    std::vector<const QObject*> chain_; ///< The target and what it lies in: when one of them moves, so does the ring.
    bool byKeyboard_ = false;
    bool lastInputWasKey_ = false;
};

} // namespace ferrow
