// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Files/ImageTypes.h"

#include "Support/TestSupport.h"

#include <QLocale>

namespace ferrow {

using namespace Qt::StringLiterals;

TEST(ImageTypes, tellsImagesFromOthersAndNamesBothInEnglish)
{
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::German));
    const std::tuple<QByteArray, bool, std::optional<QString>> rows[] = {
        {"CR2", true, u"Canon CR2 raw image"_s}, {"webp", true, u"WebP image"_s},
        {"djvu", true, u"DjVu image"_s}, // From the MIME database, like the next two.
        {"dds", true, u"DirectDraw surface"_s},  {"PDF", false, u"PDF document"_s},
        {"svgz", true, u"SVG image"_s},          {"qqqqq", false, std::nullopt},
        {"\xff\xfe", false, std::nullopt},       {"", false, std::nullopt},
    };
    for (const auto& [extension, isImage, description] : rows) {
        EXPECT_EQ(ImageTypes::isImageExtension(extension), isImage) << extension.toStdString();
        EXPECT_EQ(ImageTypes::description(extension), description) << extension.toStdString();
    }
    QLocale::setDefault(before);
}

TEST(ImageTypes, areTheSameForProgramsDesktopsAndManuals)
{
    QStringList types;
    QStringList extensions;
    QString mimeTypes;
    for (const InputType& input : inputTypes()) {
        if (!input.isPhoto)
            continue;
        types += input.code;
        for (const std::string_view word : input.extensions)
            extensions += QString::fromLatin1(word.data(), qsizetype(word.size()));
        for (const std::string_view word : input.mimeTypes)
            mimeTypes += QString::fromLatin1(word.data(), qsizetype(word.size())) + u';';
    }
    const auto listed = [](QStringList words) {
        const QString last = words.takeLast();
        return words.join(u", "_s) + u" and "_s + last;
    };
    const std::tuple<const char*, QString> rows[] = {
        {"app.ferrow.Ferrow.desktop", u" MimeType="_s + mimeTypes + u' '},
        {"menus/ferrow-servicemenu.desktop", u" MimeType="_s + mimeTypes + u"inode/directory; "_s},
        {"menus/ferrow-sendto.desktop", u" MimeType="_s + mimeTypes + u"inode/directory;"_s},
        {"menus/ferrow.nemo_action", u" Mimetypes="_s + mimeTypes + u"inode/directory; "_s},
        {"menus/ferrow-nautilus.py", u" \""_s + mimeTypes + u"inode/directory;\""_s},
        {"app.ferrow.Ferrow.metainfo.xml", listed(types) + u", read and written"_s},
        {"man/ferrow.1", u"Photos are read as "_s + listed(types)},
        {"man/ferrow.1", u"In folders they are known by the extensions "_s + listed(extensions)},
    };
    for (const auto& [name, text] : rows) {
        const auto file = FileUrl::fromPath(QByteArray(FERROW_PACKAGING "/") + name);
        EXPECT_TRUE(QString::fromUtf8(test::readFile(file)).simplified().contains(text))
            << name << ":" << text.toStdString();
    }
}

} // namespace ferrow
