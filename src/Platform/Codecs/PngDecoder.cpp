// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/CodecSupport.h"
#include "Platform/Codecs/ImageDecoder.h"

#include <QtEndian>

#include <algorithm>
#include <bit>
#include <cstring>
#include <optional>
#include <string_view>

#include <png.h>

namespace ferrow {

namespace {

using Reason = CodecError::Reason;

constexpr png_uint_32 longestSide = 0x7fffffff;
constexpr png_alloc_size_t maximumIccBytes = 16 * 1024 * 1024;

/// Compressed bytes that may follow the last row's: a few bytes of checksum are due, but a stream that goes on can
/// inflate to a thousand times what it reads, and the library follows it to its end.
constexpr std::int64_t allowedSurplus = 64 * 1024;

/// The library holds two rows; a row of any picture that is wanted is far shorter.
constexpr std::int64_t longestRowBytes = 256 * 1024 * 1024;

/// The library asks for compressed bytes in pieces and leaves a piece that the file cannot fill: where the picture is
/// shown as far as it goes, little shall be lost with the last one.
constexpr std::size_t tolerantPiece = 512;

png_const_bytep asBytes(const char* chunkName)
{
    return reinterpret_cast<png_const_bytep>(chunkName);
}

class PngDecoder final : public ImageDecoder {
public:
    PngDecoder(const ByteSource& source, const DecodeOptions& options) : reader_(source), tolerance_(options.tolerance)
    {
        if (!trap_.run([this] { readHeader(); }))
            throw failure(Reason::malformed);
        takeProfile();
    }

    [[nodiscard]] PixelSize storedSize() const override { return size_; }
    [[nodiscard]] PixelSize size() const override { return size_; }
    [[nodiscard]] PixelFormat format() const override { return format_; }
    [[nodiscard]] ColorProfile profile() const override { return profile_; }
    [[nodiscard]] std::int64_t heldBytes() const override { return isInterlaced_ ? rowBytes() * size_.height : 0; }

    void readRows(std::int64_t count, std::byte* out, std::size_t stride) override
    {
        if (passes_ == 0)
            start();
        for (std::int64_t y = 0; y < count; ++y, ++nextRow_) {
            std::byte* row = out + std::size_t(y) * stride;
            if (isInterlaced_)
                std::memcpy(row, held_.get() + nextRow_ * rowBytes(), std::size_t(rowBytes()));
            else if (isBroken_)
                fillGray(row, size_.width);
            else
                readRow(row);
        }
    }

    /// Reading the last row followed the picture's data to its end and compared its checksums. What comes behind, or
    /// whether an end chunk does, changes no pixel.
    void finish() override {}

private:
    struct Handle {
        ~Handle() { png_destroy_read_struct(&png, &info, nullptr); }

        png_structp png = nullptr;
        png_infop info = nullptr;
    };

    static PngDecoder& of(png_voidp self) { return *static_cast<PngDecoder*>(self); }

    [[nodiscard]] CodecError failure(Reason otherwise) const
    {
        return {reader_.refused() ? Reason::unreadable : otherwise, {}};
    }

    [[nodiscard]] std::int64_t rowBytes() const { return size_.width * format_.bytesPerPixel(); }

    void readHeader()
    {
        handle_.png = png_create_read_struct(
            PNG_LIBPNG_VER_STRING, this,
            [](png_structp png, png_const_charp) { of(png_get_error_ptr(png)).trap_.spring(); },
            [](png_structp png, png_const_charp text) { of(png_get_error_ptr(png)).weigh(text); });
        handle_.info = handle_.png ? png_create_info_struct(handle_.png) : nullptr;
        if (!handle_.info)
            trap_.spring();
        png_set_read_fn(handle_.png, this, [](png_structp png, png_bytep to, std::size_t count) {
            of(png_get_io_ptr(png)).read(to, count);
        });
        // Which sizes are too large is the caller's decision: the library shall parse them all.
        png_set_user_limits(handle_.png, longestSide, longestSide);
        png_set_chunk_malloc_max(handle_.png, maximumIccBytes);
        png_set_compression_buffer_size(handle_.png, tolerance_ == Tolerance::strict ? 65536 : tolerantPiece);
        // Of the ancillary chunks only profiles are wanted. Texts above all shall be neither inflated nor given memory.
        png_set_keep_unknown_chunks(handle_.png, PNG_HANDLE_CHUNK_NEVER, nullptr, -1);
        png_set_keep_unknown_chunks(handle_.png, PNG_HANDLE_CHUNK_AS_DEFAULT, asBytes("iCCP"), 1);
        // The library would drop a profile that comes beside an sRGB chunk, where the profile shall win.
        png_set_keep_unknown_chunks(handle_.png, PNG_HANDLE_CHUNK_ALWAYS, asBytes("sRGB"), 1);
        // Not every version of the library reads code points, or says how bright a picture gets.
        for (const char* const name : {"cICP", "cLLI", "mDCV"})
            png_set_keep_unknown_chunks(handle_.png, PNG_HANDLE_CHUNK_ALWAYS, asBytes(name), 1);
        png_set_chunk_cache_max(handle_.png, 8);
        png_read_info(handle_.png, handle_.info);
        describe();
        if (tolerance_ == Tolerance::tolerant)
            png_set_crc_action(handle_.png, PNG_CRC_WARN_USE, PNG_CRC_WARN_DISCARD);
    }

