// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Features/CaptionBuilder/CaptionChips.h"
#include "Features/CaptionBuilder/ChipLayout.h"
#include "Features/CaptionBuilder/ChipMenus.h"
#include "Features/CaptionBuilder/ChipMotion.h"
#include "Features/CaptionBuilder/ChipPainter.h"
#include "Widgets/AccessibleItems.h"

#include <QBasicTimer>
#include <QPointer>
#include <QWidget>

#include <optional>
#include <vector>

class QScrollBar;

namespace ferrow {

class ChipTextField;
class FloatingChip;

/// The row of chips: one tab stop, operated by mouse and by keys. Grows to five lines, then scrolls.
class CaptionWell : public QWidget, public AccessibleItems {
    Q_OBJECT

public:
    using Segments = CaptionChips::Segments;
    using Kind = CaptionChips::Kind;

    explicit CaptionWell(QWidget* parent = nullptr);
    ~CaptionWell() override;

    [[nodiscard]] const Segments& segments() const { return segments_; }
    /// Ends an edit or a drag, unless the segments are those that it shows or began with; tells that alone.
    void setSegments(const Segments& segments);
    /// While a text is typed or a chip is dragged.
    [[nodiscard]] bool isBusy() const { return edit_ || drag_; }
    /// Marks what is missing in that photo.
    void setMetadata(const std::optional<PhotoMetadata>& metadata);

    /// The gap after the last chip.
    [[nodiscard]] int endGap() const { return static_cast<int>(segments_.size()); }
    /// Begins a text chip there, in editing.
    void startText(int gap, const QString& text = QString());
    /// Opens the list of tokens or separators; what is chosen comes into the gap.
    void startChoice(Kind kind, int gap, const QPoint& globalPlace);

    /// A new chip is dragged in; `label` stands on it meanwhile.
    void beginPaletteDrag(Kind kind, const QString& label, const QPoint& globalPointer);
    void dragTo(const QPoint& globalPointer);
    /// Lets go where the pointer is; outside the well it is the same as giving up.
    void drop();
    void giveUpDrag();

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;

    int itemCount() const override;
    AccessibleItem item(int index) const override;
    int focusedItem() const override { return current_; }
    void pressItem(int index) override;
    QAccessible::Role itemsRole() const override { return QAccessible::List; }

signals:
    void edited(const QString& stepName, const ferrow::CaptionChips::Segments& segments);
    void previewed(const ferrow::CaptionChips::Segments& segments);
    /// The edit or drag in hand was ended by other segments from outside: what was previewed comes to nothing.
    void interrupted();

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
    void timerEvent(QTimerEvent* event) override;

private:
    struct TextEdit {
        int index = 0;
        CaptionSegment segment; ///< With the text as typed so far.
        bool isNew = false;
    };
    struct Press {
        int index = 0;
        QPoint place;
    };
    struct Drag {
        Kind kind = Kind::text;
        std::optional<int> source; ///< Absent for a chip from the palette.
        std::optional<ChipLayout::Gap> gap;
        QPoint pointer; ///< Global.
    };

    // What is shown.
    void refresh(ChipMotion::Way way);
    void setTargets(ChipMotion::Way way);
    [[nodiscard]] ChipLook lookOf(const CaptionSegment& segment) const;
    [[nodiscard]] std::vector<int> chipWidths() const;
    [[nodiscard]] ChipLayout::Measures measures(int width) const;
    [[nodiscard]] int contentHeight() const;
    [[nodiscard]] QRect toView(QRect content) const;
    [[nodiscard]] QRectF toView(QRectF content) const;
    [[nodiscard]] QPoint toContent(const QPoint& view) const;
    [[nodiscard]] int chipAt(const QPoint& view) const;
    void placeBar();
    void placeField();
    void revealCurrent();
    void paintWell(QPainter& painter) const;
    void paintChips(QPainter& painter) const;
    void showToolTip(int index, const QPoint& globalPlace);

    // Edits.
    void apply(const QString& stepName, const Segments& segments, int current);
    void preview(const Segments& segments);
    void setCurrent(int index);
    void activate(int index);
    void editText(int index);
    void openField(const QString& text);
    /// What the text in hand would come to.
    [[nodiscard]] Segments drafted() const;
    void endTextEdit(bool keep);
    void closeField();
    void removeChip(int index);
    void moveChip(int index, int gap);
    void addContent(const CaptionSegment::Content& content, int gap);
    void changeContent(const QUuid& chip, const CaptionSegment::Content& content);
    [[nodiscard]] QMenu* makeMenu(const QString& name);
    void openList(int index);
    void openContextMenu(int index, const QPoint& globalPlace);

    // Drags.
    void beginDrag(const QPoint& pointer);
    void lift(const ChipLook& look, const QSize& size, const QPoint& grab);
    void setGap(const std::optional<ChipLayout::Gap>& gap);
    void scrollWhileDragging();
    Drag endDrag();

    bool handleKey(const QKeyEvent& event);

    Segments segments_;
    Segments shown_;     ///< With the text in hand.
    Segments previewed_; ///< The last that was told.
    std::optional<PhotoMetadata> metadata_;
    std::vector<MetadataToken> missing_;
    std::vector<QRect> rects_; ///< Of what is shown, in content coordinates.
    ChipMotion motion_;
    QScrollBar* bar_ = nullptr;
    int current_ = 0;
    int hovered_ = -1;
    bool showsFocus_ = false;
    std::optional<TextEdit> edit_;
    QPointer<ChipTextField> field_;
    std::optional<Press> press_;
    std::optional<Drag> drag_;
    QPointer<FloatingChip> floating_;
    QBasicTimer scrollTimer_;
};

} // namespace ferrow
