// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Files/ImageTypeNames.h"

#include "Support/TestSupport.h"

#include <QLocale>

namespace ferrow {

using namespace Qt::StringLiterals;

TEST(ImageTypeNames, tellsImagesFromOthersAndNamesBothInEnglish)
{
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::German));
    const std::tuple<QByteArray, bool, std::optional<QString>> rows[] = {
        {"CR2", true, u"Canon CR2 raw image"_s},
        {"webp", true, u"WebP image"_s},
        {"djvu", true, u"DjVu image"_s}, // From the MIME database, like the next two.
        {"dds", true, u"DirectDraw surface"_s},
        {"PDF", false, u"PDF document"_s},
        {"qqqqq", false, std::nullopt},
        {"\xff\xfe", false, std::nullopt},
        {"", false, std::nullopt},
    };
    for (const auto& [extension, isImage, description] : rows) {
        EXPECT_EQ(ImageTypeNames::isImageExtension(extension), isImage) << extension.toStdString();
        EXPECT_EQ(ImageTypeNames::description(extension), description) << extension.toStdString();
    }
    QLocale::setDefault(before);
}

} // namespace ferrow
