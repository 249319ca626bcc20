// SPDX-License-Identifier: GPL-3.0-or-later
#include "Text/TextTestSupport.h"

#include "Support/Files.h"

#include <random>
#include <thread>

namespace ferrow::test {
namespace {

double advanceOf(const TextStyle& style)
{
    return sizeOf(u"x\nx"_s, style).height() - sizeOf(u"x"_s, style).height();
}

long linesOf(const QString& text, const TextStyle& style, double width, double height = 10'000)
{
    const double behindTheFirst = sizeOf(text, style, {width, height}).height() - sizeOf(u"x"_s, style).height();
    return std::lround(behindTheFirst / advanceOf(style)) + 1;
}

TEST(TextFrame, breaksAtSpacesThenAnywhereAndAtLineFeeds)
{
    const TextStyle style = styleFor("Helvetica Neue");
    const double word = sizeOf(u"Hamburg"_s, style).width();
    EXPECT_EQ(linesOf(u"Hamburg Hamburg"_s, style, 2.5 * word), 1);
    EXPECT_EQ(linesOf(u"Hamburg Hamburg"_s, style, word + 0.1), 2);
    EXPECT_EQ(linesOf(u"HamburgHamburgHamburgHamburg"_s, style, 1.1 * word), 4);
    EXPECT_EQ(linesOf(u"abc"_s, style, 0.1), 3);
    EXPECT_EQ(linesOf(u"a\nb\r\nc\rd\n\ne\n"_s, style, 1'000), 7);
    EXPECT_EQ(linesOf({}, style, 1'000), 1);
    EXPECT_EQ(linesOf(u"Ham\x01\x02\x1B\x7F\x62urg"_s, style, word + 0.1), 1) << "control characters take room";
    EXPECT_LE(sizeOf(u"Hamburg Hamburg"_s, style, {1.5 * word, 500}).width(), word + 0.1);
}

TEST(TextFrame, leavesOutLinesThatDoNotFitButNeverTheFirst)
{
    const TextStyle style = styleFor("Helvetica Neue");
    const double one = sizeOf(u"H"_s, style).height();
    const double two = one + advanceOf(style);
    const auto bottomIn = [&](double height) {
        return inkBounds(drawBlack(u"H\nH\nH"_s, style, {100, std::ceil(height)})).bottom();
    };
    for (const auto& [height, lines] : {std::pair(1.0, 1), {two - 1, 1}, {two, 2}})
        EXPECT_EQ(linesOf(u"H\nH\nH"_s, style, 500, height), lines);
    EXPECT_GT(bottomIn(2), 0);
    EXPECT_LT(bottomIn(two - 1), int(one));
    EXPECT_GT(bottomIn(two), int(one));
}

TEST(TextFrame, saysWhatABoxCutsOff)
{
    const TextStyle style = styleFor("Helvetica Neue");
    const double height = sizeOf(u"H"_s, style).height();
    const double advance = advanceOf(style);
    const double word = sizeOf(u"Hamburg"_s, style).width();
    const QString words = u"Hamburg Hamburg\nend"_s;
    const struct {
        const char* name;
        QString text;
        QSizeF box;
        QRectF visible; ///< The box itself where it is null.
        TextCut cut;
    } rows[] = {
        {"whole", words, {word + 1, height + 2 * advance}, {}, {}},
        {"a wrapped line", words, {word + 1, height + advance}, {}, {u"end"_s, false}},
        {"two lines", words, {word + 1, height}, {}, {u"Hamburg end"_s, false}},
        {"nothing but line feeds", u"Hamburg\n \n"_s, {word + 1, height}, {}, {}},
        {"a part of a word", u"HHHH"_s, {sizeOf(u"HH"_s, style).width() + 1, height}, {}, {u"HH"_s, false}},
        {"upper half", u"Hamburg"_s, {word + 1, height / 2}, {}, {{}, true}},
        {"room for descenders alone", u"HAH"_s, {word, height}, {0, 0, word, height - 3}, {}},
        {"descenders", u"Hag"_s, {word, height}, {0, 0, word, height - 8}, {{}, true}},
        {"both", words, {word + 1, height / 2}, {}, {u"Hamburg end"_s, true}},
        {"emoji", u"👍"_s, {word, height / 2}, {}, {{}, true}},
        {"whole emoji", u"👍"_s, {word, 2 * height}, {}, {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const TextCut cut =
            TextFrame(row.text, style).cutIn(row.box, row.visible.isNull() ? QRectF({}, row.box) : row.visible);
        EXPECT_EQ(cut.leftOut, row.cut.leftOut);
        EXPECT_EQ(cut.cutsLetters, row.cut.cutsLetters);
    }
}

TEST(TextFrame, fitsWhereItsLinesStandWithAllWords)
{
    const TextStyle style = styleFor("Helvetica Neue");
    const double height = sizeOf(u"H"_s, style).height();
    const double advance = advanceOf(style);
    const double word = sizeOf(u"Hamburg"_s, style).width();
    const struct {
        const char* name;
        QString text;
        QSizeF box;
        bool fits;
    } rows[] = {
        {"one line", u"Hamburg"_s, {word + 1, height}, true},
        {"no room for descenders, though there is none", u"HHH"_s, {word, height - 1}, false},
        {"two lines", u"Hamburg Hamburg"_s, {word + 1, height + advance}, true},
        {"two lines, one too low", u"Hamburg Hamburg"_s, {word + 1, height + advance - 1}, false},
        {"a line feed", u"H\nH"_s, {word, height}, false},
        {"a word broken apart", u"Hamburg"_s, {word - 4, 10 * height}, false},
        {"signs that may be parted", u"日本語日本語"_s, {90, 10 * height}, true},
        {"nothing", {}, {word, height}, true},
    };
    for (const auto& row : rows)
        EXPECT_EQ(TextFrame(row.text, style).fits(row.box), row.fits) << row.name;
}

TEST(TextFrame, spacesLettersButNotBehindTheLast)
{
    for (const double spacing : {0.2, -0.1}) {
        TextStyle style = styleFor("Helvetica Neue", 100);
        // Not the size that the text suggests, which may have a little room more for how it breaks.
        const auto width = [&] { return TextFrame(u"HHHH"_s, style).lineRects({600, 150}).at(0).width(); };
        const double plain = width();
        const auto inkOf = [&](TextAlignment alignment) {
            style.alignment = alignment;
            return inkBounds(drawBlack(u"HHHH"_s, style, {600, 150}));
        };
        const QRect left = inkOf(TextAlignment::left);
        const QRect right = inkOf(TextAlignment::right);
        style.letterSpacing = spacing;
        EXPECT_NEAR(width(), plain + 3 * spacing * 100, 0.5);
        EXPECT_NEAR(inkOf(TextAlignment::left).left(), left.left(), 1);
        EXPECT_NEAR(inkOf(TextAlignment::right).right(), right.right(), 1);
        EXPECT_NEAR(inkOf(TextAlignment::right).width(), right.width() + 3 * spacing * 100, 2);
        const QRect center = inkOf(TextAlignment::center);
        EXPECT_NEAR(center.left(), 599 - center.right(), 2);
        EXPECT_EQ(linesOf(u"HHHH"_s, style, plain + 3 * spacing * 100 + 3), 1);
    }
}

TEST(TextFrame, drawsTheStyleOfAFamily)
{
    const auto inkOf = [](const char* family, const char* face, bool bold = false) {
        TextStyle style{.families = FontFamilies::chainForInstalled(QString::fromLatin1(family)),
                        .bold = bold,
                        .face = QString::fromLatin1(face)};
        return allBytes(drawBlack(u"Hamburg 👍"_s, style, {400, 60}));
    };
    const QByteArray regular = inkOf("DejaVu Sans", "");
    const QByteArray bold = inkOf("DejaVu Sans", "Bold");
    EXPECT_EQ(inkOf("DejaVu Sans", "Book"), regular);
    EXPECT_EQ(bold, inkOf("DejaVu Sans", "", true));
    EXPECT_NE(bold, regular);
    // A style that it has not: the nearest by weight.
    EXPECT_EQ(inkOf("DejaVu Sans", "Extra Black"), bold);
    EXPECT_EQ(inkOf("DejaVu Sans", "Nonsense"), regular);
}

TEST(TextFrame, breaksAlikeInTheBoxItSuggested)
{
    std::mt19937 random(11);
    const QStringList words =
        u"Canon|·|f/1.8|AVATAR|שלום|日本語|👍🏽|joy,|Wartenberg-Straße"_s.split(u'|');
    for (int round = 0; round < 120; ++round) {
        QString text;
        for (int i = 0; i < 8; ++i)
            text += words[qsizetype(random() % std::size_t(words.size()))] + (random() % 20 == 0 ? u'\n' : u' ');
        const TextFrame frame(text, styleFor(round % 2 == 0 ? "Helvetica Neue" : "New York", 5 + random() % 400 / 7.0));
        const QSizeF size = frame.suggestedSize({100.0 + random() % 900, 2'000});
        ASSERT_EQ(frame.suggestedSize({std::ceil(size.width()), std::ceil(size.height())}), size) << text.toStdString();
        ASSERT_EQ(frame.suggestedSize(size), size) << text.toStdString();
    }
}

TEST(TextFrame, breaksAlikeAtEveryScale)
{
    const QString text = u"Canon EOS R5 · RF 50mm f/1.2 · ISO 100 · 1/250 s · Göteborg, a day in March"_s;
    const QSizeF full = sizeOf(text, styleFor("Avenir Next", 480), {5'000, 100'000});
    for (const double scale : {0.5, 0.1, 0.0371}) {
        const QSizeF small = sizeOf(text, styleFor("Avenir Next", 480 * scale), {5'000 * scale, 100'000 * scale});
        EXPECT_NEAR(small.width(), full.width() * scale, full.width() * scale * 0.005);
        EXPECT_NEAR(small.height(), full.height() * scale, full.height() * scale * 0.005);
    }
}

TEST(TextFrame, alignsByTheLetterAlsoFromRightToLeft)
{
    for (const QString& text : {u"Hamburg H"_s, u"שלום עולם"_s, u"שלום "_s, u"مرحبا\nبالعالم"_s}) {
        SCOPED_TRACE(text.toStdString());
        TextStyle style = styleFor("Helvetica Neue");
        const auto inkAt = [&](TextAlignment alignment) {
            style.alignment = alignment;
            return inkBounds(drawBlack(text, style, {600, 150}));
        };
        EXPECT_NEAR(inkAt(TextAlignment::left).left(), 0, 5);
        EXPECT_NEAR(inkAt(TextAlignment::right).right(), 599, 5);
        EXPECT_NEAR(inkAt(TextAlignment::center).center().x(), 300, 5);
        EXPECT_LT(inkAt(TextAlignment::left).width(), 300);
    }
}

TEST(TextFrame, spacesLinesByTheChosenFontAlone)
{
    TextStyle style = styleFor("Helvetica Neue");
    const auto bottomOf = [&](const QString& text) { return inkBounds(drawBlack(text, style, {500, 400})).bottom(); };
    const int plain = bottomOf(u"H\nH"_s) - bottomOf(u"H"_s);
    EXPECT_NEAR(plain, advanceOf(style), 1);
    // Taller fonts that fill in do not move the lines.
    for (const QString& other : {u"😀"_s, u"日本"_s, u"ش"_s, u"ྂ"_s})
        EXPECT_EQ(sizeOf(other + u'\n' + other, style).height(), sizeOf(u"H\nH"_s, style).height());
    EXPECT_EQ(bottomOf(u"😀\nH"_s), bottomOf(u"H\nH"_s));
    style.lineSpacing = 25;
    EXPECT_EQ(bottomOf(u"H\nH"_s) - bottomOf(u"H"_s), plain + 25);
}

TEST(TextFrame, placesItsBoxAtTheMarginAndTheOffset)
{
    const TextFrame frame(u"|"_s, styleFor("SF Mono"));
    const auto center = [&](QPointF offset) {
        const Bitmap drawn = frame.drawn({80.2, 60}, offset, margin, 0, 0, 0, 1);
        EXPECT_EQ(drawn.size(), (PixelSize{81 + 2 * margin, 60 + 2 * margin}));
        double sum = 0;
        double moment = 0;
        for (int x = 0; x < drawn.size().width; ++x) {
            sum += pixel(drawn, x, margin + 25)[3];
            moment += x * pixel(drawn, x, margin + 25)[3];
        }
        return moment / sum;
    };
    EXPECT_NEAR(center({0.5, 0}) - center({0, 0}), 0.5, 0.13);
    EXPECT_TRUE(frame.drawn({0, 0}, {}, 0, 0, 0, 0, 1).isNull());
}

TEST(TextFrame, colorsLettersAndFadesColorGlyphs)
{
    const Bitmap red = TextFrame(u"█"_s, styleFor("Helvetica Neue", 60)).drawn({60, 70}, {}, margin, 1, 0.5, 0, 0.5);
    EXPECT_EQ(pixel(red, margin + 15, margin + 35), (std::array{128, 64, 0, 128}));

    if (!QFontDatabase::hasFamily(u"Noto Color Emoji"_s))
        GTEST_SKIP() << "NOT TESTED: color glyphs; no font with them is installed.";
    for (const QString& text : {u"❤\uFE0F"_s, u"👍🏽"_s, u"🏳\uFE0F\u200D🌈"_s, u"1\uFE0F\u20E3"_s}) {
        for (const char* family : {"Helvetica Neue", "SF Mono", "Arial Rounded MT Bold"}) {
            SCOPED_TRACE(text.toStdString() + " in " + family);
            const TextFrame frame(text, styleFor(family, 60));
            EXPECT_LT(frame.suggestedSize({500, 500}).width(), 100) << "fell into parts";
            const Bitmap solid = frame.drawn({100, 80}, {}, margin, 0, 0, 0, 1);
            const Bitmap half = frame.drawn({100, 80}, {}, margin, 0, 0, 0, 0.5);
            int colored = 0;
            for (int i = 0; i < 160 * 140; ++i) {
                const auto [r, g, b, a] = pixel(solid, i % 160, i / 160);
                colored += std::max({r, g, b}) - std::min({r, g, b}) > 60 ? 1 : 0;
                ASSERT_NEAR(pixel(half, i % 160, i / 160)[0], r / 2.0, 0.51);
                ASSERT_NEAR(pixel(half, i % 160, i / 160)[3], a / 2.0, 0.51);
            }
            EXPECT_GT(colored, 200);
        }
    }
}

TEST(TextFrame, isDrawnWithoutTheThreadsOfTheToolkit)
{
    // Which waits for them for ever where the system does not allow them.
    drawBlack(u"Hamburg"_s, styleFor("Helvetica Neue", 200), {1'000, 300});
    const FileUrl threads = FileUrl::fromPath(QByteArray("/proc/self/task"));
    for (const QString& thread : namesIn(threads))
        EXPECT_FALSE(readFile(threads.appending(thread.toUtf8() + "/comm")).contains("pooled"));
}

TEST(TextFrame, givesTheSameBytesOnEveryThread)
{
    const QStringList texts =
        u"Canon EOS R5 · 1/250 s|שלום مرحبا 日本 👍🏽 🇸🇪|Åsa\nf/1.8"_s.split(u'|');
    const auto drawAll = [&](int first) {
        QByteArrayList drawn(12);
        for (int i = first; i < first + 12; ++i) {
            const TextStyle style = styleFor(i % 2 == 0 ? "Helvetica Neue" : "New York", 11 + i % 12 * 9.7);
            drawn[i % 12] = allBytes(drawBlack(texts[i % 3], style, {600, 200}));
        }
        return drawn;
    };
    const auto expected = drawAll(0);
    std::vector<std::jthread> threads;
    for (int i = 0; i < 6; ++i)
        threads.emplace_back([&, i] { EXPECT_TRUE(drawAll(i * 5) == expected); });
}

} // namespace
} // namespace ferrow::test
