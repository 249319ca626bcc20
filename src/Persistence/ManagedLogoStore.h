// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/RenderRecipe.h"
#include "Platform/Base/FileUrl.h"
#include "Platform/Pixels/Bitmap.h"

#include <cstdint>
#include <optional>
#include <stop_token>

/// Private copies of the logos that the user picked, reached only by a name inside one folder: a recipe or preset can
/// never make the program read another file. The folder only grows. Safe from several threads.
///
/// Without `managedDirectory` the folder is "Logos" in the support folder. All of it throws LogoAssetError or
/// SystemError, and Canceled once `stop` was requested.
namespace ferrow::ManagedLogoStore {

inline constexpr std::int64_t maximumFileSize = 100'000'000; ///< Bytes, the largest that is still accepted.
inline constexpr std::int64_t validationDimension = 2'000;   ///< Longest side of the decode that proves a logo sound.
inline constexpr std::int64_t renderDimension = 4'000;       ///< Longest side of the decode that is drawn.

/// Checks that the picked file is a PNG, TIFF, PDF or SVG picture within the limits and copies it under a fresh name.
[[nodiscard]] LogoAssetReference importAsset(const FileUrl& url, const std::optional<FileUrl>& managedDirectory = {},
                                             const std::stop_token& stop = {});

/// The logo, upright, premultiplied, at most `maximumDimension` long (clamped to 1…Engine::maximumLogoSide); from
/// DecodeCache::shared() where it is there.
[[nodiscard]] Bitmap load(const LogoAssetReference& asset, std::int64_t maximumDimension,
                          const std::optional<FileUrl>& managedDirectory = {}, const std::stop_token& stop = {});

/// load() at the size for drawing; absent without a configuration or when it is disabled.
[[nodiscard]] std::optional<Bitmap> loadIfEnabled(const std::optional<LogoConfiguration>& configuration,
                                                  const std::optional<FileUrl>& managedDirectory = {},
                                                  const std::stop_token& stop = {});

} // namespace ferrow::ManagedLogoStore
