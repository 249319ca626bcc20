// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Batch/PhotoOrder.h"
#include "Models/BatchExportModels.h"
#include "Models/MetadataCorrections.h"
#include "Models/RenderRecipe.h"
#include "Platform/Base/FileUrl.h"

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

namespace ferrow::Command {

/// The command line was used wrongly. `message` names the option; the exit status is 2.
struct UsageError {
    QString message;
};

/// What a run works with: the preset's values or the program's defaults, with the options applied.
struct Settings {
    RenderRecipe recipe;
    ExportSettings exportSettings;
    BatchExportConfiguration configuration;
    PhotoOrder order;        ///< In which photos are numbered and framed.
    std::size_t caption = 0; ///< Which of the recipe's the options are about.
};

/// One of `count` parts of a plan, counted from 1.
struct Shard {
    std::int64_t number = 1;
    std::int64_t count = 1;
};

struct Arguments {
    enum class Mode { frame, filter, plan, report, inspect, help, version };

    Mode mode = Mode::frame;
    std::vector<FileUrl> roots;
    std::optional<QString> presetName;
    std::optional<FileUrl> presetFile;
    std::optional<FileUrl> frameFile; ///< A preset of which only the recipe is taken.
    /// Applied in order to the settings that the preset or the defaults gave.
    std::vector<std::function<void(Settings&)>> changes;
    /// Applied to the frame's shape once one is set, by whichever option or by the preset.
    std::vector<std::function<void(FrameShape&)>> shapeChanges;
    std::optional<BitDepth> depth; ///< As it was asked for; the format must hold it.
    std::size_t captions = 0;      ///< How many times one was given.
    std::optional<FileUrl> logoFile;
    /// Applied to the logo once it has been imported.
    std::vector<std::function<void(LogoConfiguration&)>> logoChanges;
    std::optional<FileUrl> planFile; ///< To be written, in place of framed copies.
    Shard shard;
    bool resumes = false;            ///< What an earlier run of the plan has framed stays.
    MetadataCorrections corrections; ///< For every photo.
    std::optional<FileUrl> correctionsFile;
    bool dryRun = false;
    bool json = false;
    bool quiet = false;
};

/// Reads the words behind the program's name. They are bytes: paths need not be UTF-8. Throws UsageError.
[[nodiscard]] Arguments parseArguments(const std::vector<QByteArray>& words);

/// What `--help` prints.
[[nodiscard]] QString helpText();

} // namespace ferrow::Command
