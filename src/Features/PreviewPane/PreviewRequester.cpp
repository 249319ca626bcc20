// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/PreviewPane/PreviewRequester.h"

namespace ferrow {

namespace {

bool isSamePicture(const Bitmap& left, const Bitmap& right)
{
    return !left.isNull() && !right.isNull() && left.row(0) == right.row(0);
}

} // namespace

PreviewRequester::PreviewRequester(PhotoSession& session, const ExportSession& exportSession, PreviewLoader& loader,
                                   PreviewRenderQueue& queue, QObject* parent)
    : QObject(parent), session_(session), exportSession_(exportSession), loader_(loader), queue_(queue)
{
    for (const auto signal :
         {&PhotoSession::selectedPhotoIDChanged, &PhotoSession::photosChanged, &PhotoSession::batchRecipeChanged,
          &PhotoSession::photoRecipesChanged, &PhotoSession::recipeScopeChanged, &PhotoSession::correctionsChanged})
        connect(&session_, signal, this, &PreviewRequester::update);
    connect(&exportSession_, &ExportSession::settingsChanged, this, &PreviewRequester::update);
    connect(&loader_, &PreviewLoader::photoChanged, this, &PreviewRequester::update);
    update();
}

void PreviewRequester::setPaused(bool isPaused)
{
    isPaused_ = isPaused;
    update();
}

void PreviewRequester::update()
{
    if (isPaused_)
        return giveUp();
    const ImportedPhoto* selected = session_.selectedPhoto();
    const std::optional<ImportedPhoto>& loaded = loader_.photo();
    // The picture of the photo before stays published while the next one is decoded.
    if (!selected || !loaded || loaded->id() != selected->id() || loaded->previewSource.isNull()) {
        giveUp();
        return;
    }

    const RenderRecipe& recipe = session_.resolvedRecipe(selected->id());
    const PhotoMetadata metadata = selected->captionMetadata();
    const OutputSize& size = exportSession_.settings().size;
    if (asked_ && asked_->photoID == selected->id() && isSamePicture(asked_->source, loaded->previewSource) &&
        asked_->recipe == recipe && asked_->metadata == metadata && asked_->outputSize == size)
        return;
    asked_ = Asked{selected->id(), loaded->previewSource, recipe, metadata, size};
    queue_.request({.photoID = loaded->id(),
                    .source = loaded->previewSource,
                    .pixelSize = loaded->pixelSize,
                    .recipe = recipe,
                    .metadata = metadata,
                    .outputSize = size});
}

void PreviewRequester::giveUp()
{
    if (asked_)
        queue_.clear();
    asked_.reset();
}

} // namespace ferrow