    void describe()
    {
        size_ = {png_get_image_width(handle_.png, handle_.info), png_get_image_height(handle_.png, handle_.info)};
        isInterlaced_ = png_get_interlace_type(handle_.png, handle_.info) != PNG_INTERLACE_NONE;
        const int colorType = png_get_color_type(handle_.png, handle_.info);
        const bool hasAlpha =
            (colorType & PNG_COLOR_MASK_ALPHA) != 0 || png_get_valid(handle_.png, handle_.info, PNG_INFO_tRNS) != 0;
        format_.model = (colorType & PNG_COLOR_MASK_COLOR) != 0 ? ColorModel::rgb : ColorModel::gray;
        format_.bitsPerComponent = png_get_bit_depth(handle_.png, handle_.info) == 16 ? 16 : 8;
        format_.alpha = hasAlpha ? Alpha::straight : Alpha::none;
    }

    /// Of a chunk that was kept as it is; empty where there is none.
    [[nodiscard]] QByteArray keptChunk(const char* name) const
    {
        png_unknown_chunkp kept = nullptr;
        const int count = png_get_unknown_chunks(handle_.png, handle_.info, &kept);
        for (int i = 0; i < count; ++i)
            if (std::strcmp(reinterpret_cast<const char*>(kept[i].name), name) == 0)
                return {reinterpret_cast<const char*>(kept[i].data), qsizetype(kept[i].size)};
        return {};
    }

    /// Of the whole picture, in cd/m²: as measured, or else of the display that it was made for; 0 where neither is
    /// said. Both are kept in units of a ten-thousandth.
    [[nodiscard]] int peak() const
    {
        const QByteArray measured = keptChunk("cLLI");
        const QByteArray display = keptChunk("mDCV");
        constexpr qsizetype displayPeak = 16; // Behind three primaries and white, of four bytes each.
        const quint32 units = measured.size() == 8   ? qFromBigEndian<quint32>(measured.constData())
                              : display.size() == 24 ? qFromBigEndian<quint32>(display.constData() + displayPeak)
                                                     : 0;
        return int(std::min(units / 10'000, quint32{10'000}));
    }

    /// By code points of BT.2020 with PQ or HLG, RGB in its full range; absent for all others.
    [[nodiscard]] std::optional<ColorProfile> hdrProfile() const
    {
        const QByteArray codePoints = keptChunk("cICP");
        if (codePoints == QByteArray("\x09\x10\x00\x01", 4))
            return ColorProfile::hdr(WellKnown::bt2100Pq, format_.model, peak() > 0 ? peak() : ColorProfile::usualPeak);
        if (codePoints == QByteArray("\x09\x12\x00\x01", 4))
            return ColorProfile::hdr(WellKnown::bt2100Hlg, format_.model);
        return std::nullopt;
    }

    /// Code points come first, then the profile. Gamma and primaries without either are left aside: readers of untagged
    /// files take them for sRGB.
    void takeProfile()
    {
        png_charp name = nullptr;
        int method = 0;
        png_bytep icc = nullptr;
        png_uint_32 length = 0;
        if (auto hdr = hdrProfile())
            profile_ = *std::move(hdr);
        else if (png_get_iCCP(handle_.png, handle_.info, &name, &method, &icc, &length) != 0)
            profile_ =
                ColorProfile::fromIcc(QByteArray(reinterpret_cast<const char*>(icc), qsizetype(length)), format_.model)
                    .value_or(ColorProfile());
        else if (!keptChunk("sRGB").isEmpty())
            profile_ = format_.model == ColorModel::gray ? ColorProfile::sGray() : ColorProfile::sRGB();
    }

