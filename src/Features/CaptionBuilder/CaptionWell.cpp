// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/CaptionBuilder/CaptionWell.h"

#include "Features/CaptionBuilder/ChipKeys.h"
#include "Features/CaptionBuilder/ChipMenus.h"
#include "Features/CaptionBuilder/ChipTextField.h"
#include "Features/CaptionBuilder/TokenPopover.h"
#include "Widgets/AccessibleEvents.h"
#include "Widgets/FocusRing.h"
#include "Widgets/Theme.h"

#include <QContextMenuEvent>
#include <QHelpEvent>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QToolTip>
#include <QWheelEvent>

#include <algorithm>
#include <utility>

namespace ferrow {

namespace {

constexpr int mostLines = 5;
/// A press becomes a drag after this way.
constexpr int dragDistance = 6;

} // namespace

CaptionWell::CaptionWell(CaptionEditing& editing, QWidget* parent)
    : QWidget(parent), editing_(editing), bar_(new QScrollBar(Qt::Vertical, this)), row_(editing),
      drag_(editing, row_, *bar_, *this)
{
    setObjectName(QStringLiteral("captionChips"));
    setAccessibleName(QStringLiteral("Caption chips"));
    setFocusPolicy(Qt::StrongFocus);
    setFocusLook(this, FocusLook::own);
    setAttribute(Qt::WA_InputMethodEnabled);
    setMouseTracking(true);
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    bar_->setFocusPolicy(Qt::NoFocus);
    bar_->setAccessibleName(QStringLiteral("Scroll caption chips"));
    bar_->hide();
    connect(bar_, &QScrollBar::valueChanged, this, [this] {
        placeField();
        update();
    });
    connect(&row_.motion(), &ChipMotion::moved, this, qOverload<>(&QWidget::update));
    connect(&Theme::current(), &Theme::changed, this, [this] { refresh(ChipMotion::Way::atOnce); });
    followCaption();
    followDrag();
    refresh(ChipMotion::Way::atOnce);
}

void CaptionWell::followCaption()
{
    connect(&editing_, &CaptionEditing::changed, this, &CaptionWell::showCaption);
    connect(&editing_, &CaptionEditing::revealRequested, this, [this] {
        revealCurrent();
        update();
    });
    connect(&editing_, &CaptionEditing::currentMoved, this, [this] { notifyItemFocused(this); });
    connect(&editing_, &CaptionEditing::moved, this,
            [this](int index) { announce(this, CaptionChips::spokenPlace(editing_.segments(), index)); });
    connect(&editing_, &CaptionEditing::replaced, this, [this] {
        press_.reset();
        drag_.end();
    });
}

void CaptionWell::followDrag()
{
    connect(&drag_, &ChipDrag::gapChanged, this, qOverload<>(&QWidget::update));
    connect(&drag_, &ChipDrag::ended, this, [this] {
        press_.reset();
        update();
    });
    connect(&drag_, &ChipDrag::newChipDropped, this, &CaptionWell::startChip);
}

void CaptionWell::refresh(ChipMotion::Way way)
{
    row_.lay(width(), field_ ? field_->wantedWidth() : 0, drag_.gap(), way);
    if (height() != heightForWidth(width()))
        updateGeometry();
    placeBar();
    placeField();
    update();
    notifyItemsChanged(this);
}

int CaptionWell::heightForWidth(int width) const
{
    return row_.heightForWidth(width, mostLines);
}

QSize CaptionWell::sizeHint() const
{
    const int width = Theme::current().scaled(280);
    return {width, heightForWidth(width)};
}

QSize CaptionWell::minimumSizeHint() const
{
    return {Theme::current().scaled(120), ChipLayout::wellHeight(1, {.height = chipHeight()})};
}

QRect CaptionWell::toView(QRect content) const
{
    return toView(QRectF(content)).toRect();
}

QRectF CaptionWell::toView(QRectF content) const
{
    return content.translated(0, -bar_->value());
}

QPoint CaptionWell::toContent(const QPoint& view) const
{
    return view + QPoint(0, bar_->value());
}

int CaptionWell::chipAt(const QPoint& view) const
{
    return row_.chipAt(toContent(view));
}

QPoint CaptionWell::below(int index) const
{
    const QRect chip = toView(row_.rects()[std::size_t(index)]);
    return mapToGlobal(QPoint(chip.left(), chip.bottom() + 1));
}

void CaptionWell::placeBar()
{
    const int hidden = std::max(0, row_.height() - height());
    bar_->setRange(0, hidden);
    bar_->setPageStep(height());
    bar_->setSingleStep(ChipRow::pitch());
    bar_->setGeometry(width() - Measure::scrollBar - 1, Radius::row, Measure::scrollBar, height() - 2 * Radius::row);
    bar_->setVisible(hidden > 0);
}

void CaptionWell::revealCurrent()
{
    const int current = editing_.current();
    if (current >= int(row_.rects().size()))
        return;
    const QRect rect = row_.rects()[std::size_t(current)];
    const int inset = ChipRow::inset();
    if (rect.top() - inset < bar_->value())
        bar_->setValue(rect.top() - inset);
    else if (rect.bottom() + inset >= bar_->value() + height())
        bar_->setValue(rect.bottom() + 1 + inset - height());
}

void CaptionWell::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (!isEnabled())
        painter.setOpacity(disabledOpacity);
    paintWell(painter);
    paintChips(painter);
}

