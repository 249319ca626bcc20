// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Pixels/ColorTransform.h"

#include "Platform/Pixels/HighDynamicRange.h"
#include "Platform/Pixels/LabRows.h"
#include "Platform/Pixels/LightEncoding.h"
#include "Platform/Pixels/LittleCms.h"
#include "Platform/Pixels/MatrixShaper.h"
#include "Platform/Pixels/PixelRows.h"
#include "Platform/Pixels/PressSpace.h"
#include "Platform/Pixels/RowConverter.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <new>
#include <utility>
#include <vector>

namespace ferrow {

namespace {

constexpr cmsUInt32Number intent = INTENT_RELATIVE_COLORIMETRIC;
/// The library's own memory of the last pixel would be shared by the threads.
constexpr cmsUInt32Number flags = cmsFLAGS_NOCACHE;
/// Without this the library puts a grid of its own, a few dozen colors a side, in place of a profile's tables: fast,
/// and off by whole levels of 8 bits.
constexpr cmsUInt32Number exactly = cmsFLAGS_NOOPTIMIZE;

cmsUInt32Number libraryFormat(PixelFormat format)
{
    const bool deep = format.bitsPerComponent == 16;
    const cmsUInt32Number layout = EXTRA_SH(format.hasAlpha() ? 1U : 0U) | BYTES_SH(deep ? 2U : 1U) |
                                   CHANNELS_SH(static_cast<cmsUInt32Number>(format.colorChannels()));
    switch (format.model) {
    case ColorModel::gray:
        return layout | COLORSPACE_SH(PT_GRAY);
    case ColorModel::rgb:
        return layout | COLORSPACE_SH(PT_RGB);
    case ColorModel::cmyk:
        return layout | COLORSPACE_SH(PT_CMYK);
    case ColorModel::lab:
        return layout | COLORSPACE_SH(PT_Lab);
    }
    return layout;
}

/// What a picture of that model is read as when it brings no profile that can be used.
LittleCms::Profile assumedProfile(const LittleCms::Context& context, ColorModel model)
{
    switch (model) {
    case ColorModel::gray:
        return LittleCms::openProfile(context, ColorProfile::sGray().icc());
    case ColorModel::rgb:
        return LittleCms::openProfile(context, ColorProfile::sRGB().icc());
    case ColorModel::cmyk:
        return LittleCms::openProfile(context, pressProfile());
    case ColorModel::lab:
        return LittleCms::Profile(cmsCreateLab4ProfileTHR(context.get(), nullptr));
    }
    return nullptr;
}

/// Every gray level's color, worked out ahead.
template <typename Source, typename Target>
class GrayRows final : public RowConverter {
public:
    /// `transform` leads from gray without alpha to RGB of the target's depth.
    explicit GrayRows(cmsHTRANSFORM transform)
    {
        std::vector<Component> levels(colors_.size());
        for (std::size_t level = 0; level < levels.size(); ++level)
            levels[level] = static_cast<Component>(level);
        cmsDoTransform(transform, levels.data(), colors_.data(), static_cast<cmsUInt32Number>(levels.size()));
    }

    void convert(const std::byte* in, std::byte* out, std::size_t pixels) const override
    {
        for (; pixels > 0; --pixels, in += Source::bytes, out += Target::bytes) {
            const Color& color = colors_[Source::component(in, 0)];
            std::memcpy(out, color.data(), sizeof color);
            carryAlpha<Source, Target>(in, out);
        }
    }

private:
    using Component = typename Source::ComponentType;
    using Color = std::array<typename Target::ComponentType, 3>;
    std::vector<Color> colors_ = std::vector<Color>(std::size_t{1} << (8 * sizeof(Component)));
};

/// Through tables of many dimensions, by the color library.
class LibraryRows final : public RowConverter {
public:
    LibraryRows(LittleCms::Context context, LittleCms::Transform transform, PixelFormat source, PixelFormat target)
        : context_(std::move(context)), transform_(std::move(transform)),
          addedAlpha_(target.hasAlpha() && !source.hasAlpha() ? std::size_t(target.bitsPerComponent / 8) : 0)
    {
    }

