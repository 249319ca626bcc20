// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Features/CaptionBuilder/ChipDrag.h"
#include "Features/CaptionBuilder/ChipRow.h"
#include "Session/CaptionEditing.h"
#include "Widgets/AccessibleItems.h"

#include <QPointer>
#include <QWidget>

#include <optional>

class QScrollBar;

namespace ferrow {

class ChipTextField;

/// The row of chips: one tab stop, operated by mouse and by keys. Grows to five lines, then scrolls.
class CaptionWell : public QWidget, public AccessibleItems {
    Q_OBJECT

public:
    using Kind = CaptionChips::Kind;

    /// `editing` must outlive it.
    explicit CaptionWell(CaptionEditing& editing, QWidget* parent = nullptr);

    /// What the popovers of chips lie over.
    void setPane(QWidget* pane) { pane_ = pane; }
    /// A new chip: a text begins in editing, others are chosen from a list.
    void startChip(Kind kind, int gap, const QPoint& globalPlace);
    /// A new chip is dragged in; `label` stands on it meanwhile.
    void startDrag(Kind kind, const QString& label, const QPoint& globalPointer);
    [[nodiscard]] ChipDrag& drag() { return drag_; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;

    int itemCount() const override;
    AccessibleItem item(int index) const override;
    int focusedItem() const override { return editing_.current(); }
    void pressItem(int index) override;
    QAccessible::Role itemsRole() const override { return QAccessible::List; }

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    QVariant inputMethodQuery(Qt::InputMethodQuery query) const override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    struct Press {
        int index = 0;
        QPoint place;
    };

    void followCaption();
    void followDrag();
    void refresh(ChipMotion::Way way);
    [[nodiscard]] QRect toView(QRect content) const;
    [[nodiscard]] QRectF toView(QRectF content) const;
    [[nodiscard]] QPoint toContent(const QPoint& view) const;
    [[nodiscard]] int chipAt(const QPoint& view) const;
    /// Below the chip, where its list opens.
    [[nodiscard]] QPoint below(int index) const;
    void placeBar();
    void revealCurrent();
    void paintWell(QPainter& painter) const;
    void paintChips(QPainter& painter) const;
    void showToolTip(int index, const QPoint& globalPlace);

    void showCaption();
    [[nodiscard]] ChipTextField* makeField();
    void putAway(ChipTextField* field);
    void placeField();
    void activate(int index);
    void openOptions(int index);

    CaptionEditing& editing_;
    QScrollBar* bar_ = nullptr;
    ChipRow row_;
    ChipDrag drag_;
    QPointer<ChipTextField> field_;
    QPointer<QWidget> pane_;
    QUuid openChip_; ///< Whose options are open.
    int hovered_ = -1;
    bool showsFocus_ = false;
    std::optional<Press> press_;
};

} // namespace ferrow
