// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Base/ByteText.h"

#include "Support/TestSupport.h"

#include <random>

namespace ferrow::test {
namespace {

TEST(ByteText, givesBackTheBytesOfEveryName)
{
    for (int first = 0; first < 256; ++first) {
        for (int second = 0; second < 256; ++second) {
            const QByteArray bytes{"\xC3\xA9" + QByteArray(1, char(first)) + char(second) + "z"};
            ASSERT_EQ(ByteText::encode(ByteText::decode(bytes)), bytes);
        }
    }
    std::mt19937 random(7);
    for (int round = 0; round < 2'000; ++round) {
        QByteArray bytes;
        for (int i = 0; i < 40; ++i)
            bytes.append(char(random() % 3 == 0 ? random() : 0x80 + random() % 128));
        ASSERT_EQ(ByteText::encode(ByteText::decode(bytes)), bytes);
    }
}

TEST(ByteText, tellsValidFromInvalid)
{
    struct Row {
        const char* name;
        QByteArray bytes;
        QString shown;
    };
    const Row rows[] = {
        {"two, three and four bytes", "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", QStringLiteral("é€😀")},
        {"pair whose second half looks like an escape", "\xF0\x90\x92\x80", QStringLiteral("\U00010480")},
        {"Latin-1", "caf\xE9!", QStringLiteral("caf\uFFFD!")},
        {"overlong slash", "\xC0\xAF", QStringLiteral("\uFFFD\uFFFD")},
        {"overlong in three", "\xE0\x9F\xBF", QStringLiteral("\uFFFD\uFFFD\uFFFD")},
        {"coded surrogate", "\xED\xA0\x80", QStringLiteral("\uFFFD\uFFFD\uFFFD")},
        {"above the last character", "\xF4\x90\x80\x80", QStringLiteral("\uFFFD\uFFFD\uFFFD\uFFFD")},
        {"cut short", "a\xE2\x82", QStringLiteral("a\uFFFD\uFFFD")},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(ByteText::display(row.bytes), row.shown);
        const bool valid = !row.shown.contains(QChar::ReplacementCharacter);
        EXPECT_EQ(ByteText::decode(row.bytes) == row.shown, valid);
    }
    EXPECT_EQ(ByteText::decode("\xE9").at(0).unicode(), 0xDCE9);
}

TEST(ByteText, readsMetadataAsUtf8OrElseAsWindows1252)
{
    EXPECT_EQ(ByteText::fromMetadata("J\xC3\xB3n"), QStringLiteral("Jón"));
    EXPECT_EQ(ByteText::fromMetadata("J\xF3n \x80 \x93quoted\x94 \x9F"), QStringLiteral("Jón € “quoted” Ÿ"));
    EXPECT_EQ(ByteText::fromMetadata(QByteArray("NIKON\0\xFF", 7)), QStringLiteral("NIKON"));
    EXPECT_EQ(ByteText::fromMetadata(QByteArray("\0x", 2)), QString());
}

} // namespace
} // namespace ferrow::test
