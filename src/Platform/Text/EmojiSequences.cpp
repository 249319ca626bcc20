// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Text/EmojiSequences.h"

#include <QChar>

#include <unicode/uchar.h>
#include <unicode/utf16.h>

namespace ferrow {

namespace {

constexpr char16_t textSelector = 0xFE0E;
constexpr char16_t emojiSelector = 0xFE0F;
constexpr char32_t joiner = 0x200D;
constexpr char32_t keycap = 0x20E3;

bool is(char32_t character, UProperty property)
{
    return u_hasBinaryProperty(static_cast<UChar32>(character), property);
}

class Scanner {
public:
    explicit Scanner(QStringView text) : text_(text) {}

    [[nodiscard]] bool atEnd() const { return place_ >= text_.size(); }
    [[nodiscard]] qsizetype place() const { return place_; }

    [[nodiscard]] char32_t peek(int ahead = 0) const
    {
        qsizetype at = place_;
        for (; ahead > 0 && at < text_.size(); --ahead)
            at += widthAt(at);
        if (at >= text_.size())
            return 0;
        return widthAt(at) == 2 ? QChar::surrogateToUcs4(text_[at], text_[at + 1]) : char32_t{text_[at].unicode()};
    }
    void skip() { place_ += atEnd() ? 0 : widthAt(place_); }

    /// Moves behind the sequence that starts here; false, and unmoved, if none does.
    bool takeSequence()
    {
        if (!takeElement())
            return false;
        while (peek() == joiner && is(peek(1), UCHAR_EXTENDED_PICTOGRAPHIC)) {
            skip();
            if (!takeElement())
                skip(); // A sign such as U+2640 that is emoji here only because it is joined.
        }
        return true;
    }

private:
    [[nodiscard]] int widthAt(qsizetype at) const
    {
        return text_[at].isHighSurrogate() && at + 1 < text_.size() && text_[at + 1].isLowSurrogate() ? 2 : 1;
    }

    bool takeElement()
    {
        const char32_t first = peek();
        const char32_t second = peek(1);
        // Digits and letters would answer below as well, and most of a text needs no look into the tables.
        if (first < 0x80 && second != emojiSelector)
            return false;
        if (is(first, UCHAR_REGIONAL_INDICATOR)) {
            if (!is(second, UCHAR_REGIONAL_INDICATOR))
                return false;
            skip();
            skip();
            return true;
        }
        const bool selected = second == emojiSelector && is(first, UCHAR_EMOJI);
        const bool byDefault = second != textSelector && is(first, UCHAR_EMOJI_PRESENTATION);
        const bool toned = is(first, UCHAR_EMOJI_MODIFIER_BASE) && is(second, UCHAR_EMOJI_MODIFIER);
        if (first < 0x80 ? !selected || peek(2) != keycap : !selected && !byDefault && !toned)
            return false;
        skip();
        while (peek() == emojiSelector || peek() == keycap || is(peek(), UCHAR_EMOJI_MODIFIER) || isTag(peek()))
            skip();
        return true;
    }

    /// Tag characters spell out the flags of regions.
    static bool isTag(char32_t character) { return character >= 0xE0020 && character <= 0xE007F; }

    QStringView text_;
    qsizetype place_ = 0;
};

} // namespace

EmojiText findEmoji(QStringView text)
{
    EmojiText found;
    found.text.reserve(text.size());
    Scanner scanner(text);
    while (!scanner.atEnd()) {
        const qsizetype from = scanner.place();
        const bool isEmoji = scanner.takeSequence();
        if (!isEmoji)
            scanner.skip();
        const int start = int(found.text.size());
        for (const QChar unit : text.mid(from, scanner.place() - from))
            if (unit != QChar(textSelector) && unit != QChar(emojiSelector))
                found.text.append(unit);
        const int length = int(found.text.size()) - start;
        if (!isEmoji)
            continue;
        if (!found.emoji.isEmpty() && found.emoji.last().start + found.emoji.last().length == start)
            found.emoji.last().length += length;
        else
            found.emoji.append({start, length});
    }
    return found;
}

} // namespace ferrow
