// SPDX-License-Identifier: GPL-3.0-or-later
#include "Session/CaptionEditing.h"

#include "Metadata/MetadataTemplateExpander.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace ferrow {

namespace {

QString textStep(const CaptionEditing::TextInHand& text)
{
    if (text.isNew)
        return QStringLiteral("Add Text");
    return text.text().isEmpty() ? QStringLiteral("Remove Text") : QStringLiteral("Change Text");
}

} // namespace

CaptionEditing::CaptionEditing(PhotoSession& session, EditHistory& history, QObject* parent)
    : QObject(parent), session_(session), history_(history)
{
    for (const auto signal :
         {&PhotoSession::photosChanged, &PhotoSession::selectedPhotoIDChanged, &PhotoSession::batchRecipeChanged,
          &PhotoSession::photoRecipesChanged, &PhotoSession::recipeScopeChanged, &PhotoSession::correctionsChanged})
        connect(&session, signal, this, &CaptionEditing::follow);
    follow();
}

/// Goes along with the models. What it has shown itself comes back to it this way as well.
void CaptionEditing::follow()
{
    const ImportedPhoto* photo = session_.selectedPhoto();
    const auto metadata = photo ? std::optional(photo->captionMetadata()) : std::nullopt;
    const bool isOtherPhoto = metadata != metadata_;
    metadata_ = metadata;
    const Framing framing = Framing::active(session_);
    const int chosenBefore = chosen_;
    if (framing == framing_)
        followCaptions();
    const bool isLeftBehind = (text_ || carried_) && (framing != framing_ || chosen_ != chosenBefore);
    framing_ = framing;
    captions_ = session_.activeRecipe().captions;
    const bool wasUppercase = std::exchange(isUppercase_, captionOf(session_.activeRecipe()).isUppercase);
    chosen_ = std::clamp(chosen_, 0, int(captions_.size()) - 1);
    if (chosen_ != chosenBefore)
        emit chosenChanged();
    const Segments& now = captionOf(session_.activeRecipe()).segments;
    if (isLeftBehind || (now != segments_ && now != drafted_)) {
        const QUuid chip = current_ < endGap() ? segments_[std::size_t(current_)].id : QUuid();
        segments_ = drafted_ = now;
        current_ = indexOf(chip).value_or(clampedToRow(current_));
        text_.reset();
        carried_.reset();
        history_.dropPreview();
        emit replaced();
    } else if (!isOtherPhoto && isUppercase_ == wasUppercase) {
        return;
    }
    update();
}

/// Whoever undoes or redoes something sees where: the caption that has come or changed is chosen.
void CaptionEditing::followCaptions()
{
    const std::vector<Caption>& now = session_.activeRecipe().captions;
    const bool hasChosenChanged = chosen_ >= int(now.size()) || chosen_ >= int(captions_.size()) ||
                                  now[std::size_t(chosen_)] != captions_[std::size_t(chosen_)];
    if (now.size() < captions_.size() || (now.size() == captions_.size() && hasChosenChanged))
        return;
    const auto first = std::ranges::mismatch(now, captions_).in1;
    if (first != now.end())
        chosen_ = int(first - now.begin());
}

void CaptionEditing::update()
{
    shown_ = segments_;
    if (text_)
        shown_ = text_->isNew ? CaptionChips::inserted(segments_, text_->index, text_->chip)
                              : CaptionChips::replaced(segments_, text_->index, text_->chip.content);
    emit changed();
}

Caption& CaptionEditing::captionOf(RenderRecipe& recipe) const
{
    return recipe.captions[std::min(std::size_t(chosen_), recipe.captions.size() - 1)];
}

const Caption& CaptionEditing::captionOf(const RenderRecipe& recipe) const
{
    return recipe.captions[std::min(std::size_t(chosen_), recipe.captions.size() - 1)];
}