void CaptionWell::paintWell(QPainter& painter) const
{
    const bool isEmpty = itemCount() == 0;
    const bool isFocusedField = isEmpty && hasFocus();
    const double edge = isFocusedField ? Measure::focusWidth : 1;
    painter.setPen(QPen(themeColor(isFocusedField ? &ThemeColors::accent : &ThemeColors::border), edge));
    painter.setBrush(themeColor(&ThemeColors::surface));
    const QRectF ground = QRectF(rect()).adjusted(edge / 2, edge / 2, -edge / 2, -edge / 2);
    painter.drawRoundedRect(ground, Radius::row - edge / 2, Radius::row - edge / 2);
    if (!isEmpty)
        return;
    painter.setFont(Theme::current().font(TextRole::body));
    painter.setPen(themeColor(&ThemeColors::text2));
    painter.drawText(ground.adjusted(Space::row, 0, -Space::row, 0), Qt::AlignVCenter | Qt::AlignLeading,
                     QStringLiteral("Add text or a token"));
}

void CaptionWell::paintChips(QPainter& painter) const
{
    // A chip that scrolls out ends at the edge of the well, its focus ring may lie on the inset.
    painter.setClipRect(QRectF(rect()).adjusted(1, 1, -1, -1));
    for (int i = 0; i < itemCount(); ++i) {
        if (editing_.textInHand() && editing_.textInHand()->index == i)
            continue;
        const QRectF place = toView(row_.seen(i));
        if (editing_.carriedChip() == i) {
            paintChipSlot(painter, place);
            continue;
        }
        ChipLook look = row_.look(i);
        look.state = i == hovered_ && !drag_.isActive() ? ChipLook::State::hovered : ChipLook::State::rest;
        paintChip(painter, place, look);
        const bool isOpen = editing_.shown()[std::size_t(i)].id == openChip_;
        if (isOpen || (i == editing_.current() && hasFocus() && showsFocus_))
            paintChipFocus(painter, place);
    }
    if (const ChipRow::Gap gap = drag_.gap()) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(themeColor(&ThemeColors::accent));
        painter.drawRoundedRect(toView(QRectF(gap->caret)), 1, 1);
    }
}

void CaptionWell::resizeEvent(QResizeEvent*)
{
    refresh(ChipMotion::Way::atOnce);
}

void CaptionWell::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (!isEnabled())
        drag_.giveUp();
    if (event->type() == QEvent::EnabledChange)
        refresh(ChipMotion::Way::atOnce);
}

void CaptionWell::showToolTip(int index, const QPoint& globalPlace)
{
    if (index < 0 || drag_.isActive()) {
        QToolTip::hideText();
        return;
    }
    const QString text = CaptionChips::tip(editing_.shown()[std::size_t(index)], editing_.metadata());
    // Values come from files: what looks like markup is shown as it stands.
    QToolTip::showText(globalPlace, Qt::convertFromPlainText(text.left(400)), this,
                       toView(row_.rects()[std::size_t(index)]));
}

void CaptionWell::wheelEvent(QWheelEvent* event)
{
    const int before = bar_->value();
    if (bar_->maximum() > 0)
        bar_->setValue(before - event->angleDelta().y() * bar_->singleStep() / 120);
    // At its end, and where nothing is hidden, the wheel goes on to the page.
    event->setAccepted(bar_->value() != before);
}

