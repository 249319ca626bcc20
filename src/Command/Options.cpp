// SPDX-License-Identifier: GPL-3.0-or-later
#include "Command/Options.h"

namespace ferrow::Command {

const std::vector<OptionSection>& optionSections()
{
    static const std::vector<OptionSection> sections{
        destinationOptions(), pictureOptions(), frameOptions(),   captionOptions(),
        correctionOptions(),  logoOptions(),    runningOptions(), planOptions(),
    };
    return sections;
}

const Option* findOption(const QByteArray& name)
{
    for (const OptionSection& section : optionSections())
        for (const Option& option : section.options)
            if (!name.isEmpty() && (name == option.name || name == option.letter))
                return &option;
    return nullptr;
}

std::span<const OtherCommand> otherCommands()
{
    using Mode = Arguments::Mode;
    static constexpr OtherCommand commands[] = {
        {"run", Mode::plan, takenByRun, "PLAN", "frame what a plan says"},
        {"report", Mode::report, takenByReport, "FILE...", "add up what runs have printed with --json"},
        {"inspect", Mode::inspect, takenByInspect, "PATH...", "print what is read of each photo"},
    };
    return commands;
}

} // namespace ferrow::Command
