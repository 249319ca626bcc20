// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Shell/CaptionDraft.h"

#include <QSignalBlocker>

namespace ferrow {

void CaptionDraft::preview(const std::vector<CaptionSegment>& segments)
{
    if (!before_) {
        before_ = Before{};
        if (session_.recipeScope() == RecipeScope::selected)
            before_->photoID = session_.selectedPhotoID();
        before_->hadOwnRecipe = before_->photoID && session_.hasOwnRecipe(*before_->photoID);
        before_->segments = session_.activeRecipe().captionSegments;
    }
    if (segments == before_->segments)
        return putBack();
    RenderRecipe recipe = session_.activeRecipe();
    recipe.captionSegments = segments;
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
    history_.editRecipe(stepName, [&](RenderRecipe& recipe) { recipe.captionSegments = segments; });
}

void CaptionDraft::putBack()
{
    const Before before = *before_;
    before_.reset();
    if (!before.photoID) {
        RenderRecipe recipe = session_.batchRecipe();
        recipe.captionSegments = before.segments;
        return session_.setBatchRecipe(recipe);
    }
    const auto own = session_.photoRecipes().find(*before.photoID);
    if (own == session_.photoRecipes().end())
        return; // Removed meanwhile, with its recipe.
    if (!before.hadOwnRecipe)
        return session_.setPhotoRecipe(*before.photoID, std::nullopt);
    RenderRecipe recipe = own->second;
    recipe.captionSegments = before.segments;
    session_.setPhotoRecipe(*before.photoID, recipe);
}

} // namespace ferrow
