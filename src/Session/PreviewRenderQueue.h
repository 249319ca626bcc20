// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/ImportedPhoto.h"
#include "Models/RenderRecipe.h"
#include "Session/NewestTask.h"

#include <QObject>
#include <QRectF>

#include <chrono>
#include <functional>
#include <optional>
#include <stop_token>

namespace ferrow {

/// What is to be seen.
struct PreviewRequest {
    FileUrl photoID;
    Bitmap source;       ///< The decoded preview, or a thumbnail as its stand-in.
    PixelSize pixelSize; ///< Of the photo itself.
    RenderRecipe recipe;
    PhotoMetadata metadata;
    OutputSize outputSize = {}; ///< By which a frame that is too large at full size may be shown all the same.
};

/// A framed preview.
struct PreviewResult {
    FileUrl photoID;
    RenderRecipe recipe;  ///< What it was framed with.
    Bitmap picture;       ///< sRGB, rgb8 or straight rgba8.
    QRectF photoRect;     ///< Where the bare photo lies in `picture`: pixels, origin at the top left.
    PixelSize outputSize; ///< Of the exported picture, as largestLayout() has it.
};

/// Renders the selected photo again as its recipe changes: at most one render in flight, a pending request replaced by
/// a newer one, renders started no closer than 33 ms apart. While one photo is edited every finished render is shown,
/// so that the picture follows a drag; after a change of photo or clear() what still comes in is stale and dropped.
/// Lives on the main thread; renders on its own.
class PreviewRenderQueue : public QObject {
    Q_OBJECT

public:
    using Clock = std::chrono::steady_clock;

    static constexpr std::chrono::milliseconds minimumInterval{33};
    /// Longest side, in pixels, of a rendered preview. Borders many times the size of the photo would otherwise make
    /// pictures of hundreds of megabytes; those are rendered from a smaller source.
    static constexpr double maximumSide = 3'200;

    /// What the queue calls; all but `now` and `callLater` on its worker thread.
    struct Operations {
        std::function<Bitmap(const PreviewRequest&, const Bitmap& logo, const std::stop_token&)> render;
        /// Absent where the recipe shows no logo. Throws LogoAssetError, SystemError and Canceled.
        std::function<std::optional<Bitmap>(const std::optional<LogoConfiguration>&, const std::stop_token&)> loadLogo;
        std::function<Clock::time_point()> now;
        std::function<void(std::chrono::milliseconds, std::function<void()>)> callLater;

        /// The program's own renderer and logos, the steady clock and a timer.
        [[nodiscard]] static Operations system();
    };

    explicit PreviewRenderQueue(Operations operations = Operations::system(), QObject* parent = nullptr);

    void request(PreviewRequest request);
    /// Nothing is to be seen: drops what is pending or in flight.
    void clear();
    /// Whether a render is in flight or pending.
    [[nodiscard]] bool isBusy() const { return render_.isBusy() || pending_.has_value(); }

signals:
    void rendered(const ferrow::PreviewResult& result);
    /// The newest request could not be rendered; the sentence for the user.
    void failed(const ferrow::FileUrl& photoID, const QString& message);
    /// The logo could not be loaded and is left out; told once for each logo.
    void logoFailed(const QString& message);
    /// The logo that could not be loaded is there again.
    void logoFound();

private:
    struct Outcome;

    void startIfPossible();
    [[nodiscard]] static Outcome outcomeOf(const PreviewRequest& request, const Operations& operations,
                                           const std::stop_token& stop);
    void finish(const Outcome& outcome);
    void reportLogo(const Outcome& outcome);

    Operations operations_;
    std::optional<PreviewRequest> pending_;
    std::optional<FileUrl> currentPhoto_;
    std::optional<Clock::time_point> lastStart_;
    std::optional<QString> reportedLogo_; ///< File name of the logo whose failure was told.
    bool isWaiting_ = false;              ///< For the interval to pass.
    NewestTask render_;
};

} // namespace ferrow
