// SPDX-License-Identifier: GPL-3.0-or-later
#include "Text/TextTestSupport.h"

#include <set>

namespace ferrow::test {
namespace {

TEST(FontFamilies, keepTheAskedNameFirstAndEmojiLast)
{
    for (const char* name : {"Helvetica Neue", "Avenir Next", "New York", "SF Mono", "Arial Rounded MT Bold", "Own"}) {
        const QStringList chain = FontFamilies::chainFor(QString::fromLatin1(name));
        EXPECT_EQ(chain.first(), QString::fromLatin1(name));
        EXPECT_EQ(chain.last(), QStringLiteral("Noto Color Emoji"));
    }
    EXPECT_TRUE(QFontDatabase::hasFamily(FontFamilies::system())) << FontFamilies::system().toStdString();
}

TEST(FontFamilies, giveFiveDifferentFaces)
{
    SKIP_WITHOUT_FAMILY("Inter");
    SKIP_WITHOUT_FAMILY("Manrope");
    SKIP_WITHOUT_FAMILY("PT Serif");
    SKIP_WITHOUT_FAMILY("JetBrains Mono");
    SKIP_WITHOUT_FAMILY("Quicksand");
    const QString text = QStringLiteral("Sphinx of black quartz, 1/250 s");
    std::set<QByteArray> pictures;
    for (const char* name : {"Helvetica Neue", "Avenir Next", "New York", "SF Mono", "Arial Rounded MT Bold"})
        pictures.insert(allBytes(drawBlack(text, styleFor(name), {700, 60})));
    EXPECT_EQ(pictures.size(), 5u);

    const auto widthOf = [](const char* name, const char* letters) {
        return TextFrame(QString::fromLatin1(letters), styleFor(name)).suggestedSize({4'000, 100}).width();
    };
    EXPECT_NEAR(widthOf("SF Mono", "iiii"), widthOf("SF Mono", "WWWW"), 0.1);
    EXPECT_GT(widthOf("New York", "WWWW"), 2 * widthOf("New York", "iiii"));
}

TEST(FontFamilies, haveABoldFaceForTheRoundedChoice)
{
    SKIP_WITHOUT_FAMILY("Quicksand");
    TextStyle bold = styleFor("Arial Rounded MT Bold");
    bold.bold = true;
    const auto ink = [](const Bitmap& bitmap) {
        std::int64_t sum = 0;
        for (const char byte : allBytes(bitmap))
            sum += static_cast<unsigned char>(byte);
        return sum;
    };
    const QString text = QStringLiteral("Hamburg");
    EXPECT_GT(ink(drawBlack(text, bold)), ink(drawBlack(text, styleFor("Arial Rounded MT Bold"))) * 6 / 5);
}

} // namespace
} // namespace ferrow::test
