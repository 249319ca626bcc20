// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/ImportedPhoto.h"
#include "Platform/Base/FileUrl.h"
#include "Platform/Files/FileAccess.h"

#include <cstdint>
#include <stop_token>

/// The only way a source photo enters the program. The file is opened once, checked, read through that one descriptor
/// and never changed. Everything here throws ImagePipelineError, Canceled once `stop` was requested, and nothing else;
/// it is safe from several threads.
namespace ferrow::ImageLoader {

/// Largest source file, in bytes, that is still looked at.
inline constexpr std::int64_t maximumFileSize = 2'000'000'000;
/// Longest sides, in pixels, of the two loads below.
inline constexpr std::int64_t previewDimension = 1'600;
inline constexpr std::int64_t batchThumbnailDimension = 280;

/// With a picture for the preview pane.
[[nodiscard]] ImportedPhoto load(const FileUrl& url, const std::stop_token& stop = {});
/// With a picture for the list.
[[nodiscard]] ImportedPhoto loadBatchThumbnail(const FileUrl& url, const std::stop_token& stop = {});
/// With a picture at most `previewMaximumDimension` long; 0 asks for everything but pixels.
[[nodiscard]] ImportedPhoto load(const FileUrl& url, std::int64_t previewMaximumDimension,
                                 const std::stop_token& stop = {});

/// The same for a source that is open.
[[nodiscard]] ImportedPhoto load(const OpenedFile& file, std::int64_t previewMaximumDimension,
                                 const std::stop_token& stop = {});

/// Opens a source: a regular file within the size limit. Throws unreadableFile or fileTooLarge.
[[nodiscard]] OpenedFile openSource(const FileUrl& url);

} // namespace ferrow::ImageLoader
