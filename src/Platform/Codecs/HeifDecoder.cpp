// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/HeifBoxes.h"
#include "Platform/Codecs/HeifHandles.h"
#include "Platform/Codecs/HeifRows.h"
#include "Platform/Codecs/HeifTiles.h"
#include "Platform/Codecs/ImageDecoder.h"

#include <QByteArray>
#include <QString>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>
#include <optional>
#include <utility>
#include <vector>

namespace ferrow {
namespace {

/// Longest side that the library is let to decode, in pixels: what its own check of sizes can be raised to without
/// overflowing. Larger pictures are reported with their size, but never decoded.
constexpr int largestSide = 65'535;

/// Tiles that are decoded at once. More take more memory and little less time.
constexpr int decodingThreads = 2;

[[noreturn]] void fail(CodecError::Reason reason)
{
    throw CodecError{reason, {}};
}

CodecError::Reason reasonFor(const heif_error& error, CodecError::Reason otherwise)
{
    if (error.code == heif_error_Memory_allocation_error)
        return CodecError::Reason::tooLarge;
    if (error.code == heif_error_Unsupported_feature || error.code == heif_error_Unsupported_filetype)
        return CodecError::Reason::unsupported;
    return otherwise;
}

void check(const heif_error& error, const heif::Reader& reader, CodecError::Reason otherwise)
{
    if (error.code == heif_error_Ok)
        return;
    if (reader.hasFailed)
        fail(CodecError::Reason::unreadable);
    const auto reason = reasonFor(error, otherwise);
    throw CodecError{reason, reason == CodecError::Reason::unsupported ? QStringLiteral("HEIF image of an unknown kind")
                                                                       : QString()};
}

/// `peak` is 0 where nobody says how bright the picture gets.
ColorProfile profileOfCodePoints(const heif_color_profile_nclx& codePoints, int peak)
{
    switch (codePoints.color_primaries) {
    case heif_color_primaries_ITU_R_BT_709_5:
        return ColorProfile::sRGB();
    case heif_color_primaries_SMPTE_EG_432_1:
        return ColorProfile::displayP3();
    case heif_color_primaries_ITU_R_BT_2020_2_and_2100_0:
        if (codePoints.transfer_characteristics == heif_transfer_characteristic_ITU_R_BT_2100_0_PQ)
            return ColorProfile::hdr(WellKnown::bt2100Pq, ColorModel::rgb, peak > 0 ? peak : ColorProfile::usualPeak);
        if (codePoints.transfer_characteristics == heif_transfer_characteristic_ITU_R_BT_2100_0_HLG)
            return ColorProfile::hdr(WellKnown::bt2100Hlg, ColorModel::rgb);
        return ColorProfile::rec2020();
    default:
        return {};
    }
}

ColorProfile profileOf(const heif_image_handle* handle, int peak)
{
    constexpr std::size_t largestProfile = 16'000'000;
    const std::size_t size = heif_image_handle_get_raw_color_profile_size(handle);
    if (size > 0 && size <= largestProfile) {
        QByteArray icc(qsizetype(size), Qt::Uninitialized);
        if (heif_image_handle_get_raw_color_profile(handle, icc.data()).code == heif_error_Ok) {
            if (auto profile = ColorProfile::fromIcc(icc, ColorModel::rgb))
                return *std::move(profile);
        }
    }
    heif_color_profile_nclx* codePoints = nullptr;
    if (heif_image_handle_get_nclx_color_profile(handle, &codePoints).code != heif_error_Ok)
        return {};
    return profileOfCodePoints(*heif::CodePoints(codePoints), peak);
}

/// A picture that the library is never asked for. Its size is for the caller, who has limits to hold it against.
class RefusedDecoder final : public ImageDecoder {
public:
    RefusedDecoder(PixelSize size, CodecError::Reason reason) : size_(size), reason_(reason) {}

    PixelSize storedSize() const override { return size_; }
    PixelSize size() const override { return size_; }
    PixelFormat format() const override { return rgb8; }
    ColorProfile profile() const override { return {}; }
    std::int64_t heldBytes() const override { return 0; }
    void readRows(std::int64_t, std::byte*, std::size_t) override { fail(reason_); }
    void finish() override { fail(reason_); }

private:
    PixelSize size_;
    CodecError::Reason reason_;
};

class HeifDecoder final : public ImageDecoder {
public:
    HeifDecoder(const ByteSource& source, const HeifPicture& picture, const DecodeOptions& options);

