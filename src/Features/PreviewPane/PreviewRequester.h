// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Session/ExportSession.h"
#include "Session/PhotoSession.h"
#include "Session/PreviewLoader.h"
#include "Session/PreviewRenderQueue.h"

#include <QObject>

#include <optional>

namespace ferrow {

/// Decides when the selected photo is to be rendered: once its picture has been loaded, and whenever what frames it has
/// changed. What is asked for already is not asked for again, however many signals tell of one edit.
class PreviewRequester : public QObject {
    Q_OBJECT

public:
    /// The four must outlive it.
    PreviewRequester(PhotoSession& session, const ExportSession& exportSession, PreviewLoader& loader,
                     PreviewRenderQueue& queue, QObject* parent = nullptr);

    /// Nothing is asked for while nobody sees it.
    void setPaused(bool isPaused);

private:
    struct Asked {
        FileUrl photoID;
        Bitmap source; ///< Held, so that its address stays its own.
        RenderRecipe recipe;
        PhotoMetadata metadata;
        OutputSize outputSize;
    };

    void update();
    void giveUp();

    PhotoSession& session_;
    const ExportSession& exportSession_;
    PreviewLoader& loader_;
    PreviewRenderQueue& queue_;
    std::optional<Asked> asked_;
    bool isPaused_ = false;
};

} // namespace ferrow
