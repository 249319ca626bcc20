// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Text/EmojiSequences.h"

#include "Support/TestSupport.h"

namespace ferrow::test {

using namespace Qt::StringLiterals;

TEST(EmojiSequences, areFoundWholeAndFreedOfSelectors)
{
    const struct {
        const char* name;
        QString text;
        QString emoji; ///< The stretches, with a bar between them.
    } rows[] = {
        {"plain text", u"f/2.8 © 2024 # * ↔ ☀"_s, {}},
        {"a heart in color, another in black", u"a❤\uFE0Fb❤\uFE0E"_s, u"❤"_s},
        {"face asked for in black", u"😀\uFE0E"_s, {}},
        {"neighbors and a gap", u"😀😃 😄"_s, u"😀😃|😄"_s},
        {"skin tones, also on a sign that is black by default", u"👍🏽! ☝🏽"_s, u"👍🏽|☝🏽"_s},
        {"family", u"👩‍👩‍👧‍👦"_s, u"👩‍👩‍👧‍👦"_s},
        {"joined with a black sign", u"🏳\uFE0F\u200D🌈 🧔\u200D♂\uFE0F"_s, u"🏳\u200D🌈|🧔\u200D♂"_s},
        {"a flag and half of one", u"in 🇸🇪 🇸x"_s, u"🇸🇪"_s},
        {"keycap, and a digit without its cap", u"1\uFE0F\u20E3 2\uFE0F"_s, u"1\u20E3"_s},
        {"region", u"🏴\U000E0067\U000E0062\U000E007F."_s, u"🏴\U000E0067\U000E0062\U000E007F"_s},
        {"joiner at the end", u"😀\u200D"_s, u"😀"_s},
        {"lone surrogate", u"😀"_s + QChar(0xD83D), u"😀"_s},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const EmojiText found = findEmoji(row.text);
        QStringList emoji;
        for (const TextRange& range : found.emoji)
            emoji.append(found.text.mid(range.start, range.length));
        EXPECT_EQ(emoji.join(u'|'), row.emoji);
        EXPECT_EQ(found.text, QString(row.text).remove(QChar(0xFE0E)).remove(QChar(0xFE0F)));
    }
}

} // namespace ferrow::test
