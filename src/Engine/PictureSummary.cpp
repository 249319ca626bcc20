// SPDX-License-Identifier: GPL-3.0-or-later
#include "Engine/PictureSummary.h"

#include "Engine/Compositor.h"
#include "Engine/MemoryNeed.h"
#include "Engine/PhotoRows.h"
#include "Engine/RowSource.h"
#include "Models/ErrorTexts.h"
#include "Platform/Base/Cancellation.h"
#include "Platform/Properties/PropertyReader.h"

#include <QCryptographicHash>

#include <algorithm>
#include <cstring>
#include <vector>

namespace ferrow::Engine {

namespace {

/// A space by what it is where that is well known, else by its bytes.
std::uint64_t digestOf(const ColorProfile& profile)
{
    if (profile.wellKnown() != WellKnown::none)
        return std::uint64_t(profile.wellKnown());
    const QByteArray hash = QCryptographicHash::hash(profile.icc(), QCryptographicHash::Sha256);
    std::uint64_t digest = 0;
    std::memcpy(&digest, hash.constData(), sizeof digest);
    return digest;
}

FileType typeOf(ExportFormat format)
{
    switch (format) {
    case ExportFormat::jpeg:
        return FileType::jpeg;
    case ExportFormat::png:
        return FileType::png;
    case ExportFormat::tiff:
        return FileType::tiff;
    case ExportFormat::heic:
        break;
    }
    return FileType::heif;
}

bool losesNothing(ExportFormat format)
{
    return !supportsQuality(format);
}

} // namespace

PictureSummary summaryToBeWritten(PixelSize size, PixelFormat format, const ColorProfile& profile)
{
    return {.size = size, .hasAlpha = format.hasAlpha(), .profile = digestOf(profile), .pixels = {}};
}

PictureSummer summerFor(PixelSize size, PixelFormat format, ExportFormat written)
{
    return {size, format, losesNothing(written) ? PictureSummer::Kind::exact : PictureSummer::Kind::rough};
}

PictureSummary readSummary(const ReadBackRequest& request, const std::stop_token& stop, JobObserver& observer)
{
    OpenedPhoto photo = openPhoto(request.source, {.tolerance = Tolerance::strict});
    if (photo.type != typeOf(request.format))
        throw ImagePipelineError(ImagePipelineError::malformedImage);
    const ImageDecoder& decoder = *photo.decoder;
    const PixelSize size = decoder.storedSize();
    PictureSummary summary = summaryToBeWritten(size, decoder.format(), decoder.profile());
    summary.orientation = photo.orientation;
    summary.mayHoldPosition = mayHoldPosition(photo.type, *photo.source);

    // A conversion for whatever is none of ours: what Ferrow writes is in that space already.
    const ColorProfile own =
        outputColorSpace(decoder.profile(), decoder.format().model, OutputColorProfile::preserveSource);
    // What comes back roughly is compared in levels of 8 bits.
    const int bits = losesNothing(request.format) ? decoder.format().bitsPerComponent : 8;
    PhotoRows rows(photo, own, {}, bits);
    observer.headerRead(
        {size.width * size.height, photo.type == FileType::heif, MemoryNeed::ofRows(photo, {}, rows.format())});
    PictureSummer summer = summerFor(rows.size(), rows.format(), request.format);
    const std::size_t stride = std::size_t(rows.size().width) * std::size_t(rows.format().bytesPerPixel());
    const std::int64_t band = std::clamp<std::int64_t>(bandBytes / std::int64_t(stride), 16, 64);
    std::vector<std::byte> some(stride * std::size_t(band));
    for (std::int64_t y = 0; y < rows.size().height; y += band) {
        throwIfCanceled(stop);
        observer.beforeBand();
        const std::int64_t count = std::min(band, rows.size().height - y);
        rows.readRows(count, some.data(), stride);
        summer.add(count, some.data(), stride);
    }
    rows.finish();
    summary.pixels = summer.take();
    return summary;
}

} // namespace ferrow::Engine
