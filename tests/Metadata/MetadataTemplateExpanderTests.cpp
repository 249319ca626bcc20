// SPDX-License-Identifier: GPL-3.0-or-later
#include "Metadata/MetadataTemplateExpander.h"

#include "Support/TestSupport.h"

#include <QTimeZone>

namespace ferrow {

using namespace Qt::StringLiterals;
namespace {

PhotoMetadata sparse()
{
    PhotoMetadata metadata;
    metadata.filename = u"IMG_1.jpg"_s;
    metadata.cameraMake = u"Canon"_s;
    metadata.cameraModel = u"Canon EOS R5"_s;
    metadata.iso = u"400"_s;
    metadata.exposureCompensation = u"-1 EV"_s;
    metadata.title = u"  Dune  "_s;
    metadata.caption = u"{iso} on {lens}\r\nline two -"_s;
    metadata.captureDate = QDateTime(QDate(2024, 12, 31), QTime(23, 30), QTimeZone::utc());
    return metadata;
}

} // namespace

TEST(MetadataTemplateExpander, replacesAndTidies)
{
    const std::pair<QString, QString> rows[] = {
        {u" \u00B7  | \u2014 \n - "_s, {}},
        {u"{camera} \u00B7 {lens} \u00B7 {iso}"_s, u"Canon Canon EOS R5 \u00B7 \u00B7 400"_s},
        {u"{lens}\n\n{iso}\n"_s, u"400"_s},
        {u"{aperture} | {shutterSpeed} | {iso} | {aperture}"_s, u"400"_s},
        {u"by\t \t{title}by"_s, u"by Dune by"_s},
        {u"a\u00A0\u00A0b"_s, u"a\u00A0\u00A0b"_s},
        {u"a\rb\u2028c\u2029d\u0085e\ff"_s, u"a\nb\nc\nd\ne\nf"_s},
        {u"{exposureCompensation}"_s, u"1 EV"_s},
        {u"at {exposureCompensation}"_s, u"at -1 EV"_s},
        {u"{iso}{iso}{Iso} {none} {iso"_s, u"400400{Iso} {none} {iso"_s},
        {u"{{iso}}{}{"_s, u"{400}{}{"_s},
        {u"{caption}"_s, u"{iso} on {lens}\nline two"_s},
        {u"{lens|{iso}}"_s, u"{lens|400}"_s},
        {u"{lens|by \\(hand\\)}, {iso|no} {lens|a\\nb}"_s, u"by {hand}, 400 a\nb"_s},
        {u"{aperture| \u00B7 }{captureDate:qq}{captureDate:iso"_s, u"{captureDate:qq}{captureDate:iso"_s},
    };
    for (const auto& [captionTemplate, expected] : rows)
        EXPECT_EQ(MetadataTemplateExpander::expand(captionTemplate, sparse()), expected);
}

TEST(MetadataTemplateExpander, knowsEveryToken)
{
    PhotoMetadata metadata = sparse();
    metadata.lens = u"XF23"_s;
    metadata.focalLength = u"35 mm"_s;
    metadata.aperture = u"f/2.8"_s;
    metadata.shutterSpeed = u"1/250 s"_s;
    metadata.artist = u"me"_s;
    metadata.copyright = u"(c)"_s;
    const QString tokens =
        u"{filename};{captureDate};{camera};{cameraMake};{cameraModel};{lens};{focalLength};{aperture};"
        "{shutterSpeed};{iso};{exposureCompensation};{artist};{copyright};{title};{year}"_s;
    // New Year's Eve in UTC is New Year's Day where the tests run.
    EXPECT_EQ(MetadataTemplateExpander::expand(tokens, metadata),
              u"IMG_1.jpg;Jan 1, 2025;Canon Canon EOS R5;Canon;Canon EOS R5;XF23;35 mm;f/2.8;1/250 s;400;-1 EV;me;(c);"
              " Dune ;2025"_s);
    for (const auto& [token, name] : CodedCases<MetadataToken>::table)
        EXPECT_EQ(MetadataTemplateExpander::tokenValue(token, {}).has_value(), token == MetadataToken::filename)
            << int(token);
}

TEST(MetadataTemplateExpander, writesDatesAsTheirStyleSays)
{
    const std::pair<const char*, const char*> rows[] = {
        {"{captureDate:short}", "1/1/25"},
        {"{captureDate:medium}", "Jan 1, 2025"},
        {"{captureDate:long}", "January 1, 2025"},
        {"{captureDate:iso|none}", "2025-01-01"},
        {"{captureDate:EEEE, d. MMM yy 'at' mm}", "Wednesday, 1. Jan 25 at 30"},
    };
    PhotoMetadata metadata = sparse();
    for (const auto& [captionTemplate, expected] : rows)
        EXPECT_EQ(MetadataTemplateExpander::expand(QString::fromLatin1(captionTemplate), metadata),
                  QLatin1StringView(expected));
    metadata.captureDate.reset();
    EXPECT_EQ(MetadataTemplateExpander::expand(u"{captureDate:y|none}, {captureDate:y}{lens| }x"_s, metadata),
              u"none, x"_s);
}

TEST(MetadataTemplateExpander, boundsWhatARepeatedTokenGrowsTo)
{
    PhotoMetadata metadata = sparse();
    metadata.title = QString(30'000, u'x');
    EXPECT_EQ(MetadataTemplateExpander::expand(u"{title}"_s.repeated(100'000), metadata).size(), 100'000);
    EXPECT_EQ(MetadataTemplateExpander::expand(u"{"_s.repeated(1'000'000) + u'}', metadata).size(), 100'000);
}

} // namespace ferrow
