// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <string_view>

namespace ferrow {

/// The types of files that are read, as photos or as logos.
enum class FileType { jpeg, png, tiff, heif, pdf, svg };

/// What is known of a type beside how it is told and decoded: folder scans, file panels, reports, the messages of
/// workers and what is packaged for desktops go by this.
struct InputType {
    /// A few words; the places behind the last are empty.
    struct Words {
        std::array<std::string_view, 6> places;

        [[nodiscard]] constexpr auto begin() const { return places.begin(); }
        [[nodiscard]] constexpr auto end() const { return std::ranges::find(places, std::string_view()); }
    };

    FileType type;
    QLatin1StringView code; ///< In reports.
    QLatin1StringView description;
    Words extensions; ///< Lower case, without the dot.
    Words mimeTypes;  ///< Under which a desktop hands photos over.
    bool isPhoto;
    QLatin1StringView logoExtension; ///< Of the managed copy; empty where no logo is of this type.
};

/// One for each FileType, in its order.
[[nodiscard]] std::span<const InputType> inputTypes();
[[nodiscard]] const InputType& inputType(FileType type);

/// Image types that are told by name alone: what a file's content says and what its extension says is called the same.
namespace ImageTypeNames {

inline constexpr QLatin1StringView avif("AVIF image");
inline constexpr QLatin1StringView bmp("BMP image");
inline constexpr QLatin1StringView eps("EPS image");
inline constexpr QLatin1StringView gif("GIF image");
inline constexpr QLatin1StringView gimp("GIMP image");
inline constexpr QLatin1StringView icon("Windows icon");
inline constexpr QLatin1StringView jpeg2000("JPEG 2000 image");
inline constexpr QLatin1StringView jpegXl("JPEG XL image");
inline constexpr QLatin1StringView netpbm("Netpbm image");
inline constexpr QLatin1StringView openExr("OpenEXR image");
inline constexpr QLatin1StringView pcx("PCX image");
inline constexpr QLatin1StringView photoshop("Photoshop image");
inline constexpr QLatin1StringView radiance("Radiance HDR image");
inline constexpr QLatin1StringView svg("SVG image");
inline constexpr QLatin1StringView targa("TGA image");
inline constexpr QLatin1StringView webp("WebP image");

inline constexpr QLatin1StringView raw("Camera raw image"); ///< Of a maker that is not told.
inline constexpr QLatin1StringView canonCr2("Canon CR2 raw image");
inline constexpr QLatin1StringView canonCr3("Canon CR3 raw image");
inline constexpr QLatin1StringView canonCrw("Canon CRW raw image");
inline constexpr QLatin1StringView dng("Adobe DNG raw image");
inline constexpr QLatin1StringView epson("Epson ERF raw image");
inline constexpr QLatin1StringView fujifilm("Fujifilm RAF raw image");
inline constexpr QLatin1StringView hasselblad3fr("Hasselblad 3FR raw image");
inline constexpr QLatin1StringView kodak("Kodak raw image");
inline constexpr QLatin1StringView minolta("Minolta MRW raw image");
inline constexpr QLatin1StringView nikonNef("Nikon NEF raw image");
inline constexpr QLatin1StringView olympus("Olympus ORF raw image");
inline constexpr QLatin1StringView panasonic("Panasonic RW2 raw image");
inline constexpr QLatin1StringView pentax("Pentax PEF raw image");
inline constexpr QLatin1StringView phaseOne("Phase One IIQ raw image");
inline constexpr QLatin1StringView samsung("Samsung SRW raw image");
inline constexpr QLatin1StringView sigma("Sigma X3F raw image");
inline constexpr QLatin1StringView sonyArw("Sony ARW raw image");

} // namespace ImageTypeNames

/// What a file name's extension (any case, without the dot) says.
namespace ImageTypes {

/// Whether folder scans take such files for photos.
[[nodiscard]] bool isPhotoExtension(const QByteArray& extension);

/// Whether managed copies of logos have it (in lower case alone).
[[nodiscard]] bool isLogoExtension(const QByteArray& extension);

/// Whether it is that of an image type, read or not.
[[nodiscard]] bool isImageExtension(const QByteArray& extension);

/// "Canon CR2 raw image", "GIF image", …: our own tables, then the MIME database's English comment. Absent when the
/// extension names no type at all (not only no image).
[[nodiscard]] std::optional<QString> description(const QByteArray& extension);

} // namespace ImageTypes
} // namespace ferrow
