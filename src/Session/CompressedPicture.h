// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Pixels/Bitmap.h"

#include <QByteArray>

namespace ferrow {

/// A small picture kept as the bytes of a file in memory, so that ten thousand of them fit: some 10 kB for a
/// thumbnail, decoded in well under a millisecond. JPEG, or PNG where the picture has alpha; always sRGB. Copies share
/// the bytes.
class CompressedPicture {
public:
    CompressedPicture() = default; ///< No picture.

    /// No difference is seen at thumbnail size.
    static constexpr double thumbnailQuality = 0.9;

    /// `picture` is 8-bit RGB, alpha none or straight, in any RGB space. No picture where there is none or it can't be
    /// encoded. Any thread.
    [[nodiscard]] static CompressedPicture compress(const Bitmap& picture, double quality = thumbnailQuality);

    [[nodiscard]] bool isNull() const { return bytes_.isEmpty(); }
    [[nodiscard]] qsizetype byteCount() const { return bytes_.size(); }
    /// rgb8 or straight rgba8, sRGB; null where there is no picture. Any thread.
    [[nodiscard]] Bitmap decoded() const;

    bool operator==(const CompressedPicture&) const = default;

private:
    QByteArray bytes_;
};

} // namespace ferrow
