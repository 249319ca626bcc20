// SPDX-License-Identifier: GPL-3.0-or-later
#include "Models/Caption.h"
#include "Support/TestSupport.h"

namespace ferrow {

using namespace Qt::StringLiterals;

TEST(CaptionToken, writesOptionsThatAreReadAsTheyWere)
{
    const MetadataToken date = MetadataToken::captureDate;
    const std::pair<CaptionToken, QString> rows[] = {
        {{date, {DateStyle::shortDate}}, u"{captureDate:short}"_s},
        {{date, {}, u"no date"_s}, u"{captureDate|no date}"_s},
        {{date, {DateStyle::longDate}, u"undated"_s}, u"{captureDate:long|undated}"_s},
        {{date, {DateStyle::custom, u"d 'of' MMMM, HH:mm"_s}, u":"_s}, u"{captureDate:d 'of' MMMM, HH:mm|:}"_s},
        {{date, {DateStyle::custom, u"y|M{d}\\"_s}}, u"{captureDate:y\\|M\\(d\\)\\\\}"_s},
        {{date, {DateStyle::custom, u"'iso'd"_s}}, u"{captureDate:'iso'd}"_s},
        {{MetadataToken::lens, {}, u"}{iso}|\\n\n"_s}, u"{lens|\\)\\(iso\\)\\|\\\\n\\n}"_s},
        {{MetadataToken::iso, {}, u" \u00B7 "_s}, u"{iso| \u00B7 }"_s},
        {{MetadataToken::iso, {}, u"a\0b"_s}, u"{iso|a\0b}"_s},
    };
    for (const auto& [token, written] : rows) {
        SCOPED_TRACE(written.toStdString());
        EXPECT_EQ(token.templateValue(), written);
        const std::vector<CaptionSegment> chips = CaptionSegment::parse(u"a"_s + written + u"{iso}"_s);
        ASSERT_EQ(chips.size(), 3u);
        EXPECT_EQ(chips[1].content, CaptionSegment::Content(token));
        EXPECT_EQ(CaptionSegment::faultOf(written), QString());
        // A reader that knows no options takes what is between braces for text, and what follows for what it is.
        EXPECT_EQ(written.count(u'{') + written.count(u'}'), 2);
        EXPECT_FALSE(fromRawValue<MetadataToken>(written.sliced(1).chopped(1)));
    }
    for (const QString& plain : {u"{captureDate:medium}"_s, u"{captureDate|}"_s, u"{captureDate:medium|}"_s})
        EXPECT_EQ(CaptionSegment::parse(plain).at(0).content, CaptionSegment::Content(date)) << plain.toStdString();
}

TEST(CaptionToken, saysWhyADatePatternIsNone)
{
    const std::pair<QString, const char*> rows[] = {
        {u"d MMMM, HH:mm"_s, ""},
        {u"EEEE yyyy y LLLLL h:mm:ss a"_s, ""},
        {u"y\u5E74M\u6708d\u65E5 'o''clock'''"_s, ""},
        {u"d."_s.repeated(50), ""},
        {u"d '"_s, "apostrophe need another"},
        {u"d 'o"_s, "apostrophe need another"},
        {u"custom"_s, "“c” is no part"},
        {u"d MMMM z"_s, "“z” is no part"},
        {u"ddd"_s, "“d” is repeated too often: “dd”"},
        {u"d."_s.repeated(50) + u'd', "at most 100 characters"},
        {QString(10'000'000, u'd'), "at most 100 characters"},
        {QString(), "needs a part of a date"},
        {u"'d'"_s, "needs a part of a date"},
    };
    for (const auto& [pattern, fault] : rows) {
        const QString said = DateFormat::patternFault(pattern);
        EXPECT_TRUE(said.isEmpty() == (*fault == 0) && said.contains(QString::fromUtf8(fault))) << said.toStdString();
        // One with a fault stays the text that it is, and whoever asks is told.
        const QString captionTemplate = u"{captureDate:"_s + pattern + u'}';
        EXPECT_EQ(CaptionSegment::templateOf(CaptionSegment::parse(captionTemplate)), captionTemplate);
        EXPECT_EQ(std::holds_alternative<QString>(CaptionSegment::parse(captionTemplate).at(0).content), *fault != 0);
        EXPECT_EQ(CaptionSegment::faultOf(captionTemplate), said);
    }
}

TEST(CaptionToken, tellsFaultsFromText)
{
    const std::pair<const char*, const char*> rows[] = {
        {"{captureDate:d MMMM", "closing brace"},
        {"{lens|x", "closing brace"},
        {"{iso}{captureDate:qq", "closing brace"},
        {"{lens|C:\\x}", "backslash"},
        {"{lens|\\}", "backslash"},
        {"{captureDate:d\\d}", "backslash"},
        {"{lens|{iso}}", "backslash"},
        {"{camera", ""},
        {"{title: x}", ""},
        {"{year:y", ""},
        {"{{iso}}", ""},
        {"a|b:c}", ""},
    };
    for (const auto& [captionTemplate, fault] : rows) {
        const QString said = CaptionSegment::faultOf(QString::fromLatin1(captionTemplate));
        EXPECT_TRUE(said.isEmpty() == (*fault == 0) && said.contains(QLatin1StringView(fault)))
            << captionTemplate << ": " << said.toStdString();
    }
}

} // namespace ferrow
