// SPDX-License-Identifier: GPL-3.0-or-later
#include "Session/ExportRequest.h"

#include "Session/ExportSession.h"
#include "Session/PhotoSession.h"

#include <utility>

namespace ferrow {

ExportRequest ExportRequest::make(const PhotoSession& session, const ExportSession& exportSession)
{
    std::vector<FileUrl> originals;
    originals.reserve(session.photos().size());
    for (const ImportedPhoto& photo : session.photos())
        originals.push_back(photo.url);
    return {.photos = session.includedPhotos(),
            .configuration = exportSession.configuration(),
            .settings = exportSession.settings(),
            .recipeScope = session.recipeScope(),
            .batchRecipe = session.batchRecipe(),
            .photoRecipes = session.photoRecipes(),
            .originals = std::move(originals),
            .retried = std::nullopt,
            .written = {}};
}

BatchExportPlan ExportRequest::plan(ExportPlanner planner, const std::stop_token& stop) const
{
    planner.originals = originals;
    planner.written = written;
    planner.only = retried;
    return planner.plan(photos, configuration, settings, recipeScope, batchRecipe, photoRecipes, stop);
}

const RenderRecipe& ExportRequest::resolvedRecipe(const FileUrl& photoID) const
{
    return RenderRecipe::resolve(recipeScope, photoID, batchRecipe, photoRecipes);
}

} // namespace ferrow
