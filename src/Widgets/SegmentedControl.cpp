// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/SegmentedControl.h"

#include "Widgets/StyleDrawing.h"

#include <QApplication>
#include <QEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cstdlib>
#include <numeric>
#include <utility>

namespace ferrow {

namespace {

constexpr int textPadding = 12;

} // namespace

SegmentedControl::SegmentedControl(const QString& name, QWidget* parent) : QWidget(parent)
{
    setAccessibleName(name);
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    connect(&Theme::current(), &Theme::changed, this, &QWidget::updateGeometry);
}

SegmentedControl::SegmentedControl(const QString& name, const QStringList& texts, QWidget* parent)
    : SegmentedControl(name, parent)
{
    for (const QString& text : texts)
        addSegment(text);
}

int SegmentedControl::addSegment(const QString& text)
{
    segments_.push_back({text, text});
    updateGeometry();
    update();
    return count() - 1;
}

void SegmentedControl::setSegments(const QStringList& texts, const QStringList& names)
{
    std::vector<Segment> segments;
    for (qsizetype i = 0; i < texts.size(); ++i)
        segments.push_back({texts[i], names[i]});
    if (segments == segments_)
        return;
    segments_ = std::move(segments);
    hovered_ = -1;
    endDrag();
    updateGeometry();
    update();
    notifyItemsReplaced(this);
}

void SegmentedControl::setIcons(std::vector<IconName> icons)
{
    icons_ = std::move(icons);
}

void SegmentedControl::setIconsShown(bool areShown)
{
    if (std::exchange(areIconsShown_, areShown) == areShown)
        return;
    updateGeometry();
    update();
}

void SegmentedControl::setSegmentEnabled(int index, bool enabled)
{
    segments_.at(std::size_t(index)).enabled = enabled;
    update();
    notifyItemsChanged(this);
}

void SegmentedControl::setCurrentIndex(int index)
{
    if (std::exchange(current_, index) != index) {
        update();
        notifyItemsChanged(this);
    }
}

int SegmentedControl::naturalWidth(int index) const
{
    if (areIconsShown_)
        return Measure::icon + 2 * textPadding;
    const QFontMetrics metrics(Theme::current().font(TextRole::strong));
    return metrics.horizontalAdvance(segments_[std::size_t(index)].text) + 2 * textPadding;
}

QSize SegmentedControl::sizeHint() const
{
    int width = 0;
    for (int i = 0; i < count(); ++i)
        width += naturalWidth(i);
    return QSize(width, Theme::current().scaled(Measure::control));
}

QSize SegmentedControl::minimumSizeHint() const
{
    const int padding = count() * textPadding;
    return QSize(std::max(0, sizeHint().width() - padding), sizeHint().height());
}

/// Equal widths where every text fits its share; else each its own, with what is left over, or lacking, spread evenly.
std::vector<QRect> SegmentedControl::rects() const
{
    std::vector<int> widths;
    for (int i = 0; i < count(); ++i)
        widths.push_back(naturalWidth(i));
    const int natural = std::accumulate(widths.begin(), widths.end(), 0);
    const bool equalFits = !widths.empty() && *std::max_element(widths.begin(), widths.end()) * count() <= width();
    std::vector<QRect> rects;
    int x = 0;
    for (int i = 0; i < count(); ++i) {
        // The ends are computed from the start, so that roundings do not add up.
        const int spare = (width() - natural) * (i + 1) / count() - (width() - natural) * i / count();
        const int end = equalFits ? width() * (i + 1) / count() : x + widths[std::size_t(i)] + spare;
        const QRect rect(x, 0, end - x, height());
        rects.push_back(rect);
        x = end;
    }
    return rects;
}

int SegmentedControl::indexAt(QPoint point) const
{
    const std::vector<QRect> all = rects();
    const auto hit = std::find_if(all.begin(), all.end(), [point](const QRect& rect) { return rect.contains(point); });
    return hit == all.end() ? -1 : int(hit - all.begin());
}

void SegmentedControl::choose(int index)
{
    if (index < 0 || index >= count() || index == current_ || !segments_[std::size_t(index)].enabled)
        return;
    setCurrentIndex(index);
    notifyItemFocused(this);
    emit chosen(index);
}

void SegmentedControl::paintEvent(QPaintEvent*)
{
    using namespace StyleDrawing;
    QPainter painter(this);
    const ThemeColors& colors = Theme::current().colors();
    painter.setOpacity(isEnabled() ? 1 : disabledOpacity);
    paintBox(painter, rect(), Radius::control, colors.fill, colors.fillEdge);
    painter.setFont(Theme::current().font(TextRole::strong));
    const std::vector<QRect> all = rects();
    for (int i = 0; i < count(); ++i) {
        const Segment& segment = segments_[std::size_t(i)];
        const QRect box = all[std::size_t(i)];
        const bool isCurrent = i == current_;
        const bool isHovered = isEnabled() && segment.enabled && i == hovered_;
        if (isCurrent)
            paintBox(painter, box, Radius::control, colors.chosen, isHovered ? colors.hoverEdge : colors.border);
        else if (isHovered && i == pressed_)
            paintBox(painter, box, Radius::control, colors.pressed);
        const QColor color = !segment.enabled ? colors.disabled : isCurrent || isHovered ? colors.text : colors.text2;
        if (areIconsShown_) {
            paintIcon(painter, icons_[std::size_t(i)], box, Measure::icon, color);
            continue;
        }
        painter.setPen(color);
        const int room = box.width() - textPadding;
        painter.drawText(box, Qt::AlignCenter, painter.fontMetrics().elidedText(segment.text, Qt::ElideRight, room));
    }
    if (dragX_) {
        const int to = dropIndex();
        const QRect box = all[std::size_t(to)];
        if (to != pressed_)
            paintBox(painter, QRectF(to < pressed_ ? box.left() : box.right() - 1, 0, Measure::focusWidth, height()), 1,
                     colors.accent);
    }
}

void SegmentedControl::keyPressEvent(QKeyEvent* event)
{
    if (dragX_) {
        if (event->key() == Qt::Key_Escape)
            endDrag();
        return;
    }
    const auto nextEnabled = [this](int from, int step) {
        int index = from;
        while (index >= 0 && index < count() && !segments_[std::size_t(index)].enabled)
            index += step;
        return index;
    };
    switch (event->key()) {
    case Qt::Key_Right:
    case Qt::Key_Down:
        return choose(nextEnabled(current_ + 1, 1));
    case Qt::Key_Left:
    case Qt::Key_Up:
        return choose(nextEnabled(current_ - 1, -1));
    case Qt::Key_Home:
        return choose(nextEnabled(0, 1));
    case Qt::Key_End:
        return choose(nextEnabled(count() - 1, -1));
    default:
        event->ignore();
    }
}

void SegmentedControl::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    pressPoint_ = event->position().toPoint();
    pressed_ = indexAt(pressPoint_);
    hovered_ = pressed_;
    update();
}

