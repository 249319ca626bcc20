// SPDX-License-Identifier: GPL-3.0-or-later
#include "Engine/Compositor.h"

#include "Models/ErrorTexts.h"
#include "Platform/Pixels/AlphaArithmetic.h"
#include "Platform/Pixels/ColorTransform.h"
#include "Platform/Pixels/PixelRows.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

namespace ferrow::Engine {

namespace {

using Byte = std::uint8_t;

std::uint16_t component16(double value)
{
    return std::isnan(value) ? std::uint16_t(0) : std::uint16_t(std::lround(std::clamp(value, 0.0, 1.0) * 65535.0));
}

template <typename Component>
constexpr std::uint32_t most = std::numeric_limits<Component>::max();

template <typename Component>
Component alphaOf(const RGBAColor& color)
{
    // Nothing refuses a color that is not a number, and rounding it must not trap: it counts as opaque.
    const double alpha = std::isnan(color.alpha) ? 1 : std::clamp(color.alpha, 0.0, 1.0);
    return Component(std::lround(alpha * most<Component>));
}

/// One pixel, premultiplied, over one straight pixel.
template <typename Component>
void blendOverStraight(const Byte* source, Component* target)
{
    using Sum = std::conditional_t<sizeof(Component) == 1, std::uint32_t, std::uint64_t>;
    const std::uint32_t sourceAlpha = levelAs<Component>(source[3]);
    const std::uint32_t keptAlpha = multiplied<Component>(target[3], most<Component> - sourceAlpha);
    const std::uint32_t alpha = sourceAlpha + keptAlpha;
    if (alpha == 0)
        return;
    for (int i = 0; i < 3; ++i) {
        const Sum sum = levelAs<Component>(source[i]) * Sum(most<Component>) + target[i] * Sum(keptAlpha);
        target[i] = Component(std::min(Sum(most<Component>), (sum + alpha / 2) / alpha));
    }
    target[3] = Component(alpha);
}

template <typename Component>
void blendOverOpaque(const Byte* source, Component* target)
{
    const std::uint32_t kept = most<Component> - levelAs<Component>(source[3]);
    for (int i = 0; i < 3; ++i) {
        const std::uint32_t sum = levelAs<Component>(source[i]) + std::uint32_t(multiplied<Component>(target[i], kept));
        target[i] = Component(std::min(most<Component>, sum));
    }
}

/// A row of straight pixels over the straight pixels already in `target`.
template <typename Component>
void blendStraightRow(const Component* source, Component* target, std::int64_t pixels)
{
    for (std::int64_t i = 0; i < pixels; ++i, source += 4, target += 4) {
        const std::uint32_t sourceAlpha = source[3];
        if (sourceAlpha == most<Component> || target[3] == 0) {
            std::memcpy(target, source, 4 * sizeof(Component));
            continue;
        }
        if (sourceAlpha == 0)
            continue;
        const std::uint32_t kept = multiplied<Component>(target[3], most<Component> - sourceAlpha);
        const std::uint32_t alpha = sourceAlpha + kept;
        for (int c = 0; c < 3; ++c)
            target[c] = Component((source[c] * sourceAlpha + target[c] * kept + alpha / 2) / alpha);
        target[3] = Component(alpha);
    }
}

/// Opaque pixels to a row that has alpha.
template <typename Component>
void addAlpha(const Component* source, Component* target, std::int64_t pixels)
{
    for (std::int64_t x = 0; x < pixels; ++x, source += 3, target += 4) {
        std::memcpy(target, source, 3 * sizeof(Component));
        target[3] = Component(most<Component>);
    }
}

void unpremultiply(const Byte* in, Byte* out, std::int64_t pixels)
{
    for (std::int64_t i = 0; i < pixels; ++i, in += 4, out += 4) {
        const unsigned alpha = in[3];
        for (int c = 0; c < 3; ++c)
            out[c] = straightened<Byte>(in[c], alpha);
        out[3] = Byte(alpha);
    }
}

void premultiply(Byte* pixel, std::int64_t pixels, unsigned opacity)
{
    for (std::int64_t i = 0; i < pixels; ++i, pixel += 4) {
        const unsigned alpha = multiplied(pixel[3], opacity);
        for (int c = 0; c < 3; ++c)
            pixel[c] = multiplied(pixel[c], alpha);
        pixel[3] = Byte(alpha);
    }
}

void fade(Byte* bytes, std::int64_t count, unsigned opacity)
{
    if (opacity == 255)
        return;
    for (std::int64_t i = 0; i < count; ++i)
        bytes[i] = multiplied(bytes[i], opacity);
}

/// The overlay's pixels in the canvas's space with its opacity applied, still premultiplied.
Bitmap preparedOverlay(const Overlay& overlay, const ColorProfile& canvas)
{
    const Bitmap& picture = overlay.picture;
    const auto opacity = unsigned(std::lround(std::clamp(overlay.opacity, 0.0, 1.0) * 255.0));
    const bool convert = !picture.profile().isEquivalentTo(canvas);
    if (!convert && opacity == 255)
        return picture;

    Bitmap result(picture.size(), rgba8Premultiplied, canvas);
    const std::int64_t width = picture.size().width;
    const ColorTransform transform(picture.profile(), rgba8, canvas, rgba8);
    std::vector<Byte> straight(std::size_t(width) * 4);
    for (std::int64_t y = 0; y < picture.size().height; ++y) {
        const auto* in = reinterpret_cast<const Byte*>(picture.row(y));
        auto* out = reinterpret_cast<Byte*>(result.row(y));
        if (convert) {
            unpremultiply(in, straight.data(), width);
            transform.apply(reinterpret_cast<const std::byte*>(straight.data()), result.row(y), std::size_t(width));
            premultiply(out, width, opacity);
        } else {
            std::memcpy(out, in, std::size_t(width) * 4);
            fade(out, width * 4, opacity);
        }
    }
    return result;
}

template <typename Component>
std::array<Component, 4> canvasPixel(const RGBAColor& color, const ColorProfile& canvas)
{
    constexpr int bits = std::numeric_limits<Component>::digits;
    const std::array<std::uint16_t, 3> in{component16(color.red), component16(color.green), component16(color.blue)};
    std::array<Component, 4> out{};
    const ColorTransform transform(ColorProfile::sRGB(), rgb16, canvas, rgbFormat(bits, false));
    transform.apply(reinterpret_cast<const std::byte*>(in.data()), reinterpret_cast<std::byte*>(out.data()), 1);
    out[3] = alphaOf<Component>(color);
    return out;
}

/// For what is drawn around the photo.
template <typename Component>
PhotoSurroundings::Pixel drawnPixel(const RGBAColor& color, const ColorProfile& canvas)
{
    const std::array<Component, 4> pixel = canvasPixel<Component>(color, canvas);
    return {float(pixel[0]), float(pixel[1]), float(pixel[2]), float(pixel[3]) / float(most<Component>)};
}

} // namespace

bool isBackgroundOpaque(const Composition& composition)
{
    return composition.blurredPhoto || alphaOf<Byte>(composition.borderColor) == 255;
}

bool needsAlpha(const Composition& composition, PixelFormat photo)
{
    return photo.hasAlpha() || !isBackgroundOpaque(composition);
}

void cutCorners(Overlay& photo, const RoundedRect& area)
{
    if (!(area.radius > 0) || photo.picture.isNull())
        return;
    RoundedRect square = area;
    square.radius = 0;
    const PixelSize size = photo.picture.size();
    for (std::int64_t y = 0; y < size.height; ++y) {
        const RowCoverage cut(area, photo.y + y);
        const RowCoverage whole(square, photo.y + y);
        auto* pixel = reinterpret_cast<Byte*>(photo.picture.row(y));
        for (std::int64_t x = 0; x < size.width; ++x, pixel += 4) {
            const double kept = cut.at(photo.x + x);
            const double most = whole.at(photo.x + x); // As much as its pixels have by now.
            if (kept < most)
                fade(pixel, 4, unsigned(std::lround(kept / most * 255)));
        }
    }
}

ColorProfile outputColorSpace(const ColorProfile& photo, ColorModel model, OutputColorProfile policy)
{
    switch (policy) {
    case OutputColorProfile::sRGB:
        return ColorProfile::sRGB();
    case OutputColorProfile::displayP3:
        return ColorProfile::displayP3();
    case OutputColorProfile::preserveSource:
        if (model != ColorModel::rgb || photo.isEmpty() || !photo.canBeTarget())
            return ColorProfile::sRGB();
        return photo.wellKnown() == WellKnown::none ? photo : ColorProfile::of(photo.wellKnown());
    }
    return ColorProfile::sRGB();
}

ColorProfile viewingColorSpace(const ColorProfile& photo, ColorModel model)
{
    const ColorProfile own = outputColorSpace(photo, model, OutputColorProfile::preserveSource);
    return own.wellKnown() == WellKnown::none ? ColorProfile::displayP3() : own;
}

void flattenOverWhite(const std::byte* in, std::byte* out, std::size_t pixels)
{
    const auto* source = reinterpret_cast<const Byte*>(in);
    auto* target = reinterpret_cast<Byte*>(out);
    for (std::size_t i = 0; i < pixels; ++i, source += 4, target += 3) {
        const unsigned alpha = source[3];
        for (int c = 0; c < 3; ++c)
            target[c] = Byte(multiplied(source[c], alpha) + (255 - alpha));
    }
}

Compositor::Compositor(const Composition& composition, RowSource* photo, const ColorProfile& canvasSpace, bool hasAlpha,
                       int bits)
    : size_(composition.canvasSize), format_(rgbFormat(bits, hasAlpha)), photo_(photo), photoX_(composition.photoX),
      photoY_(composition.photoY), photoArea_(composition.photoArea)
{
    const PixelSize photoSize = photo ? photo->size() : PixelSize();
    if (photo && (photoX_ < 0 || photoY_ < 0 || photoX_ > size_.width - photoSize.width ||
                  photoY_ > size_.height - photoSize.height))
        throw ImagePipelineError(ImagePipelineError::renderingFailed);
    const std::int64_t photoHeight = photoSize.height;
    firstWholeRow_ = photoY_;
    lastWholeRow_ = photoY_ + photoHeight;
    if (photoArea_.radius > 0) {
        const auto begin = std::int64_t(std::ceil(photoArea_.top + photoArea_.radius));
        const auto end = std::int64_t(std::floor(photoArea_.bottom - photoArea_.radius));
        firstWholeRow_ = std::clamp(begin, photoY_, photoY_ + photoHeight);
        lastWholeRow_ = std::clamp(end, firstWholeRow_, photoY_ + photoHeight);
    }
    const auto pixelBytes = std::size_t(format_.bytesPerPixel());
    backgroundRow_.resize(std::size_t(size_.width) * pixelBytes);
    withComponent(format_, [&]<typename Component>() {
        if (PhotoSurroundings::areNeeded(composition))
            surroundings_.emplace(composition, composition.line
                                                   ? drawnPixel<Component>(composition.line->color, canvasSpace)
                                                   : PhotoSurroundings::Pixel());
        const std::array<Component, 4> background = canvasPixel<Component>(composition.borderColor, canvasSpace);
        for (std::size_t x = 0; x < backgroundRow_.size(); x += pixelBytes)
            std::memcpy(&backgroundRow_[x], background.data(), pixelBytes);
    });
    for (const Overlay& overlay : composition.overlays)
        if (!overlay.picture.isNull())
            layers_.push_back({preparedOverlay(overlay, canvasSpace), overlay.x, overlay.y});
}

void Compositor::leaveOpen(PixelSize photo)
{
    openSize_ = photo;
    firstWholeRow_ = photoY_;
    lastWholeRow_ = photoY_ + photo.height;
}

std::pair<std::int64_t, std::int64_t> Compositor::columnsOverPhoto(std::int64_t firstRow, std::int64_t count) const
{
    std::int64_t from = photoX_ + openSize_.width;
    std::int64_t to = photoX_;
    for (const Layer& layer : layers_) {
        if (layer.y >= firstRow + count || layer.y + layer.picture.size().height <= firstRow)
            continue;
        from = std::min(from, std::max(layer.x, photoX_));
        to = std::max(to, std::min(layer.x + layer.picture.size().width, photoX_ + openSize_.width));
    }
    return from < to ? std::pair(from, to) : std::pair(photoX_, photoX_);
}

void Compositor::compose(std::int64_t count, std::byte* out, std::size_t stride)
{
    const std::int64_t firstRow = nextRow_;
    nextRow_ += count;
    fillBackground(firstRow, count, out, stride);
    if (surroundings_)
        for (std::int64_t i = 0; i < count; ++i)
            surroundings_->drawRow(firstRow + i, format_, out + std::size_t(i) * stride);
    if (photo_)
        composePhoto(firstRow, count, out, stride);
    for (std::int64_t row = firstRow; row < firstRow + count; ++row)
        for (const Layer& layer : layers_)
            blendLayer(layer, row, out + std::size_t(row - firstRow) * stride);
}

void Compositor::fillBackground(std::int64_t firstRow, std::int64_t count, std::byte* out, std::size_t stride)
{
    // Under an opaque photo the background is never seen: only the columns beside it are filled.
    const bool photoCovers = photo_ ? !photo_->format().hasAlpha() && !format_.hasAlpha() : openSize_ != PixelSize();
    const std::int64_t photoWidth = photo_ ? photo_->size().width : openSize_.width;
    for (std::int64_t row = firstRow; row < firstRow + count; ++row, out += stride) {
        if (blurred_)
            blurred_->moveTo(row);
        const bool besidePhoto = photoCovers && row >= firstWholeRow_ && row < lastWholeRow_;
        if (!besidePhoto) {
            fillColumns(0, size_.width, out);
            continue;
        }
        fillColumns(0, photoX_, out);
        fillColumns(photoX_ + photoWidth, size_.width, out);
    }
}

void Compositor::fillColumns(std::int64_t first, std::int64_t last, std::byte* row) const
{
    const auto pixelBytes = std::size_t(format_.bytesPerPixel());
    const std::size_t offset = std::size_t(first) * pixelBytes;
    if (blurred_)
        blurred_->read(first, last, format_, row + offset);
    else
        std::memcpy(row + offset, backgroundRow_.data() + offset, std::size_t(last - first) * pixelBytes);
}

void Compositor::composePhoto(std::int64_t firstRow, std::int64_t count, std::byte* out, std::size_t stride)
{
    std::int64_t row = std::max(firstRow, photoY_);
    const std::int64_t last = std::min(firstRow + count, photoY_ + photo_->size().height);
    const auto target = [&] {
        return out + std::size_t(row - firstRow) * stride + std::size_t(photoX_) * std::size_t(format_.bytesPerPixel());
    };
    for (; row < std::min(firstWholeRow_, last); ++row)
        composeCutRow(row, target());
    if (const std::int64_t whole = std::min(lastWholeRow_, last) - row; whole > 0) {
        composeWholeRows(whole, target(), stride);
        row += whole;
    }
    for (; row < last; ++row)
        composeCutRow(row, target());
}

void Compositor::composeWholeRows(std::int64_t count, std::byte* target, std::size_t stride)
{
    if (photo_->format() == format_ && !format_.hasAlpha()) {
        photo_->readRows(count, target, stride); // Straight into the canvas: nothing is copied or blended.
        return;
    }

    const auto width = photo_->size().width;
    const auto photoBytes = std::size_t(width) * std::size_t(photo_->format().bytesPerPixel());
    photoScratch_.resize(photoBytes);
    for (std::int64_t i = 0; i < count; ++i, target += stride) {
        photo_->readRows(1, photoScratch_.data(), photoBytes);
        withComponent(format_, [&]<typename Component>() {
            const auto* in = reinterpret_cast<const Component*>(photoScratch_.data());
            auto* pixels = reinterpret_cast<Component*>(target);
            if (photo_->format().hasAlpha())
                blendStraightRow(in, pixels, width);
            else
                addAlpha(in, pixels, width);
        });
    }
}

void Compositor::composeCutRow(std::int64_t row, std::byte* target)
{
    const auto width = photo_->size().width;
    const PixelFormat photoFormat = photo_->format();
    photoScratch_.resize(std::size_t(width * photoFormat.bytesPerPixel()));
    photo_->readRows(1, photoScratch_.data(), photoScratch_.size());
    const RowCoverage coverage(photoArea_, row);
    withComponent(format_, [&]<typename Component>() {
        constexpr std::uint32_t full = most<Component>;
        const auto* in = reinterpret_cast<const Component*>(photoScratch_.data());
        auto* out = reinterpret_cast<Component*>(target);
        for (std::int64_t x = 0; x < width; ++x, in += photoFormat.channels(), out += format_.channels()) {
            const auto covered = std::uint32_t(std::lround(coverage.at(photoX_ + x) * full));
            const Component alpha = photoFormat.hasAlpha() ? multiplied<Component>(in[3], covered) : Component(covered);
            const std::array<Component, 4> pixel{in[0], in[1], in[2], alpha};
            if (format_.hasAlpha())
                blendStraightRow(pixel.data(), out, 1);
            else
                for (std::size_t c = 0; c < 3; ++c)
                    out[c] = Component((std::uint32_t{pixel[c]} * alpha + out[c] * (full - alpha) + full / 2) / full);
        }
    });
}

void Compositor::blendLayer(const Layer& layer, std::int64_t row, std::byte* out) const
{
    const std::int64_t y = row - layer.y;
    if (y < 0 || y >= layer.picture.size().height)
        return;
    const std::int64_t first = std::max<std::int64_t>(layer.x, 0);
    const std::int64_t last = std::min(layer.x + layer.picture.size().width, size_.width);
    if (first >= last)
        return;
    const auto* source = reinterpret_cast<const Byte*>(layer.picture.row(y)) + (first - layer.x) * 4;
    withComponent(format_, [&]<typename Component>() {
        const int channels = format_.channels();
        const Byte* over = source;
        auto* target = reinterpret_cast<Component*>(out) + first * channels;
        for (std::int64_t x = first; x < last; ++x, over += 4, target += channels) {
            if (over[3] == 0)
                continue;
            if (format_.hasAlpha())
                blendOverStraight(over, target);
            else
                blendOverOpaque(over, target);
        }
    });
}

} // namespace ferrow::Engine
