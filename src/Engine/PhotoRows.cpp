// SPDX-License-Identifier: GPL-3.0-or-later
#include "Engine/PhotoRows.h"

#include "Engine/CodecErrors.h"
#include "Engine/Compositor.h"
#include "Models/ErrorTexts.h"
#include "Platform/Pixels/Resampler.h"
#include "Platform/Properties/PropertyReader.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>

namespace ferrow::Engine {

namespace {

FileType photoType(const ByteSource& source)
{
    const std::optional<DetectedType> detected = detectFileType(source);
    if (!detected)
        throw ImagePipelineError(ImagePipelineError::malformedImage);
    if (!detected->type)
        throw ImagePipelineError(ImagePipelineError::UnsupportedType{detected->description});
    const InputType& input = inputType(*detected->type);
    if (!input.isPhoto)
        throw ImagePipelineError(ImagePipelineError::UnsupportedType{input.description});
    return input.type;
}

void validateStoredSize(PixelSize size)
{
    if (size.width < 1 || size.height < 1)
        throw ImagePipelineError(ImagePipelineError::malformedImage);
    if (size.width > maximumSourceSide || size.height > maximumSourceSide ||
        size.width * size.height > maximumSourcePixels)
        throw ImagePipelineError(ImagePipelineError::UnreasonableDimensions{size.width, size.height});
}

int orientationFrom(const ImageProperties& properties)
{
    const PropertyValue* value = properties.image.find(PropertyKey::orientation);
    const double* number = value ? std::get_if<double>(&value->value) : nullptr;
    return number && *number >= 1 && *number < 9 ? int(*number) : 1;
}

/// Copies upright rows out of a picture held as stored.
void copyOrientedRows(const Bitmap& stored, int orientation, std::int64_t firstRow, std::int64_t count, std::byte* out,
                      std::size_t stride)
{
    const auto bytes = std::size_t(stored.format().bytesPerPixel());
    const std::int64_t storedWidth = stored.size().width;
    const std::int64_t storedHeight = stored.size().height;
    const bool fromBottom = orientation == 3 || orientation == 4 || orientation == 6 || orientation == 7;
    const bool fromRight = orientation == 2 || orientation == 3 || orientation == 7 || orientation == 8;

    const auto copyPixel = [bytes](std::byte* to, const std::byte* from) {
        // A constant length lets the compiler turn each copy into plain moves.
        if (bytes == 3)
            std::memcpy(to, from, 3);
        else if (bytes == 4)
            std::memcpy(to, from, 4);
        else if (bytes == 6)
            std::memcpy(to, from, 6);
        else
            std::memcpy(to, from, 8);
    };

    if (!swapsDimensions(orientation)) {
        for (std::int64_t y = firstRow; y < firstRow + count; ++y, out += stride) {
            const std::byte* from = stored.row(fromBottom ? storedHeight - 1 - y : y);
            if (!fromRight) {
                std::memcpy(out, from, std::size_t(storedWidth) * bytes);
                continue;
            }
            for (std::int64_t x = 0; x < storedWidth; ++x)
                copyPixel(out + std::size_t(x) * bytes, from + std::size_t(storedWidth - 1 - x) * bytes);
        }
        return;
    }
    // A quarter turn: an upright column is a stored row. Walking stored rows keeps reads in order; the band is
    // narrow enough for its rows to stay in the cache.
    for (std::int64_t x = 0; x < storedHeight; ++x) {
        const std::byte* from = stored.row(fromBottom ? storedHeight - 1 - x : x);
        std::byte* to = out + std::size_t(x) * bytes;
        for (std::int64_t y = firstRow; y < firstRow + count; ++y, to += stride)
            copyPixel(to, from + std::size_t(fromRight ? storedWidth - 1 - y : y) * bytes);
    }
}

PixelFormat rowFormat(const ImageDecoder& decoder, int bits = 8)
{
    return rgbFormat(bits, decoder.format().hasAlpha());
}

/// Averages blocks of `factor` × `factor` pixels of the rows it is fed: reduction without holding the whole picture.
class BlockAverage {
public:
    BlockAverage(PixelSize size, PixelFormat format, int factor, const ColorProfile& profile)
        : factor_(factor), sourceWidth_(size.width),
          result_({(size.width + factor - 1) / factor, (size.height + factor - 1) / factor}, format, profile),
          sums_(std::size_t(result_.size().width) * std::size_t(format.channels()))
    {
    }

    void feed(const std::byte* row)
    {
        const auto* pixel = reinterpret_cast<const std::uint8_t*>(row);
        const bool hasAlpha = result_.format().hasAlpha();
        const auto channels = std::size_t(result_.format().channels());
        for (std::int64_t x = 0; x < sourceWidth_; ++x, pixel += channels) {
            std::uint32_t* sum = &sums_[std::size_t(x / factor_) * channels];
            const std::uint32_t weight = hasAlpha ? pixel[3] : 1;
            for (int c = 0; c < 3; ++c)
                sum[c] += pixel[c] * weight;
            if (hasAlpha)
                sum[3] += weight;
        }
        if (++rowsInBlock_ == factor_)
            emitRow();
    }

