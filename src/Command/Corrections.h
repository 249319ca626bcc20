// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Command/JsonLines.h"
#include "Models/ImportedPhoto.h"
#include "Models/MetadataCorrections.h"
#include "Platform/Base/FileUrl.h"

#include <QString>

#include <unordered_map>
#include <vector>

namespace ferrow::Command {

/// Adds what `text` says of the field called `name`; nothing but blanks stands for missing. `place` is where that was
/// asked for, as errors begin: an option, or a line of a file. Throws UsageError.
void addCorrection(MetadataCorrections& corrections, const QString& name, const QString& text, const QString& place);

/// The same for an object of names and texts, or null for missing.
void addCorrections(MetadataCorrections& corrections, const QJsonObject& object, const QString& place);
/// What addCorrections() reads.
[[nodiscard]] QJsonObject encodedCorrections(const MetadataCorrections& corrections);

/// Corrections of single photos: JSON Lines, each with a path, as on the command line, and fields with a text or null.
class CorrectionFile {
public:
    /// In bytes: a hundred thousand photos with a value or two.
    static constexpr std::int64_t maximumSize = 16'000'000;

    CorrectionFile() = default;
    /// Reads all of it. Throws UsageError, which names the file and the line.
    explicit CorrectionFile(const FileUrl& file);

    /// What is said of a photo; later lines add to the ones before and win over them.
    [[nodiscard]] const MetadataCorrections& of(const FileUrl& photo) const;
    /// Prints which lines name none of `photos`, which are standardized.
    void tellUnused(const std::vector<FileUrl>& photos) const;

private:
    struct Entry {
        std::int64_t line = 0; ///< The first, counted from 1.
        MetadataCorrections values;
    };

    void read(const JsonLine& line);

    QString name_;
    std::unordered_map<FileUrl, Entry> entries_;
};

} // namespace ferrow::Command
