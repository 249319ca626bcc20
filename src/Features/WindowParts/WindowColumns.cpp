// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/WindowParts/WindowColumns.h"

#include "Widgets/AccessibleEvents.h"
#include "Widgets/Overlay.h"
#include "Widgets/Shadow.h"
#include "Widgets/Theme.h"

#include <QAccessibleWidget>
#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>
#include <QSplitter>
#include <QVBoxLayout>
#include <QVariantAnimation>

namespace ferrow {

namespace {

struct Width {
    int least;
    int ideal;
    int most;
};

constexpr int previewLeast = 440;
constexpr int previewLeastBesideOne = 320; // On a screen that is too small even for two columns.
constexpr int previewIdeal = 720;
constexpr int shadowWidth = 24; // Beside the drawer, for its shadow.
constexpr int lines = 2;        // The splitter's two.

/// Larger text needs wider columns; the photo does not.
int scaled(int width)
{
    return Theme::current().scaled(width);
}

Width sidebarWidth()
{
    return {scaled(230), scaled(280), scaled(360)};
}

Width inspectorWidth()
{
    return {scaled(280), scaled(320), scaled(380)};
}

int drawerWidth()
{
    return scaled(260);
}

} // namespace

/// The sidebar over the preview's left edge. Takes the focus and keeps it from Tab; a press outside, Esc or a choice
/// closes it and gives the focus back.
class SidebarDrawer : public QWidget {
public:
    explicit SidebarDrawer(WindowColumns* columns) : QWidget(columns), columns_(columns)
    {
        setAccessibleName(QStringLiteral("Photos"));
        auto* column = new QVBoxLayout(this);
        column->setContentsMargins(0, 0, shadowWidth, 0);
        hide();
        connect(&slide_, &QVariantAnimation::valueChanged, this,
                [this](const QVariant& value) { move(value.toInt(), 0); });
        connect(&slide_, &QVariantAnimation::finished, this, [this] { setVisible(open_); });
        slide_.setEasingCurve(QEasingCurve::OutCubic);
    }

    [[nodiscard]] bool isOpen() const { return open_; }

    void setOpen(bool open)
    {
        if (open == open_)
            return;
        open_ = open;
        resize(drawerWidth() + shadowWidth, columns_->height());
        raise();
        if (open)
            takeFocus();
        else
            giveFocusBack();
        slide_.stop();
        slide_.setDuration(Theme::current().duration(Motion::unfold));
        slide_.setStartValue(x());
        slide_.setEndValue(open ? 0 : -drawerWidth() - shadowWidth);
        slide_.start();
        emit columns_->sidebarShownChanged();
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::MouseButtonPress && isOutside(*static_cast<QMouseEvent*>(event)))
            setOpen(false);
        if (event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape &&
            window()->isActiveWindow() && !QApplication::activePopupWidget() && !Overlay::topmost(this)) {
            setOpen(false);
            return true;
        }
        return QWidget::eventFilter(watched, event);
    }

protected:
    bool focusNextPrevChild(bool next) override
    {
        if (!open_)
            return QWidget::focusNextPrevChild(next);
        QWidget* const from = window()->focusWidget();
        QWidget* to = isAncestorOf(from) ? from : this;
        QWidget* const start = to;
        do
            to = next ? to->nextInFocusChain() : to->previousInFocusChain();
        while (to != start && !(isAncestorOf(to) && takesTab(*to)));
        to->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
        return true;
    }

    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        paintShadow(painter,
                    QRectF(-Radius::sheet, -Radius::sheet, drawerWidth() + Radius::sheet, height() + 2 * Radius::sheet),
                    ShadowKind::popover);
    }

private:
    static bool takesTab(const QWidget& widget)
    {
        return (widget.focusPolicy() & Qt::TabFocus) && !widget.focusProxy() && widget.isEnabled() &&
               widget.isVisible();
    }

    void takeFocus()
    {
        returnFocus_ = window()->focusWidget();
        qApp->installEventFilter(this);
        if (!isVisible())
            move(-drawerWidth(), 0);
        show();
        QWidget* first = columns_->drawerFocus_;
        (first && first->isVisible() ? first : this)->setFocus(Qt::OtherFocusReason);
    }

    void giveFocusBack()
    {
        qApp->removeEventFilter(this);
        QWidget* focused = window()->focusWidget();
        if (focused && focused != this && !isAncestorOf(focused))
            return;
        if (returnFocus_ && returnFocus_->isVisible() && returnFocus_->isEnabled())
            returnFocus_->setFocus(Qt::OtherFocusReason);
        else
            QWidget::focusNextPrevChild(true);
    }

    [[nodiscard]] bool isOutside(const QMouseEvent& press) const
    {
        const QPoint here = columns_->mapFromGlobal(press.globalPosition().toPoint());
        return columns_->rect().contains(here) && here.x() > drawerWidth();
    }

    WindowColumns* columns_;
    QVariantAnimation slide_;
    QPointer<QWidget> returnFocus_;
    bool open_ = false;
};

namespace {

/// Between two columns. Left and Right move it, with Shift ten times as far, Home and End to where it can go.
class ColumnHandle : public QSplitterHandle {
public:
    explicit ColumnHandle(QSplitter* columns) : QSplitterHandle(Qt::Horizontal, columns)
    {
        setFocusPolicy(Qt::TabFocus);
    }

    /// The column beside the preview, whose width it changes.
    [[nodiscard]] QWidget* column() const { return splitter()->widget(isLeft() ? 0 : splitter()->count() - 1); }

