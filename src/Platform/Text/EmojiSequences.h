// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QString>
#include <QStringView>

namespace ferrow {

/// A stretch of UTF-16 text.
struct TextRange {
    int start = 0;
    int length = 0;
    bool operator==(const TextRange&) const = default;
};

/// A text as it is given to the layout, with the stretches that ask to be drawn as color emoji: flags, keycaps,
/// characters that are emoji by default, others followed by U+FE0F, each with its skin tones, tags and joined parts.
/// Neighbors come as one stretch.
struct EmojiText {
    /// Without the variation selectors: the emoji font does not know them, the layout would take each from another
    /// font, and the sequence around it would fall apart.
    QString text;
    QList<TextRange> emoji;
};

[[nodiscard]] EmojiText findEmoji(QStringView text);

} // namespace ferrow
