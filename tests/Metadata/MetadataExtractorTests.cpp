// SPDX-License-Identifier: GPL-3.0-or-later
#include "Metadata/MetadataExtractor.h"

#include "Support/TestSupport.h"

#include <limits>

namespace ferrow {

using namespace Qt::StringLiterals;
namespace {

using Text = std::optional<QString>;

PhotoMetadata ofExif(const PropertyMap& exif)
{
    return MetadataExtractor::extract({{PropertyKey::exif, {exif}}}, {}, u"a.jpg"_s);
}

PhotoMetadata ofTiff(const PropertyMap& tiff)
{
    return MetadataExtractor::extract({{PropertyKey::tiff, {tiff}}}, {}, u"a.jpg"_s);
}

Text titleOfXmp(const PropertyValue& title)
{
    return MetadataExtractor::extract({}, {{u"dc:title"_s, title}}, u"a.jpg"_s).title;
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
    const PropertyMap everything{
        {PropertyKey::tiff,
         {PropertyMap{{PropertyKey::tiffMake, {u"  Canon  "_s}},
                      {PropertyKey::tiffModel, {u"EOS R5\n"_s}},
                      {PropertyKey::tiffArtist, {u" "_s}},
                      {PropertyKey::tiffCopyright, {u"of TIFF"_s}},
                      {PropertyKey::tiffImageDescription, {u"of TIFF"_s}}}}},
        {PropertyKey::exif, {PropertyMap{{PropertyKey::exifLensModel, {u"   "_s}}}}},
        {PropertyKey::iptc,
         {PropertyMap{{PropertyKey::iptcByline, {TextList{u" first "_s, u"second"_s}}},
                      {PropertyKey::iptcCopyrightNotice, {u"of IPTC"_s}},
                      {PropertyKey::iptcCaptionAbstract, {u"of IPTC"_s}}}}},
    };
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
    EXPECT_EQ(MetadataExtractor::extract(everything, xmp, u"a.jpg"_s), expected);

    PhotoMetadata nothing;
    nothing.filename = u"a.jpg"_s;
    const PropertyMap mistyped{{PropertyKey::tiff, {u"no map"_s}},
                               {PropertyKey::exif,
                                {PropertyMap{{PropertyKey::exifFNumber, {u"2.8"_s}},
                                             {PropertyKey::exifLensModel, {35.0}},
                                             {PropertyKey::exifISOSpeedRatings, {400.0}}}}}};
    EXPECT_EQ(MetadataExtractor::extract(mistyped, {}, u"a.jpg"_s), nothing);
}

TEST(MetadataExtractor, looksIntoListsAndMaps)
{
    const auto nested = [](int maps) {
        PropertyValue value{u"deep"_s};
        for (; maps > 0; --maps)
            value = {PropertyMap{{u"x"_s, value}}};
        return value;
    };
    struct Row {
        const char* name;
        PropertyValue value;
        Text expected;
    };
    const std::vector<Row> rows{
        {"first of a list", {TextList{u"a"_s, u"b"_s}}, u"a"_s},
        {"empty first entry", {TextList{QString(), u"b"_s}}, std::nullopt},
        {"no entry", {TextList{}}, std::nullopt},
        {"numbers", {NumberList{1, 2}}, std::nullopt},
        {"blank alternative is passed over", {PropertyMap{{u"en"_s, {u" "_s}}, {u"de"_s, {u"b"_s}}}}, u"b"_s},
        {"list in a map", {PropertyMap{{u"en"_s, {TextList{u"a"_s}}}}}, u"a"_s},
        {"four maps deep", nested(4), u"deep"_s},
        {"five maps deep", nested(5), std::nullopt},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(titleOfXmp(row.value), row.expected);
    }
    // A map ends the search, also one without a text.
    const PropertyMap iptc{{PropertyKey::iptcObjectName, {PropertyMap{}}}};
    const PropertyMap title{{u"dc:title"_s, {u"not reached"_s}}};
    EXPECT_EQ(MetadataExtractor::extract({{PropertyKey::iptc, {iptc}}}, title, {}).title, std::nullopt);
}

TEST(MetadataExtractor, cutsTextsBetweenPerceivedCharacters)
{
    const auto cut = [](const QString& text) { return ofTiff({{PropertyKey::tiffImageDescription, {text}}}).caption; };
    EXPECT_EQ(cut(QString(10'000, u'x')), QString(4096, u'x'));
    // Each of these is one character to its reader: a letter with its accent behind it, a flag, a family of four.
    for (const QString& character : {u"e\u0301"_s, u"\U0001F1F8\U0001F1EA"_s, u"\r\n"_s,
                                     u"\U0001F468\u200D\U0001F469\u200D\U0001F467\u200D\U0001F466"_s}) {
        SCOPED_TRACE(character.toStdString());
        EXPECT_EQ(cut(u"a"_s + character.repeated(5000) + u"a"_s), u"a"_s + character.repeated(4095));
        EXPECT_EQ(cut(u"a"_s + character.repeated(4094) + u"a"_s), u"a"_s + character.repeated(4094) + u"a"_s);
    }
}

TEST(MetadataExtractor, wordsNumbers)
{
    struct Row {
        double value;
        Text focalLength;
        Text aperture;
        Text bias;
    };
    const std::vector<Row> rows{
        {50, u"50 mm"_s, u"f/50"_s, u"+50 EV"_s},
        {23.5, u"23.5 mm"_s, u"f/23.5"_s, u"+23.5 EV"_s},
        {1.8, u"1.8 mm"_s, u"f/1.8"_s, u"+1.8 EV"_s},
        {0.67, u"0.7 mm"_s, u"f/0.7"_s, u"+0.7 EV"_s},
        {-0.33, u"-0.3 mm"_s, u"f/-0.3"_s, u"-0.3 EV"_s},
        {-1, u"-1 mm"_s, u"f/-1"_s, u"-1 EV"_s},
        {0, u"0 mm"_s, u"f/0"_s, u"0 EV"_s},
        {1250, u"1,250 mm"_s, u"f/1,250"_s, u"+1,250 EV"_s},
        {0.25, u"0.3 mm"_s, u"f/0.3"_s, u"+0.3 EV"_s},
        {7.96, u"8.0 mm"_s, u"f/8.0"_s, u"+8.0 EV"_s},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.value);
        const PhotoMetadata metadata = ofExif({{PropertyKey::exifFocalLength, {row.value}},
                                               {PropertyKey::exifFNumber, {row.value}},
                                               {PropertyKey::exifExposureBiasValue, {row.value}}});
        EXPECT_EQ(metadata.focalLength, row.focalLength);
        EXPECT_EQ(metadata.aperture, row.aperture);
        EXPECT_EQ(metadata.exposureCompensation, row.bias);
    }
}

TEST(MetadataExtractor, wordsExposureTimes)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const std::vector<std::pair<double, Text>> rows{
        {0.004, u"1/250 s"_s},   {0.3, u"1/3 s"_s},      {1.0 / 1250, u"1/1250 s"_s},
        {0.8, u"1/1 s"_s},       {0.4, u"1/3 s"_s},      {1, u"1 s"_s},
        {2.5, u"2.5 s"_s},       {1800, u"1,800 s"_s},   {0, u"0 s"_s},
        {-0.5, u"0 s"_s},        {nan, u"0 s"_s},        {0x1p-62, u"1/4611686018427387904 s"_s},
        {0x1p-63, std::nullopt}, {1e-300, std::nullopt}, {5e-324, std::nullopt},
    };
    for (const auto& [seconds, expected] : rows) {
        SCOPED_TRACE(seconds);
        EXPECT_EQ(ofExif({{PropertyKey::exifExposureTime, {seconds}}}).shutterSpeed, expected);
    }
}

TEST(MetadataExtractor, takesTheFirstSensitivity)
{
    const std::vector<std::pair<NumberList, Text>> rows{{{400, 800}, u"400"_s},
                                                        {{12800}, u"12800"_s},
                                                        {{100.9}, u"100"_s},
                                                        {{}, std::nullopt},
                                                        {{1e300}, std::nullopt}};
    for (const auto& [numbers, expected] : rows)
        EXPECT_EQ(ofExif({{PropertyKey::exifISOSpeedRatings, {numbers}}}).iso, expected);
}

TEST(MetadataExtractor, parsesThreeFormsOfDates)
{
    // The tests' zone is Berlin's: an hour ahead in winter, two in summer.
    const std::vector<std::pair<QString, QString>> rows{
        {u"2024:03:05 14:07:09"_s, u"2024-03-05T13:07:09Z"_s},
        {u" 2024:07:05 14:07:09\n"_s, u"2024-07-05T12:07:09Z"_s},
        {u"2024-03-05T14:07:09"_s, u"2024-03-05T13:07:09Z"_s},
        {u"2024-03-05T14:07:09+05:30"_s, u"2024-03-05T08:37:09Z"_s},
        {u"2024-03-05T01:07:09-09:30"_s, u"2024-03-05T10:37:09Z"_s},
        {u"2024-03-05T14:07:09Z"_s, u"2024-03-05T14:07:09Z"_s},
        {u"2024:02:29 00:00:00"_s, u"2024-02-28T23:00:00Z"_s},
        {u"2023:02:29 00:00:00"_s, {}},
        {u"0000:00:00 00:00:00"_s, {}},
        {u"2024:03:05 24:00:00"_s, {}},
        {u"2024:03:05 14:07"_s, {}},
        {u"2024:03:05 14:07:09+01:00"_s, {}},
        {u"2024-03-05T14:07:09.50"_s, {}},
        {u"2024-03-05T14:07:09+01"_s, {}},
        {u"2024-03-05 14:07:09"_s, {}},
        {u"2024-03-05"_s, {}},
        {u"\u0662\u0660\u0662\u0664:03:05 14:07:09"_s, {}},
        {u"x2024:03:05 14:07:09"_s, {}},
    };
    for (const auto& [text, expected] : rows) {
        SCOPED_TRACE(text.toStdString());
        EXPECT_EQ(captureInstant(text), expected);
    }
}

TEST(MetadataExtractor, triesOnlyTheFirstDateFound)
{
    const QString date = u"2024:03:05 14:07:09"_s;
    const auto ofDates = [](const PropertyMap& exif, const PropertyMap& tiff, const PropertyMap& xmp) {
        return MetadataExtractor::extract({{PropertyKey::exif, {exif}}, {PropertyKey::tiff, {tiff}}}, xmp, {})
            .captureDate.has_value();
    };
    const PropertyMap digitized{{PropertyKey::exifDateTimeDigitized, {date}}};
    EXPECT_TRUE(ofDates(digitized, {}, {}));
    EXPECT_TRUE(ofDates({}, {{PropertyKey::tiffDateTime, {date}}}, {}));
    EXPECT_TRUE(ofDates({}, {}, {{u"photoshop:DateCreated"_s, {date}}}));
    EXPECT_TRUE(ofDates({{PropertyKey::exifDateTimeOriginal, {u"  "_s}}, digitized.entries().front()}, {}, {}));
    EXPECT_FALSE(ofDates({{PropertyKey::exifDateTimeOriginal, {u"soon"_s}}, digitized.entries().front()}, {}, {}));
}

} // namespace ferrow
