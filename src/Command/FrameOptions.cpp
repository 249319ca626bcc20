// SPDX-License-Identifier: GPL-3.0-or-later
#include "Command/OptionValues.h"

#include <array>

namespace ferrow::Command {

namespace {

using Kind = Completion::Kind;
using Change = std::function<void(Settings&)>;

Change borderChange(const QByteArray& option, const QByteArray& word)
{
    const Length width = length(option, word);
    return [width](Settings& settings) {
        settings.recipe.border.unit = width.unit;
        settings.recipe.border.width = width.value;
        settings.recipe.border.sides.reset();
    };
}

Change borderSidesChange(const QByteArray& option, const QByteArray& word)
{
    const QList<QByteArray> words = word.split(',');
    if (words.size() != 4)
        misuse(option, QStringLiteral("give four widths, top, right, bottom and left, such as 4%,4%,16%,4%."));
    std::array<Length, 4> lengths;
    for (int i = 0; i < 4; ++i)
        lengths[std::size_t(i)] = length(option, words[i]);
    const auto [top, right, bottom, left] = lengths;
    for (const Length& side : lengths)
        if (side.unit != top.unit)
            misuse(option, QStringLiteral("the four widths must all be in pixels or all in percent."));
    return [sides = SideLengths{top.value, right.value, bottom.value, left.value}, unit = top.unit](Settings& s) {
        s.recipe.border.unit = unit;
        s.recipe.border.width = sides.top; // It must not be read in another unit once the sides are linked again.
        s.recipe.border.sides = sides;
    };
}

/// "4:5", or "photo" for none.
Change shapeChange(const QByteArray& option, const QByteArray& word)
{
    if (word == "photo")
        return [](Settings& settings) { settings.recipe.border.shape.reset(); };
    constexpr double least = 0.01;
    constexpr double most = 10'000;
    const QList<QByteArray> numbers = word.split(':');
    if (numbers.size() != 2)
        misuse(option, QStringLiteral("give a ratio of width and height, such as 4:5, or photo."));
    const double width = number(option, numbers[0], least, most);
    const double height = number(option, numbers[1], least, most);
    return [width, height](Settings& settings) {
        FrameShape shape = settings.recipe.border.shape.value_or(FrameShape());
        shape.width = width;
        shape.height = height;
        settings.recipe.border.shape = shape;
    };
}

/// "6px,48px,#c8a96a", or "none".
Change lineChange(const QByteArray& option, const QByteArray& word)
{
    if (word == "none")
        return [](Settings& settings) { settings.recipe.border.line.reset(); };
    const QList<QByteArray> words = word.split(',');
    if (words.size() != 3)
        misuse(option, QStringLiteral("give thickness, distance from the photo and color, such as 6px,48px,#c8a96a, or "
                                      "none."));
    const FrameLine line{length(option, words[0]), length(option, words[1]), color(option, words[2])};
    return [line](Settings& settings) { settings.recipe.border.line = line; };
}

/// "color", or "blur" with what differs from the defaults.
Change backgroundChange(const QByteArray& option, const QByteArray& word)
{
    if (word == "color")
        return [](Settings& settings) { settings.recipe.border.blurredBackground.reset(); };
    const qsizetype colon = word.indexOf(':');
    if ((colon < 0 ? word : word.left(colon)) != "blur")
        misuse(option, QStringLiteral("give color, or blur with blur and dim from 0 to 100, such as blur:40,25."));
    BlurredBackground background;
    if (colon >= 0) {
        const QList<QByteArray> numbers = word.mid(colon + 1).split(',');
        background.blur = number(option, numbers[0], 0, 100);
        if (numbers.size() > 1)
            background.dim = number(option, numbers[1], 0, 100);
        if (numbers.size() > 2)
            misuse(option, QStringLiteral("“%1” is one number too many.").arg(QString::fromUtf8(numbers[2])));
    }
    return [background](Settings& settings) { settings.recipe.border.blurredBackground = background; };
}

Change cornersChange(const QByteArray& option, const QByteArray& word)
{
    const Length radius = length(option, word);
    return [radius](Settings& settings) { settings.recipe.border.photoEdge.cornerRadius = radius; };
}

Change borderColorChange(const QByteArray& option, const QByteArray& word)
{
    const RGBAColor parsed = color(option, word);
    return [parsed](Settings& settings) { settings.recipe.border.color = parsed; };
}

ApplyOption changedBy(Change (*parse)(const QByteArray& option, const QByteArray& word))
{
    return [parse](Arguments& arguments, const QByteArray& option, const QByteArray& value) {
        arguments.changes.push_back(parse(option, value));
    };
}

ApplyOption photoShadow(bool hasShadow)
{
    return change([hasShadow](Settings& settings) { settings.recipe.border.photoEdge.hasShadow = hasShadow; });
}

} // namespace

OptionSection frameOptions()
{
    return {"Frame",
            {{.name = "--border",
              .value = "WIDTH",
              .help = "pixels (120px) or percent of the shorter side (4%)",
              .apply = changedBy(borderChange)},
             {.name = "--border-sides",
              .value = "T,R,B,L",
              .help = "a width for each side: top, right, bottom, left",
              .apply = changedBy(borderSidesChange)},
             {.name = "--border-color",
              .value = "COLOR",
              .help = "#rrggbb or #rrggbbaa",
              .apply = changedBy(borderColorChange)},
             {.name = "--shape",
              .value = "W:H",
              .help = "the frame grows to this ratio (4:5); photo for none",
              .completion = {Kind::words, {"photo"}},
              .apply = changedBy(shapeChange)},
             {.name = "--shape-turns",
              .help = "5:4 in place of 4:5 for photos that lie the other way",
              .apply =
                  [](Arguments& arguments, const QByteArray&, const QByteArray&) {
                      arguments.shapeChanges.emplace_back([](FrameShape& shape) { shape.turnsWithPhoto = true; });
                  }},
             {.name = "--balance",
              .value = "-100..100",
              .help = "where the photo stands in the room that the shape adds: -100 top or left, 100 bottom or right",
              .apply =
                  [](Arguments& arguments, const QByteArray& option, const QByteArray& value) {
                      const double balance = number(option, value, -100, 100);
                      arguments.shapeChanges.emplace_back([balance](FrameShape& shape) { shape.balance = balance; });
                  }},
             {.name = "--background",
              .value = "KIND",
              .help = "color, or the photo: blur or blur:40,25 (blur and dim, 0 to 100 each)",
              .completion = {Kind::words, {"color", "blur"}},
              .apply = changedBy(backgroundChange)},
             {.name = "--line",
              .value = "T,D,COLOR",
              .help = "a line around the photo: thickness, distance from the photo, color (6px,48px,#c8a96a); none",
              .completion = {Kind::words, {"none"}},
              .apply = changedBy(lineChange)},
             {.name = "--corners",
              .value = "RADIUS",
              .help = "round corners of the photo (24px or 2%)",
              .apply = changedBy(cornersChange)},
             {.name = "--photo-shadow", .help = "a shadow below the photo", .apply = photoShadow(true)},
             {.name = "--no-photo-shadow", .help = "none, whatever the preset has", .apply = photoShadow(false)}}};
}

} // namespace ferrow::Command
