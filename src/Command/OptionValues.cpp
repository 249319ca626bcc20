// SPDX-License-Identifier: GPL-3.0-or-later
#include "Command/OptionValues.h"

#include <array>
#include <charconv>
#include <cmath>

namespace ferrow::Command {

const Words<CaptionPosition>& positionWords()
{
    static const Words<CaptionPosition> words{{"image-top-left", CaptionPosition::imageTopLeft},
                                              {"image-top-center", CaptionPosition::imageTopCenter},
                                              {"image-top-right", CaptionPosition::imageTopRight},
                                              {"image-center-left", CaptionPosition::imageCenterLeft},
                                              {"image-center", CaptionPosition::imageCenter},
                                              {"image-center-right", CaptionPosition::imageCenterRight},
                                              {"image-bottom-left", CaptionPosition::imageBottomLeft},
                                              {"image-bottom-center", CaptionPosition::imageBottomCenter},
                                              {"image-bottom-right", CaptionPosition::imageBottomRight},
                                              {"border-top-left", CaptionPosition::borderTopLeft},
                                              {"border-top-center", CaptionPosition::borderTopCenter},
                                              {"border-top-right", CaptionPosition::borderTopRight},
                                              {"border-bottom-left", CaptionPosition::borderBottomLeft},
                                              {"border-bottom-center", CaptionPosition::borderBottomCenter},
                                              {"border-bottom-right", CaptionPosition::borderBottomRight}};
    return words;
}

const Words<CaptionFont>& fontWords()
{
    static const Words<CaptionFont> words{{"system", CaptionFont::system},
                                          {"rounded", CaptionFont::rounded},
                                          {"serif", CaptionFont::serif},
                                          {"monospaced", CaptionFont::monospaced},
                                          {"geometric", CaptionFont::avenirNext},
                                          // What scripts may say from before it was called so.
                                          {"avenir-next", CaptionFont::avenirNext}};
    return words;
}

[[noreturn]] void misuse(const QByteArray& option, const QString& reason)
{
    throw UsageError{QStringLiteral("%1: %2").arg(QString::fromUtf8(option), reason)};
}

double number(const QByteArray& option, const QByteArray& word, double least, double most)
{
    double value = 0;
    const char* end = word.constData() + word.size();
    const auto [stop, error] = std::from_chars(word.constData(), end, value);
    if (error != std::errc() || stop != end || !std::isfinite(value))
        misuse(option, QStringLiteral("“%1” is not a number.").arg(QString::fromUtf8(word)));
    if (value < least || value > most)
        misuse(option,
               QStringLiteral("%1 is not between %2 and %3.").arg(QString::fromUtf8(word)).arg(least).arg(most));
    return value;
}

RGBAColor color(const QByteArray& option, const QByteArray& word)
{
    const bool wellFormed = word.startsWith('#') && (word.size() == 7 || word.size() == 9);
    std::array<unsigned, 4> parts{0, 0, 0, 255};
    for (int i = 0; wellFormed && i < (word.size() - 1) / 2; ++i) {
        bool ok = false;
        const QByteArray digits = word.mid(1 + 2 * i, 2);
        parts[std::size_t(i)] = digits.toUInt(&ok, 16);
        if (!ok || !isxdigit(digits[0]))
            misuse(option, QStringLiteral("“%1” is not a color such as #ffcc00.").arg(QString::fromUtf8(word)));
    }
    if (!wellFormed)
        misuse(option, QStringLiteral("“%1” is not a color such as #ffcc00.").arg(QString::fromUtf8(word)));
    return {parts[0] / 255.0, parts[1] / 255.0, parts[2] / 255.0, parts[3] / 255.0};
}

Length length(const QByteArray& option, const QByteArray& word)
{
    const bool percent = word.endsWith('%');
    if (!percent && !word.endsWith("px"))
        misuse(option, QStringLiteral("“%1” is no length in pixels or percent, such as 120px or 4%.")
                           .arg(QString::fromUtf8(word)));
    return {number(option, word.chopped(percent ? 1 : 2), 0, mostPixels),
            percent ? BorderUnit::percent : BorderUnit::pixels};
}

} // namespace ferrow::Command
