// SPDX-License-Identifier: GPL-3.0-or-later
#include "Metadata/MetadataExtractor.h"

#include "Support/TestSupport.h"

#include <limits>

namespace ferrow {

using namespace Qt::StringLiterals;
namespace {

using Text = std::optional<QString>;

PhotoMetadata ofExif(const PropertyMap& exif, const PropertyMap& tiff = {}, const PropertyMap& xmp = {})
{
    return MetadataExtractor::extract({{PropertyKey::exif, {exif}}, {PropertyKey::tiff, {tiff}}}, xmp, u"a.jpg"_s);
}

/// "2024-03-05T13:07:09Z", or empty.
QString captureInstant(const QString& text)
{
    const auto date = ofExif({{PropertyKey::exifDateTimeOriginal, {text}}}).captureDate;
    return date ? date->toUTC().toString(Qt::ISODate) : QString();
}

} // namespace

TEST(MetadataExtractor, triesCandidatesInOrder)
{
    const PropertyMap tiff{{PropertyKey::tiffMake, {u"  Canon  "_s}},
                           {PropertyKey::tiffModel, {u"EOS R5\n"_s}},
                           {PropertyKey::tiffArtist, {u" "_s}},
                           {PropertyKey::tiffCopyright, {u"of TIFF"_s}},
                           {PropertyKey::tiffImageDescription, {u"of TIFF"_s}}};
    const PropertyMap iptc{{PropertyKey::iptcByline, {TextList{u" first "_s, u"second"_s}}},
                           {PropertyKey::iptcCopyrightNotice, {u"of IPTC"_s}},
                           {PropertyKey::iptcCaptionAbstract, {u"of IPTC"_s}}};
    const PropertyMap exif{{PropertyKey::exifLensModel, {u"   "_s}}};
    const PropertyMap xmp{{u"dc:title"_s, {PropertyMap{{u"x-default"_s, {u"of XMP"_s}}}}},
                          {u"exifEX:LensModel"_s, {u"newer"_s}},
                          {u"aux:Lens"_s, {u"older"_s}}};
    PhotoMetadata expected;
    expected.filename = u"a.jpg"_s;
    expected.cameraMake = u"Canon"_s;
    expected.cameraModel = u"EOS R5"_s;
    expected.lens = u"older"_s;
    expected.artist = u" first "_s; // Entries of lists are taken as they are.
    expected.copyright = u"of TIFF"_s;
    expected.title = u"of XMP"_s;
    expected.caption = u"of IPTC"_s;
    const PropertyMap all{{PropertyKey::tiff, {tiff}}, {PropertyKey::exif, {exif}}, {PropertyKey::iptc, {iptc}}};
    EXPECT_EQ(MetadataExtractor::extract(all, xmp, u"a.jpg"_s), expected);

    PhotoMetadata nothing;
    nothing.filename = u"a.jpg"_s;
    EXPECT_EQ(MetadataExtractor::extract({{PropertyKey::tiff, {u"no map"_s}}}, {}, u"a.jpg"_s), nothing);
    EXPECT_EQ(ofExif({{PropertyKey::exifFNumber, {u"2.8"_s}},
                      {PropertyKey::exifLensModel, {35.0}},
                      {PropertyKey::exifISOSpeedRatings, {400.0}}}),
              nothing);
}

TEST(MetadataExtractor, looksIntoListsAndMaps)
{
    const auto titleOf = [](const PropertyValue& title) {
        return MetadataExtractor::extract({}, {{u"dc:title"_s, title}}, {}).title;
    };
    EXPECT_EQ(titleOf({TextList{u"a"_s, u"b"_s}}), u"a"_s);
    EXPECT_EQ(titleOf({TextList{QString(), u"b"_s}}), std::nullopt);
    EXPECT_EQ(titleOf({TextList{}}), std::nullopt);
    EXPECT_EQ(titleOf({NumberList{1, 2}}), std::nullopt);
    EXPECT_EQ(titleOf({PropertyMap{{u"en"_s, {u" "_s}}, {u"de"_s, {u"b"_s}}}}), u"b"_s);
    EXPECT_EQ(titleOf({PropertyMap{{u"en"_s, {TextList{u"a"_s}}}}}), u"a"_s);
    PropertyValue nested{u"deep"_s};
    for (int maps = 0; maps <= 5; ++maps) {
        EXPECT_EQ(titleOf(nested).has_value(), maps <= 4) << maps;
        nested = {PropertyMap{{u"x"_s, nested}}};
    }
    // A map ends the search, also one without a text.
    const PropertyMap iptc{{PropertyKey::iptcObjectName, {PropertyMap{}}}};
    const PropertyMap title{{u"dc:title"_s, {u"not reached"_s}}};
    EXPECT_EQ(MetadataExtractor::extract({{PropertyKey::iptc, {iptc}}}, title, {}).title, std::nullopt);
}

TEST(MetadataExtractor, cutsTextsBetweenPerceivedCharacters)
{
    // Each of these is one character to its reader: a letter with its accent behind it, a flag, a family of four.
    for (const QString& one : {u"x"_s, u"e\u0301"_s, u"\U0001F1F8\U0001F1EA"_s, u"\r\n"_s,
                               u"\U0001F468\u200D\U0001F469\u200D\U0001F467\u200D\U0001F466"_s}) {
        const auto cut = [&](int times) {
            return ofExif({}, {{PropertyKey::tiffImageDescription, {u'a' + one.repeated(times) + u'a'}}}).caption;
        };
        EXPECT_EQ(cut(5000), u'a' + one.repeated(4095));
        EXPECT_EQ(cut(4094), u'a' + one.repeated(4094) + u'a');
    }
}

TEST(MetadataExtractor, wordsNumbers)
{
    const std::pair<double, QString> rows[] = {
        {50, u"50 mm, f/50, +50 EV"_s},
        {23.5, u"23.5 mm, f/23.5, +23.5 EV"_s},
        {-0.33, u"-0.3 mm, f/-0.3, -0.3 EV"_s},
        {-1, u"-1 mm, f/-1, -1 EV"_s},
        {0, u"0 mm, f/0, 0 EV"_s},
        {1250, u"1,250 mm, f/1,250, +1,250 EV"_s},
        {7.96, u"8.0 mm, f/8.0, +8.0 EV"_s},
    };
    for (const auto& [value, expected] : rows) {
        const PhotoMetadata metadata = ofExif({{PropertyKey::exifFocalLength, {value}},
                                               {PropertyKey::exifFNumber, {value}},
                                               {PropertyKey::exifExposureBiasValue, {value}}});
        EXPECT_EQ(*metadata.focalLength + u", "_s + *metadata.aperture + u", "_s + *metadata.exposureCompensation,
                  expected);
    }
}

TEST(MetadataExtractor, wordsExposureTimes)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const std::pair<double, Text> rows[] = {{0.004, u"1/250 s"_s},
                                            {0.3, u"1/3 s"_s},
                                            {0.8, u"1/1 s"_s},
                                            {0.4, u"1/3 s"_s},
                                            {1, u"1 s"_s},
                                            {2.5, u"2.5 s"_s},
                                            {1800, u"1,800 s"_s},
                                            {0, u"0 s"_s},
                                            {-0.5, u"0 s"_s},
                                            {nan, u"0 s"_s},
                                            {0x1p-62, u"1/4611686018427387904 s"_s},
                                            {0x1p-63, {}},
                                            {5e-324, {}}};
    for (const auto& [seconds, expected] : rows)
        EXPECT_EQ(ofExif({{PropertyKey::exifExposureTime, {seconds}}}).shutterSpeed, expected) << seconds;
}

