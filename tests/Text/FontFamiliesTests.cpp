// SPDX-License-Identifier: GPL-3.0-or-later
#include "Text/TextTestSupport.h"

#include <set>

namespace ferrow::test {

TEST(FontFamilies, keepTheAskedNameFirstAndEmojiLast)
{
    for (const QString& name : {u"Helvetica Neue"_s, u"New York"_s, u"Arial Rounded MT Bold"_s, u"Own"_s}) {
        EXPECT_EQ(FontFamilies::chainFor(name).first(), name);
        EXPECT_EQ(FontFamilies::chainFor(name).last(), u"Noto Color Emoji"_s);
    }
    EXPECT_TRUE(QFontDatabase::hasFamily(FontFamilies::system())) << FontFamilies::system().toStdString();
}

TEST(FontFamilies, knowWhatIsInstalledAndWhatStandsInForTheRest)
{
    const QStringList installed = FontFamilies::installed();
    EXPECT_TRUE(installed.contains(u"DejaVu Sans"_s));
    EXPECT_TRUE(FontFamilies::isInstalled(u"DejaVu Sans"_s));
    EXPECT_EQ(FontFamilies::chainForInstalled(u"DejaVu Sans"_s).first(), u"DejaVu Sans"_s);
    const QStringList styles = FontFamilies::styles(u"Inter"_s);
    EXPECT_GT(styles.indexOf(u"Bold"_s), styles.indexOf(u"Regular"_s));
    EXPECT_TRUE(FontFamilies::styles(u"No Such Family"_s).isEmpty());
    for (const QString& absent :
         {u"No Such Family"_s, QString(), u"DejaVu Sans, DejaVu Serif"_s, QString(10'000, u'x')}) {
        EXPECT_FALSE(FontFamilies::isInstalled(absent)) << absent.toStdString();
        EXPECT_EQ(FontFamilies::standInFor(absent), FontFamilies::system()) << absent.toStdString();
        EXPECT_EQ(FontFamilies::chainForInstalled(absent).first(), FontFamilies::system());
    }
}

TEST(FontFamilies, giveFiveDifferentFacesAndABoldOneOfTheRounded)
{
    for (const QString& family : {u"Inter"_s, u"Manrope"_s, u"PT Serif"_s, u"JetBrains Mono"_s, u"Quicksand"_s})
        if (!QFontDatabase::hasFamily(family))
            GTEST_SKIP() << "NOT TESTED: five faces; the font " << family.toStdString() << " is not installed.";
    TextStyle bold = styleFor("Arial Rounded MT Bold");
    bold.bold = true;
    std::set<QByteArray> pictures{allBytes(drawBlack(u"1/250 s"_s, bold, {700, 60}))};
    for (const char* name : {"Helvetica Neue", "Avenir Next", "New York", "SF Mono", "Arial Rounded MT Bold"})
        pictures.insert(allBytes(drawBlack(u"1/250 s"_s, styleFor(name), {700, 60})));
    EXPECT_EQ(pictures.size(), 6u);
    EXPECT_NEAR(sizeOf(u"iiii"_s, styleFor("SF Mono")).width(), sizeOf(u"WWWW"_s, styleFor("SF Mono")).width(), 0.1);
}

} // namespace ferrow::test
