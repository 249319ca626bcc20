// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

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
    /// The three must outlive it.
    PreviewRequester(PhotoSession& session, PreviewLoader& loader, PreviewRenderQueue& queue,
                     QObject* parent = nullptr);

private:
    struct Asked {
        FileUrl photoID;
        Bitmap source; ///< Held, so that its address stays its own.
        RenderRecipe recipe;
        PhotoMetadata metadata;
    };

    void update();
    void giveUp();

    PhotoSession& session_;
    PreviewLoader& loader_;
    PreviewRenderQueue& queue_;
    std::optional<Asked> asked_;
};

} // namespace ferrow
