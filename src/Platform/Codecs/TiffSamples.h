// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Codecs/TiffLayout.h"
#include "Platform/Codecs/TiffRows.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace ferrow {

/// Turns decompressed samples into pixels of layout.format(): depth, byte layout, inversion, palette, alpha and Lab
/// encodings. Not thread-safe.
class TiffSamples {
public:
    /// `layout` must outlive it.
    explicit TiffSamples(const TiffLayout& layout);
    ~TiffSamples();

    /// The run's pixels to `out`; gray for a lost one.
    void convert(const TiffRun& run, std::byte* out);

private:
    struct YCbCr;

    void fillGray(std::byte* out, std::int64_t pixels) const;
    void convertYCbCr(const TiffRun& run, std::byte* out) const;
    void unpack(const TiffRun& run);
    void unpackPlane(const std::byte* plane, std::int64_t values, std::uint16_t* into, int step) const;
    template <typename Component>
    void assemble(std::int64_t pixels, std::byte* out) const;

    const TiffLayout& layout_;
    PixelFormat format_;
    bool isCopy_;                        ///< Stored as it is wanted.
    std::vector<std::uint16_t> samples_; ///< One run at the output's depth, interleaved; palette indexes as they are.
    std::unique_ptr<YCbCr> yCbCr_;
};

} // namespace ferrow