/// A field lies over the chip as long as its text is in hand. The focus moves last: who asks then finds all in place.
void CaptionWell::showCaption()
{
    const bool hasText = editing_.textInHand().has_value();
    ChipTextField* const gone = hasText ? nullptr : std::exchange(field_, nullptr).data();
    const bool isNew = hasText && !field_;
    if (isNew)
        field_ = makeField();
    const std::vector<QRect> rects = row_.rects();
    refresh(isVisible() ? ChipMotion::Way::glide : ChipMotion::Way::atOnce);
    if (row_.rects() != rects)
        hovered_ = -1; // Until the pointer moves, nobody knows what it is over.
    if (gone)
        putAway(gone);
    if (!isNew)
        return;
    field_->show();
    field_->setFocus(Qt::OtherFocusReason);
    if (!editing_.textInHand()->isNew)
        field_->selectAll();
}

ChipTextField* CaptionWell::makeField()
{
    auto* field = new ChipTextField(editing_.textInHand()->text(), this);
    connect(field, &ChipTextField::committed, this, [this] { editing_.endText(CaptionEditing::End::keep); });
    connect(field, &ChipTextField::givenUp, this, [this] { editing_.endText(CaptionEditing::End::giveUp); });
    connect(field, &QLineEdit::textChanged, this, [this](const QString& typed) { editing_.setText(typed); });
    return field;
}

void CaptionWell::putAway(ChipTextField* field)
{
    field->disconnect(this);
    // Focus that is still in the field stays with the chip; focus that left goes where it was sent.
    if (field->hasFocus())
        setFocus(Qt::OtherFocusReason);
    field->hide();
    field->deleteLater();
}

void CaptionWell::placeField()
{
    const auto& text = editing_.textInHand();
    if (field_ && text && text->index < itemCount())
        field_->setGeometry(toView(row_.rects()[std::size_t(text->index)]));
}

void CaptionWell::startChip(Kind kind, int gap, const QPoint& globalPlace)
{
    if (kind == Kind::text)
        editing_.startText(gap);
    else
        ChipMenus::openChoice(*this, kind, std::nullopt, editing_.metadata(), globalPlace,
                              [this, gap](const CaptionSegment::Content& content) { editing_.add(content, gap); });
}

void CaptionWell::activate(int index)
{
    const CaptionSegment& chip = editing_.segments()[std::size_t(index)];
    switch (CaptionChips::kindOf(chip.content)) {
    case Kind::text:
        editing_.editText(index);
        return;
    case Kind::token:
        openOptions(index);
        return;
    case Kind::separator:
        ChipMenus::openChoice(
            *this, Kind::separator, chip.content, editing_.metadata(), below(index),
            [this, id = chip.id](const CaptionSegment::Content& content) { editing_.change(id, content); });
    }
}

void CaptionWell::openOptions(int index)
{
    openChip_ = editing_.segments()[std::size_t(index)].id;
    auto* popover = new TokenPopover(this, editing_, openChip_);
    popover->setPane(pane_);
    connect(popover, &Overlay::closed, this, [this] {
        openChip_ = {};
        update();
    });
    popover->present();
    update();
}

void CaptionWell::startDrag(Kind kind, const QString& label, const QPoint& globalPointer)
{
    editing_.endText(CaptionEditing::End::keep);
    hovered_ = -1;
    drag_.begin(kind, label, globalPointer);
}

bool CaptionWell::event(QEvent* event)
{
    if (event->type() == QEvent::ShortcutOverride) {
        const auto& key = *static_cast<QKeyEvent*>(event);
        if (ChipKeys::isOurs(key) || (drag_.isActive() && key.key() == Qt::Key_Escape))
            event->accept();
    }
    if (event->type() == QEvent::ToolTip) {
        const auto* help = static_cast<QHelpEvent*>(event);
        showToolTip(chipAt(help->pos()), help->globalPos());
        return true;
    }
    return QWidget::event(event);
}

void CaptionWell::focusInEvent(QFocusEvent* event)
{
    QWidget::focusInEvent(event);
    if (event->reason() == Qt::MouseFocusReason)
        showsFocus_ = false;
    else if (event->reason() != Qt::PopupFocusReason && event->reason() != Qt::ActiveWindowFocusReason)
        showsFocus_ = true;
    update();
    revealCurrent();
}

