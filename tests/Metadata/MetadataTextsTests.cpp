// SPDX-License-Identifier: GPL-3.0-or-later
#include "Metadata/MetadataTexts.h"

#include "Metadata/MetadataTemplateExpander.h"
#include "Models/MetadataCorrections.h"
#include "Support/TestSupport.h"

#include <QTimeZone>

namespace ferrow {

using namespace Qt::StringLiterals;

TEST(MetadataTexts, correctWhatTheTokenOfTheSameNameSays)
{
    PhotoMetadata read;
    read.cameraMake = u"Read"_s;
    for (const MetadataField field : allCases<MetadataField>()) {
        SCOPED_TRACE(rawValue(field).toStdString());
        const auto token = fromRawValue<MetadataToken>(rawValue(field));
        ASSERT_TRUE(token);
        const bool isDate = field == MetadataField::captureDate;
        const MetadataValue value = MetadataTexts::parsed(field, isDate ? u"1987-06-21"_s : u" Typed "_s);
        const PhotoMetadata typed = corrected(read, {{field, value}});
        EXPECT_EQ(MetadataTemplateExpander::tokenValue(*token, typed), isDate ? u"Jun 21, 1987"_s : u"Typed"_s);
        EXPECT_EQ(typed.value(field), value);
        EXPECT_NE(std::hash<PhotoMetadata>()(typed), std::hash<PhotoMetadata>()(read));
        EXPECT_EQ(corrected(typed, {{field, MetadataTexts::parsed(field, u" \t"_s)}}).value(field), MetadataValue());
        EXPECT_TRUE(differing({{field, value}}, typed).empty()) << "it is there already";
        EXPECT_EQ(differing({{field, {}}}, typed).size(), 1u) << "emptied is corrected";
    }
}

TEST(MetadataTexts, takeDatesInTheFormTheyAreShownInAndAsExifHasThem)
{
    const auto berlin = [](QDate date, QTime time) { return QDateTime(date, time, QTimeZone("Europe/Berlin")); };
    const struct {
        QString typed;
        QDateTime date;
        QString shown;
    } rows[] = {
        {u" 1987-06-21 "_s, berlin({1987, 6, 21}, {0, 0}), u"1987-06-21"_s},
        {u"1987:06:21"_s, berlin({1987, 6, 21}, {0, 0}), u"1987-06-21"_s},
        {u"1987-06-21 14:30"_s, berlin({1987, 6, 21}, {14, 30}), u"1987-06-21 14:30"_s},
        {u"1987:06:21 14:30:59"_s, berlin({1987, 6, 21}, {14, 30, 59}), u"1987-06-21 14:30:59"_s},
        {u"1987-06-21T14:30"_s, berlin({1987, 6, 21}, {14, 30}), u"1987-06-21 14:30"_s},
        {u"1987-06-21T14:30:00Z"_s, berlin({1987, 6, 21}, {16, 30}), u"1987-06-21 16:30"_s},
        {u"1987-06-21 23:30-02:30"_s, berlin({1987, 6, 22}, {4, 0}), u"1987-06-22 04:00"_s},
        {u"0800-12-25"_s, berlin({800, 12, 25}, {0, 0}), u"0800-12-25"_s},
    };
    for (const auto& row : rows) {
        const MetadataValue value = MetadataTexts::parsed(MetadataField::captureDate, row.typed);
        EXPECT_EQ(value, MetadataValue(row.date)) << row.typed.toStdString();
        EXPECT_EQ(MetadataTexts::text(value), row.shown);
        EXPECT_EQ(MetadataTexts::parsed(MetadataField::captureDate, row.shown), value) << "it reads back";
    }
}

TEST(MetadataTexts, refuseWhatIsNoDateOrTooLong)
{
    for (const QString& typed :
         {u"yesterday"_s, u"1987"_s, u"1987-06"_s, u"1987-02-30"_s, u"1987-6-21"_s, u"21.06.1987"_s, u"1987-06:21"_s,
          u"1987-06-21 "_s + QString(5, u'1'), u"1987-06-21 25:00"_s, u"1987-06-21 14:30 or so"_s, u"0000-01-01"_s,
          u"1987-06-21 14"_s, u"1987-06-21\n22"_s, u"\u0661\u0669\u0668\u0667-06-21"_s})
        EXPECT_THROW((void)MetadataTexts::parsed(MetadataField::captureDate, typed), MetadataTexts::Error)
            << typed.toStdString();
    const QString longest(MetadataTexts::longestText, u'x');
    EXPECT_EQ(MetadataTexts::parsed(MetadataField::lens, longest), MetadataValue(longest));
    EXPECT_THROW((void)MetadataTexts::parsed(MetadataField::lens, longest + u'x'), MetadataTexts::Error);
}

} // namespace ferrow
