// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/CodedEnum.h"
#include "Models/DateFormat.h"
#include "Models/ValueHash.h"

#include <QString>

#include <optional>

namespace ferrow {

enum class MetadataToken {
    filename,
    captureDate,
    camera,
    cameraMake,
    cameraModel,
    lens,
    focalLength,
    aperture,
    shutterSpeed,
    iso,
    exposureCompensation,
    artist,
    copyright,
    title,
    caption,
    year
};
/// Label in menus and on chips: "Capture Date".
[[nodiscard]] QString displayName(MetadataToken token);

/// A token as it stands in a caption, with its options. In a template it is
///
///     {name}   {name|text}   {captureDate:style}   {captureDate:style|text}
///
/// where `text` stands in for a missing value, and the style is `short`, `medium`, `long`, `iso` or a pattern of
/// DateFormat. In both, `\\` is a backslash, `\|` a bar, `\(` and `\)` are braces and `\n` is a line feed: between its
/// own two braces a token never has others, so that whoever does not know options finds where it ends.
struct CaptionToken {
    MetadataToken token = MetadataToken::filename;
    DateFormat date;   ///< Of captureDate alone.
    QString ifMissing; ///< Empty: a missing value is left out.

    CaptionToken(MetadataToken plain) : token(plain) {}
    CaptionToken(MetadataToken plain, DateFormat format, QString text = {});

    struct Reading;
    /// What stands between two braces; with `fault` where it is meant for a token and can't be one.
    [[nodiscard]] static Reading read(QStringView inBraces);
    [[nodiscard]] bool hasOptions() const;
    [[nodiscard]] QString templateValue() const;

    bool operator==(const CaptionToken&) const = default;
};
struct CaptionToken::Reading {
    std::optional<CaptionToken> token;
    QString fault; ///< A sentence.
};

template <>
struct CodedCases<MetadataToken> {
    static constexpr std::array<CodedCase<MetadataToken>, 16> table{
        {{MetadataToken::filename, u"filename"},
         {MetadataToken::captureDate, u"captureDate"},
         {MetadataToken::camera, u"camera"},
         {MetadataToken::cameraMake, u"cameraMake"},
         {MetadataToken::cameraModel, u"cameraModel"},
         {MetadataToken::lens, u"lens"},
         {MetadataToken::focalLength, u"focalLength"},
         {MetadataToken::aperture, u"aperture"},
         {MetadataToken::shutterSpeed, u"shutterSpeed"},
         {MetadataToken::iso, u"iso"},
         {MetadataToken::exposureCompensation, u"exposureCompensation"},
         {MetadataToken::artist, u"artist"},
         {MetadataToken::copyright, u"copyright"},
         {MetadataToken::title, u"title"},
         {MetadataToken::caption, u"caption"},
         {MetadataToken::year, u"year"}}};
};

void feed(ValueHash& hash, const CaptionToken& token);

} // namespace ferrow
