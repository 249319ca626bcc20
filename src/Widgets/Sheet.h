// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Widgets/Overlay.h"

class QHBoxLayout;
class QLabel;
class QPushButton;
class QVBoxLayout;

namespace ferrow {

class ScrollPane;

/// A modal card at the upper ninth of the window, higher up where it needs the room: title, body that scrolls, foot.
/// Esc and the leave button close it; Enter presses the focused button, else the main one, unless the field with the
/// focus uses it. A press on the scrim does nothing. The window's shortcuts don't work meanwhile: handle keys in
/// `keyPressEvent` of what is inside.
class Sheet : public Overlay {
    Q_OBJECT

public:
    /// Lives in `window`'s top-level window.
    Sheet(QWidget* window, const QString& title);

    /// Under the title, in the second text color; empty for none.
    void setSubtitle(const QString& subtitle);
    /// 600 from the start; 640 at most for lists.
    void setCardWidth(int width);

    /// The content, between title and foot; it scrolls as one when it does not fit. 24 from the sides.
    [[nodiscard]] QVBoxLayout* body() const { return body_; }
    /// For lists that go nearer to the sides (12).
    void setBodyInset(int inset);

    /// In the foot, on the left.
    QPushButton* addHelperButton(const QString& text);
    /// In the foot, right: closes the sheet. Made by the first call, "Cancel" or "Done".
    QPushButton* setLeaveButton(const QString& text);
    /// In the foot, rightmost, ink: emits `mainRequested` and closes nothing. Made by the first call.
    QPushButton* setMainButton(const QString& text);
    [[nodiscard]] QPushButton* leaveButton() const { return leave_; }
    [[nodiscard]] QPushButton* mainButton() const { return main_; }

signals:
    void mainRequested();

protected:
    QRect cardRect() override;
    void paintGround(QPainter& painter) const override;
    bool handleEnter() override;
    void aboutToOpen() override;
    /// Page Up and Page Down scroll the body from wherever the focus is.
    void keyPressEvent(QKeyEvent* event) override;

private:
    void buildHead(const QString& title);
    void buildFoot();

    QLabel* title_ = nullptr;
    QLabel* subtitle_ = nullptr;
    ScrollPane* scroll_ = nullptr;
    QWidget* page_ = nullptr;
    QWidget* head_ = nullptr;
    QWidget* foot_ = nullptr;
    QVBoxLayout* body_ = nullptr;
    QHBoxLayout* helpers_ = nullptr;
    QHBoxLayout* verbs_ = nullptr;
    QPushButton* leave_ = nullptr;
    QPushButton* main_ = nullptr;
    int width_ = 600;
    int top_ = 0;
    QSize placedIn_; ///< The size of the window that top_ is for.
};

} // namespace ferrow
