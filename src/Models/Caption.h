// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/Border.h"
#include "Models/CaptionToken.h"
#include "Models/CodedEnum.h"
#include "Models/RGBAColor.h"
#include "Models/ValueHash.h"

#include <QString>
#include <QUuid>

#include <optional>
#include <variant>
#include <vector>

namespace ferrow {

enum class CaptionSeparator { middleDot, verticalBar, emDash, lineBreak };
/// Label in menus, with two spaces before the symbol.
[[nodiscard]] QString displayName(CaptionSeparator separator);
/// Glyph on a chip.
[[nodiscard]] QString chipLabel(CaptionSeparator separator);

/// One chip of a caption: text kept exactly, a metadata token, or a separator.
struct CaptionSegment {
    using Content = std::variant<QString, CaptionToken, CaptionSeparator>;

    QUuid id = QUuid::createUuid();
    Content content;

    /// Token camera, middle dot, token lens; the identifiers are made once for the whole process.
    [[nodiscard]] static const std::vector<CaptionSegment>& defaultCaption();
    /// Segments of a template string, each with a fresh identifier.
    [[nodiscard]] static std::vector<CaptionSegment> parse(const QString& captionTemplate);
    [[nodiscard]] QString templateValue() const;
    /// The template string that parse() reads as these.
    [[nodiscard]] static QString templateOf(const std::vector<CaptionSegment>& segments);
    /// What is wrong with a token's options, a sentence; empty where all is well. parse() takes such a token for text.
    [[nodiscard]] static QString faultOf(const QString& captionTemplate);

    bool operator==(const CaptionSegment&) const = default;
};

enum class CaptionPosition {
    imageTopLeft,
    imageTopCenter,
    imageTopRight,
    imageCenterLeft,
    imageCenter,
    imageCenterRight,
    imageBottomLeft,
    imageBottomCenter,
    imageBottomRight,
    borderTopLeft,
    borderTopCenter,
    borderTopRight,
    borderBottomLeft,
    borderBottomCenter,
    borderBottomRight
};
[[nodiscard]] bool isInBorder(CaptionPosition position);

enum class CaptionFont { system, rounded, serif, monospaced, avenirNext };
/// A font family by its name, installed or not.
struct FontFace {
    QString family; ///< Never empty, and at most `longestName` of UTF-16.
    QString style;  ///< As the family calls it: "Medium Italic". Empty for its regular one.

    static constexpr qsizetype longestName = 200;

    bool operator==(const FontFace&) const = default;
};

enum class CaptionAlignment { left, center, right };
/// The alignment of a text that stands in that column.
[[nodiscard]] CaptionAlignment alignmentAt(CaptionPosition position);

/// One text on a framed photo.
struct Caption {
    bool isEnabled = true;
    std::vector<CaptionSegment> segments = CaptionSegment::defaultCaption();
    CaptionPosition position = CaptionPosition::borderBottomRight;
    CaptionFont font = CaptionFont::system;
    std::optional<FontFace> face = std::nullopt; ///< In place of `font`.
    Length fontSize{48, BorderUnit::pixels};
    double letterSpacing = 0; ///< Percent of the size that is added behind each letter: -20…20, beyond counts as these.
    bool isUppercase = false;  ///< Drawn in capitals, whatever the chips say.
    bool shrinksToFit = false; ///< The size is the greatest, up to `fontSize`, at which all lines stand in their place.
    RGBAColor color = RGBAColor::black;
    CaptionAlignment alignment = CaptionAlignment::right;
    Length lineSpacing{8, BorderUnit::pixels};
    Length padding{36, BorderUnit::pixels};
    Length verticalPadding{16, BorderUnit::pixels};
    double opacity = 0.9;

    static constexpr double mostLetterSpacing = 20;

    /// The text form of the segments. Setting it makes segments with fresh identifiers.
    [[nodiscard]] QString captionTemplate() const;
    void setCaptionTemplate(const QString& captionTemplate);

    /// Switches the unit of every length and keeps what a photo of `size` shows.
    void convert(BorderUnit to, PixelSize size);

    bool operator==(const Caption&) const = default;
};

template <>
struct CodedCases<CaptionSeparator> {
    static constexpr std::array<CodedCase<CaptionSeparator>, 4> table{{{CaptionSeparator::middleDot, u" \u00B7 "},
                                                                       {CaptionSeparator::verticalBar, u" | "},
                                                                       {CaptionSeparator::emDash, u" \u2014 "},
                                                                       {CaptionSeparator::lineBreak, u"\n"}}};
};

template <>
struct CodedCases<CaptionPosition> {
    static constexpr std::array<CodedCase<CaptionPosition>, 15> table{
        {{CaptionPosition::imageTopLeft, u"Image \u00B7 Top Left"},
         {CaptionPosition::imageTopCenter, u"Image \u00B7 Top Center"},
         {CaptionPosition::imageTopRight, u"Image \u00B7 Top Right"},
         {CaptionPosition::imageCenterLeft, u"Image \u00B7 Center Left"},
         {CaptionPosition::imageCenter, u"Image \u00B7 Center"},
         {CaptionPosition::imageCenterRight, u"Image \u00B7 Center Right"},
         {CaptionPosition::imageBottomLeft, u"Image \u00B7 Bottom Left"},
         {CaptionPosition::imageBottomCenter, u"Image \u00B7 Bottom Center"},
         {CaptionPosition::imageBottomRight, u"Image \u00B7 Bottom Right"},
         {CaptionPosition::borderTopLeft, u"Border \u00B7 Top Left"},
         {CaptionPosition::borderTopCenter, u"Border \u00B7 Top Center"},
         {CaptionPosition::borderTopRight, u"Border \u00B7 Top Right"},
         {CaptionPosition::borderBottomLeft, u"Border \u00B7 Bottom Left"},
         {CaptionPosition::borderBottomCenter, u"Border \u00B7 Bottom Center"},
         {CaptionPosition::borderBottomRight, u"Border \u00B7 Bottom Right"}}};
};

template <>
struct CodedCases<CaptionFont> {
    static constexpr std::array<CodedCase<CaptionFont>, 5> table{{{CaptionFont::system, u"System"},
                                                                  {CaptionFont::rounded, u"Rounded"},
                                                                  {CaptionFont::serif, u"New York"},
                                                                  {CaptionFont::monospaced, u"Monospaced"},
                                                                  {CaptionFont::avenirNext, u"Avenir Next"}}};
};

template <>
struct CodedCases<CaptionAlignment> {
    static constexpr std::array<CodedCase<CaptionAlignment>, 3> table{{{CaptionAlignment::left, u"Left"},
                                                                       {CaptionAlignment::center, u"Center"},
                                                                       {CaptionAlignment::right, u"Right"}}};
};

void feed(ValueHash& hash, const CaptionSegment& segment);
void feed(ValueHash& hash, const FontFace& face);
void feed(ValueHash& hash, const Caption& caption);

} // namespace ferrow

template <>
struct std::hash<ferrow::CaptionSegment> : ferrow::ValueHasher {
};
template <>
struct std::hash<ferrow::Caption> : ferrow::ValueHasher {
};
