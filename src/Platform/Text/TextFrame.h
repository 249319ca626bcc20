// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Pixels/Bitmap.h"

#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QString>
#include <QStringList>

#include <memory>

namespace ferrow {

enum class TextAlignment { left, center, right };

struct TextStyle {
    QStringList families; ///< Tried in order; the first that is installed draws the text, the rest fill its gaps.
    bool bold = false;
    double pixelSize = 48;                         ///< 1 … 20,000.
    TextAlignment alignment = TextAlignment::left; ///< Literal, also in right-to-left text.
    double lineSpacing = 0;                        ///< Extra pixels between lines.
};

/// The families to ask for, in order, for each typeface choice: the named face, its stand-ins, then color emoji.
namespace FontFamilies {
/// The desktop's user-interface font, else fontconfig's sans-serif. Asked for once; waits 200 ms at most.
[[nodiscard]] QString system();
/// `name` followed by its stand-ins on this platform ("New York" → "PT Serif", "Noto Serif" …). Those of
/// "Arial Rounded MT Bold" are bold only when TextStyle::bold is set.
[[nodiscard]] QStringList chainFor(const QString& name);
} // namespace FontFamilies

/// What is missing of a text in a box that is too small for it.
struct TextCut {
    QString leftOut;          ///< What stands in lines that are not drawn, on one line.
    bool cutsLetters = false; ///< Of what is drawn, some letters are not whole.

    [[nodiscard]] bool isCut() const { return cutsLetters || !leftOut.isEmpty(); }
    bool operator==(const TextCut&) const = default;
};

/// A text broken into lines, measured and drawn. Needs a QGuiApplication (the offscreen platform will do); any thread.
/// Fractional sizes and unhinted metrics, so that lines break alike at every scale. Line feeds of all kinds begin a new
/// line; other control characters and white space at the end of a line are left out.
class TextFrame {
public:
    TextFrame(const QString& text, const TextStyle& style);
    ~TextFrame();
    TextFrame(TextFrame&&) noexcept;
    TextFrame& operator=(TextFrame&&) noexcept;

    /// Extent of the lines, broken at `constraint.width()` pixels, that fit `constraint.height()`: at least the first.
    [[nodiscard]] QSizeF suggestedSize(const QSizeF& constraint) const;

    /// The text laid out in a box of `box` pixels, drawn with its first line at the top.
    /// `red`, `green`, `blue`, `alpha` 0…1 in sRGB; color glyphs keep their colors and take the alpha.
    /// Lines that do not fit whole into the box's height are left out, but never the first.
    /// The bitmap is premultiplied RGBA in sRGB, ceil(box) pixels plus `margin` on every side, in which glyphs may
    /// overhang the box; the box's left top corner lies `offset` (0…1 each way) inside pixel (margin, margin).
    [[nodiscard]] Bitmap drawn(const QSizeF& box, QPointF offset, int margin, double red, double green, double blue,
                               double alpha) const;

    /// What drawn() with that box leaves out, and what is lost of it outside `visible`, in coordinates of the box.
    /// Letters are looked at in pixels: only what would be seen counts.
    [[nodiscard]] TextCut cutIn(const QSizeF& box, const QRectF& visible) const;

private:
    struct Implementation;
    std::unique_ptr<Implementation> implementation_;
};

/// A drop shadow of `shape`: its alpha blurred by a Gaussian of `sigma` pixels, black at `alpha`, same size as `shape`
/// (give it a margin of 3 sigma). Not moved: the caller places it.
[[nodiscard]] Bitmap dropShadow(const Bitmap& shape, double sigma, double alpha);

} // namespace ferrow