    /// Before rotation and crop, as the library reads it.
    PixelSize codedSize() const;

    PixelSize storedSize() const override { return size_; }
    PixelSize size() const override { return size_; }
    PixelFormat format() const override { return format_; }
    ColorProfile profile() const override { return profile_; }
    std::int64_t heldBytes() const override;
    void readRows(std::int64_t count, std::byte* out, std::size_t stride) override;
    void finish() override;

private:
    [[nodiscard]] heif::DecodingOptions decodingOptions() const;
    void decode();
    void decodeTiles(std::int64_t row);
    void copyTile(const heif_image* image, std::int64_t column);

    HeifPicture picture_;
    Tolerance tolerance_;
    heif::Reader reader_;
    heif::Context context_;
    heif::Handle handle_;
    PixelSize size_;
    PixelFormat format_;
    ColorProfile profile_;

    std::optional<heif::TileGrid> grid_; ///< Where the picture is decoded by tiles.
    std::vector<std::byte> tiles_;       ///< Decoded: those of one row, without what lies outside of the picture.
    std::vector<std::byte> tileRow_;
    std::int64_t lostTiles_ = 0;

    heif::Image image_; ///< Of a picture decoded as a whole. Empty before the first row.
    heif::Rows rows_;
    std::int64_t nextRow_ = 0;
};

HeifDecoder::HeifDecoder(const ByteSource& source, const HeifPicture& picture, const DecodeOptions& options)
    : picture_(picture), tolerance_(options.tolerance), reader_{source}, context_(heif_context_alloc())
{
    if (!context_)
        fail(CodecError::Reason::tooLarge);
    heif_context_set_maximum_image_size_limit(context_.get(), largestSide);
    heif_context_set_max_decoding_threads(context_.get(), decodingThreads);
    check(heif::open(context_.get(), reader_), reader_, CodecError::Reason::malformed);
    heif_image_handle* handle = nullptr;
    check(heif_context_get_image_handle(context_.get(), picture.item, &handle), reader_, CodecError::Reason::malformed);
    handle_.reset(handle);

    size_ = {heif_image_handle_get_width(handle), heif_image_handle_get_height(handle)};
    const int bits = heif_image_handle_get_luma_bits_per_pixel(handle);
    if (size_.shorterSide() < 1 || bits < 1)
        fail(CodecError::Reason::malformed);
    format_.bitsPerComponent = bits > 8 ? 16 : 8;
    format_.alpha = heif_image_handle_has_alpha_channel(handle) != 0 ? Alpha::straight : Alpha::none;
    profile_ = profileOf(handle, picture.peak);
    if (picture.tiles > 1 && !picture.isCropped)
        grid_ = heif::tileGridOf(handle, size_);
}

PixelSize HeifDecoder::codedSize() const
{
    return {heif_image_handle_get_ispe_width(handle_.get()), heif_image_handle_get_ispe_height(handle_.get())};
}

/// Turning makes a copy, and a tile (or a picture that is one) is there in its coded colors besides, which take up to
/// as much.
std::int64_t HeifDecoder::heldBytes() const
{
    const std::int64_t pixelBytes = format_.bytesPerPixel();
    if (grid_)
        return (size_.width + 3 * grid_->tile.width) * grid_->tile.height * pixelBytes;
    const std::int64_t planes = size_.width * size_.height * pixelBytes;
    const std::int64_t tilesAtOnce = std::min<std::int64_t>(picture_.tiles, decodingThreads);
    const bool isCopied = picture_.isTurned || picture_.isCropped;
    return planes + (isCopied ? planes : planes / picture_.tiles * tilesAtOnce);
}

heif::DecodingOptions HeifDecoder::decodingOptions() const
{
    heif::DecodingOptions options(heif_decoding_options_alloc());
    if (!options)
        fail(CodecError::Reason::tooLarge);
    options->strict_decoding = tolerance_ == Tolerance::strict ? 1 : 0;
    return options;
}

/// Into planes of red, green and blue, which is what the library decodes to anyway.
void HeifDecoder::decode()
{
    heif_image* image = nullptr;
    const heif_error error =
        heif_decode_image(handle_.get(), &image, heif_colorspace_RGB, heif_chroma_444, decodingOptions().get());
    image_.reset(image);
    check(error, reader_, CodecError::Reason::damaged);
    rows_ = heif::Rows(image, size_, format_);
    handle_.reset();
    context_.reset();
}

void HeifDecoder::decodeTiles(std::int64_t row)
{
    const std::int64_t pixelBytes = format_.bytesPerPixel();
    // Gray, where a tile is lost.
    tiles_.assign(std::size_t(grid_->tile.height * size_.width * pixelBytes), std::byte{128});
    tileRow_.resize(std::size_t(grid_->tile.width * pixelBytes));
    const heif::DecodingOptions options = decodingOptions();
    for (std::int64_t column = 0; column < grid_->columns; ++column) {
        heif_image* decoded = nullptr;
        const heif_error error = heif::decodeTile(handle_.get(), &decoded, options.get(), column, row);
        const heif::Image image(decoded);
        try {
            check(error, reader_, CodecError::Reason::damaged);
            copyTile(image.get(), column);
        } catch (const CodecError& lost) {
            if (tolerance_ == Tolerance::strict || lost.reason != CodecError::Reason::damaged)
                throw;
            ++lostTiles_;
        }
    }
}

void HeifDecoder::copyTile(const heif_image* image, std::int64_t column)
{
    const heif::Rows rows(image, grid_->tile, format_);
    const std::int64_t pixelBytes = format_.bytesPerPixel();
    const std::int64_t left = column * grid_->tile.width - grid_->left; // In the picture.
    const std::int64_t hidden = std::max<std::int64_t>(-left, 0);
    const std::int64_t shown = std::min(left + grid_->tile.width, size_.width) - (left + hidden);
    std::byte* out = tiles_.data() + (left + hidden) * pixelBytes;
    for (std::int64_t y = 0; y < grid_->tile.height; ++y, out += size_.width * pixelBytes) {
        rows.copy(y, tileRow_.data());
        std::memcpy(out, tileRow_.data() + hidden * pixelBytes, std::size_t(shown * pixelBytes));
    }
}

void HeifDecoder::readRows(std::int64_t count, std::byte* out, std::size_t stride)
{
    const auto rowBytes = std::size_t(size_.width * format_.bytesPerPixel());
    try {
        if (!grid_ && nextRow_ == 0)
            decode();
        for (; count > 0; --count, out += stride, ++nextRow_) {
            if (!grid_) {
                rows_.copy(nextRow_, out);
                continue;
            }
            const std::int64_t y = nextRow_ + grid_->top;
            const std::int64_t yInTile = y % grid_->tile.height;
            if (nextRow_ == 0 || yInTile == 0)
                decodeTiles(y / grid_->tile.height);
            std::memcpy(out, tiles_.data() + std::size_t(yInTile) * rowBytes, rowBytes);
        }
    } catch (const std::bad_alloc&) {
        fail(CodecError::Reason::tooLarge);
    }
}

void HeifDecoder::finish()
{
    rows_ = {};
    image_.reset();
    tiles_ = {};
    if (grid_ && lostTiles_ == grid_->columns * grid_->rows)
        fail(CodecError::Reason::damaged);
}

} // namespace

std::unique_ptr<ImageDecoder> openHeifDecoder(const ByteSource& source, const DecodeOptions& options)
{
    const HeifPicture picture = inspectHeifBoxes(source);
    if (picture.declaredSize.longestSide() > largestSide)
        return std::make_unique<RefusedDecoder>(picture.declaredSize, CodecError::Reason::tooLarge);
    if (picture.contradictsItself)
        return std::make_unique<RefusedDecoder>(picture.declaredSize, CodecError::Reason::damaged);
    try {
        auto decoder = std::make_unique<HeifDecoder>(source, picture, options);
        if (decoder->codedSize() != picture.declaredSize)
            return std::make_unique<RefusedDecoder>(picture.declaredSize, CodecError::Reason::damaged);
        return decoder;
    } catch (const std::bad_alloc&) {
        fail(CodecError::Reason::tooLarge);
    }
}

void loadCodecPlugins()
{
    ::heif_init(nullptr);
}

} // namespace ferrow
