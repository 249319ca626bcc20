// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/CaptionDraft.h"

#include <QSignalBlocker>

#include <utility>

namespace ferrow {

void CaptionDraft::preview(const std::vector<CaptionSegment>& segments)
{
    if (!before_) {
        before_ = Before{};
        if (session_.recipeScope() == RecipeScope::selected)
            before_->photoID = session_.selectedPhotoID();
        before_->hadOwnRecipe = before_->photoID && session_.hasOwnRecipe(*before_->photoID);
        before_->segments = session_.activeRecipe().captions.front().segments;
    }
    if (segments == before_->segments)
        return putBack();
    previewed_ = segments;
    RenderRecipe recipe = session_.activeRecipe();
    recipe.captions.front().segments = segments;
    session_.applyRecipe(recipe);
}

void CaptionDraft::commit(const QString& stepName, const std::vector<CaptionSegment>& segments)
{
    if (before_) {
        // The step has to begin from what was before, but nobody needs to see that flash by.
        std::optional<QSignalBlocker> quiet;
        if (segments != before_->segments)
            quiet.emplace(session_);
        putBack();
    }
    history_.editRecipe(stepName, [&](RenderRecipe& recipe) { recipe.captions.front().segments = segments; });
}

void CaptionDraft::interrupt()
{
    const RenderRecipe* drafted = draftedRecipe();
    if (drafted && drafted->captions.front().segments == previewed_)
        putBack();
    before_.reset();
}

/// Absent without a draft, and where the photo was removed meanwhile, with its recipe.
const RenderRecipe* CaptionDraft::draftedRecipe() const
{
    if (!before_)
        return nullptr;
    if (!before_->photoID)
        return &session_.batchRecipe();
    const auto own = session_.photoRecipes().find(*before_->photoID);
    return own == session_.photoRecipes().end() ? nullptr : &own->second;
}

void CaptionDraft::putBack()
{
    const RenderRecipe* drafted = draftedRecipe();
    const Before before = *std::exchange(before_, std::nullopt);
    if (!drafted)
        return;
    if (before.photoID && !before.hadOwnRecipe)
        return session_.setPhotoRecipe(*before.photoID, std::nullopt);
    RenderRecipe recipe = *drafted;
    recipe.captions.front().segments = before.segments;
    if (before.photoID)
        session_.setPhotoRecipe(*before.photoID, recipe);
    else
        session_.setBatchRecipe(recipe);
}

} // namespace ferrow