int SegmentedControl::dropIndex() const
{
    const std::vector<QRect> all = rects();
    int index = pressed_;
    // Past the middle of a neighbor it takes that one's place.
    while (index > 0 && *dragX_ < all[std::size_t(index - 1)].center().x())
        --index;
    while (index + 1 < count() && *dragX_ > all[std::size_t(index + 1)].center().x())
        ++index;
    return index;
}

void SegmentedControl::endDrag()
{
    dragX_.reset();
    pressed_ = -1;
    unsetCursor();
    update();
}

bool SegmentedControl::event(QEvent* event)
{
    // Esc gives up a drag, and must not close what the control lies in.
    if (dragX_ && event->type() == QEvent::ShortcutOverride &&
        static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
        event->accept();
        return true;
    }
    return QWidget::event(event);
}

void SegmentedControl::mouseReleaseEvent(QMouseEvent* event)
{
    if (dragX_) {
        const int from = pressed_;
        const int to = dropIndex();
        endDrag();
        if (to != from)
            emit moveRequested(from, to);
        return;
    }
    const int pressed = std::exchange(pressed_, -1);
    update();
    if (pressed >= 0 && indexAt(event->position().toPoint()) == pressed)
        choose(pressed);
}

void SegmentedControl::mouseMoveEvent(QMouseEvent* event)
{
    const QPoint point = event->position().toPoint();
    if (isMovable_ && pressed_ >= 0 && !dragX_ &&
        std::abs(point.x() - pressPoint_.x()) >= QApplication::startDragDistance()) {
        // Whoever hears of it may give it other texts, which would end a drag.
        const int dragged = pressed_;
        choose(dragged);
        pressed_ = dragged;
        setCursor(Qt::ClosedHandCursor);
        dragX_ = point.x();
    }
    if (dragX_) {
        dragX_ = point.x();
        update();
        return;
    }
    const int index = indexAt(point);
    if (std::exchange(hovered_, index) != index)
        update();
}

void SegmentedControl::leaveEvent(QEvent* event)
{
    QWidget::leaveEvent(event);
    hovered_ = -1;
    update();
}

void SegmentedControl::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::EnabledChange)
        update();
}

int SegmentedControl::itemCount() const
{
    return count();
}

AccessibleItem SegmentedControl::item(int index) const
{
    const Segment& segment = segments_[std::size_t(index)];
    AccessibleItem item;
    item.name = segment.name;
    item.rect = rects()[std::size_t(index)];
    item.isChosen = index == current_;
    item.isEnabled = segment.enabled;
    return item;
}

void SegmentedControl::pressItem(int index)
{
    choose(index);
}

} // namespace ferrow