    void start()
    {
        if (rowBytes() > longestRowBytes || !trap_.run([this] { prepareRows(); }))
            throw failure(Reason::tooLarge);
        if (isInterlaced_)
            readPasses();
    }

    void prepareRows()
    {
        png_set_expand(handle_.png);
        if (std::endian::native == std::endian::little)
            png_set_swap(handle_.png);
        passes_ = png_set_interlace_handling(handle_.png);
        png_read_update_info(handle_.png, handle_.info);
        if (std::int64_t(png_get_rowbytes(handle_.png, handle_.info)) != rowBytes())
            trap_.spring();
    }

    void readRow(std::byte* row)
    {
        const bool isLast = nextRow_ + 1 == size_.height;
        const bool whole = trap_.run([=, this] { readRowOfPass(row, isLast); });
        if (tolerance_ == Tolerance::strict && (!whole || lostPixels_))
            throw failure(Reason::damaged);
        if (whole)
            return;
        if (nextRow_ == 0 || reader_.refused())
            throw failure(Reason::damaged);
        isBroken_ = true;
        fillGray(row, size_.width);
    }

    void readRowOfPass(std::byte* row, bool isLast)
    {
        readsPixels_ = true;
        if (isLast)
            surplusFrom_ = reader_.position() + 2 * rowBytes() + allowedSurplus;
        png_read_row(handle_.png, reinterpret_cast<png_bytep>(row), nullptr);
        readsPixels_ = false;
    }

    void readPasses()
    {
        try {
            held_ = std::make_unique_for_overwrite<std::byte[]>(std::size_t(rowBytes()) * std::size_t(size_.height));
        } catch (const std::bad_alloc&) {
            throw CodecError{Reason::tooLarge, {}};
        }
        fillGray(held_.get(), size_.width * size_.height);
        const bool whole = trap_.run([this] {
            for (int pass = 0; pass < passes_; ++pass)
                for (std::int64_t y = 0; y < size_.height; ++y) {
                    readRowOfPass(held_.get() + y * rowBytes(), pass + 1 == passes_ && y + 1 == size_.height);
                    hasPixels_ = true;
                }
        });
        const bool acceptable = tolerance_ == Tolerance::tolerant && hasPixels_ && !reader_.refused();
        if ((!whole || lostPixels_) && !acceptable)
            throw failure(Reason::damaged);
    }

    void fillGray(std::byte* to, std::int64_t pixels) const
    {
        std::memset(to, 0x80, std::size_t(pixels * format_.bytesPerPixel()));
        if (!format_.hasAlpha())
            return;
        const std::size_t pixel = std::size_t(format_.bytesPerPixel());
        const std::size_t alpha = std::size_t(format_.bitsPerComponent / 8);
        for (std::int64_t i = 1; i <= pixels; ++i)
            std::memset(to + std::size_t(i) * pixel - alpha, 0xff, alpha);
    }

    void read(png_bytep to, std::size_t count)
    {
        while (count > 0) {
            if (pending_.empty())
                pending_ = reader_.next();
            if (pending_.empty() || reader_.position() > surplusFrom_)
                png_error(handle_.png, "no more bytes");
            const std::size_t some = std::min(count, pending_.size());
            std::memcpy(to, pending_.data(), some);
            pending_ = pending_.subspan(some);
            to += some;
            count -= some;
        }
    }

    /// While it reads pixels the library warns of a stream that goes on behind the last row, which costs nothing, and
    /// of a wrong checksum at its end, which does.
    void weigh(std::string_view text)
    {
        const bool isSurplus =
            text.find("Extra compressed data") != text.npos || text.find("Too much image data") != text.npos;
        lostPixels_ = lostPixels_ || (readsPixels_ && !isSurplus);
    }

    ErrorTrap trap_;
    SourceReader reader_;
    std::span<const std::byte> pending_;
    Tolerance tolerance_;
    Handle handle_;

    PixelSize size_;
    PixelFormat format_;
    ColorProfile profile_;
    bool isInterlaced_ = false;
    int passes_ = 0;                    ///< 0 before the first row.
    std::unique_ptr<std::byte[]> held_; ///< The whole picture, interlaced.

    std::int64_t nextRow_ = 0;
    std::int64_t surplusFrom_ = std::numeric_limits<std::int64_t>::max();
    bool readsPixels_ = false;
    bool hasPixels_ = false;
    bool lostPixels_ = false;
    bool isBroken_ = false;
};

} // namespace

std::unique_ptr<ImageDecoder> openPngDecoder(const ByteSource& source, const DecodeOptions& options)
{
    return std::make_unique<PngDecoder>(source, options);
}

} // namespace ferrow
