// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Files/ImageTypes.h"

#include "Platform/Base/EnumCases.h"

#include <QFile>
#include <QHash>
#include <QMimeDatabase>
#include <QMutex>
#include <QMutexLocker>
#include <QStandardPaths>
#include <QXmlStreamReader>

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace ferrow {

namespace {

using Words = InputType::Words;

constexpr InputType inputs[]{
    {.type = FileType::jpeg,
     .code = QLatin1StringView("JPEG"),
     .description = QLatin1StringView("JPEG image"),
     .extensions = {"jpg", "jpeg", "jpe", "jfif"},
     .mimeTypes = {"image/jpeg"},
     .isPhoto = true,
     .logoExtension = {}},
    {.type = FileType::png,
     .code = QLatin1StringView("PNG"),
     .description = QLatin1StringView("PNG image"),
     .extensions = {"png"},
     .mimeTypes = {"image/png"},
     .isPhoto = true,
     .logoExtension = QLatin1StringView("png")},
    {.type = FileType::tiff,
     .code = QLatin1StringView("TIFF"),
     .description = QLatin1StringView("TIFF image"),
     .extensions = {"tif", "tiff"},
     .mimeTypes = {"image/tiff"},
     .isPhoto = true,
     .logoExtension = QLatin1StringView("tiff")},
    {.type = FileType::heif,
     .code = QLatin1StringView("HEIC"),
     .description = QLatin1StringView("HEIC image"),
     .extensions = {"heic", "heif", "hif"},
     .mimeTypes = {"image/heif", "image/heic"},
     .isPhoto = true,
     .logoExtension = {}},
    {.type = FileType::pdf,
     .code = QLatin1StringView("PDF"),
     .description = QLatin1StringView("PDF document"),
     .extensions = {"pdf"},
     .mimeTypes = {},
     .isPhoto = false,
     .logoExtension = QLatin1StringView("pdf")},
    {.type = FileType::svg,
     .code = QLatin1StringView("SVG"),
     .description = ImageTypeNames::svg,
     .extensions = {"svg", "svgz"},
     .mimeTypes = {},
     .isPhoto = false,
     .logoExtension = QLatin1StringView("svg")},
};

constexpr bool hasARowForEachType()
{
    std::size_t row = 0;
    return std::ranges::all_of(inputs, [&](const InputType& input) { return std::size_t(input.type) == row++; }) &&
           row == std::size_t(lastEnumerator<FileType{}>()) + 1;
}
static_assert(hasARowForEachType());

struct OtherType {
    QLatin1StringView name;
    Words extensions;
};

/// Whatever MIME database is installed, these are image types, under these names.
constexpr OtherType others[]{
    {ImageTypeNames::dng, {"dng"}},
    {ImageTypeNames::avif, {"avif"}},
    {ImageTypeNames::bmp, {"bmp", "dib"}},
    {ImageTypeNames::raw, {"raw"}},
    {ImageTypeNames::canonCr2, {"cr2"}},
    {ImageTypeNames::canonCr3, {"cr3"}},
    {ImageTypeNames::canonCrw, {"crw"}},
    {ImageTypeNames::eps, {"eps"}},
    {ImageTypeNames::epson, {"erf"}},
    {ImageTypeNames::fujifilm, {"raf"}},
    {ImageTypeNames::gif, {"gif"}},
    {ImageTypeNames::gimp, {"xcf"}},
    {QLatin1StringView("GoPro GPR raw image"), {"gpr"}},
    {ImageTypeNames::hasselblad3fr, {"3fr"}},
    {QLatin1StringView("Hasselblad FFF raw image"), {"fff"}},
    {QLatin1StringView("HEIC image sequence"), {"heics"}},
    {QLatin1StringView("ICNS icon image"), {"icns"}},
    {ImageTypeNames::jpeg2000, {"jp2", "jpf", "jpx"}},
    {ImageTypeNames::jpegXl, {"jxl"}},
    {QLatin1StringView("JPEG XR image"), {"jxr"}},
    {ImageTypeNames::kodak, {"dcr", "kdc"}},
    {QLatin1StringView("Leaf MOS raw image"), {"mos"}},
    {QLatin1StringView("Leica RWL raw image"), {"rwl"}},
    {QLatin1StringView("Mamiya MEF raw image"), {"mef"}},
    {ImageTypeNames::minolta, {"mrw"}},
    {ImageTypeNames::netpbm, {"pam", "pbm", "pgm", "pnm", "ppm"}},
    {ImageTypeNames::nikonNef, {"nef"}},
    {QLatin1StringView("Nikon NRW raw image"), {"nrw"}},
    {ImageTypeNames::olympus, {"orf"}},
    {ImageTypeNames::openExr, {"exr"}},
    {ImageTypeNames::panasonic, {"rw2"}},
    {ImageTypeNames::pcx, {"pcx"}},
    {ImageTypeNames::pentax, {"pef"}},
    {ImageTypeNames::phaseOne, {"iiq"}},
    {ImageTypeNames::photoshop, {"psb", "psd"}},
    {ImageTypeNames::radiance, {"hdr"}},
    {ImageTypeNames::samsung, {"srw"}},
    {ImageTypeNames::sigma, {"x3f"}},
    {ImageTypeNames::sonyArw, {"arw"}},
    {QLatin1StringView("Sony SR2 raw image"), {"sr2"}},
    {QLatin1StringView("Sony SRF raw image"), {"srf"}},
    {ImageTypeNames::targa, {"tga"}},
    {ImageTypeNames::webp, {"webp"}},
    {ImageTypeNames::icon, {"ico"}},
};

bool isOneOf(const Words& words, const QByteArray& word)
{
    return std::ranges::find(words, std::string_view(word.constData(), std::size_t(word.size()))) != words.end();
}

const InputType* inputOf(const QByteArray& lowerCaseExtension)
{
    const auto* const found = std::ranges::find_if(
        inputs, [&](const InputType& input) { return isOneOf(input.extensions, lowerCaseExtension); });
    return found == std::end(inputs) ? nullptr : found;
}

std::optional<QString> ownName(const QByteArray& lowerCaseExtension)
{
    if (const InputType* input = inputOf(lowerCaseExtension))
        return QString(input->description);
    for (const OtherType& other : others)
        if (isOneOf(other.extensions, lowerCaseExtension))
            return other.name;
    return std::nullopt;
}

bool isImage(const QMimeType& type)
{
    return type.name().startsWith(QStringLiteral("image/"));
}

/// The MIME type the installed database gives the extension, images before others; invalid for none.
QMimeType mimeType(const QByteArray& lowerCaseExtension)
{
    if (lowerCaseExtension.isEmpty())
        return {};
    const auto types =
        QMimeDatabase().mimeTypesForFileName(QStringLiteral("x.") + QString::fromUtf8(lowerCaseExtension));
    for (const QMimeType& type : types)
        if (isImage(type))
            return type;
    return types.isEmpty() ? QMimeType() : types.first();
}

/// QMimeType::comment() speaks the user's language; the untranslated one stands only in the database's files.
std::optional<QString> englishComment(const QMimeType& type)
{
    const auto places =
        QStandardPaths::locateAll(QStandardPaths::GenericDataLocation, QStringLiteral("mime/%1.xml").arg(type.name()));
    for (const QString& place : places) {
        QFile file(place);
        if (!file.open(QIODevice::ReadOnly))
            continue;
        QXmlStreamReader xml(&file);
        while (xml.readNextStartElement() || !xml.atEnd())
            if (xml.isStartElement() && xml.name() == QStringLiteral("comment") &&
                !xml.attributes().hasAttribute(QStringLiteral("xml:lang")))
                return xml.readElementText();
    }
    return std::nullopt;
}

/// Remembered, since the database takes some 80 µs for what a folder full of sidecar files asks again and again.
bool isImageInMimeDatabase(const QByteArray& lowerCaseExtension)
{
    constexpr qsizetype mostRemembered = 1'000;
    static QMutex lock;
    static QHash<QByteArray, bool> known;
    const QMutexLocker locked(&lock);
    if (const auto found = known.constFind(lowerCaseExtension); found != known.constEnd())
        return *found;
    if (known.size() >= mostRemembered)
        known.clear();
    return *known.insert(lowerCaseExtension, isImage(mimeType(lowerCaseExtension)));
}

} // namespace

std::span<const InputType> inputTypes()
{
    return inputs;
}

const InputType& inputType(FileType type)
{
    return inputs[std::size_t(type)];
}

namespace ImageTypes {

bool isPhotoExtension(const QByteArray& extension)
{
    const InputType* input = inputOf(extension.toLower());
    return input && input->isPhoto;
}

bool isLogoExtension(const QByteArray& extension)
{
    return std::ranges::any_of(inputs, [&](const InputType& input) {
        return !input.logoExtension.isEmpty() && input.logoExtension == QLatin1StringView(extension);
    });
}

bool isImageExtension(const QByteArray& extension)
{
    const QByteArray lower = extension.toLower();
    if (const InputType* input = inputOf(lower))
        return input->isPhoto || input->type == FileType::svg; // A picture, though no photo; a PDF is a document.
    return ownName(lower) || isImageInMimeDatabase(lower);
}

std::optional<QString> description(const QByteArray& extension)
{
    const QByteArray lower = extension.toLower();
    if (auto name = ownName(lower))
        return name;
    const QMimeType type = mimeType(lower);
    if (!type.isValid())
        return std::nullopt;
    if (auto comment = englishComment(type))
        return comment;
    return QString::fromUtf8(lower.toUpper()) + (isImage(type) ? QStringLiteral(" image") : QStringLiteral(" file"));
}

} // namespace ImageTypes
} // namespace ferrow
