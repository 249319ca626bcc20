// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/TiffInput.h"

#include "Platform/Codecs/ImageDecoder.h"
#include "Platform/Codecs/TiffDirectory.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <limits>
#include <string>
#include <string_view>

namespace ferrow {

namespace {

/// For one allocation inside the library, in bytes: a 200-megapixel picture in one 16-bit RGB tile still opens.
constexpr tmsize_t memoryCeiling = 1'300'000'000;

/// The library reports these as warnings and delivers rows with invented pixels.
constexpr std::array<std::string_view, 8> warningsOfLoss{
    "Premature end of JPEG", "premature end of data segment", "bad Huffman code",
    "found marker",          "bad arithmetic code",           "Premature EOF",
    "Premature EOL",         "Line length mismatch",
};

/// Tags without which the picture would come out as another one: the library goes on with defaults, and turns a palette
/// picture whose palette is missing into a gray one.
constexpr std::array<std::uint16_t, 12> indispensableTags{
    TIFFTAG_BITSPERSAMPLE,     TIFFTAG_PHOTOMETRIC, TIFFTAG_STRIPOFFSETS,     TIFFTAG_SAMPLESPERPIXEL,
    TIFFTAG_COLORMAP,          TIFFTAG_TILEOFFSETS, TIFFTAG_EXTRASAMPLES,     TIFFTAG_SAMPLEFORMAT,
    TIFFTAG_YCBCRCOEFFICIENTS, TIFFTAG_JPEGTABLES,  TIFFTAG_YCBCRSUBSAMPLING, TIFFTAG_REFERENCEBLACKWHITE,
};

bool isLost(const TiffEntry& entry)
{
    return entry.length == 0 &&
           std::find(indispensableTags.begin(), indispensableTags.end(), entry.tag) != indispensableTags.end();
}

/// On the stack: the library calls us with these, and an exception must not cross it.
using MessageBuffer = std::array<char, 512>;

std::string_view messageText(MessageBuffer& buffer, const char* format, va_list arguments)
{
    std::vsnprintf(buffer.data(), buffer.size(), format, arguments);
    return buffer.data();
}

int closeNothing(thandle_t)
{
    return 0;
}

// A file cut short while it is mapped would end the process.
int refuseMapping(thandle_t, void**, toff_t*)
{
    return 0;
}

void unmapNothing(thandle_t, void*, toff_t) {}

tmsize_t refuseWriting(thandle_t, void*, tmsize_t)
{
    return -1;
}

} // namespace

TiffInput::TiffInput(const ByteSource& source) : source_(source)
{
    const TiffOptions options(TIFFOpenOptionsAlloc());
    TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), memoryCeiling);
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), noteError, this);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), noteWarning, this);
    // Letters behind the r: no mapping, and no cutting of one large strip into many small ones.
    tiff_.reset(TIFFClientOpenExt("input", "rmc", this, read, refuseWriting, seek, closeNothing, size, refuseMapping,
                                  unmapNothing, options.get()));
    if (tiff_)
        return;
    throwForeignCause();
    if (mixedDepths_)
        throw CodecError{CodecError::Reason::unsupported, QStringLiteral("TIFF image with mixed bit depths")};
    throw CodecError{CodecError::Reason::malformed, {}};
}

void TiffInput::throwForeignCause() const
{
    if (unreadable_)
        throw CodecError{CodecError::Reason::unreadable, {}};
    if (tooLarge_)
        throw CodecError{CodecError::Reason::tooLarge, {}};
}

tmsize_t TiffInput::read(thandle_t handle, void* into, tmsize_t length)
{
    auto& input = *static_cast<TiffInput*>(handle);
    try {
        const auto count = input.source_.readAt(input.position_, {static_cast<std::byte*>(into), std::size_t(length)});
        input.position_ += std::int64_t(count);
        return tmsize_t(count);
    } catch (...) {
        input.unreadable_ = true;
        return -1;
    }
}

toff_t TiffInput::seek(thandle_t handle, toff_t offset, int whence)
{
    auto& input = *static_cast<TiffInput*>(handle);
    const toff_t base = whence == SEEK_CUR   ? toff_t(input.position_)
                        : whence == SEEK_END ? toff_t(input.source_.size())
                                             : 0;
    // Offsets come from the file: past the end is the same as at the end, where nothing can be read.
    input.position_ = std::int64_t(std::min(base + offset, toff_t(std::numeric_limits<std::int64_t>::max())));
    return toff_t(input.position_);
}

toff_t TiffInput::size(thandle_t handle)
{
    return toff_t(static_cast<TiffInput*>(handle)->source_.size());
}

int TiffInput::noteError(TIFF*, void* input, const char*, const char* format, va_list arguments)
{
    auto& self = *static_cast<TiffInput*>(input);
    MessageBuffer buffer{};
    const std::string_view text = messageText(buffer, format, arguments);
    self.lostData_ = true;
    self.tooLarge_ = self.tooLarge_ || text.find("defined in open options") != std::string_view::npos;
    self.mixedDepths_ = self.mixedDepths_ || text.find("different values per sample") != std::string_view::npos;
    return 1;
}

int TiffInput::noteWarning(TIFF*, void* input, const char*, const char* format, va_list arguments)
{
    auto& self = *static_cast<TiffInput*>(input);
    MessageBuffer buffer{};
    const std::string_view text = messageText(buffer, format, arguments);
    self.lostData_ =
        self.lostData_ || std::any_of(warningsOfLoss.begin(), warningsOfLoss.end(), [&](std::string_view warning) {
            return text.find(warning) != std::string_view::npos;
        });
    return 1;
}

void checkTiffDirectory(const ByteSource& source)
{
    const auto structure = TiffStructure::open(source);
    const auto directory = structure ? structure->firstDirectory() : std::nullopt;
    if (!directory || !directory->isComplete)
        throw CodecError{CodecError::Reason::malformed, {}};
    std::int64_t allValues = 0;
    for (const TiffEntry& entry : directory->entries)
        allValues += entry.length;
    if (allValues > source.size() || std::any_of(directory->entries.begin(), directory->entries.end(), isLost))
        throw CodecError{CodecError::Reason::malformed, {}};
}

} // namespace ferrow
