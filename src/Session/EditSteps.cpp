// SPDX-License-Identifier: GPL-3.0-or-later
#include "Session/EditSteps.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace ferrow {

namespace {

/// Undo and redo show where they happen: the first of what they change, unless one of them is selected.
template <typename Photos, typename IdOf>
void selectOneOf(PhotoSession& session, const Photos& photos, const IdOf& idOf)
{
    const FileUrl& first = std::invoke(idOf, photos.front());
    const auto& selected = session.selectedPhotoID();
    const bool isShown = selected && std::ranges::find(photos, *selected, idOf) != photos.end();
    if (!isShown && session.indexOf(first))
        session.setSelectedPhotoID(first);
}

} // namespace

Framing Framing::active(const PhotoSession& session)
{
    if (session.recipeScope() == RecipeScope::selected && session.selectedPhotoID())
        return {RecipeScope::selected, session.selectedPhotoID()};
    return {session.recipeScope(), std::nullopt};
}

std::optional<RenderRecipe> Framing::stored(const PhotoSession& session) const
{
    if (!photoID)
        return session.batchRecipe();
    const auto own = session.photoRecipes().find(*photoID);
    return own == session.photoRecipes().end() ? std::nullopt : std::optional(own->second);
}

void Framing::put(PhotoSession& session, const std::optional<RenderRecipe>& recipe) const
{
    if (photoID)
        session.setPhotoRecipe(*photoID, recipe);
    else
        session.setBatchRecipe(*recipe);
}

void Framing::store(PhotoSession& session, const std::optional<RenderRecipe>& recipe) const
{
    session.setRecipeScope(scope);
    put(session, recipe);
    if (photoID && session.indexOf(*photoID))
        session.setSelectedPhotoID(photoID);
}

FramingStep::FramingStep(PhotoSession& session, const QString& name, Framing framing, RenderRecipe after,
                         GestureNumber gesture)
    : QUndoCommand(name), session_(session), framing_(std::move(framing)), before_(framing_.stored(session)),
      after_(std::move(after)), gesture_(gesture)
{
    setObsolete(*after_ == session.activeRecipe());
}

bool FramingStep::mergeWith(const QUndoCommand* other)
{
    const auto* next = dynamic_cast<const FramingStep*>(other);
    if (!next || gesture_ == 0 || next->gesture_ != gesture_ || next->framing_ != framing_ || next->text() != text())
        return false;
    goOnTo(next->after_);
    return true;
}

void FramingStep::goOnTo(const std::optional<RenderRecipe>& after)
{
    // A photo without a framing of its own that is back where the batch is was only looked at.
    const bool isOnlyLookedAt = !before_ && after == session_.batchRecipe();
    after_ = isOnlyLookedAt ? before_ : after;
    setObsolete(before_ == after_);
    framing_.store(session_, after_);
}

OwnFramingStep::OwnFramingStep(PhotoSession& session, const QString& name, std::vector<FileUrl> photoIDs,
                               std::optional<RenderRecipe> recipe)
    : QUndoCommand(name), session_(session), photoIDs_(std::move(photoIDs)), recipe_(std::move(recipe)),
      scopeBefore_(session.recipeScope()), scopeAfter_(recipe_ ? RecipeScope::selected : scopeBefore_)
{
    bool changes = scopeAfter_ != scopeBefore_ && !photoIDs_.empty();
    for (const FileUrl& id : photoIDs_) {
        before_.push_back(Framing{RecipeScope::selected, id}.stored(session));
        changes |= before_.back() != recipe_;
    }
    setObsolete(!changes);
}

void OwnFramingStep::undo()
{
    for (std::size_t i = 0; i < photoIDs_.size(); ++i)
        session_.setPhotoRecipe(photoIDs_[i], before_[i]);
    show(scopeBefore_);
}

void OwnFramingStep::redo()
{
    for (const FileUrl& id : photoIDs_)
        session_.setPhotoRecipe(id, recipe_);
    show(scopeAfter_);
}

void OwnFramingStep::show(RecipeScope scope)
{
    session_.setRecipeScope(scope);
    selectOneOf(session_, photoIDs_, std::identity());
}

