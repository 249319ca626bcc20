// SPDX-License-Identifier: GPL-3.0-or-later
#include "Session/EditHistory.h"

#include "Session/EditSteps.h"

#include <utility>

namespace ferrow {

EditHistory::EditHistory(PhotoSession& session, ExportSession& exportSession, QObject* parent)
    : QObject(parent), session_(session), exportSession_(exportSession)
{
}

EditHistory::~EditHistory() = default;

void EditHistory::push(std::unique_ptr<QUndoCommand> step)
{
    if (step->isObsolete())
        return;
    keepPreview();
    stack_.push(step.release());
}

void EditHistory::editRecipe(const QString& name, const RecipeEdit& edit)
{
    RenderRecipe recipe = session_.activeRecipe();
    edit(recipe);
    push(std::make_unique<FramingStep>(session_, name, Framing::active(session_), recipe, gesture()));
}

void EditHistory::preview(const QString& name, const RecipeEdit& edit)
{
    const Framing framing = Framing::active(session_);
    if (preview_ && (preview_->framing() != framing || !preview_->isInPlace()))
        dropPreview();
    RenderRecipe recipe = session_.activeRecipe();
    edit(recipe);
    if (preview_) {
        preview_->setText(name);
        preview_->goOnTo(recipe);
    } else {
        preview_ = std::make_unique<FramingStep>(session_, name, framing, recipe, gesture());
        if (!preview_->isObsolete())
            preview_->redo();
    }
    if (preview_ && preview_->isObsolete())
        preview_.reset();
}

void EditHistory::keepPreview()
{
    // Doing it once more, as the stack does, changes nothing.
    if (auto step = std::move(preview_); step && step->isInPlace())
        push(std::move(step));
}

void EditHistory::dropPreview()
{
    if (const auto step = std::move(preview_); step && step->isInPlace())
        step->takeBack();
}

void EditHistory::beginGesture()
{
    if (gestureDepth_++ == 0)
        ++gesture_;
}

void EditHistory::endGesture()
{
    if (gestureDepth_ > 0)
        --gestureDepth_;
}

void EditHistory::useBatch(const FileUrl& photoID)
{
    push(std::make_unique<OwnFramingStep>(session_, QStringLiteral("Use Batch"), std::vector{photoID}, std::nullopt));
}

void EditHistory::correct(const QString& name, const std::vector<FileUrl>& photoIDs, const CorrectionsEdit& edit)
{
    std::vector<PhotoCorrections> changed;
    for (const FileUrl& id : photoIDs) {
        const ImportedPhoto* photo = session_.photo(id);
        if (!photo)
            continue;
        MetadataCorrections corrections = photo->corrections;
        edit(corrections);
        corrections = differing(std::move(corrections), photo->metadata);
        if (corrections != photo->corrections)
            changed.push_back({id, std::move(corrections)});
    }
    push(std::make_unique<CorrectionStep>(session_, name, std::move(changed)));
}

void EditHistory::setIncluded(const std::vector<FileUrl>& photoIDs, bool included)
{
    std::vector<FileUrl> changing;
    for (const FileUrl& id : photoIDs)
        if (session_.isIncluded(id) != included)
            changing.push_back(id);
    push(std::make_unique<InclusionStep>(session_, std::move(changing), included));
}

void EditHistory::toggleIncluded(const FileUrl& photoID)
{
    setIncluded({photoID}, !session_.isIncluded(photoID));
}

void EditHistory::setAllIncluded(bool included)
{
    std::vector<FileUrl> all;
    all.reserve(session_.photos().size());
    for (const ImportedPhoto& photo : session_.photos())
        all.push_back(photo.id());
    setIncluded(all, included);
}

void EditHistory::setIncludedAndGoOn(const FileUrl& photoID, bool included, const std::optional<FileUrl>& next)
{
    if (session_.isIncluded(photoID) != included)
        push(std::make_unique<CullingStep>(session_, photoID, included, next.value_or(photoID)));
    else if (next)
        session_.setSelectedPhotoID(next);
}

void EditHistory::invertIncluded()
{
    std::vector<FileUrl> all;
    all.reserve(session_.photos().size());
    for (const ImportedPhoto& photo : session_.photos())
        all.push_back(photo.id());
    push(std::make_unique<InversionStep>(session_, std::move(all)));
}

void EditHistory::removeSelected()
{
    if (const auto& selected = session_.selectedPhotoID())
        remove({*selected});
}

void EditHistory::remove(const std::vector<FileUrl>& photoIDs)
{
    std::vector<FileUrl> present;
    for (const FileUrl& id : photoIDs)
        if (session_.indexOf(id))
            present.push_back(id);
    push(std::make_unique<RemovalStep>(session_, std::move(present)));
}

void EditHistory::clearAll()
{
    if (session_.photos().empty())
        session_.clearAll();
    else
        push(std::make_unique<ClearStep>(session_));
}

void EditHistory::applyPreset(const PhotoPreset& preset)
{
    push(std::make_unique<PresetStep>(session_, exportSession_, preset.payload));
}

void EditHistory::copyFraming(const FileUrl& photoID)
{
    const bool couldPaste = canPasteFraming();
    copiedFraming_ = session_.resolvedRecipe(photoID);
    if (!couldPaste)
        emit canPasteFramingChanged();
}

void EditHistory::pasteFraming(const std::vector<FileUrl>& photoIDs)
{
    std::vector<FileUrl> present;
    for (const FileUrl& id : photoIDs)
        if (session_.indexOf(id))
            present.push_back(id);
    if (copiedFraming_)
        push(std::make_unique<OwnFramingStep>(session_, QStringLiteral("Paste Framing"), std::move(present),
                                              copiedFraming_));
}

void EditHistory::setLogoAsset(const LogoAssetReference& asset)
{
    const bool replaces = session_.activeRecipe().logo.has_value();
    editRecipe(replaces ? QStringLiteral("Replace Logo") : QStringLiteral("Import Logo"), [&](RenderRecipe& recipe) {
        if (!recipe.logo)
            recipe.logo = LogoConfiguration{};
        recipe.logo->asset = asset;
    });
}

void EditHistory::removeLogo()
{
    editRecipe(QStringLiteral("Remove Logo"), [](RenderRecipe& recipe) { recipe.logo.reset(); });
}

} // namespace ferrow
