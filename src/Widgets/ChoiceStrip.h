// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Widgets/AccessibleItems.h"

#include <QStringList>
#include <QWidget>

namespace ferrow {

/// One of a few things that lie in a row. One tab stop; arrows, Home and End choose at once, and so does a press. While
/// none is chosen, Space chooses the first. The focus ring goes round all of them, so that it is not taken for the mark
/// of the chosen one.
class ChoiceStrip : public QWidget, public AccessibleItems {
    Q_OBJECT

public:
    /// `name` is what assistive technology calls the group, `items` are its parts.
    ChoiceStrip(const QString& name, const QStringList& items, QWidget* parent);

    [[nodiscard]] int currentIndex() const { return current_; }
    /// Does not emit `indexChosen`. -1 chooses none.
    void setCurrentIndex(int index);

    int itemCount() const override { return int(items_.size()); }
    AccessibleItem item(int index) const override;
    int focusedItem() const override { return current_; }
    void pressItem(int index) override;

signals:
    /// By the user's hand only.
    void indexChosen(int index);

protected:
    [[nodiscard]] virtual QRect itemRect(int index) const = 0;
    [[nodiscard]] const QStringList& items() const { return items_; }
    /// Under the pointer; -1 for none.
    [[nodiscard]] int hovered() const { return hovered_; }

    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    [[nodiscard]] int indexAt(QPoint point) const;
    void setHovered(int index);

    QStringList items_;
    int current_ = 0;
    int hovered_ = -1;
};

} // namespace ferrow
