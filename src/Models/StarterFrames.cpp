// SPDX-License-Identifier: GPL-3.0-or-later
#include "Models/StarterFrames.h"

namespace ferrow {

namespace {

/// What one frame differs in from another. Lengths in percent of the photo's shorter side.
struct Row {
    const char16_t* name;
    const char16_t* description;
    SideLengths border;
    RGBAColor borderColor;
    bool showsCaption;
    const char16_t* caption; ///< Template.
    CaptionFont font;
    double fontSize;
    double bottomPadding; ///< Leaves one line of that size in the middle of the lower border, or a little above.
    RGBAColor textColor;
};

constexpr RGBAColor gray(double level)
{
    return {level, level, level, 1};
}

/// The model says what the camera is; its make most often says the model's first word again.
const Row rows[] = {
    {u"Clean White",
     u"Even border, no caption",
     {5, 5, 5, 5},
     RGBAColor::white,
     false,
     u"{cameraModel} · {focalLength} · {aperture} · {shutterSpeed}",
     CaptionFont::system,
     1.6,
     1.5,
     gray(0.3)},
    {u"Gallery Black",
     u"Wide border, caption",
     {10, 10, 10, 10},
     gray(0.067),
     true,
     u"{cameraModel} · {focalLength} · {aperture} · {shutterSpeed}",
     CaptionFont::system,
     2.2,
     3.6,
     gray(0.85)},
    {u"Instant",
     u"Deep lower border, title",
     {6, 6, 24, 6},
     {0.984, 0.973, 0.949, 1},
     true,
     u"{title}\n{cameraModel}",
     CaptionFont::serif,
     4.4,
     7.5,
     gray(0.2)},
};

Caption captionOf(const Row& row)
{
    const auto percent = [](double value) { return Length{value, BorderUnit::percent}; };
    Caption caption;
    caption.isEnabled = row.showsCaption;
    caption.setCaptionTemplate(QString::fromUtf16(row.caption));
    caption.position = CaptionPosition::borderBottomCenter;
    caption.alignment = CaptionAlignment::center;
    caption.font = row.font;
    caption.fontSize = percent(row.fontSize);
    caption.shrinksToFit = true;
    caption.color = row.textColor;
    caption.lineSpacing = percent(row.fontSize / 8);
    caption.padding = percent(row.border.left);
    caption.verticalPadding = percent(row.bottomPadding);
    caption.opacity = 1;
    return caption;
}

StarterFrame frameOf(const Row& row)
{
    StarterFrame frame{QString::fromUtf16(row.name), QString::fromUtf16(row.description), {}};
    Border& border = frame.recipe.border;
    border.unit = BorderUnit::percent;
    border.width = row.border.top;
    border.color = row.borderColor;
    if (row.border.bottom != row.border.top)
        border.sides = row.border;
    frame.recipe.captions = {captionOf(row)};
    return frame;
}

} // namespace

const std::vector<StarterFrame>& starterFrames()
{
    static const std::vector<StarterFrame> frames = [] {
        std::vector<StarterFrame> made;
        for (const Row& row : rows)
            made.push_back(frameOf(row));
        return made;
    }();
    return frames;
}

} // namespace ferrow
