// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Features/PreviewPane/PreviewViewport.h"
#include "Session/NewestTask.h"
#include "Session/PreviewRenderQueue.h"
#include "Session/RegionLoader.h"

#include <QColor>
#include <QImage>
#include <QObject>

#include <memory>
#include <optional>
#include <vector>

class QPainter;

namespace ferrow {

/// Whether a frame of that color needs a line round it to be told from the backdrop.
[[nodiscard]] bool needsHairline(const RGBAColor& border, const QColor& backdrop);

/// What the exported picture of this photo measures, as largestLayout() has it; absent where it can't be rendered.
[[nodiscard]] std::optional<PixelSize> framedSize(const ImportedPhoto& photo, const RenderRecipe& recipe,
                                                  const OutputSize& size);

/// The photo in its frame as the pane shows it: the thumbnail with the caption as a stand-in, then each render, true
/// pixels over it where a render has too few, the bare photo while comparing. Keeps the pixels at the size they are
/// painted at, so that painting is a copy; they are made in the background. Lives on the main thread.
class PreviewPicture : public QObject {
    Q_OBJECT

public:
    explicit PreviewPicture(QObject* parent = nullptr);

    void clear();
    /// Another photo, of which only a thumbnail is there; it may be null. `size` is what it is written at.
    void showStandIn(const ImportedPhoto& photo, const RenderRecipe& recipe, const OutputSize& size,
                     const QImage& thumbnail);
    /// A render of that photo. What was shown stays until the new one has been brought to its size.
    void showRendered(const PreviewResult& result);
    /// What the captions say of the photo shown from now on; a render with them follows.
    void setCorrections(const MetadataCorrections& corrections);
    /// What comparing shows, in the photo's own colors.
    void setBare(const Bitmap& picture);
    void setComparing(bool isComparing);

    [[nodiscard]] bool isShown() const { return photo_.has_value(); }
    [[nodiscard]] bool isStandIn() const { return isShown() && !shown_; }
    /// Of what is shown at present; empty without anything.
    [[nodiscard]] PixelSize outputSize() const;
    /// What it is framed with at present.
    [[nodiscard]] const RenderRecipe& recipe() const { return shown_ ? shown_->recipe : recipe_; }

    /// The picture is seen like this from now on: asks for what is missing.
    void setView(const PreviewViewport& view);
    /// Paints in device pixels of the view.
    void paint(QPainter& painter, const QColor& backdrop) const;

signals:
    /// To be painted again.
    void changed();
    void outputSizeChanged();

private:
    struct Scaling {
        std::shared_ptr<const PreviewResult> result; ///< Null for the bare photo.
        QSize size;

        bool operator==(const Scaling&) const = default;
    };

    /// A part of the caption, in device pixels of the picture.
    struct Lettering {
        QImage image;
        QPoint place;
    };

    [[nodiscard]] static std::vector<Lettering> lettering(const ImportedPhoto& photo, const RenderRecipe& recipe,
                                                          double scale, const std::stop_token& stop);
    [[nodiscard]] QRect onScreen(const QRectF& outputRect) const;
    [[nodiscard]] QRect photoOnScreen() const;
    [[nodiscard]] QSize paintedSize(QSize onScreen, QSize own) const;
    [[nodiscard]] bool showsSquares() const;
    void scaleNewest();
    void adopt(const std::shared_ptr<const PreviewResult>& result, const QImage& pixels);
    void prepareBare();
    void prepareCaption();
    void wantRegion();
    void paintStandIn(QPainter& painter) const;
    void paintRendered(QPainter& painter) const;
    void paintCompared(QPainter& painter) const;
    void paintBare(QPainter& painter) const;
    void paintImage(QPainter& painter, const QRect& target, const QImage& image) const;

    PreviewViewport view_;
    std::optional<ImportedPhoto> photo_;
    RenderRecipe recipe_; ///< Of the stand-in.
    PixelSize standInSize_;
    QRectF standInPhoto_; ///< Output pixels, origin at the top left.
    QImage thumbnail_;
    std::vector<Lettering> caption_; ///< The stand-in's, for a picture of captionSize_.
    QSize captionSize_;
    std::shared_ptr<const PreviewResult> newest_;
    std::shared_ptr<const PreviewResult> shown_;
    QImage pixels_; ///< Those of shown_, at the size on screen, or their own where that is far larger than the view.
    Bitmap bare_;
    QImage barePixels_;
    Scaling askedScaling_; ///< The last ones asked for; they may be done.
    Scaling askedBareScaling_;
    bool isComparing_ = false;
    NewestTask scaling_;
    NewestTask bareScaling_;
    NewestTask lettering_;
    RegionLoader regions_;
};

} // namespace ferrow
