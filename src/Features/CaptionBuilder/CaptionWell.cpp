// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/CaptionBuilder/CaptionWell.h"

#include "Features/CaptionBuilder/ChipTextField.h"
#include "Features/CaptionBuilder/FloatingChip.h"
#include "Metadata/MetadataTemplateExpander.h"
#include "Widgets/FocusRing.h"
#include "Widgets/Theme.h"

#include <QHelpEvent>
#include <QPainter>
#include <QScrollBar>
#include <QToolTip>
#include <QWheelEvent>

#include <algorithm>

namespace ferrow {

namespace {

constexpr int mostLines = 5;
/// How far the chips beside the caret give way, each.
constexpr int giveWay = 3;

} // namespace

CaptionWell::CaptionWell(QWidget* parent) : QWidget(parent), bar_(new QScrollBar(Qt::Vertical, this))
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
    connect(&motion_, &ChipMotion::moved, this, qOverload<>(&QWidget::update));
    connect(&Theme::current(), &Theme::changed, this, [this] { refresh(ChipMotion::Way::atOnce); });
}

CaptionWell::~CaptionWell()
{
    delete floating_;
}

void CaptionWell::setSegments(const Segments& segments)
{
    if (segments == segments_ || ((edit_ || drag_) && segments == previewed_))
        return;
    const bool hadDraft = isBusy();
    endDrag();
    edit_.reset();
    closeField();

    const QUuid chip = current_ < static_cast<int>(segments_.size()) ? segments_[std::size_t(current_)].id : QUuid();
    segments_ = segments;
    previewed_ = segments;
    const auto same = std::find_if(segments_.begin(), segments_.end(),
                                   [&](const CaptionSegment& segment) { return segment.id == chip; });
    current_ = same != segments_.end() ? static_cast<int>(same - segments_.begin())
                                       : std::clamp(current_, 0, std::max(0, endGap() - 1));
    refresh(isVisible() ? ChipMotion::Way::glide : ChipMotion::Way::atOnce);
    if (hadDraft)
        emit interrupted();
}

void CaptionWell::setMetadata(const std::optional<PhotoMetadata>& metadata)
{
    if (metadata == metadata_)
        return;
    metadata_ = metadata;
    refresh(ChipMotion::Way::glide);
}

void CaptionWell::refresh(ChipMotion::Way way)
{
    shown_ = segments_;
    if (edit_)
        shown_ = edit_->isNew ? CaptionChips::inserted(segments_, edit_->index, edit_->segment)
                              : CaptionChips::replaced(segments_, edit_->index, edit_->segment.content);
    missing_ = metadata_ ? CaptionChips::missingTokens(shown_, *metadata_) : std::vector<MetadataToken>();
    rects_ = ChipLayout::chipRects(chipWidths(), measures(width()));
    setTargets(way);
    if (height() != heightForWidth(width()))
        updateGeometry();
    placeBar();
    placeField();
    update();
    notifyItemsChanged(this);
}

void CaptionWell::setTargets(ChipMotion::Way way)
{
    QHash<QUuid, QRectF> targets;
    for (std::size_t i = 0; i < rects_.size(); ++i) {
        QRectF rect(rects_[i]);
        if (drag_ && drag_->gap && drag_->gap->caret.y() == rects_[i].y())
            rect.translate(static_cast<int>(i) < drag_->gap->index ? -giveWay : giveWay, 0);
        targets.insert(shown_[i].id, rect);
    }
    motion_.setTargets(targets, way);
}

ChipLook CaptionWell::lookOf(const CaptionSegment& segment) const
{
    ChipLook look{.kind = CaptionChips::kindOf(segment.content), .label = CaptionChips::label(segment)};
    const auto* token = std::get_if<MetadataToken>(&segment.content);
    look.isMissing = token && std::find(missing_.begin(), missing_.end(), *token) != missing_.end();
    return look;
}

std::vector<int> CaptionWell::chipWidths() const
{
    std::vector<int> widths;
    for (const CaptionSegment& segment : shown_) {
        const bool isEdited = edit_ && field_ && edit_->segment.id == segment.id;
        widths.push_back(isEdited ? field_->wantedWidth() : chipWidth(lookOf(segment)));
    }
    return widths;
}

ChipLayout::Measures CaptionWell::measures(int width) const
{
    return {.width = width, .height = chipHeight()};
}

int CaptionWell::contentHeight() const
{
    return ChipLayout::wellHeight(ChipLayout::lineCount(rects_), measures(width()));
}

int CaptionWell::heightForWidth(int width) const
{
    const ChipLayout::Measures chips = measures(width);
    const int lines = ChipLayout::lineCount(ChipLayout::chipRects(chipWidths(), chips));
    return ChipLayout::wellHeight(std::min(lines, mostLines), chips);
}

QSize CaptionWell::sizeHint() const
{
    const int width = Theme::current().scaled(280);
    return {width, heightForWidth(width)};
}

