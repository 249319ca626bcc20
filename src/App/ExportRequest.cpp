// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/ExportRequest.h"

#include "App/ExportSession.h"
#include "App/PhotoSession.h"

namespace ferrow {

ExportRequest ExportRequest::make(const PhotoSession& session, const ExportSession& exportSession)
{
    return {.photos = session.includedPhotos(),
            .configuration = exportSession.configuration(),
            .settings = exportSession.settings(),
            .recipeScope = session.recipeScope(),
            .batchRecipe = session.batchRecipe(),
            .photoRecipes = session.photoRecipes()};
}

ExportRequest ExportRequest::limitedTo(const std::unordered_set<FileUrl>& photoIDs) const
{
    ExportRequest limited = *this;
    std::erase_if(limited.photos, [&](const ImportedPhoto& photo) { return !photoIDs.contains(photo.id()); });
    return limited;
}

const RenderRecipe& ExportRequest::resolvedRecipe(const FileUrl& photoID) const
{
    return RenderRecipe::resolve(recipeScope, photoID, batchRecipe, photoRecipes);
}

} // namespace ferrow
