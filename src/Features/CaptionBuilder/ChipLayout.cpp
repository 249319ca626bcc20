// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/CaptionBuilder/ChipLayout.h"

#include <algorithm>
#include <cstdlib>

namespace ferrow::ChipLayout {

namespace {

constexpr int caretWidth = 2;

int lineAt(const std::vector<QRect>& rects, const Measures& measures, const QPoint& point)
{
    const int fromTop = point.y() - measures.inset + measures.gap / 2;
    const int pitch = measures.height + measures.gap;
    return std::clamp(fromTop < 0 ? 0 : fromTop / pitch, 0, std::max(0, lineCount(rects) - 1));
}

} // namespace

std::vector<QRect> chipRects(const std::vector<int>& widths, const Measures& measures)
{
    const int end = std::max(measures.width - measures.inset, measures.inset + measures.height);
    std::vector<QRect> rects;
    QPoint at(measures.inset, measures.inset);
    for (const int wanted : widths) {
        const int width = std::min(wanted, end - measures.inset);
        if (at.x() > measures.inset && at.x() + width > end)
            at = QPoint(measures.inset, at.y() + measures.height + measures.gap);
        rects.emplace_back(at, QSize(width, measures.height));
        at.rx() += width + measures.gap;
    }
    return rects;
}

int lineCount(const std::vector<QRect>& rects)
{
    int lines = 0;
    int y = -1;
    for (const QRect& rect : rects) {
        lines += rect.y() != y ? 1 : 0;
        y = rect.y();
    }
    return lines;
}

int wellHeight(int lines, const Measures& measures)
{
    const int count = std::max(lines, 1);
    return 2 * measures.inset + count * measures.height + (count - 1) * measures.gap;
}

Gap gapAt(const std::vector<QRect>& rects, const Measures& measures, const QPoint& point)
{
    const int y = measures.inset + lineAt(rects, measures, point) * (measures.height + measures.gap);
    Gap gap;
    int x = measures.inset - measures.gap / 2;
    for (std::size_t i = 0; i < rects.size(); ++i) {
        const QRect& rect = rects[i];
        if (rect.y() > y || (rect.y() == y && rect.center().x() >= point.x()))
            break;
        gap.index = int(i) + 1;
        if (rect.y() == y)
            x = rect.x() + rect.width() + measures.gap / 2;
    }
    gap.caret = QRect(x - caretWidth / 2, y, caretWidth, measures.height);
    return gap;
}

int chipAcross(const std::vector<QRect>& rects, int index, int lines)
{
    const QRect& from = rects.at(std::size_t(index));
    int nearest = index;
    int line = from.y();
    for (int i = index; i >= 0 && i < int(rects.size()); i += lines) {
        const QRect& rect = rects[std::size_t(i)];
        if (line == from.y())
            line = rect.y();
        if (rect.y() == from.y())
            continue;
        if (rect.y() != line)
            break;
        const auto away = [&](const QRect& other) { return std::abs(other.center().x() - from.center().x()); };
        if (nearest == index || away(rect) < away(rects[std::size_t(nearest)]))
            nearest = i;
    }
    return nearest;
}

} // namespace ferrow::ChipLayout
