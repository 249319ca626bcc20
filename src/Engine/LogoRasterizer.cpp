// SPDX-License-Identifier: GPL-3.0-or-later
#include "Engine/LogoRasterizer.h"

#include "Engine/Compositor.h"
#include "Engine/MemoryNeed.h"
#include "Engine/PhotoRows.h"
#include "Models/ErrorTexts.h"
#include "Platform/Codecs/PdfPage.h"
#include "Platform/Codecs/SvgPicture.h"
#include "Platform/Pixels/AlphaArithmetic.h"

#include <new>

namespace ferrow::Engine {

namespace {

LogoAssetError logoError(LogoAssetError::Case value)
{
    return {.value = value};
}

const InputType& logoType(const ByteSource& source)
{
    const std::optional<DetectedType> detected = detectFileType(source);
    if (!detected)
        throw logoError(LogoAssetError::Case::malformed);
    if (!detected->type || inputType(*detected->type).logoExtension.isEmpty())
        throw logoError(LogoAssetError::Case::unsupportedType);
    return inputType(*detected->type);
}

void validateLogoSize(PixelSize size)
{
    if (size.width < 1 || size.height < 1 || size.width > maximumLogoSide || size.height > maximumLogoSide ||
        size.width * size.height > maximumLogoPixels)
        throw logoError(LogoAssetError::Case::unreasonableDimensions);
}

/// Straight or missing alpha made premultiplied RGBA, as overlays want it.
Bitmap premultiplied(const Bitmap& picture)
{
    Bitmap result(picture.size(), rgba8Premultiplied, picture.profile());
    const bool hasAlpha = picture.format().hasAlpha();
    const int step = picture.format().bytesPerPixel();
    for (std::int64_t y = 0; y < picture.size().height; ++y) {
        const auto* in = reinterpret_cast<const std::uint8_t*>(picture.row(y));
        auto* out = reinterpret_cast<std::uint8_t*>(result.row(y));
        for (std::int64_t x = 0; x < picture.size().width; ++x, in += step, out += 4) {
            const unsigned alpha = hasAlpha ? in[3] : 255;
            for (int c = 0; c < 3; ++c)
                out[c] = multiplied(in[c], alpha);
            out[3] = std::uint8_t(alpha);
        }
    }
    return result;
}

Bitmap rasterPicture(const SourceFile& source, std::int64_t maximumDimension, JobObserver& observer)
{
    OpenedPhoto photo = openPhoto(source, {.enoughDimension = maximumDimension, .tolerance = Tolerance::strict});
    validateLogoSize(photo.decoder->storedSize());
    observer.headerRead(jobSize(photo, MemoryNeed::ofReducedPicture(photo, maximumDimension)));
    const ColorProfile profile = viewingColorSpace(photo.decoder->profile(), photo.decoder->format().model);
    return premultiplied(reducedPicture(photo, maximumDimension, profile));
}

Bitmap drawnSvg(const ByteSource& source, std::int64_t maximumDimension)
try {
    const QByteArray svg = readSvg(source);
    switch (obstacleIn(svg)) {
    case SvgObstacle::none:
        break;
    case SvgObstacle::text:
        throw logoError(LogoAssetError::Case::textInDrawing);
    case SvgObstacle::reference:
        throw logoError(LogoAssetError::Case::referencesInDrawing);
    case SvgObstacle::tooComplex:
        throw logoError(LogoAssetError::Case::tooComplexDrawing);
    }
    return rasterizeSvg(svg, maximumDimension);
} catch (const CodecError& error) {
    throw logoError(error.reason == CodecError::Reason::tooLarge ? LogoAssetError::Case::tooComplexDrawing
                                                                 : LogoAssetError::Case::malformed);
}

} // namespace

LogoAnswer rasterizeLogo(const LogoRequest& request, JobObserver& observer)
{
    try {
        const ByteSource source(request.source.descriptor, request.source.size);
        const InputType& input = logoType(source);
        LogoAnswer answer;
        answer.fileExtension = QByteArray(input.logoExtension.data(), input.logoExtension.size());
        if (input.type == FileType::pdf) {
            observer.headerRead({.bytes = MemoryNeed::ofPage(request.maximumDimension)});
            answer.picture = rasterizePdf(source, request.maximumDimension);
        } else if (input.type == FileType::svg) {
            observer.headerRead({.bytes = MemoryNeed::ofPage(request.maximumDimension)});
            answer.picture = drawnSvg(source, request.maximumDimension);
        } else {
            answer.picture = rasterPicture(request.source, request.maximumDimension, observer);
        }
        return answer;
    } catch (const ImagePipelineError& error) {
        const bool tooLarge = std::holds_alternative<ImagePipelineError::UnreasonableDimensions>(error.value);
        throw logoError(tooLarge ? LogoAssetError::Case::unreasonableDimensions : LogoAssetError::Case::malformed);
    } catch (const CodecError&) {
        throw logoError(LogoAssetError::Case::malformed);
    } catch (const InputOutputError&) {
        throw logoError(LogoAssetError::Case::malformed);
    } catch (const std::bad_alloc&) {
        throw logoError(LogoAssetError::Case::malformed);
    }
}

} // namespace ferrow::Engine
