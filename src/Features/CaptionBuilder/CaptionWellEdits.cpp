// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/CaptionBuilder/CaptionWell.h"

#include "Features/CaptionBuilder/ChipTextField.h"
#include "Widgets/AccessibleEvents.h"

#include <algorithm>
#include <utility>

namespace ferrow {

void CaptionWell::apply(const QString& stepName, const Segments& segments, int current)
{
    segments_ = segments;
    previewed_ = segments;
    current_ = std::clamp(current, 0, std::max(0, endGap() - 1));
    hovered_ = -1;
    refresh(ChipMotion::Way::glide);
    revealCurrent();
    // The list goes along: by now the signal may have given this widget other segments.
    emit edited(stepName, segments);
}

void CaptionWell::preview(const Segments& segments)
{
    if (segments == previewed_)
        return;
    previewed_ = segments;
    emit previewed(segments);
}

void CaptionWell::setCurrent(int index)
{
    if (index < 0 || index >= itemCount())
        return;
    current_ = index;
    revealCurrent();
    update();
    notifyItemFocused(this);
}

void CaptionWell::activate(int index)
{
    if (CaptionChips::kindOf(segments_[std::size_t(index)].content) == Kind::text)
        editText(index);
    else
        openList(index);
}

void CaptionWell::startText(int gap, const QString& text)
{
    endTextEdit(true);
    edit_ = TextEdit{.index = std::min(gap, endGap()), .segment = {.content = text}, .isNew = true};
    openField(text);
}

void CaptionWell::editText(int index)
{
    endTextEdit(true);
    const CaptionSegment& segment = segments_[std::size_t(index)];
    edit_ = TextEdit{.index = index, .segment = segment};
    openField(std::get<QString>(segment.content));
}

void CaptionWell::openField(const QString& text)
{
    current_ = edit_->index;
    field_ = new ChipTextField(text, this);
    connect(field_, &ChipTextField::committed, this, [this] { endTextEdit(true); });
    connect(field_, &ChipTextField::givenUp, this, [this] { endTextEdit(false); });
    connect(field_, &QLineEdit::textChanged, this, [this](const QString& typed) {
        edit_->segment.content = typed;
        refresh(ChipMotion::Way::glide);
        preview(drafted());
    });
    refresh(ChipMotion::Way::glide);
    preview(drafted());
    revealCurrent();
    field_->show();
    field_->setFocus(Qt::OtherFocusReason);
    if (!edit_->isNew)
        field_->selectAll();
}

CaptionWell::Segments CaptionWell::drafted() const
{
    return std::get<QString>(edit_->segment.content).isEmpty() ? CaptionChips::removed(shown_, edit_->index) : shown_;
}

void CaptionWell::endTextEdit(bool keep)
{
    if (!edit_)
        return;
    const TextEdit edit = *std::exchange(edit_, std::nullopt);
    closeField();
    const bool isEmpty = std::get<QString>(edit.segment.content).isEmpty();
    if (keep && !isEmpty && edit.isNew) {
        apply(QStringLiteral("Add Text"), CaptionChips::inserted(segments_, edit.index, edit.segment), edit.index);
    } else if (keep && isEmpty && !edit.isNew) {
        apply(QStringLiteral("Remove Text"), CaptionChips::removed(segments_, edit.index), edit.index);
    } else if (keep && !edit.isNew && edit.segment != segments_[std::size_t(edit.index)]) {
        apply(QStringLiteral("Change Text"), CaptionChips::replaced(segments_, edit.index, edit.segment.content),
              edit.index);
    } else {
        current_ = std::clamp(current_, 0, std::max(0, endGap() - 1));
        refresh(ChipMotion::Way::glide);
        preview(segments_);
    }
}

void CaptionWell::closeField()
{
    ChipTextField* field = std::exchange(field_, nullptr);
    if (!field)
        return;
    field->disconnect(this);
    // Focus that is still in the field stays with the chip; focus that left goes where it was sent.
    if (field->hasFocus())
        setFocus(Qt::OtherFocusReason);
    field->hide();
    field->deleteLater();
}

void CaptionWell::removeChip(int index)
{
    const CaptionSegment gone = segments_[std::size_t(index)];
    apply(QStringLiteral("Remove %1").arg(CaptionChips::title(gone)), CaptionChips::removed(segments_, index), index);
    if (!segments_.empty())
        notifyItemFocused(this);
}

void CaptionWell::moveChip(int index, int gap)
{
    const Segments moved = CaptionChips::moved(segments_, index, gap);
    if (moved == segments_)
        return;
    const int now = CaptionChips::indexAfterMove(index, gap);
    apply(QStringLiteral("Move %1").arg(CaptionChips::title(moved[std::size_t(now)])), moved, now);
    announce(this, CaptionChips::spokenPlace(moved, now));
}

void CaptionWell::addContent(const CaptionSegment::Content& content, int gap)
{
    const CaptionSegment segment{.content = content};
    const int place = std::min(gap, endGap());
    apply(QStringLiteral("Add %1").arg(CaptionChips::title(segment)), CaptionChips::inserted(segments_, place, segment),
          place);
    notifyItemFocused(this);
}

void CaptionWell::changeContent(const QUuid& chip, const CaptionSegment::Content& content)
{
    // The row may have changed while the list was open.
    const auto place = std::find_if(segments_.begin(), segments_.end(),
                                    [&](const CaptionSegment& segment) { return segment.id == chip; });
    if (place == segments_.end() || place->content == content)
        return;
    const int index = static_cast<int>(place - segments_.begin());
    apply(QStringLiteral("Change %1").arg(CaptionChips::title(*place)),
          CaptionChips::replaced(segments_, index, content), index);
}

QMenu* CaptionWell::makeMenu(const QString& name)
{
    auto* menu = new QMenu(this);
    menu->setObjectName(name);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    return menu;
}

void CaptionWell::startChoice(Kind kind, int gap, const QPoint& globalPlace)
{
    const auto chosen = [this, gap](const CaptionSegment::Content& content) { addContent(content, gap); };
    QMenu* menu = makeMenu(kind == Kind::token ? QStringLiteral("tokenMenu") : QStringLiteral("separatorMenu"));
    if (kind == Kind::token)
        ChipMenus::addTokens(*menu, {}, metadata_, chosen);
    else
        ChipMenus::addSeparators(*menu, {}, chosen);
    menu->popup(globalPlace);
}

void CaptionWell::openList(int index)
{
    const CaptionSegment& segment = segments_[std::size_t(index)];
    const auto chosen = [this, chip = segment.id](const CaptionSegment::Content& content) {
        changeContent(chip, content);
    };
    const auto* token = std::get_if<MetadataToken>(&segment.content);
    QMenu* menu = makeMenu(token ? QStringLiteral("tokenMenu") : QStringLiteral("separatorMenu"));
    if (token)
        ChipMenus::addTokens(*menu, *token, metadata_, chosen);
    else
        ChipMenus::addSeparators(*menu, std::get<CaptionSeparator>(segment.content), chosen);

    const QRect chip = toView(rects_[std::size_t(index)]);
    menu->popup(mapToGlobal(QPoint(chip.left(), chip.bottom() + 1)));
    for (QAction* action : menu->actions()) {
        if (action->isChecked())
            menu->setActiveAction(action);
    }
}

void CaptionWell::openContextMenu(int index, const QPoint& globalPlace)
{
    setCurrent(index);
    const QUuid chip = segments_[std::size_t(index)].id;
    QMenu* menu = makeMenu(QStringLiteral("chipMenu"));
    ChipMenus::addCommands(*menu, segments_, index, metadata_,
                           {.edit = [this, index] { editText(index); },
                            .moveBack = [this, index] { moveChip(index, index - 1); },
                            .moveOn = [this, index] { moveChip(index, index + 2); },
                            .remove = [this, index] { removeChip(index); },
                            .addText = [this, index] { startText(index + 1); },
                            .change = [this, chip](const auto& content) { changeContent(chip, content); },
                            .add = [this, index](const auto& content) { addContent(content, index + 1); }});
    menu->popup(globalPlace);
}

} // namespace ferrow
