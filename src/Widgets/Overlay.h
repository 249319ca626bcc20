// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPointer>
#include <QWidget>

class QVariantAnimation;

namespace ferrow {

/// What popovers and sheets share: a child of the window that covers it, catches presses outside its card, keeps the
/// focus inside, gives it back at the end, and fades in and out. Assistive technology sees a named dialog. Overlays
/// stack; only the topmost holds the focus and takes keys.
///
/// Made once and opened as often as wanted, or `setDeletedAfterClose` and made anew. `closed` comes as soon as the
/// overlay is given up, before it has faded.
class Overlay : public QWidget {
    Q_OBJECT

public:
    ~Overlay() override;

    [[nodiscard]] bool isOpen() const { return open_; }
    void setDeletedAfterClose(bool deleted) { deletedAfterClose_ = deleted; }

    /// Covers the window and takes the focus: `firstFocus` where that can have it, else the first control that can. No
    /// key reaches what lies behind until the overlay is closed.
    void open(QWidget* firstFocus = nullptr);
    /// Closes and gives the focus back to whoever had it.
    void dismiss();

    /// The topmost open overlay of that window, or null.
    [[nodiscard]] static Overlay* topmost(const QWidget* window);

    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    void closed();

protected:
    Overlay(QWidget* window, const QString& name);

    enum class OutsidePress { closes, isSwallowed };
    enum class WindowShortcuts { work, rest };

    /// The child that the content lies in.
    [[nodiscard]] QWidget* card() const { return card_; }
    void setOutsidePress(OutsidePress outside) { outside_ = outside; }
    void setWindowShortcuts(WindowShortcuts shortcuts) { shortcuts_ = shortcuts; }
    void setReturnFocus(QWidget* widget) { returnFocus_ = widget; }
    void relayout();
    /// 0…1, the progress of the fade.
    [[nodiscard]] double opacity() const { return opacity_; }

    /// Where the card goes, in window coordinates.
    [[nodiscard]] virtual QRect cardRect() = 0;
    /// Everything but the content.
    virtual void paintGround(QPainter& painter) const = 0;
    /// Enter that nobody inside used. False passes it on.
    virtual bool handleEnter() { return false; }
    virtual void aboutToOpen() {}
    virtual void aboutToClose() {}

    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    bool focusNextPrevChild(bool next) override;
    bool event(QEvent* event) override;

private:
    void keepFocusInside(QWidget* now);
    void fade(double goal, int duration);
    void finishFade();
    void takeFirstFocus(QWidget* firstFocus);
    void giveFocusBack();
    [[nodiscard]] bool isForWhatIsBehind(const QObject* receiver) const;
    [[nodiscard]] QWidget* nextFocus(QWidget* from, bool forward) const;
    [[nodiscard]] QWidget* nextOutside(QWidget* from) const;

    QWidget* card_ = nullptr;
    QVariantAnimation* animation_ = nullptr;
    QPointer<QWidget> returnFocus_;
    QPointer<QWidget> lastInside_;
    OutsidePress outside_ = OutsidePress::isSwallowed;
    WindowShortcuts shortcuts_ = WindowShortcuts::rest;
    double opacity_ = 0;
    bool open_ = false;
    bool deletedAfterClose_ = false;
};

} // namespace ferrow