    void convert(const std::byte* in, std::byte* out, std::size_t pixels) const override
    {
        cmsDoTransform(transform_.get(), in, out, static_cast<cmsUInt32Number>(pixels));
        if (addedAlpha_ > 0)
            for (std::size_t pixel = 0; pixel < pixels; ++pixel)
                std::memset(out + (pixel * 4 + 3) * addedAlpha_, 0xff, addedAlpha_);
    }

private:
    LittleCms::Context context_; // Before the transform, which must go first.
    LittleCms::Transform transform_;
    std::size_t addedAlpha_; ///< Its bytes, or none.
};

/// By the color library's tables to Lab, and from there by formula. The tables that the library makes are coarse: what
/// they say is right where colors change slowly, as in Lab, but up to a tenth off at the edge of the target's gamut.
class RowsThroughLab final : public RowConverter {
public:
    RowsThroughLab(std::unique_ptr<RowConverter> toLab, std::unique_ptr<RowConverter> fromLab, PixelFormat source,
                   PixelFormat target)
        : toLab_(std::move(toLab)), fromLab_(std::move(fromLab)), sourceBytes_(std::size_t(source.bytesPerPixel())),
          targetBytes_(std::size_t(target.bytesPerPixel()))
    {
    }

    void convert(const std::byte* in, std::byte* out, std::size_t pixels) const override
    {
        constexpr std::size_t atOnce = 256;
        std::array<std::byte, atOnce * 4 * sizeof(std::uint16_t)> between;
        for (std::size_t done = 0; done < pixels; done += atOnce) {
            const std::size_t count = std::min(atOnce, pixels - done);
            toLab_->convert(in + done * sourceBytes_, between.data(), count);
            fromLab_->convert(between.data(), out + done * targetBytes_, count);
        }
    }

private:
    std::unique_ptr<RowConverter> toLab_;
    std::unique_ptr<RowConverter> fromLab_;
    std::size_t sourceBytes_;
    std::size_t targetBytes_;
};

LittleCms::Transform makeTransform(const LittleCms::Context& context, cmsHPROFILE from, PixelFormat source,
                                   cmsHPROFILE to, PixelFormat target, cmsUInt32Number further = 0)
{
    const cmsUInt32Number alpha = source.hasAlpha() && target.hasAlpha() ? cmsFLAGS_COPY_ALPHA : 0;
    return LittleCms::Transform(cmsCreateTransformTHR(context.get(), from, libraryFormat(source), to,
                                                      libraryFormat(target), intent, flags | alpha | further));
}

std::unique_ptr<RowConverter> grayRows(const LittleCms::Context& context, cmsHPROFILE from, PixelFormat source,
                                       cmsHPROFILE to, PixelFormat target)
{
    PixelFormat levels = source;
    levels.alpha = Alpha::none;
    const bool isExact = source.bitsPerComponent == 8 || target.bitsPerComponent == 16;
    const LittleCms::Transform transform =
        makeTransform(context, from, levels, to, rgbFormat(target.bitsPerComponent, false), isExact ? exactly : 0);
    if (!transform)
        return nullptr;
    return withPixelTypes(source, target, [&]<typename Source, typename Target>() -> std::unique_ptr<RowConverter> {
        if constexpr (Source::isGray)
            return std::make_unique<GrayRows<Source, Target>>(transform.get());
        else
            return nullptr;
    });
}

cmsUInt32Number furtherFor(PixelFormat target)
{
    return target.bitsPerComponent == 16 ? exactly : 0;
}

/// Takes the context over only when it succeeds: what was made in it must go first.
std::unique_ptr<RowConverter> libraryRows(LittleCms::Context& context, cmsHPROFILE from, PixelFormat source,
                                          cmsHPROFILE to, PixelFormat target, cmsUInt32Number further)
{
    LittleCms::Transform transform = makeTransform(context, from, source, to, target, further);
    if (!transform)
        return nullptr;
    return std::make_unique<LibraryRows>(std::move(context), std::move(transform), source, target);
}

std::unique_ptr<RowConverter> rowsThroughLab(LittleCms::Context& context, cmsHPROFILE from, PixelFormat source,
                                             cmsHPROFILE to, PixelFormat target)
{
    const PixelFormat lab{ColorModel::lab, 16, source.alpha};
    auto fromLab = labRows(lab, to, target);
    if (!fromLab)
        return nullptr;
    const LittleCms::Profile labProfile = assumedProfile(context, ColorModel::lab);
    auto toLab = libraryRows(context, from, source, labProfile.get(), lab, furtherFor(target));
    if (!toLab)
        return nullptr;
    return std::make_unique<RowsThroughLab>(std::move(toLab), std::move(fromLab), source, target);
}

/// Null when there is no way from one to the other.
std::unique_ptr<RowConverter> convertedRows(const ColorProfile& from, PixelFormat source, const ColorProfile& to,
                                            PixelFormat target)
{
    LittleCms::Context context(from.icc().size() + to.icc().size());
    const LittleCms::Profile fromProfile =
        from.isEmpty() ? assumedProfile(context, source.model) : LittleCms::openProfile(context, from.icc());
    const LittleCms::Profile toProfile =
        to.isEmpty() ? assumedProfile(context, ColorModel::rgb) : LittleCms::openProfile(context, to.icc());
    if (!fromProfile || !toProfile)
        return nullptr;
    if (from.isHdr())
        return hdrRows(from, source, toProfile.get(), target);
    if (auto shaped = shapedRows(fromProfile.get(), source, toProfile.get(), target))
        return shaped;
    if (source.model == ColorModel::gray)
        return grayRows(context, fromProfile.get(), source, toProfile.get(), target);
    if (source.model == ColorModel::lab && from.isEmpty())
        if (auto rows = labRows(source, toProfile.get(), target))
            return rows;
    if (matrixProfileOf(toProfile.get(), Way::toPictures))
        return rowsThroughLab(context, fromProfile.get(), source, toProfile.get(), target);
    return libraryRows(context, fromProfile.get(), source, toProfile.get(), target, furtherFor(target));
}

/// Leaves out what the library rejects: first the source's profile, then the target's.
std::unique_ptr<RowConverter> rowsFor(const ColorProfile& from, PixelFormat source, const ColorProfile& to,
                                      PixelFormat target)
{
    if (meansTheSame(from, source.model, to))
        return source == target ? copiedRows(target) : rearrangedRows(source, target);
    if (auto rows = convertedRows(from, source, to, target))
        return rows;
    if (!from.isEmpty())
        return rowsFor({}, source, to, target);
    if (!to.isEmpty())
        return rowsFor({}, source, {}, target);
    throw std::bad_alloc();
}

} // namespace

bool meansTheSame(const ColorProfile& from, ColorModel model, const ColorProfile& to)
{
    if (model == ColorModel::rgb)
        return from.isEquivalentTo(to);
    const bool hasCurveOfSRGB = from.isEmpty() || from.isEquivalentTo(ColorProfile::sGray());
    return model == ColorModel::gray && hasCurveOfSRGB &&
           (to.isEquivalentTo(ColorProfile::sRGB()) || to.isEquivalentTo(ColorProfile::displayP3()));
}

struct ColorTransform::Implementation {
    std::unique_ptr<RowConverter> rows;
    bool isIdentity;
};

ColorTransform::ColorTransform(const ColorProfile& from, PixelFormat source, const ColorProfile& to, PixelFormat target)
{
    const ColorProfile usable = from.model() == source.model ? from : ColorProfile();
    const bool isIdentity = source == target && meansTheSame(usable, source.model, to);
    implementation_ = std::make_unique<Implementation>(Implementation{rowsFor(usable, source, to, target), isIdentity});
}

ColorTransform::~ColorTransform() = default;
ColorTransform::ColorTransform(ColorTransform&&) noexcept = default;
ColorTransform& ColorTransform::operator=(ColorTransform&&) noexcept = default;

bool ColorTransform::isIdentity() const
{
    return implementation_->isIdentity;
}

void ColorTransform::apply(const std::byte* in, std::byte* out, std::size_t pixels) const
{
    implementation_->rows->convert(in, out, pixels);
}

void ColorTransform::applyToRows(std::int64_t count, const std::byte* in, std::size_t inStride, std::byte* out,
                                 std::size_t outStride, std::size_t pixels) const
{
    for (; count > 0; --count, in += inStride, out += outStride)
        apply(in, out, pixels);
}

Bitmap inColorSpace(const Bitmap& picture, const ColorProfile& space)
{
    if (picture.isNull() || picture.profile().isEquivalentTo(space))
        return picture;
    Bitmap converted(picture.size(), picture.format(), space);
    ColorTransform(picture.profile(), picture.format(), space, picture.format())
        .applyToRows(picture.size().height, picture.row(0), picture.stride(), converted.row(0), converted.stride(),
                     std::size_t(picture.size().width));
    return converted;
}

} // namespace ferrow