QSize CaptionWell::minimumSizeHint() const
{
    return {Theme::current().scaled(120), ChipLayout::wellHeight(1, measures(0))};
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
    const QPoint place = toContent(view);
    const auto hit =
        std::find_if(rects_.begin(), rects_.end(), [&](const QRect& rect) { return rect.contains(place); });
    return hit == rects_.end() ? -1 : static_cast<int>(hit - rects_.begin());
}

void CaptionWell::placeBar()
{
    const int hidden = std::max(0, contentHeight() - height());
    const int pitch = chipHeight() + measures(0).gap;
    bar_->setRange(0, hidden);
    bar_->setPageStep(height());
    bar_->setSingleStep(pitch);
    bar_->setGeometry(width() - Measure::scrollBar - 1, Radius::row, Measure::scrollBar, height() - 2 * Radius::row);
    bar_->setVisible(hidden > 0);
}

void CaptionWell::placeField()
{
    if (edit_ && field_ && edit_->index < static_cast<int>(rects_.size()))
        field_->setGeometry(toView(rects_[std::size_t(edit_->index)]));
}

void CaptionWell::revealCurrent()
{
    if (current_ >= static_cast<int>(rects_.size()))
        return;
    const QRect rect = rects_[std::size_t(current_)];
    const int inset = measures(0).inset;
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
    const bool isFocusedField = shown_.empty() && hasFocus();
    const double edge = isFocusedField ? Measure::focusWidth : 1;
    painter.setPen(QPen(themeColor(isFocusedField ? &ThemeColors::accent : &ThemeColors::border), edge));
    painter.setBrush(themeColor(&ThemeColors::surface));
    const QRectF ground = QRectF(rect()).adjusted(edge / 2, edge / 2, -edge / 2, -edge / 2);
    painter.drawRoundedRect(ground, Radius::row - edge / 2, Radius::row - edge / 2);
    if (!shown_.empty())
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
    for (int i = 0; i < static_cast<int>(shown_.size()); ++i) {
        const CaptionSegment& segment = shown_[std::size_t(i)];
        const QRectF place = toView(motion_.rect(segment.id));
        if (edit_ && edit_->segment.id == segment.id)
            continue;
        if (drag_ && drag_->source == i) {
            paintChipSlot(painter, place);
            continue;
        }
        ChipLook look = lookOf(segment);
        look.state = i == hovered_ && !drag_ ? ChipLook::State::hovered : ChipLook::State::rest;
        paintChip(painter, place, look);
        if (i == current_ && hasFocus() && showsFocus_)
            paintChipFocus(painter, place);
    }
    if (drag_ && drag_->gap) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(themeColor(&ThemeColors::accent));
        painter.drawRoundedRect(toView(QRectF(drag_->gap->caret)), 1, 1);
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
        giveUpDrag();
    if (event->type() == QEvent::EnabledChange)
        refresh(ChipMotion::Way::atOnce);
}

void CaptionWell::showToolTip(int index, const QPoint& globalPlace)
{
    if (index < 0 || drag_) {
        QToolTip::hideText();
        return;
    }
    const CaptionSegment& segment = shown_[std::size_t(index)];
    const ChipLook look = lookOf(segment);
    QString text = CaptionChips::title(segment);
    if (const auto* token = std::get_if<MetadataToken>(&segment.content); token && metadata_) {
        const auto value = MetadataTemplateExpander::tokenValue(*token, *metadata_);
        text +=
            look.isMissing ? QStringLiteral(": missing in this photo") : QStringLiteral(": ") + value.value_or(text);
    } else if (const auto* literal = std::get_if<QString>(&segment.content)) {
        text = *literal;
    } else if (look.kind == Kind::separator) {
        text = CaptionChips::label(segment);
    }
    // Values come from files: what looks like markup is shown as it stands.
    QToolTip::showText(globalPlace, Qt::convertFromPlainText(text.left(400)), this, toView(rects_[std::size_t(index)]));
}

void CaptionWell::wheelEvent(QWheelEvent* event)
{
    const int before = bar_->value();
    if (bar_->maximum() > 0)
        bar_->setValue(before - event->angleDelta().y() * bar_->singleStep() / 120);
    // At its end, and where nothing is hidden, the wheel goes on to the page.
    event->setAccepted(bar_->value() != before);
}

int CaptionWell::itemCount() const
{
    return static_cast<int>(shown_.size());
}

AccessibleItem CaptionWell::item(int index) const
{
    const CaptionSegment& segment = shown_[std::size_t(index)];
    return {.name = CaptionChips::spokenName(shown_, index),
            .description = lookOf(segment).isMissing ? QStringLiteral("Missing in the shown photo") : QString(),
            .rect = toView(rects_[std::size_t(index)]),
            .role = QAccessible::ListItem,
            .isChosen = index == current_};
}

void CaptionWell::pressItem(int index)
{
    setFocus(Qt::OtherFocusReason);
    setCurrent(index);
    activate(index);
}

} // namespace ferrow
