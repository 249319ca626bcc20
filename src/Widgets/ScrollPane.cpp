// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/ScrollPane.h"

#include "Widgets/FocusRing.h"
#include "Widgets/InputRules.h"
#include "Widgets/Theme.h"

#include <QApplication>
#include <QEvent>
#include <QScrollBar>
#include <QWheelEvent>

#include <algorithm>

namespace ferrow {

namespace {

/// Shows what the area's own bar, which is hidden, says.
class OverlayBar : public QScrollBar {
public:
    explicit OverlayBar(QAbstractScrollArea* area)
        : QScrollBar(Qt::Vertical, area), area_(area), inner_(area->verticalScrollBar())
    {
        area->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        area->installEventFilter(this);
        setFocusPolicy(Qt::NoFocus);
        setAccessibleName(QStringLiteral("Scroll"));
        connect(inner_, &QScrollBar::rangeChanged, this, &OverlayBar::place);
        connect(inner_, &QScrollBar::valueChanged, this, &QScrollBar::setValue);
        connect(this, &QScrollBar::valueChanged, inner_, &QScrollBar::setValue);
        place();
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Resize || event->type() == QEvent::Show)
            place();
        return QScrollBar::eventFilter(watched, event);
    }

private:
    void place()
    {
        setRange(inner_->minimum(), inner_->maximum());
        setPageStep(inner_->pageStep());
        setSingleStep(inner_->singleStep());
        setValue(inner_->value());
        const int width = sizeHint().width();
        setGeometry(area_->width() - width, 0, width, area_->height());
        setVisible(inner_->maximum() > inner_->minimum());
        raise();
    }

    QAbstractScrollArea* area_;
    QScrollBar* inner_;
};

} // namespace

void overlayScrollBar(QAbstractScrollArea* area)
{
    new OverlayBar(area);
}

ScrollPane::ScrollPane(QWidget* parent) : QScrollArea(parent)
{
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    setFocusPolicy(Qt::NoFocus);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    viewport()->setAutoFillBackground(false);
    overlayScrollBar(this);
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) { showFocused(now); });
}

ScrollPane::~ScrollPane()
{
    // The page loses the focus while it is deleted, and by then this is no pane any more.
    qApp->disconnect(this);
}

void ScrollPane::setPage(QWidget* page)
{
    setWidget(page);
    // QScrollArea fills its page; what shines through is the caller's.
    page->setAutoFillBackground(false);
    page->installEventFilter(this);
}

/// Also where the focus came from outside of the pane. What was clicked stays under the pointer.
void ScrollPane::showFocused(QWidget* focused)
{
    if (focused && widget() && widget()->isAncestorOf(focused) && FocusRing::isKeyboardFocus())
        ensureWidgetVisible(focused, 0, Space::sheet);
}

void ScrollPane::reveal(const QWidget* part)
{
    const QWidget* above = part->parentWidget();
    const ScrollPane* pane = nullptr;
    for (; above && !pane; above = above->parentWidget())
        pane = qobject_cast<const ScrollPane*>(above);
    if (!pane)
        return;
    const int top = part->mapTo(pane->widget(), QPoint()).y();
    QScrollBar* bar = pane->verticalScrollBar();
    // What is taller than the pane shows its beginning.
    bar->setValue(std::min(std::max(bar->value(), top + part->height() - pane->viewport()->height()), top));
}

void ScrollPane::wheelEvent(QWheelEvent* event)
{
    noteScrolling(*event);
    QScrollArea::wheelEvent(event);
}

bool ScrollPane::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == widget() && event->type() == QEvent::LayoutRequest)
        updateGeometry();
    return QScrollArea::eventFilter(watched, event);
}

} // namespace ferrow