void CaptionEditing::choose(int index)
{
    if (index < 0 || index >= int(captions_.size()) || index == chosen_)
        return;
    endText(End::keep);
    chosen_ = index;
    emit chosenChanged();
    follow();
}

/// The caption at `chosen` is the one to look at afterwards.
void CaptionEditing::editCaptions(const QString& name, int chosen, const EditHistory::RecipeEdit& edit)
{
    endText(End::keep);
    const bool isOther = std::exchange(chosen_, chosen) != chosen;
    history_.editRecipe(name, edit);
    follow();
    if (isOther)
        emit chosenChanged();
}

void CaptionEditing::addCaption()
{
    const auto before = std::size_t(chosen_);
    if (captions_.size() < RenderRecipe::mostCaptions)
        editCaptions(QStringLiteral("Add Caption"), int(captions_.size()),
                     [&](RenderRecipe& recipe) { recipe.captions.push_back(recipe.captionLike(before)); });
}

void CaptionEditing::removeCaption()
{
    const int removed = chosen_;
    if (captions_.size() > 1)
        editCaptions(QStringLiteral("Remove Caption"), std::min(removed, int(captions_.size()) - 2),
                     [&](RenderRecipe& recipe) { recipe.captions.erase(recipe.captions.begin() + removed); });
}

void CaptionEditing::moveCaption(int by)
{
    const int from = chosen_;
    const int to = std::clamp(from + by, 0, int(captions_.size()) - 1);
    if (to != from)
        editCaptions(QStringLiteral("Move Caption"), to, [&](RenderRecipe& recipe) {
            std::vector<std::size_t> order(recipe.captions.size());
            std::iota(order.begin(), order.end(), 0);
            order.erase(order.begin() + from);
            order.insert(order.begin() + to, std::size_t(from));
            // Copies: compilers warn of captions moved in their place that they would read what is not there.
            std::vector<Caption> moved;
            for (const std::size_t index : order)
                moved.emplace_back(recipe.captions[index]);
            recipe.captions = std::move(moved);
        });
}

int CaptionEditing::clampedToRow(int index) const
{
    return std::clamp(index, 0, std::max(0, endGap() - 1));
}

std::optional<int> CaptionEditing::indexOf(const QUuid& chip) const
{
    const auto found = std::ranges::find(segments_, chip, &CaptionSegment::id);
    return found == segments_.end() ? std::nullopt : std::optional(int(found - segments_.begin()));
}

/// `name` is the step's if what is in hand were finished now.
void CaptionEditing::show(const QString& name, const Segments& drafted)
{
    const bool isOther = drafted != drafted_;
    drafted_ = drafted;
    update();
    if (!isOther)
        return;
    if (drafted_ != segments_) {
        history_.preview(name, [this](RenderRecipe& recipe) { captionOf(recipe).segments = drafted_; });
        return;
    }
    history_.dropPreview();
    // Another edit in between has made a step of what was in hand, which is not taken back by giving up the rest.
    follow();
}

void CaptionEditing::apply(const QString& name, const Segments& segments, int current)
{
    segments_ = drafted_ = segments;
    current_ = clampedToRow(current);
    update();
    emit revealRequested();
    // A list of its own goes along: whoever hears of the change may have this follow other chips.
    history_.preview(name, [this, &segments](RenderRecipe& recipe) { captionOf(recipe).segments = segments; });
    history_.keepPreview();
}

CaptionChips::Reading CaptionEditing::reading(const std::optional<PhotoMetadata>& metadata) const
{
    CaptionChips::Reading reading = CaptionChips::reading(drafted_, metadata);
    if (isUppercase_ && !reading.isHint)
        reading.text = reading.text.toUpper();
    return reading;
}

CaptionEditing::Survey CaptionEditing::survey(MetadataToken token) const
{
    Survey survey{.photos = session_.photos().size()};
    for (const ImportedPhoto& photo : session_.photos()) {
        const PhotoMetadata metadata = photo.captionMetadata();
        const bool isMissing = MetadataTemplateExpander::isMissing(token, metadata);
        survey.lacking += isMissing ? 1 : 0;
        auto& first = isMissing ? survey.firstWithout : survey.firstWith;
        if (!first)
            first = metadata;
    }
    return survey;
}

