// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/SheetList.h"

#include "Widgets/FocusRing.h"
#include "Widgets/ScrollPane.h"
#include "Widgets/Theme.h"

#include <QBoxLayout>
#include <QEvent>
#include <QScrollBar>

#include <algorithm>

namespace ferrow {

namespace {
/// What a sheet leaves of the window above and below its card.
constexpr int outsideTheCard = 96;
constexpr int headPadding = 36;
constexpr int leastHeight = 132;
} // namespace

SheetList::SheetList(const QString& name, QWidget* parent)
    : QListView(parent), AccessibleRows(static_cast<QListView&>(*this))
{
    setAccessibleName(name);
    setFrameShape(QFrame::NoFrame);
    viewport()->setAutoFillBackground(false);
    setVerticalScrollMode(ScrollPerPixel);
    overlayScrollBar(this);
    // Rows fill the whole width, and the bar lies beside them.
    connect(verticalScrollBar(), &QScrollBar::rangeChanged, this, [this](int least, int most) {
        setViewportMargins(0, 0, most > least ? style()->pixelMetric(QStyle::PM_ScrollBarExtent) : 0, 0);
    });
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    verticalScrollBar()->setSingleStep(20);
    setResizeMode(Adjust);
    setMouseTracking(true);
    setFocusLook(this, FocusLook::own);
}

void SheetList::setModel(QAbstractItemModel* model)
{
    QListView::setModel(model);
    followModel();
}

QSize SheetList::sizeHint() const
{
    return {QListView::sizeHint().width(), contentHeight(room())};
}

QSize SheetList::minimumSizeHint() const
{
    return {0, std::min(sizeHint().height(), leastHeight)};
}

int SheetList::room() const
{
    const int headAndFoot = headPadding + Theme::current().lineHeight(TextRole::title) + Measure::sheetFoot + 1;
    return std::max(leastHeight, window()->height() - outsideTheCard - headAndFoot - heightBesideList());
}

int SheetList::heightBesideList() const
{
    const auto* layout = parentWidget() ? qobject_cast<QBoxLayout*>(parentWidget()->layout()) : nullptr;
    if (!layout)
        return 0;
    const auto margins = layout->contentsMargins();
    const int width = parentWidget()->width() - margins.left() - margins.right();
    int height = margins.top() + margins.bottom();
    for (int i = 0; i < layout->count(); ++i) {
        auto* item = layout->itemAt(i);
        if (item->widget() == this || item->isEmpty())
            continue;
        height += item->hasHeightForWidth() ? item->heightForWidth(width) : item->sizeHint().height();
        height += layout->spacing();
    }
    return height;
}

int SheetList::contentHeight(int enough) const
{
    int height = 0;
    const auto rows = model() ? model()->rowCount() : 0;
    for (int row = 0; row < rows && height < enough; ++row)
        height += sizeHintForIndex(model()->index(row, 0)).height() + 2 * spacing();
    return std::min(height, enough);
}

void SheetList::showEvent(QShowEvent* event)
{
    QListView::showEvent(event);
    window()->installEventFilter(this);
    updateGeometry();
}

bool SheetList::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == window() && event->type() == QEvent::Resize)
        updateGeometry();
    return QListView::eventFilter(watched, event);
}

} // namespace ferrow
