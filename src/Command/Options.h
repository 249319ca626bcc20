// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Command/Arguments.h"

#include <QByteArray>
#include <QStringView>

#include <functional>
#include <span>
#include <vector>

namespace ferrow::Command {

/// What a run does takes some options and no others. Bits, to be joined.
enum Taker : unsigned {
    takenByBatch = 1,
    takenByFilter = 2,
    takenByRun = 4,
    takenByReport = 8,
    takenByInspect = 16,
    takenByFraming = takenByBatch | takenByFilter,
    takenByAll = takenByFraming | takenByRun | takenByReport | takenByInspect,
};

/// What a shell may offer for a value.
struct Completion {
    enum class Kind { nothing, words, file, folder };

    Kind kind = Kind::nothing;
    std::vector<QByteArray> words; ///< One that ends in "=" goes on behind it.
};

/// Takes an option as it was written, and its value, which is empty for one that has none. Throws UsageError.
using ApplyOption = std::function<void(Arguments&, const QByteArray& option, const QByteArray& value)>;

/// All that is known of an option. The parser, `--help` and the completions of shells go by it.
struct Option {
    const char* name;            ///< With its dashes.
    const char* letter = "";     ///< The short name, with its dash.
    const char* value = nullptr; ///< What `--help` calls it; none where the option stands alone.
    const char* help;            ///< In UTF-8. What stands before its first semicolon is enough for a shell.
    unsigned takers = takenByFraming;
    Completion completion = {};
    /// None where what follows decides whether there is a value: parseArguments() applies that one itself.
    ApplyOption apply = {};
};

struct OptionSection {
    const char* title;
    std::vector<Option> options;
};

/// In the order of `--help`.
[[nodiscard]] const std::vector<OptionSection>& optionSections();
/// By either name; null for none.
[[nodiscard]] const Option* findOption(const QByteArray& name);

/// What is done in place of framing, when the first word says so.
struct OtherCommand {
    const char* name;
    Arguments::Mode mode;
    Taker taker;
    const char* operand; ///< What `--help` calls the paths.
    const char* help;
};

[[nodiscard]] std::span<const OtherCommand> otherCommands();

// The sections, each from a file of its own.
[[nodiscard]] OptionSection destinationOptions();
[[nodiscard]] OptionSection pictureOptions();
[[nodiscard]] OptionSection frameOptions();
[[nodiscard]] OptionSection captionOptions();
[[nodiscard]] OptionSection correctionOptions();
[[nodiscard]] OptionSection logoOptions();
[[nodiscard]] OptionSection runningOptions();
[[nodiscard]] OptionSection planOptions();

} // namespace ferrow::Command