TEST(MetadataExtractor, takesTheFirstSensitivity)
{
    const auto isoOf = [](const NumberList& numbers) {
        return ofExif({{PropertyKey::exifISOSpeedRatings, {numbers}}}).iso;
    };
    EXPECT_EQ(isoOf({12800, 400}), u"12800"_s);
    EXPECT_EQ(isoOf({100.9}), u"100"_s);
    EXPECT_EQ(isoOf({}), std::nullopt);
    EXPECT_EQ(isoOf({1e300}), std::nullopt);
}

TEST(MetadataExtractor, parsesThreeFormsOfDates)
{
    // The tests' zone is Berlin's: an hour ahead in winter, two in summer.
    EXPECT_EQ(captureInstant(u" 2024:07:05 14:07:09\n"_s), u"2024-07-05T12:07:09Z"_s);
    EXPECT_EQ(captureInstant(u"2024-03-05T14:07:09"_s), u"2024-03-05T13:07:09Z"_s);
    EXPECT_EQ(captureInstant(u"2024-03-05T14:07:09+05:30"_s), u"2024-03-05T08:37:09Z"_s);
    EXPECT_EQ(captureInstant(u"2024-03-05T01:07:09-09:30"_s), u"2024-03-05T10:37:09Z"_s);
    EXPECT_EQ(captureInstant(u"2024-03-05T14:07:09Z"_s), u"2024-03-05T14:07:09Z"_s);
    for (const QString& text : {u"2023:02:29 00:00:00"_s, u"0000:00:00 00:00:00"_s, u"2024:03:05 24:00:00"_s,
                                u"2024:03:05 14:07"_s, u"2024:03:05 14:07:09+01:00"_s, u"2024-03-05T14:07:09.50"_s,
                                u"2024-03-05T14:07:09+01"_s, u"2024-03-05 14:07:09"_s, u"2024-03-05"_s,
                                u"\u0662\u0660\u0662\u0664:03:05 14:07:09"_s, u"x2024:03:05 14:07:09"_s})
        EXPECT_EQ(captureInstant(text), QString()) << text.toStdString();
}

TEST(MetadataExtractor, triesOnlyTheFirstDateFound)
{
    const PropertyValue date{u"2024:03:05 14:07:09"_s};
    const auto original = [&](const QString& text) {
        return ofExif({{PropertyKey::exifDateTimeOriginal, {text}}, {PropertyKey::exifDateTimeDigitized, date}})
            .captureDate;
    };
    EXPECT_TRUE(original(u"  "_s));
    EXPECT_FALSE(original(u"soon"_s));
    EXPECT_TRUE(ofExif({}, {{PropertyKey::tiffDateTime, date}}).captureDate);
    EXPECT_TRUE(ofExif({}, {}, {{u"photoshop:DateCreated"_s, date}}).captureDate);
}

} // namespace ferrow
