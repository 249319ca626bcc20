// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Files/ImageTypeNames.h"

#include "Support/TestSupport.h"

#include <QLocale>

namespace ferrow {

TEST(ImageTypeNames, tellsImagesFromOthersAndNamesBothInEnglish)
{
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::German));
    const struct {
        QByteArray extension;
        bool isImage;
        std::optional<QString> description;
    } rows[] = {
        {"cr2", true, QStringLiteral("Canon CR2 raw image")},
        {"CR2", true, QStringLiteral("Canon CR2 raw image")},
        {"gif", true, QStringLiteral("GIF image")},
        {"webp", true, QStringLiteral("WebP image")},
        {"djvu", true, QStringLiteral("DjVu image")}, // From the MIME database, like the next three.
        {"dds", true, QStringLiteral("DirectDraw surface")},
        {"txt", false, QStringLiteral("plain text document")},
        {"PDF", false, QStringLiteral("PDF document")},
        {"qqqqq", false, std::nullopt},
        {"\xff\xfe", false, std::nullopt},
        {"", false, std::nullopt},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.extension.toStdString());
        EXPECT_EQ(ImageTypeNames::isImageExtension(row.extension), row.isImage);
        EXPECT_EQ(ImageTypeNames::description(row.extension), row.description);
    }
    QLocale::setDefault(before);
}

} // namespace ferrow
