// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Widgets/AccessibleItems.h"
#include "Widgets/Icons.h"

#include <QString>
#include <QWidget>

#include <optional>
#include <vector>

namespace ferrow {

/// One of a few choices, side by side. One tab stop; Left and Right (Up, Down) choose at once, Home and End too.
class SegmentedControl : public QWidget, public AccessibleItems {
    Q_OBJECT

public:
    /// `name` is what assistive technology calls the group: "Border unit".
    explicit SegmentedControl(const QString& name, QWidget* parent = nullptr);
    SegmentedControl(const QString& name, const QStringList& texts, QWidget* parent = nullptr);

    int addSegment(const QString& text);
    /// Other segments, as many as there are texts. `names` is what assistive technology calls them.
    void setSegments(const QStringList& texts, const QStringList& names);
    /// One for each segment, shown in place of the texts while setIconsShown() says so.
    void setIcons(std::vector<IconName> icons);
    void setIconsShown(bool areShown);
    void setSegmentEnabled(int index, bool enabled);
    /// By the mouse; the keys for it are the caller's.
    void setMovable(bool movable) { isMovable_ = movable; }
    [[nodiscard]] int count() const { return int(segments_.size()); }

    [[nodiscard]] int currentIndex() const { return current_; }
    /// Does not emit `chosen`. -1 chooses none.
    void setCurrentIndex(int index);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

    int itemCount() const override;
    AccessibleItem item(int index) const override;
    int focusedItem() const override { return current_; }
    void pressItem(int index) override;

signals:
    /// By the user's hand only, and only when another segment was chosen.
    void chosen(int index);
    /// A segment was dragged to the place of another, and has been chosen before. Nothing has moved yet.
    void moveRequested(int from, int to);

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    struct Segment {
        QString text;
        QString name; ///< For assistive technology, where it differs.
        bool enabled = true;

        bool operator==(const Segment&) const = default;
    };

    [[nodiscard]] std::vector<QRect> rects() const;
    [[nodiscard]] int indexAt(QPoint point) const;
    [[nodiscard]] int naturalWidth(int index) const;
    void choose(int index);
    /// Where the dragged segment would come to stand.
    [[nodiscard]] int dropIndex() const;
    void endDrag();

    std::vector<Segment> segments_;
    int current_ = 0;
    int hovered_ = -1;
    int pressed_ = -1;
    std::vector<IconName> icons_;
    bool areIconsShown_ = false;
    bool isMovable_ = false;
    QPoint pressPoint_;
    std::optional<int> dragX_; ///< Where the pointer is with the pressed segment.
};

} // namespace ferrow
