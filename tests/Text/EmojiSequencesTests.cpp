// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Text/EmojiSequences.h"

#include "Support/TestSupport.h"

namespace ferrow::test {
namespace {

TEST(EmojiSequences, areFoundWholeAndFreedOfSelectors)
{
    struct Row {
        const char* name;
        QString text;
        QStringList emoji;
    };
    const Row rows[] = {
        {"plain text", QStringLiteral("f/2.8 © 2024 # * ↔ ☀"), {}},
        {"heart asked for in colour", QStringLiteral("a❤\uFE0Fb"), {QStringLiteral("❤")}},
        {"heart asked for in black", QStringLiteral("a❤\uFE0Eb"), {}},
        {"face asked for in black", QStringLiteral("😀\uFE0E"), {}},
        {"neighbours and a gap", QStringLiteral("😀😃 😄"), {QStringLiteral("😀😃"), QStringLiteral("😄")}},
        {"skin tone", QStringLiteral("👍🏽!"), {QStringLiteral("👍🏽")}},
        {"tone on a sign that is black by default", QStringLiteral("☝🏽"), {QStringLiteral("☝🏽")}},
        {"family", QStringLiteral("👩‍👩‍👧‍👦"), {QStringLiteral("👩‍👩‍👧‍👦")}},
        {"joined sign that is black by default",
         QStringLiteral("🏳\uFE0F\u200D🌈 🧔\u200D♂\uFE0F"),
         {QStringLiteral("🏳\u200D🌈"), QStringLiteral("🧔\u200D♂")}},
        {"flag", QStringLiteral("in 🇸🇪"), {QStringLiteral("🇸🇪")}},
        {"half a flag", QStringLiteral("🇸x"), {}},
        {"keycap", QStringLiteral("1\uFE0F\u20E3 2"), {QStringLiteral("1\u20E3")}},
        {"digit without its cap", QStringLiteral("1\uFE0Fx"), {}},
        {"region",
         QStringLiteral("🏴\U000E0067\U000E0062\U000E007F."),
         {QStringLiteral("🏴\U000E0067\U000E0062\U000E007F")}},
        {"joiner at the end", QStringLiteral("😀\u200D"), {QStringLiteral("😀")}},
        {"lone surrogate", QStringLiteral("😀") + QChar(0xD83D), {QStringLiteral("😀")}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const EmojiText found = findEmoji(row.text);
        QStringList emoji;
        for (const TextRange& range : found.emoji)
            emoji.append(found.text.mid(range.start, range.length));
        EXPECT_EQ(emoji, row.emoji);
        EXPECT_EQ(found.text, QString(row.text).remove(QChar(0xFE0E)).remove(QChar(0xFE0F)));
    }
}

} // namespace
} // namespace ferrow::test
