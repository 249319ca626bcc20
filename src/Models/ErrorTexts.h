// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/BatchExportModels.h"
#include "Platform/Base/PixelSize.h"
#include "Platform/Base/SystemErrors.h"

#include <QString>

#include <concepts>
#include <cstdint>
#include <optional>
#include <utility>
#include <variant>

namespace ferrow {

/// The texts an error has for the user. An error type of any room joins in with a function
/// `LocalizedErrorTexts localizedTexts(const T&)` beside it.
struct LocalizedErrorTexts {
    std::optional<QString> errorDescription;
    std::optional<QString> failureReason;
    std::optional<QString> recoverySuggestion;
    QString genericDescription; ///< Shown where the other three say nothing.

    bool operator==(const LocalizedErrorTexts&) const = default;
};

/// What went wrong with a photo between its file and its framed copy. Thrown by value, and always as this type: a case
/// thrown bare is not caught by it.
class ImagePipelineError {
public:
    struct FileTooLarge {
        std::int64_t bytes = 0;
        bool operator==(const FileTooLarge&) const = default;
    };
    struct UnsupportedType {
        QString type;
        bool operator==(const UnsupportedType&) const = default;
    };
    struct UnreasonableDimensions {
        std::int64_t width = 0;
        std::int64_t height = 0;
        bool operator==(const UnreasonableDimensions&) const = default;
    };
    struct UnreasonableOutputDimensions {
        std::int64_t width = 0;
        std::int64_t height = 0;
        bool operator==(const UnreasonableOutputDimensions&) const = default;
    };
    struct FullResolutionMismatch {
        PixelSize expected;
        PixelSize decoded;
        bool operator==(const FullResolutionMismatch&) const = default;
    };
    struct EncodingFailed {
        QString format;
        bool operator==(const EncodingFailed&) const = default;
    };
    struct OutputWriteFailed {
        QString format;
        std::optional<SystemError> reason = std::nullopt; ///< The system's, where it gave one.
        bool operator==(const OutputWriteFailed&) const = default;
    };
    /// The cases without a value.
    enum class Plain {
        unreadableFile,
        malformedImage,
        decodingFailed,
        renderingFailed,
        writtenFileDiffers, ///< Found when it was read back.
        encoderMissing,     ///< HEVC's, which HEIC needs: not every system has one.
        invalidRenderRecipe,
        destinationIsSource,
        destinationExists,
        workerUnavailable ///< The program that reads photos can't be started.
    };
    using Case = std::variant<FileTooLarge, UnsupportedType, UnreasonableDimensions, UnreasonableOutputDimensions,
                              FullResolutionMismatch, EncodingFailed, OutputWriteFailed, Plain>;

    static constexpr Plain unreadableFile = Plain::unreadableFile;
    static constexpr Plain malformedImage = Plain::malformedImage;
    static constexpr Plain decodingFailed = Plain::decodingFailed;
    static constexpr Plain renderingFailed = Plain::renderingFailed;
    static constexpr Plain writtenFileDiffers = Plain::writtenFileDiffers;
    static constexpr Plain encoderMissing = Plain::encoderMissing;
    static constexpr Plain invalidRenderRecipe = Plain::invalidRenderRecipe;
    static constexpr Plain destinationIsSource = Plain::destinationIsSource;
    static constexpr Plain destinationExists = Plain::destinationExists;
    static constexpr Plain workerUnavailable = Plain::workerUnavailable;

    template <typename T>
    requires std::constructible_from<Case, T>
    ImagePipelineError(T given) // NOLINT(google-explicit-constructor): an error is its case
        : value(std::move(given))
    {
    }

    Case value;

    [[nodiscard]] QString errorDescription() const;
    [[nodiscard]] std::optional<QString> failureReason() const;
    [[nodiscard]] QString recoverySuggestion() const;

    bool operator==(const ImagePipelineError&) const = default;
};

/// What went wrong with a logo. Thrown by value.
struct LogoAssetError {
    enum class Case {
        fileTooLarge,
        malformed,
        unsupportedType,
        unreasonableDimensions,
        missingManagedAsset,
        textInDrawing, ///< Of an SVG, as the next two.
        referencesInDrawing,
        tooComplexDrawing,
        workerUnavailable ///< As for photos.
    };
    Case value = Case::malformed;
    std::int64_t bytes = 0; ///< For fileTooLarge.

    [[nodiscard]] QString errorDescription() const;
    [[nodiscard]] QString recoverySuggestion() const;

    bool operator==(const LogoAssetError&) const = default;
};

/// What went wrong with the preset file beyond the file system's own errors. Thrown by value.
struct PresetPersistenceError {
    enum class Case { unsupportedVersion, invalidName };
    Case value = Case::invalidName;
    std::int64_t version = 0; ///< For unsupportedVersion.

    bool operator==(const PresetPersistenceError&) const = default;
};

[[nodiscard]] LocalizedErrorTexts localizedTexts(const ImagePipelineError& error);
[[nodiscard]] LocalizedErrorTexts localizedTexts(const LogoAssetError& error);
[[nodiscard]] LocalizedErrorTexts localizedTexts(BatchPlanningError error);
[[nodiscard]] LocalizedErrorTexts localizedTexts(const PresetPersistenceError& error);

/// An error type that has texts for the user, whichever room it lives in.
template <typename Error>
concept LocalizedError = requires(const Error& error)
{
    localizedTexts(error);
};

} // namespace ferrow
