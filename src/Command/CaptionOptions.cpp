// SPDX-License-Identifier: GPL-3.0-or-later
#include "Command/Corrections.h"
#include "Command/OptionValues.h"

#include <algorithm>

namespace ferrow::Command {

namespace {

using Kind = Completion::Kind;

/// What captions may name of the photo's shorter side.
constexpr double leastPercent = 0.01;
constexpr double mostPercent = 100;

const Words<CaptionAlignment>& alignmentWords()
{
    static const Words<CaptionAlignment> words{
        {"left", CaptionAlignment::left}, {"center", CaptionAlignment::center}, {"right", CaptionAlignment::right}};
    return words;
}

/// The caption that the options are about.
Caption& captionOf(Settings& settings)
{
    return settings.recipe.captions[settings.caption];
}

/// Goes on to the caption at `index`, be it the preset's or a new one, and shows it.
void beginCaption(Settings& settings, std::size_t index)
{
    std::vector<Caption>& captions = settings.recipe.captions;
    while (captions.size() <= index) {
        const Caption place = settings.recipe.captionLike(captions.size() - 1);
        captions.push_back({.position = place.position, .alignment = place.alignment});
    }
    settings.caption = index;
    captions[index].isEnabled = true;
}

/// Pixels ("48" or "48px") or percent ("4%").
ApplyOption captionLength(Length Caption::*member, double least, double most)
{
    return [=](Arguments& arguments, const QByteArray& option, const QByteArray& value) {
        const bool percent = value.endsWith('%');
        const QByteArray digits = value.chopped(percent ? 1 : value.endsWith("px") ? 2 : 0);
        const Length length{
            number(option, digits, percent ? std::min(least, leastPercent) : least, percent ? mostPercent : most),
            percent ? BorderUnit::percent : BorderUnit::pixels};
        arguments.changes.emplace_back([=](Settings& settings) { captionOf(settings).*member = length; });
    };
}

/// One of the five words, or a family with the style behind a colon where it is not the regular one.
void setCaptionFont(Arguments& arguments, const QByteArray& option, const QByteArray& value)
{
    for (const auto& [word, font] : fontWords())
        if (value == word) {
            arguments.changes.emplace_back([chosen = font](Settings& settings) {
                captionOf(settings).font = chosen;
                captionOf(settings).face.reset();
            });
            return;
        }
    const QString text = QString::fromUtf8(value);
    const FontFace face{text.section(u':', 0, 0).trimmed(), text.section(u':', 1).trimmed()};
    if (face.family.isEmpty())
        misuse(option, QStringLiteral("name a font, such as serif or \"EB Garamond:Medium Italic\"."));
    if (face.family.size() > FontFace::longestName || face.style.size() > FontFace::longestName)
        misuse(option, QStringLiteral("this is longer than any font’s name."));
    arguments.changes.emplace_back([face](Settings& settings) { captionOf(settings).face = face; });
}

ApplyOption captionNumber(double Caption::*member, double least, double most)
{
    return [=](Arguments& arguments, const QByteArray& option, const QByteArray& value) {
        const double parsed = number(option, value, least, most);
        arguments.changes.emplace_back([=](Settings& settings) { captionOf(settings).*member = parsed; });
    };
}

ApplyOption logoNumber(double LogoConfiguration::*member, double least, double most)
{
    return [=](Arguments& arguments, const QByteArray& option, const QByteArray& value) {
        const double parsed = number(option, value, least, most);
        arguments.logoChanges.emplace_back([=](LogoConfiguration& logo) { logo.*member = parsed; });
    };
}

void addCaption(Arguments& arguments, const QByteArray& option, const QByteArray& value)
{
    if (arguments.captions == RenderRecipe::mostCaptions)
        misuse(option, QStringLiteral("a photo has at most %1 captions.").arg(RenderRecipe::mostCaptions));
    const QString text = QString::fromUtf8(value);
    if (const QString fault = CaptionSegment::faultOf(text); !fault.isEmpty())
        misuse(option, fault);
    arguments.changes.emplace_back([text, index = arguments.captions++](Settings& settings) {
        beginCaption(settings, index);
        captionOf(settings).setCaptionTemplate(text);
    });
}

void setLogoPadding(Arguments& arguments, const QByteArray& option, const QByteArray& value)
{
    const qsizetype comma = value.indexOf(',');
    const double horizontal = number(option, comma < 0 ? value : value.left(comma), 0, mostPixels);
    const double vertical = comma < 0 ? horizontal : number(option, value.mid(comma + 1), 0, mostPixels);
    arguments.logoChanges.emplace_back([=](LogoConfiguration& logo) {
        logo.horizontalPadding = horizontal;
        logo.verticalPadding = vertical;
    });
}

std::vector<QByteArray> fieldWords()
{
    std::vector<QByteArray> words;
    for (const MetadataField field : allCases<MetadataField>())
        words.push_back(rawValue(field).toLatin1() + '=');
    return words;
}

} // namespace

OptionSection captionOptions()
{
    return {"Caption",
            {{.name = "--caption",
              .value = "TEMPLATE",
              .help = "text with tokens such as {camera}, {lens}, {iso}; another one begins another caption (up to 6), "
                      "and the options after it are its own; {lens|TEXT} has a TEXT for photos without one, "
                      "{captureDate:STYLE} is short, medium, long, iso, or a pattern: d MMMM y",
              .apply = addCaption},
             {.name = "--no-caption", .help = "none, whatever the preset has", .apply = change([](Settings& settings) {
                                                                                   for (Caption& caption :
                                                                                        settings.recipe.captions)
                                                                                       caption.isEnabled = false;
                                                                               })},
             {.name = "--caption-position",
              .value = "POSITION",
              .help = "where it stands; see Positions",
              .completion = offering(positionWords()),
              .apply = choice(positionWords(), [](Settings& s, CaptionPosition p) { captionOf(s).position = p; })},
             {.name = "--caption-font",
              .value = "FONT",
              .help = "system, rounded, serif, monospaced, geometric, or a family and its style: \"EB Garamond:Medium "
                      "Italic\"",
              .completion = offering(fontWords()),
              .apply = setCaptionFont},
             {.name = "--caption-size",
              .value = "LENGTH",
              .help = "pixels (48) or percent of the shorter side (4%)",
              .apply = captionLength(&Caption::fontSize, 1, 10'000)},
             {.name = "--caption-fit",
              .help = "smaller where it would be cut off otherwise",
              .apply = change([](Settings& settings) { captionOf(settings).shrinksToFit = true; })},
             {.name = "--caption-uppercase", .help = "capital letters", .apply = change([](Settings& settings) {
                                                                            captionOf(settings).isUppercase = true;
                                                                        })},
             {.name = "--caption-letter-spacing",
              .value = "-20..20",
              .help = "between letters, in percent of the size",
              .apply = captionNumber(&Caption::letterSpacing, -Caption::mostLetterSpacing, Caption::mostLetterSpacing)},
             {.name = "--caption-color",
              .value = "COLOR",
              .help = "#rrggbb or #rrggbbaa",
              .apply =
                  [](Arguments& arguments, const QByteArray& option, const QByteArray& value) {
                      const RGBAColor parsed = color(option, value);
                      arguments.changes.emplace_back([parsed](Settings& s) { captionOf(s).color = parsed; });
                  }},
             {.name = "--caption-opacity",
              .value = "0..1",
              .help = "how much it hides of what is behind it",
              .apply = captionNumber(&Caption::opacity, 0, 1)},
             {.name = "--caption-align",
              .value = "SIDE",
              .help = "left, center or right",
              .completion = offering(alignmentWords()),
              .apply = choice(alignmentWords(), [](Settings& s, CaptionAlignment a) { captionOf(s).alignment = a; })},
             {.name = "--caption-spacing",
              .value = "LENGTH",
              .help = "between its lines",
              .apply = captionLength(&Caption::lineSpacing, 0, mostPixels)},
             {.name = "--caption-padding",
              .value = "LENGTH",
              .help = "space on its left and right",
              .apply = captionLength(&Caption::padding, 0, mostPixels)},
             {.name = "--caption-vertical-padding",
              .value = "LENGTH",
              .help = "space above and below it",
              .apply = captionLength(&Caption::verticalPadding, 0, mostPixels)}}};
}

OptionSection correctionOptions()
{
    return {"Values in captions (files keep theirs, also framed copies)",
            {{.name = "--set",
              .value = "FIELD=VALUE",
              .help = "what captions say of every photo, such as lens=\"Helios 44-2\"; nothing behind = for missing",
              .completion = {Kind::words, fieldWords()},
              .apply =
                  [](Arguments& arguments, const QByteArray& option, const QByteArray& value) {
                      const qsizetype equals = value.indexOf('=');
                      if (equals < 0)
                          misuse(option, QStringLiteral("give a name and a value, such as lens=\"Helios 44-2\"."));
                      addCorrection(arguments.corrections, QString::fromUtf8(value.left(equals)),
                                    QString::fromUtf8(value.mid(equals + 1)), QString::fromUtf8(option));
                  }},
             {.name = "--corrections",
              .value = "FILE",
              .help = "the same for single photos: an object a line, such as {\"path\": \"a.jpg\", \"captureDate\": "
                      "\"1987-06-21\"}",
              .takers = takenByBatch,
              .completion = {Kind::file},
              .apply = [](Arguments& arguments, const QByteArray&, const QByteArray& value) {
                  arguments.correctionsFile = FileUrl::fromPath(value);
              }}}};
}

OptionSection logoOptions()
{
    return {"Logo",
            {{.name = "--logo",
              .value = "FILE",
              .help = "PNG, TIFF, PDF or SVG",
              .completion = {Kind::file},
              .apply = [](Arguments& arguments, const QByteArray&,
                          const QByteArray& value) { arguments.logoFile = FileUrl::fromPath(value); }},
             {.name = "--logo-position",
              .value = "POSITION",
              .help = "where it stands; see Positions",
              .completion = offering(positionWords()),
              .apply =
                  [](Arguments& arguments, const QByteArray& option, const QByteArray& value) {
                      const CaptionPosition position = oneOf(option, value, positionWords());
                      arguments.logoChanges.emplace_back(
                          [position](LogoConfiguration& logo) { logo.position = position; });
                  }},
             {.name = "--logo-width",
              .value = "PERCENT",
              .help = "of the photo's width, from 1 to 100",
              .apply = logoNumber(&LogoConfiguration::widthPercent, 1, 100)},
             {.name = "--logo-opacity",
              .value = "0..1",
              .help = "how much it hides of what is behind it",
              .apply = logoNumber(&LogoConfiguration::opacity, 0, 1)},
             {.name = "--logo-padding",
              .value = "H[,V]",
              .help = "pixels on its left and right, and above and below it",
              .apply = setLogoPadding}}};
}

} // namespace ferrow::Command
