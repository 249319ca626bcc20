// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Files/ImageTypeNames.h"

#include <QFile>
#include <QHash>
#include <QMimeDatabase>
#include <QMutex>
#include <QMutexLocker>
#include <QStandardPaths>
#include <QXmlStreamReader>

#include <string_view>
#include <utility>

namespace ferrow::ImageTypeNames {

namespace {

/// Whatever MIME database is installed, these are image types, under these names.
constexpr std::pair<std::string_view, std::string_view> ownNames[] = {
    {"3fr", "Hasselblad 3FR raw image"},
    {"arw", "Sony ARW raw image"},
    {"avif", "AVIF image"},
    {"bmp", "BMP image"},
    {"cr2", "Canon CR2 raw image"},
    {"cr3", "Canon CR3 raw image"},
    {"crw", "Canon CRW raw image"},
    {"dcr", "Kodak DCR raw image"},
    {"dib", "BMP image"},
    {"dng", "DNG raw image"},
    {"erf", "Epson ERF raw image"},
    {"exr", "OpenEXR image"},
    {"fff", "Hasselblad FFF raw image"},
    {"gif", "GIF image"},
    {"gpr", "GoPro GPR raw image"},
    {"hdr", "Radiance HDR image"},
    {"heic", "HEIC image"},
    {"heics", "HEIC image sequence"},
    {"heif", "HEIF image"},
    {"icns", "ICNS icon image"},
    {"ico", "ICO icon image"},
    {"iiq", "Phase One IIQ raw image"},
    {"jfif", "JPEG image"},
    {"jp2", "JPEG 2000 image"},
    {"jpe", "JPEG image"},
    {"jpeg", "JPEG image"},
    {"jpf", "JPEG 2000 image"},
    {"jpg", "JPEG image"},
    {"jpx", "JPEG 2000 image"},
    {"jxl", "JPEG XL image"},
    {"jxr", "JPEG XR image"},
    {"kdc", "Kodak KDC raw image"},
    {"mef", "Mamiya MEF raw image"},
    {"mos", "Leaf MOS raw image"},
    {"mrw", "Minolta MRW raw image"},
    {"nef", "Nikon NEF raw image"},
    {"nrw", "Nikon NRW raw image"},
    {"orf", "Olympus ORF raw image"},
    {"pbm", "PBM image"},
    {"pcx", "PCX image"},
    {"pef", "Pentax PEF raw image"},
    {"pgm", "PGM image"},
    {"png", "PNG image"},
    {"ppm", "PPM image"},
    {"psb", "Photoshop image"},
    {"psd", "Photoshop image"},
    {"raf", "Fujifilm RAF raw image"},
    {"raw", "Raw image"},
    {"rw2", "Panasonic RW2 raw image"},
    {"rwl", "Leica RWL raw image"},
    {"sr2", "Sony SR2 raw image"},
    {"srf", "Sony SRF raw image"},
    {"srw", "Samsung SRW raw image"},
    {"svg", "SVG image"},
    {"svgz", "SVG image"},
    {"tga", "TGA image"},
    {"tif", "TIFF image"},
    {"tiff", "TIFF image"},
    {"webp", "WebP image"},
    {"x3f", "Sigma X3F raw image"},
    {"xcf", "GIMP image"},
};

std::optional<QString> ownName(const QByteArray& lowerCaseExtension)
{
    const std::string_view wanted(lowerCaseExtension.constData(), size_t(lowerCaseExtension.size()));
    for (const auto& [extension, name] : ownNames)
        if (extension == wanted)
            return QString::fromLatin1(name.data(), qsizetype(name.size()));
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

bool isImageExtension(const QByteArray& extension)
{
    const QByteArray lower = extension.toLower();
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

} // namespace ferrow::ImageTypeNames