CorrectionStep::CorrectionStep(PhotoSession& session, const QString& name, std::vector<PhotoCorrections> after)
    : QUndoCommand(name), session_(session), after_(std::move(after))
{
    for (const PhotoCorrections& photo : after_)
        before_.push_back({photo.photoID, session.photo(photo.photoID)->corrections});
    setObsolete(after_.empty());
}

void CorrectionStep::store(const std::vector<PhotoCorrections>& corrections)
{
    session_.setCorrections(corrections);
    selectOneOf(session_, corrections, &PhotoCorrections::photoID);
}

InclusionStep::InclusionStep(PhotoSession& session, std::vector<FileUrl> photoIDs, bool included)
    : session_(session), photoIDs_(std::move(photoIDs)), included_(included)
{
    const QString verb = included ? QStringLiteral("Include") : QStringLiteral("Exclude");
    setText(photoIDs_.size() == 1 ? verb + QStringLiteral(" Photo") : verb + QStringLiteral(" Photos"));
    setObsolete(photoIDs_.empty());
}

CullingStep::CullingStep(PhotoSession& session, FileUrl photoID, bool included, FileUrl next)
    : session_(session), photoID_(std::move(photoID)), included_(included), next_(std::move(next))
{
    setText(included ? QStringLiteral("Include Photo") : QStringLiteral("Exclude Photo"));
}

void CullingStep::apply(bool included, const FileUrl& selected)
{
    session_.setIncluded({photoID_}, included);
    session_.setSelectedPhotoID(selected);
}

InversionStep::InversionStep(PhotoSession& session, std::vector<FileUrl> photoIDs)
    : session_(session), photoIDs_(std::move(photoIDs))
{
    setText(QStringLiteral("Invert"));
    setObsolete(photoIDs_.empty());
}

RemovalStep::RemovalStep(PhotoSession& session, std::vector<FileUrl> photoIDs)
    : session_(session), photoIDs_(std::move(photoIDs))
{
    setText(photoIDs_.size() == 1 ? QStringLiteral("Remove Photo") : QStringLiteral("Remove Photos"));
    setObsolete(photoIDs_.empty());
}

PresetStep::PresetStep(PhotoSession& session, ExportSession& exportSession, PresetPayload payload)
    : QUndoCommand(QStringLiteral("Apply Preset")), session_(session), exportSession_(exportSession),
      recipe_(payload.recipe()), recipeBefore_(session.batchRecipe()), scopeBefore_(session.recipeScope()),
      exportBefore_(PresetPayload::make(recipeBefore_, exportSession.settings(), exportSession.configuration())),
      exportAfter_(std::move(payload))
{
    setObsolete(exportBefore_ == exportAfter_ && scopeBefore_ == RecipeScope::batch);
}

void PresetStep::undo()
{
    session_.setBatchRecipe(recipeBefore_);
    session_.setRecipeScope(scopeBefore_);
    exchangeExport(exportAfter_, exportBefore_);
}

void PresetStep::redo()
{
    session_.setBatchRecipe(recipe_);
    session_.setRecipeScope(RecipeScope::batch);
    exchangeExport(exportBefore_, exportAfter_);
}

/// Goes from one to the other in the fields that still are as `from` left them. Both then hold what was and what is, so
/// that the way back leads exactly there.
void PresetStep::exchangeExport(PresetPayload& from, PresetPayload& to)
{
    const PresetPayload now = PresetPayload::make(recipe_, exportSession_.settings(), exportSession_.configuration());
    const auto keep = [&](auto... field) { ((to.*field = now.*field == from.*field ? to.*field : now.*field), ...); };
    keep(&PresetPayload::exportFormat, &PresetPayload::exportQuality, &PresetPayload::outputSize,
         &PresetPayload::keepsPhotoData, &PresetPayload::bitDepth, &PresetPayload::destinationMode,
         &PresetPayload::sourceSubfolderName, &PresetPayload::filenameTemplate, &PresetPayload::collisionRule);
    from = now;
    exportSession_.apply(to);
}

} // namespace ferrow