void CaptionEditing::setCurrent(int index)
{
    if (index < 0 || index >= int(shown_.size()))
        return;
    current_ = index;
    emit revealRequested();
    emit currentMoved();
}

void CaptionEditing::remove(int index)
{
    const QString title = CaptionChips::title(segments_[std::size_t(index)]);
    apply(QStringLiteral("Remove %1").arg(title), CaptionChips::removed(segments_, index), index);
    if (!segments_.empty())
        emit currentMoved();
}

void CaptionEditing::move(int index, int gap)
{
    const Segments row = CaptionChips::moved(segments_, index, gap);
    if (row == segments_)
        return;
    const int now = CaptionChips::indexAfterMove(index, gap);
    apply(QStringLiteral("Move %1").arg(CaptionChips::title(row[std::size_t(now)])), row, now);
    emit moved(now);
}

void CaptionEditing::add(const CaptionSegment::Content& content, int gap)
{
    const CaptionSegment chip{.content = content};
    const int place = std::min(gap, endGap());
    apply(QStringLiteral("Add %1").arg(CaptionChips::title(chip)), CaptionChips::inserted(segments_, place, chip),
          place);
    emit currentMoved();
}

void CaptionEditing::change(const QUuid& chip, const CaptionSegment::Content& content)
{
    const std::optional<int> index = indexOf(chip);
    if (!index || segments_[std::size_t(*index)].content == content)
        return;
    const QString title = CaptionChips::title(segments_[std::size_t(*index)]);
    apply(QStringLiteral("Change %1").arg(title), CaptionChips::replaced(segments_, *index, content), *index);
}

void CaptionEditing::startText(int gap, const QString& text)
{
    endText(End::keep);
    openText({.index = std::min(gap, endGap()), .chip = {.content = text}, .isNew = true});
}

void CaptionEditing::editText(int index)
{
    endText(End::keep);
    openText({.index = index, .chip = segments_[std::size_t(index)]});
}

void CaptionEditing::openText(TextInHand text)
{
    current_ = text.index;
    text_ = std::move(text);
    setText(text_->text());
    emit revealRequested();
}

void CaptionEditing::setText(const QString& typed)
{
    text_->chip.content = typed;
    const auto& [index, chip, isNew] = *text_;
    if (!typed.isEmpty())
        show(textStep(*text_),
             isNew ? CaptionChips::inserted(segments_, index, chip) : CaptionChips::replaced(segments_, index, typed));
    else
        show(textStep(*text_), isNew ? segments_ : CaptionChips::removed(segments_, index));
}

void CaptionEditing::endText(End end)
{
    if (!text_)
        return;
    const TextInHand text = *std::exchange(text_, std::nullopt);
    const Segments drafted = drafted_;
    if (end == End::keep && drafted != segments_) {
        apply(textStep(text), drafted, text.index);
        return;
    }
    current_ = clampedToRow(current_);
    show({}, segments_);
}

void CaptionEditing::carry(int index)
{
    carried_ = index;
    gap_.reset();
}

void CaptionEditing::carryTo(const std::optional<int>& gap)
{
    gap_ = gap;
    const QString title = CaptionChips::title(segments_[std::size_t(*carried_)]);
    show(QStringLiteral("Move %1").arg(title), gap ? CaptionChips::moved(segments_, *carried_, *gap) : segments_);
}

void CaptionEditing::letGo()
{
    const int index = *std::exchange(carried_, std::nullopt);
    if (gap_)
        move(index, *gap_);
    else
        show({}, segments_);
}

void CaptionEditing::putBack()
{
    carried_.reset();
    show({}, segments_);
}

} // namespace ferrow
