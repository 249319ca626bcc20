// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Pixels/Bitmap.h"

#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

namespace ferrow {

enum class TextAlignment { left, center, right };

struct TextStyle {
    QStringList families; ///< Tried in order; the first that is installed draws the text, the rest fill its gaps.
    bool bold = false;
    /// A style of the first family, such as "Medium Italic", where it is not the regular one. Of a family that has none
    /// of this name, the style that its words are nearest to.
    QString face = {};
    double letterSpacing = 0;                      ///< Behind each letter but a line's last, in sizes.
    double pixelSize = 48;                         ///< 1 … largestSize.
    TextAlignment alignment = TextAlignment::left; ///< Literal, also in right-to-left text.
    double lineSpacing = 0;                        ///< Extra pixels between lines.

    /// Up to which sizes mean something to the font engine.
    static constexpr double largestSize = 20'000;
};

/// The families to ask for, in order, for each typeface choice: the named face, its stand-ins, then color emoji.
namespace FontFamilies {
/// The desktop's user-interface font, else fontconfig's sans-serif. Asked for once; waits 200 ms at most.
[[nodiscard]] QString system();
/// `name` followed by its stand-ins on this platform ("New York" → "PT Serif", "Noto Serif" …). Those of
/// "Arial Rounded MT Bold" are bold only when TextStyle::bold is set.
[[nodiscard]] QStringList chainFor(const QString& name);

/// The names of all families that are installed, in no order. The first call may take a while.
[[nodiscard]] QStringList installed();
[[nodiscard]] bool isInstalled(const QString& family);
/// The styles of a family from light to bold, upright before slanted; none of one that is not installed.
[[nodiscard]] QStringList styles(const QString& family);
/// Whether a family can write Latin letters: signs and emoji, and some of other scripts, can't.
[[nodiscard]] bool hasLetters(const QString& family);
/// What is nearest to a family that is not installed: what the system knows to stand in for it, else system().
[[nodiscard]] QString standInFor(const QString& family);
/// The chain for a family chosen by its name: itself or what stands in for it, then that of the system's font.
[[nodiscard]] QStringList chainForInstalled(const QString& family);
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

    /// Whether all of it stands in such a box: each line with the full height of its font, whatever letters it has, and
    /// no word broken apart.
    [[nodiscard]] bool fits(const QSizeF& box) const;

    /// Where drawn() with that box has its lines, each with the full height of its font, in coordinates of the box.
    [[nodiscard]] std::vector<QRectF> lineRects(const QSizeF& box) const;

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