    void setColumnWidth(int width) { moveSplitter(isLeft() ? width : splitter()->width() - width - this->width()); }

protected:
    void keyPressEvent(QKeyEvent* event) override
    {
        const int step = event->modifiers() & Qt::ShiftModifier ? 10 * keyStep : keyStep;
        switch (event->key()) {
        case Qt::Key_Left:
            return moveSplitter(x() - step);
        case Qt::Key_Right:
            return moveSplitter(x() + step);
        case Qt::Key_Home:
            return moveSplitter(0);
        case Qt::Key_End:
            return moveSplitter(splitter()->width());
        default:
            QSplitterHandle::keyPressEvent(event);
        }
    }

private:
    static constexpr int keyStep = 8;

    [[nodiscard]] bool isLeft() const { return splitter()->indexOf(const_cast<ColumnHandle*>(this)) == 1; }
};

class ColumnSplitter : public QSplitter {
public:
    ColumnSplitter() : QSplitter(Qt::Horizontal)
    {
        connect(this, &QSplitter::splitterMoved, this, [this](int, int index) {
            QAccessibleValueChangeEvent event(handle(index),
                                              static_cast<ColumnHandle*>(handle(index))->column()->width());
            sendAccessible(event);
        });
    }

protected:
    QSplitterHandle* createHandle() override { return new ColumnHandle(this); }
};

/// Its value is the column's width.
class HandleInterface : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    explicit HandleInterface(ColumnHandle* handle) : QAccessibleWidget(handle, QAccessible::Splitter) {}

    void* interface_cast(QAccessible::InterfaceType type) override
    {
        return type == QAccessible::ValueInterface ? static_cast<QAccessibleValueInterface*>(this)
                                                   : QAccessibleWidget::interface_cast(type);
    }

    QVariant currentValue() const override { return handle()->column()->width(); }
    QVariant maximumValue() const override { return handle()->column()->maximumWidth(); }
    QVariant minimumValue() const override { return handle()->column()->minimumWidth(); }
    QVariant minimumStepSize() const override { return 1; }
    void setCurrentValue(const QVariant& value) override { handle()->setColumnWidth(value.toInt()); }

private:
    [[nodiscard]] ColumnHandle* handle() const { return static_cast<ColumnHandle*>(widget()); }
};

QAccessibleInterface* accessiblePart(const QString&, QObject* object)
{
    if (auto* handle = dynamic_cast<ColumnHandle*>(object))
        return new HandleInterface(handle);
    auto* drawer = dynamic_cast<SidebarDrawer*>(object);
    return drawer ? new QAccessibleWidget(drawer, QAccessible::Dialog) : nullptr;
}

} // namespace

WindowColumns::WindowColumns(QWidget* sidebar, QWidget* preview, QWidget* inspector, QWidget* parent)
    : QWidget(parent), sidebar_(sidebar), splitter_(new ColumnSplitter)
{
    const auto fit = [](QWidget* column, const Width& width) {
        column->setMinimumWidth(width.least);
        column->setMaximumWidth(width.most);
    };
    static const bool isRegistered = (QAccessible::installFactory(accessiblePart), true);
    Q_UNUSED(isRegistered)
    fit(sidebar, sidebarWidth());
    fit(inspector, inspectorWidth());
    preview->setMinimumWidth(previewLeast);
    for (QWidget* column : {sidebar, preview, inspector})
        splitter_->addWidget(column);
    splitter_->setChildrenCollapsible(false);
    splitter_->setStretchFactor(1, 1);
    splitter_->setSizes({sidebarWidth().ideal, previewIdeal, inspectorWidth().ideal});
    splitter_->setAccessibleName(QStringLiteral("Columns of the window"));
    // Names for the handles, which assistive technology finds as controls.
    splitter_->handle(1)->setAccessibleName(QStringLiteral("Width of the photo list"));
    splitter_->handle(2)->setAccessibleName(QStringLiteral("Width of the inspector"));

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(splitter_);
    // Less than the three columns ask for: the sidebar leaves before that.
    setMinimumWidth(previewLeastBesideOne + inspectorWidth().least + 1);
    drawer_ = new SidebarDrawer(this);
}

WindowColumns::~WindowColumns()
{
    // Closing it later would tell a half-destroyed object.
    qApp->removeEventFilter(drawer_);
}

bool WindowColumns::isSidebarShown() const
{
    return narrow_ ? drawer_->isOpen() : columnShown_;
}

void WindowColumns::setSidebarShown(bool shown)
{
    if (narrow_) {
        drawer_->setOpen(shown);
        return;
    }
    if (shown == columnShown_)
        return;
    columnShown_ = shown;
    sidebar_->setVisible(shown);
    emit sidebarShownChanged();
}

void WindowColumns::closeDrawer()
{
    drawer_->setOpen(false);
}

void WindowColumns::setNarrow(bool narrow)
{
    if (narrow == narrow_)
        return;
    drawer_->setOpen(false);
    narrow_ = narrow;
    splitter_->widget(splitter_->count() - 2)->setMinimumWidth(narrow ? previewLeastBesideOne : previewLeast);
    if (narrow) {
        drawer_->layout()->addWidget(sidebar_);
        sidebar_->setFixedWidth(drawerWidth());
        sidebar_->show();
    } else {
        sidebar_->setMinimumWidth(sidebarWidth().least);
        sidebar_->setMaximumWidth(sidebarWidth().most);
        splitter_->insertWidget(0, sidebar_);
        splitter_->setSizes({sidebarWidth().ideal, previewIdeal, splitter_->sizes().constLast()});
        sidebar_->setVisible(columnShown_);
    }
    emit narrowChanged(narrow);
    emit sidebarShownChanged();
}

void WindowColumns::resizeEvent(QResizeEvent* event)
{
    setNarrow(width() < sidebarWidth().least + previewLeast + inspectorWidth().least + lines);
    drawer_->resize(drawer_->width(), height());
    QWidget::resizeEvent(event);
}

} // namespace ferrow
