// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/BatchExportModels.h"
#include "Models/ErrorTexts.h"
#include "Models/RenderRecipe.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QUuid>

#include <cstdint>
#include <optional>
#include <vector>

namespace ferrow {

/// What a preset keeps: a whole recipe with its captions as templates, the export settings, and the part of the export
/// configuration that means the same on every machine (no chosen folder, no concurrency). Comes from make() or a file.
struct PresetPayload {
    /// Its chips have no identifiers, so that equal captions are equal. For use, recipe() gives them some.
    RenderRecipe framing;
    ExportFormat exportFormat = ExportFormat::jpeg;
    double exportQuality = 0;
    OutputSize outputSize;
    bool keepsPhotoData = false;
    BitDepth bitDepth = BitDepth::eight;
    ExportDestinationMode destinationMode = ExportDestinationMode::chosenFolder;
    QString sourceSubfolderName;
    QString filenameTemplate;
    CollisionRule collisionRule = CollisionRule::appendNumber;

    [[nodiscard]] static PresetPayload make(const RenderRecipe& recipe, const ExportSettings& settings,
                                            const BatchExportConfiguration& configuration);

    /// The recipe described; its captions' chips have fresh identifiers each time.
    [[nodiscard]] RenderRecipe recipe() const;
    /// Sets what a preset keeps of these two and leaves the rest as it is.
    void applyTo(ExportSettings& settings, BatchExportConfiguration& configuration) const;

    bool operator==(const PresetPayload&) const = default;
};

struct PhotoPreset {
    QUuid id;
    QString name; ///< Trimmed, never empty, not unique.
    PresetPayload payload;
    QDateTime createdAt; ///< UTC. Files keep whole seconds.
    QDateTime modifiedAt;

    bool operator==(const PhotoPreset&) const = default;
};

/// The preset file as a value.
struct PresetDocument {
    static constexpr std::int64_t currentSchemaVersion = 2;

    std::int64_t schemaVersion = currentSchemaVersion;
    std::vector<PhotoPreset> presets;

    /// All or nothing: one missing or odd member fails the whole document. Accepts every version number. Throws
    /// PresetCodingError.
    [[nodiscard]] static PresetDocument decode(const QByteArray& json);
    /// What `json` says of its version, whatever else it holds; absent where it says nothing that is a whole number.
    [[nodiscard]] static std::optional<std::int64_t> versionOf(const QByteArray& json);
    /// UTF-8 JSON, indented, with sorted keys. Throws PresetCodingError for a number that JSON can't hold.
    [[nodiscard]] QByteArray encode() const;

    bool operator==(const PresetDocument&) const = default;
};

/// Why bytes are no preset document, or a document can't become bytes. Thrown by value.
struct PresetCodingError {
    enum class Case { notJSON, missingMember, wrongType, unknownValue, numberNotFinite, tooLong, tooLarge };
    Case value = Case::notJSON;
    QString member; ///< The JSON member it is about, where there is one.

    bool operator==(const PresetCodingError&) const = default;
};

[[nodiscard]] LocalizedErrorTexts localizedTexts(const PresetCodingError& error);

} // namespace ferrow
