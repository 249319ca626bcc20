// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/ImportedPhoto.h"
#include "Models/RenderRecipe.h"
#include "Session/NewestTask.h"

#include <QImage>
#include <QObject>
#include <QRect>
#include <QTimer>

#include <chrono>
#include <functional>
#include <optional>
#include <stop_token>

namespace ferrow {

/// A framed photo that regions are parts of.
struct RegionSubject {
    ImportedPhoto photo; ///< Its pixels are not needed.
    RenderRecipe recipe;
    PixelSize outputSize;
};

/// A part of a framed photo, in output pixels with the origin at the top left, and how many pixels are wanted of each:
/// at most 1.
struct RegionRequest {
    RegionSubject subject;
    QRect region;
    double scale = 1;
};

struct LoadedRegion {
    QImage image; ///< Ready to paint.
    QRect region;
    double scale = 1;
};

/// The true pixels of what is in view, as an export would write them, where a preview has too few. Loads a little more
/// than is seen, so that panning finds something; an answer for another photo or another framing is dropped. Lives on
/// the main thread.
class RegionLoader : public QObject {
    Q_OBJECT

public:
    /// Called on a worker thread, for the pixels of a region; no picture for none. Throws ImagePipelineError,
    /// Canceled.
    using Compose = std::function<Bitmap(const RegionRequest&, const std::stop_token&)>;

    /// Most output pixels that are loaded at once: four bytes each, on their way to the screen.
    static constexpr std::int64_t maximumPixels = 36'000'000;

    /// After a change of subject, `settling` must pass before anything is loaded: full-size decodes that every step of
    /// a slider drag would start and stop are not free.
    explicit RegionLoader(Compose compose = exported,
                          std::chrono::milliseconds settling = std::chrono::milliseconds(120),
                          QObject* parent = nullptr);

    /// The program's own: ImageExporter::region().
    [[nodiscard]] static Bitmap exported(const RegionRequest& request, const std::stop_token& stop);

    /// Another photo or framing drops the present region and whatever is on its way.
    void setSubject(const std::optional<RegionSubject>& subject);
    /// `visible` (output pixels) is in view at `zoom`: loads it unless it is there or coming.
    void want(const QRect& visible, double zoom);
    /// Nothing is wanted any more.
    void release();
    [[nodiscard]] const std::optional<LoadedRegion>& region() const { return region_; }

signals:
    void loaded();

private:
    struct Wish {
        QRect region;
        double scale = 1;

        [[nodiscard]] bool covers(const QRect& visible, double wantedScale) const;
    };

    void ask();
    void take(const LoadedRegion& region);

    Compose compose_;
    std::optional<RegionSubject> subject_;
    std::optional<LoadedRegion> region_;
    std::optional<Wish> wish_; ///< The last one; it may have been fulfilled.
    bool hasFailed_ = false;   ///< This subject can't be had: not asked for again.
    QTimer settling_;
    NewestTask task_;
};

} // namespace ferrow
