// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAccessible>
#include <QString>

class QLineEdit;

namespace ferrow {

/// Which piece of a text is asked for, counted from the one that holds the offset.
enum class TextPiece { before = -1, at = 0, after = 1 };

/// The character, word or sentence (whatever `boundary` says; a line is all of it) at, before or after an offset of a
/// text of one line. A word and what stands between two words are pieces of their own. The end of the text belongs to
/// its last piece, but for characters. Where there is no such piece both ends are -1.
[[nodiscard]] QString textPiece(const QString& text, int offset, QAccessible::TextBoundaryType boundary,
                                TextPiece piece, int* start, int* end);

/// For every line edit, to be used instead of Qt's: what Qt 6.4 to 6.8 do when asked for the word at the start of
/// "#F4F1EA", or for the last sentence of any text, never ends. A NumberField is a spin button with a value.
[[nodiscard]] QAccessibleInterface* makeLineEditInterface(QLineEdit* field);

} // namespace ferrow
