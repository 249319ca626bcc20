// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Command/Arguments.h"
#include "Persistence/TemporaryLogoFolder.h"

#include <optional>
#include <thread>

/// What the command line, its presets and its logo come to, for every command that frames.
namespace ferrow::Command {

/// The preset's settings or the program's, with the options applied. Throws UsageError.
[[nodiscard]] Settings resolvedSettings(const Arguments& arguments);

/// The logo of `--logo` in a managed folder of its own, which goes away with this object.
class RunLogo {
public:
    /// Puts it, and what the options say of it, into `settings`. Throws UsageError.
    RunLogo(const Arguments& arguments, Settings& settings);

    [[nodiscard]] std::optional<FileUrl> managedFolder() const
    {
        return folder_ ? std::optional(folder_->url()) : std::nullopt;
    }

    /// Of the picture that `settings` have for a logo; 0 × 0 where they show none. So it is too for one that can't be
    /// drawn: every photo says that.
    [[nodiscard]] PixelSize size(const Settings& settings) const;

private:
    std::optional<TemporaryLogoFolder> folder_;
};

/// Loads the system's fonts in the background where captions are drawn: it takes as long as the first worker takes to
/// start, and nobody waits for both.
[[nodiscard]] std::jthread loadingFonts(const RenderRecipe& recipe);

/// Says on standard error which families other fonts stand in for.
void warnOfMissingFonts(const RenderRecipe& recipe);

} // namespace ferrow::Command