    Bitmap finish()
    {
        if (rowsInBlock_ > 0)
            emitRow();
        return result_;
    }

private:
    void emitRow()
    {
        const bool hasAlpha = result_.format().hasAlpha();
        const auto channels = std::size_t(result_.format().channels());
        auto* out = reinterpret_cast<std::uint8_t*>(result_.row(nextRow_++));
        for (std::int64_t x = 0; x < result_.size().width; ++x, out += channels) {
            std::uint32_t* sum = &sums_[std::size_t(x) * channels];
            const auto columns = std::uint32_t(std::min<std::int64_t>(factor_, sourceWidth_ - x * factor_));
            const std::uint32_t pixels = columns * std::uint32_t(rowsInBlock_);
            const std::uint32_t weight = hasAlpha ? sum[3] : pixels;
            for (int c = 0; c < 3; ++c)
                out[c] = weight == 0 ? 0 : std::uint8_t((sum[c] + weight / 2) / weight);
            if (hasAlpha)
                out[3] = std::uint8_t((sum[3] + pixels / 2) / pixels);
        }
        std::fill(sums_.begin(), sums_.end(), 0);
        rowsInBlock_ = 0;
    }

    int factor_;
    std::int64_t sourceWidth_;
    Bitmap result_;
    std::vector<std::uint32_t> sums_; ///< 255 × 255 × factor² stays below 2³² up to a factor of 257.
    int rowsInBlock_ = 0;
    std::int64_t nextRow_ = 0;
};

} // namespace

PixelSize OpenedPhoto::uprightSize() const
{
    const PixelSize stored = decoder->storedSize();
    return swapsDimensions(orientation) ? stored.transposed() : stored;
}

OpenedPhoto openPhoto(const SourceFile& source, const DecodeOptions& options)
{
    return translated(Stage::header, [&] {
        OpenedPhoto photo;
        photo.source = std::make_unique<const ByteSource>(source.descriptor, source.size);
        photo.type = photoType(*photo.source);
        photo.decoder = openDecoder(photo.type, *photo.source, options);
        validateStoredSize(photo.decoder->storedSize());
        if (photo.decoder->heldBytes() > maximumHeldBytes(photo.decoder->storedSize()))
            throw CodecError{CodecError::Reason::tooLarge, {}};
        photo.properties = readProperties(photo.type, *photo.source);
        photo.orientation = orientationFrom(photo.properties);
        return photo;
    });
}

JobSize jobSize(const OpenedPhoto& photo, std::int64_t bytes)
{
    const PixelSize size = photo.decoder->storedSize();
    return {size.width * size.height, photo.type == FileType::heif, bytes};
}

std::optional<CodedData> codedDataOf(const OpenedPhoto& photo)
{
    const std::optional<BlockGrid> grid = photo.decoder->blockGrid(photo.orientation);
    if (!grid)
        return std::nullopt;
    const ColorProfile profile = photo.decoder->profile();
    const ColorModel model = photo.decoder->format().model;
    CodedData data{.grid = *grid};
    for (const auto& [policy, name] : CodedCases<OutputColorProfile>::table)
        data.keepsColors[std::size_t(policy)] = meansTheSame(profile, model, outputColorSpace(profile, model, policy));
    return data;
}

Bitmap oriented(const Bitmap& picture, int orientation)
{
    if (orientation == 1)
        return picture;
    const PixelSize size = swapsDimensions(orientation) ? picture.size().transposed() : picture.size();
    Bitmap result(size, picture.format(), picture.profile());
    constexpr std::int64_t band = 32;
    for (std::int64_t y = 0; y < size.height; y += band)
        copyOrientedRows(picture, orientation, y, std::min(band, size.height - y), result.row(y), result.stride());
    return result;
}

DecodeOptions decodingFor(PixelSize size)
{
    const std::int64_t enough = (size.longestSide() * 5 + 3) / 4;
    return {.enoughDimension = enough, .tolerance = Tolerance::strict, .mostReduction = 2};
}

PhotoRows::PhotoRows(OpenedPhoto& photo, const ColorProfile& target, PixelSize size, int bits)
    : photo_(photo), format_(rowFormat(*photo.decoder, bits)),
      transform_(photo.decoder->profile(), photo.decoder->format(), target, format_),
      storedSize_(swapsDimensions(photo.orientation) ? size.transposed() : size)
{
    const PixelSize decoded = photo.decoder->size();
    if (size == PixelSize())
        storedSize_ = decoded;
    if (storedSize_ == decoded)
        return;
    const PixelSize stored = photo.decoder->storedSize();
    const double reduction = std::ceil(double(stored.longestSide()) / double(decoded.longestSide()));
    reducer_.emplace(decoded, double(stored.width) / reduction, double(stored.height) / reduction, storedSize_, format_,
                     target);
}

PixelSize PhotoRows::size() const
{
    return swapsDimensions(photo_.orientation) ? storedSize_.transposed() : storedSize_;
}

void PhotoRows::readStored(std::int64_t count, std::byte* out, std::size_t stride)
{
    if (reducer_)
        readReduced(count, out, stride);
    else
        readDecoded(count, out, stride);
}

void PhotoRows::readReduced(std::int64_t count, std::byte* out, std::size_t stride)
{
    const PixelSize decoded = photo_.decoder->size();
    const auto rowBytes = std::size_t(decoded.width) * std::size_t(format_.bytesPerPixel());
    const std::int64_t band = std::clamp<std::int64_t>(bandBytes / std::int64_t(rowBytes), 1, 64);
    ahead_.resize(rowBytes * std::size_t(band));
    for (; count > 0; --count, out += stride) {
        while (!reducer_->isReady()) {
            if (aheadFirst_ == aheadCount_) {
                aheadFirst_ = 0;
                aheadCount_ = std::min(band, decoded.height - decodedRows_);
                readDecoded(aheadCount_, ahead_.data(), rowBytes);
                decodedRows_ += aheadCount_;
            }
            reducer_->feed(ahead_.data() + std::size_t(aheadFirst_++) * rowBytes);
        }
        reducer_->take(out);
    }
}

void PhotoRows::readDecoded(std::int64_t count, std::byte* out, std::size_t stride)
{
    if (transform_.isIdentity()) {
        photo_.decoder->readRows(count, out, stride);
        return;
    }
    const auto width = std::size_t(photo_.decoder->size().width);
    const std::size_t rowBytes = width * std::size_t(photo_.decoder->format().bytesPerPixel());
    scratch_.resize(rowBytes * std::size_t(count));
    photo_.decoder->readRows(count, scratch_.data(), rowBytes);
    transform_.applyToRows(count, scratch_.data(), rowBytes, out, stride, width);
}

void PhotoRows::readRows(std::int64_t count, std::byte* out, std::size_t stride)
{
    translated(Stage::pixels, [&] {
        if (photo_.orientation == 1) {
            readStored(count, out, stride);
            return;
        }
        if (whole_.isNull()) {
            whole_ = Bitmap(storedSize_, format_);
            const std::int64_t height = whole_.size().height;
            const std::int64_t band = std::max<std::int64_t>(16, bandBytes / std::int64_t(whole_.stride()));
            for (std::int64_t y = 0; y < height; y += band)
                readStored(std::min(band, height - y), whole_.row(y), whole_.stride());
        }
        copyOrientedRows(whole_, photo_.orientation, nextRow_, count, out, stride);
    });
    nextRow_ += count;
}

void PhotoRows::finish()
{
    translated(Stage::pixels, [&] { photo_.decoder->finish(); });
}

Bitmap reducedPicture(OpenedPhoto& photo, std::int64_t maximumDimension, const ColorProfile& target,
                      const std::function<void()>& beforeBand)
{
    return translated(Stage::pixels, [&] {
        const PixelFormat format = rowFormat(*photo.decoder);
        const PixelSize size = photo.decoder->size();
        const ColorTransform transform(photo.decoder->profile(), photo.decoder->format(), target, format);
        const auto decodedBytes = std::size_t(size.width) * std::size_t(photo.decoder->format().bytesPerPixel());
        const auto rowBytes = std::size_t(size.width) * std::size_t(format.bytesPerPixel());
        const std::int64_t band = std::clamp<std::int64_t>(bandBytes / std::int64_t(decodedBytes), 1, 64);

        const auto factor = int(blockFactor(size, maximumDimension));
        std::optional<BlockAverage> average;
        Bitmap picture;
        if (factor > 1)
            average.emplace(size, format, factor, target);
        else
            picture = Bitmap(size, format, target);
        std::vector<std::byte> decoded(decodedBytes * std::size_t(band));
        std::vector<std::byte> row(rowBytes);
        for (std::int64_t y = 0; y < size.height; y += band) {
            beforeBand();
            const std::int64_t count = std::min(band, size.height - y);
            photo.decoder->readRows(count, decoded.data(), decodedBytes);
            for (std::int64_t i = 0; i < count; ++i) {
                const std::byte* in = decoded.data() + std::size_t(i) * decodedBytes;
                std::byte* out = average ? row.data() : picture.row(y + i);
                transform.apply(in, out, std::size_t(size.width));
                if (average)
                    average->feed(out);
            }
        }
        if (average)
            picture = average->finish();
        const PixelSize fitted = Resampler::fitted(photo.decoder->storedSize(), maximumDimension);
        if (fitted != picture.size())
            picture = Resampler::scaled(picture, fitted);
        return oriented(picture, photo.orientation);
    });
}

} // namespace ferrow::Engine
