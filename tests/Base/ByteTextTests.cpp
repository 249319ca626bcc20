// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Base/ByteText.h"

#include "Support/TestSupport.h"

#include <random>

namespace ferrow::test {
using namespace Qt::StringLiterals;

TEST(ByteText, givesBackTheBytesOfEveryName)
{
    std::mt19937 random(7);
    for (int round = 0; round < 20'000; ++round) {
        QByteArray bytes;
        for (int i = 0; i < 40; ++i)
            bytes.append(char(random() % 3 == 0 ? random() : 0x80 + random() % 128));
        ASSERT_EQ(ByteText::encode(ByteText::decode(bytes)), bytes);
    }
}

TEST(ByteText, tellsValidFromInvalid)
{
    // U+10480's second half looks like an escaped byte; then Latin-1, overlong forms, a surrogate, too high, cut short.
    using Row = std::pair<QByteArray, QString>;
    for (const auto& [bytes, shown] :
         {Row("\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", u"é€😀"_s), Row("\xF0\x90\x92\x80", u"\U00010480"_s),
          Row("caf\xE9!", u"caf\uFFFD!"_s), Row("\xC0\xAF", u"\uFFFD\uFFFD"_s),
          Row("\xE0\x9F\xBF", u"\uFFFD\uFFFD\uFFFD"_s), Row("\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"_s),
          Row("\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"_s), Row("a\xE2\x82", u"a\uFFFD\uFFFD"_s)}) {
        SCOPED_TRACE(bytes.toHex().toStdString());
        EXPECT_EQ(ByteText::display(bytes), shown);
        EXPECT_EQ(ByteText::decode(bytes) == shown, !shown.contains(QChar::ReplacementCharacter));
        EXPECT_EQ(ByteText::encode(ByteText::decode(bytes)), bytes);
    }
}

TEST(ByteText, readsMetadataAsUtf8OrElseAsWindows1252)
{
    EXPECT_EQ(ByteText::fromMetadata("J\xC3\xB3n"), QStringLiteral("Jón"));
    EXPECT_EQ(ByteText::fromMetadata("J\xF3n \x80 \x93quoted\x94 \x9F"), QStringLiteral("Jón € “quoted” Ÿ"));
    EXPECT_EQ(ByteText::fromMetadata(QByteArray("NIKON\0\xFF", 7)), QStringLiteral("NIKON"));
}

} // namespace ferrow::test
