// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Command/Options.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <algorithm>
#include <utility>
#include <vector>

namespace ferrow::Command {

/// What may stand for a value, in the order in which it is told.
template <typename Value>
using Words = std::vector<std::pair<const char*, Value>>;

// They last as long as the program.
[[nodiscard]] const Words<CaptionPosition>& positionWords();
[[nodiscard]] const Words<CaptionFont>& fontWords();

/// Throws UsageError.
[[noreturn]] void misuse(const QByteArray& option, const QString& reason);

// What stands behind an option. All of them throw UsageError.

/// Plain decimal numbers with a point, whatever the locale.
[[nodiscard]] double number(const QByteArray& option, const QByteArray& word, double least, double most);
/// "120px" or "4%".
[[nodiscard]] Length length(const QByteArray& option, const QByteArray& word);
/// "#ffcc00", or with two more digits for opacity.
[[nodiscard]] RGBAColor color(const QByteArray& option, const QByteArray& word);

template <typename Value>
[[nodiscard]] Value oneOf(const QByteArray& option, const QByteArray& word, const Words<Value>& words)
{
    QStringList known;
    for (const auto& [name, value] : words) {
        if (word == name)
            return value;
        known << QString::fromLatin1(name);
    }
    misuse(option,
           QStringLiteral("“%1” is not one of %2.").arg(QString::fromUtf8(word), known.join(QStringLiteral(", "))));
}

/// Of several words for one value the first is offered.
template <typename Value>
[[nodiscard]] Completion offering(const Words<Value>& words)
{
    Completion completion{Completion::Kind::words, {}};
    for (auto word = words.begin(); word != words.end(); ++word)
        if (std::none_of(words.begin(), word, [&](const auto& other) { return other.second == word->second; }))
            completion.words.emplace_back(word->first);
    return completion;
}

/// For options whose value is one of `words`.
template <typename Value, typename Apply>
[[nodiscard]] ApplyOption choice(const Words<Value>& words, Apply apply)
{
    return [&words, apply](Arguments& arguments, const QByteArray& option, const QByteArray& word) {
        const Value chosen = oneOf(option, word, words);
        arguments.changes.emplace_back([=](Settings& settings) { apply(settings, chosen); });
    };
}

/// For options that stand alone.
[[nodiscard]] inline ApplyOption change(const std::function<void(Settings&)>& settled)
{
    return
        [settled](Arguments& arguments, const QByteArray&, const QByteArray&) { arguments.changes.push_back(settled); };
}

/// Longest length that any setting may name, in pixels.
inline constexpr double mostPixels = 50'000;

} // namespace ferrow::Command