void CaptionWell::focusOutEvent(QFocusEvent* event)
{
    QWidget::focusOutEvent(event);
    if (event->reason() != Qt::PopupFocusReason)
        drag_.giveUp();
    update();
}

void CaptionWell::keyPressEvent(QKeyEvent* event)
{
    showsFocus_ = true;
    update();
    if (drag_.isActive()) {
        if (event->key() == Qt::Key_Escape)
            drag_.giveUp();
        return;
    }
    switch (ChipKeys::press(*event, editing_, row_.rects())) {
    case ChipKeys::Answer::done:
        return;
    case ChipKeys::Answer::open:
        activate(editing_.current());
        return;
    case ChipKeys::Answer::passedOn:
        QWidget::keyPressEvent(event);
    }
}

void CaptionWell::inputMethodEvent(QInputMethodEvent* event)
{
    const QString text = event->commitString();
    if (!text.trimmed().isEmpty())
        editing_.startText(itemCount() == 0 ? 0 : editing_.current() + 1, text);
}

QVariant CaptionWell::inputMethodQuery(Qt::InputMethodQuery query) const
{
    if (query == Qt::ImEnabled)
        return true;
    return QWidget::inputMethodQuery(query);
}

void CaptionWell::mousePressEvent(QMouseEvent* event)
{
    showsFocus_ = false;
    const int index = chipAt(event->position().toPoint());
    if (event->button() != Qt::LeftButton || index < 0)
        return;
    press_ = Press{.index = index, .place = event->position().toPoint()};
    editing_.setCurrent(index);
}

void CaptionWell::mouseMoveEvent(QMouseEvent* event)
{
    const QPoint place = event->position().toPoint();
    if (drag_.isActive()) {
        drag_.moveTo(event->globalPosition().toPoint());
        return;
    }
    if (press_ && (place - press_->place).manhattanLength() >= dragDistance) {
        hovered_ = -1;
        drag_.begin(press_->index, press_->place, event->globalPosition().toPoint());
        return;
    }
    const int hovered = chipAt(place);
    if (std::exchange(hovered_, hovered) != hovered)
        update();
    const QRect chip = hovered < 0 ? QRect() : row_.rects()[std::size_t(hovered)];
    const bool isOnHandle = hovered >= 0 && toContent(place).x() < chip.x() + chipHandleWidth();
    setCursor(isOnHandle ? Qt::OpenHandCursor : Qt::ArrowCursor);
}

void CaptionWell::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    const std::optional<Press> press = std::exchange(press_, std::nullopt);
    const QPoint place = event->position().toPoint();
    if (drag_.isActive())
        drag_.drop();
    else if (press && chipAt(place) == press->index)
        activate(press->index);
    else if (!press && itemCount() == 0 && rect().contains(place))
        editing_.startText(0);
}

void CaptionWell::leaveEvent(QEvent*)
{
    hovered_ = -1;
    update();
}

void CaptionWell::contextMenuEvent(QContextMenuEvent* event)
{
    if (itemCount() == 0 || drag_.isActive())
        return;
    const bool byMouse = event->reason() == QContextMenuEvent::Mouse;
    const int index = byMouse ? chipAt(event->pos()) : editing_.current();
    if (index < 0)
        return;
    editing_.setCurrent(index);
    ChipMenus::openCommands(*this, editing_, index, byMouse ? event->globalPos() : below(index),
                            [this](int at) { openOptions(at); });
}

int CaptionWell::itemCount() const
{
    return int(editing_.shown().size());
}

AccessibleItem CaptionWell::item(int index) const
{
    const QString missing = row_.look(index).isMissing ? QStringLiteral("Missing in the shown photo") : QString();
    const QString options = CaptionChips::spokenOptions(editing_.shown()[std::size_t(index)]);
    return {.name = CaptionChips::spokenName(editing_.shown(), index),
            .description = QStringList{missing, options}.join(u' ').trimmed(),
            .rect = toView(row_.rects()[std::size_t(index)]),
            .role = QAccessible::ListItem,
            .isChosen = index == editing_.current()};
}

void CaptionWell::pressItem(int index)
{
    setFocus(Qt::OtherFocusReason);
    editing_.setCurrent(index);
    activate(index);
}

} // namespace ferrow
