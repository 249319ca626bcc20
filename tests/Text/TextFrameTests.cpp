// SPDX-License-Identifier: GPL-3.0-or-later
#include "Text/TextTestSupport.h"

#include <random>
#include <thread>

namespace ferrow::test {
namespace {

double advanceOf(const TextStyle& style)
{
    const auto height = [&](const char* text) {
        return TextFrame(QString::fromLatin1(text), style).suggestedSize({1'000, 1'000}).height();
    };
    return height("x\nx") - height("x");
}

int linesOf(const QString& text, const TextStyle& style, double width, double height = 10'000)
{
    const double one = TextFrame(QStringLiteral("x"), style).suggestedSize({1'000, 1'000}).height();
    const double all = TextFrame(text, style).suggestedSize({width, height}).height();
    return static_cast<int>(std::lround((all - one) / advanceOf(style))) + 1;
}

TEST(TextFrame, breaksAtSpacesThenAnywhereAndAtLineFeeds)
{
    const TextStyle style = styleFor("Helvetica Neue");
    const double word = TextFrame(QStringLiteral("Hamburg"), style).suggestedSize({4'000, 100}).width();
    struct Row {
        const char* name;
        const char* text;
        double width;
        int lines;
    };
    const Row rows[] = {
        {"room for both", "Hamburg Hamburg", 2.5 * word, 1},
        {"room for one", "Hamburg Hamburg", 1.5 * word, 2},
        {"just room for one", "Hamburg Hamburg", word + 0.1, 2},
        {"a word of four", "HamburgHamburgHamburgHamburg", 1.1 * word, 4},
        {"no room at all", "abc", 0.1, 3},
        {"line feeds of all kinds", "a\nb\r\nc\rd", 1'000, 4},
        {"empty lines", "a\n\nb\n", 1'000, 4},
        {"nothing", "", 1'000, 1},
        {"control characters take no room", "Ham\x01\x02\x1B\x7F\x62urg", word + 0.1, 1},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(linesOf(QString::fromLatin1(row.text), style, row.width), row.lines);
    }
    EXPECT_LE(TextFrame(QStringLiteral("Hamburg Hamburg"), style).suggestedSize({1.5 * word, 500}).width(), word + 0.1);
}

TEST(TextFrame, leavesOutLinesThatDoNotFitButNeverTheFirst)
{
    const TextStyle style = styleFor("Helvetica Neue");
    const QString text = QStringLiteral("H\nH\nH");
    const double one = TextFrame(text, style).suggestedSize({500, 1}).height();
    EXPECT_EQ(linesOf(text, style, 500, 1), 1);
    EXPECT_EQ(linesOf(text, style, 500, one + advanceOf(style) - 1), 1);
    EXPECT_EQ(linesOf(text, style, 500, one + advanceOf(style)), 2);
    const int second = int(one);
    EXPECT_LT(inkBounds(drawBlack(text, style, {100, std::ceil(one + advanceOf(style) - 1)})).bottom(), second);
    EXPECT_GT(inkBounds(drawBlack(text, style, {100, std::ceil(one + advanceOf(style))})).bottom(), second);
    EXPECT_FALSE(inkBounds(drawBlack(text, style, {100, 2})).isEmpty());
}

TEST(TextFrame, breaksAlikeInTheBoxItSuggested)
{
    std::mt19937 random(11);
    const QStringList words{QStringLiteral("Canon"),    QStringLiteral("·"),    QStringLiteral("f/1.8"),
                            QStringLiteral("AVATAR"),   QStringLiteral("שלום"), QStringLiteral("日本語"),
                            QStringLiteral("👍🏽"), QStringLiteral("joy,"), QStringLiteral("Wartenberg-Straße")};
    for (const char* family : {"Helvetica Neue", "New York", "SF Mono"}) {
        for (int round = 0; round < 40; ++round) {
            QStringList picked;
            for (int i = 0; i < 8; ++i)
                picked.append(words[qsizetype(random() % std::size_t(words.size()))]);
            const QString text = picked.join(random() % 5 == 0 ? u'\n' : u' ');
            const TextFrame frame(text, styleFor(family, 5 + random() % 400 / 7.0));
            const QSizeF size = frame.suggestedSize({100.0 + random() % 900, 2'000});
            ASSERT_EQ(frame.suggestedSize({std::ceil(size.width()), std::ceil(size.height())}), size)
                << family << ": " << text.toStdString();
            ASSERT_EQ(frame.suggestedSize(size), size) << family << ": " << text.toStdString();
        }
    }
}

TEST(TextFrame, breaksAlikeAtEveryScale)
{
    const QString text = QStringLiteral("Canon EOS R5 · RF 50mm f/1.2 · ISO 100 · 1/250 s · Göteborg, a day in March");
    const QSizeF full = TextFrame(text, styleFor("Avenir Next", 480)).suggestedSize({5'000, 100'000});
    for (const double scale : {0.5, 0.1, 0.0371}) {
        const QSizeF small =
            TextFrame(text, styleFor("Avenir Next", 480 * scale)).suggestedSize({5'000 * scale, 100'000 * scale});
        EXPECT_NEAR(small.width(), full.width() * scale, full.width() * scale * 0.005);
        EXPECT_NEAR(small.height(), full.height() * scale, full.height() * scale * 0.005);
    }
}

TEST(TextFrame, alignsByTheLetterAlsoFromRightToLeft)
{
    const std::pair<const char*, QString> texts[] = {
        {"Latin", QStringLiteral("Hamburg H")},
        {"Hebrew", QStringLiteral("שלום עולם")},
        {"Hebrew with a space at its end", QStringLiteral("שלום ")},
        {"Arabic in several lines", QStringLiteral("مرحبا\nبالعالم")},
    };
    for (const auto& [name, text] : texts) {
        SCOPED_TRACE(name);
        TextStyle style = styleFor("Helvetica Neue");
        const auto inkAt = [&, &shown = text](TextAlignment alignment) {
            style.alignment = alignment;
            return inkBounds(drawBlack(shown, style, {600, 150}));
        };
        const QRect left = inkAt(TextAlignment::left);
        const QRect center = inkAt(TextAlignment::center);
        const QRect right = inkAt(TextAlignment::right);
        EXPECT_NEAR(left.left(), 0, 5);
        EXPECT_NEAR(right.right(), 599, 5);
        EXPECT_NEAR(center.center().x(), 300, 5);
        EXPECT_LT(left.right(), 300);
        EXPECT_GT(right.left(), 300);
    }
}

TEST(TextFrame, spacesLinesByTheChosenFontAlone)
{
    TextStyle style = styleFor("Helvetica Neue");
    const auto distance = [&](const QString& text) {
        const QRect ink = inkBounds(drawBlack(text, style, {500, 400}));
        return ink.height();
    };
    const int plain = distance(QStringLiteral("H\nH")) - distance(QStringLiteral("H"));
    EXPECT_NEAR(plain, advanceOf(style), 1);
    style.lineSpacing = 25;
    EXPECT_EQ(distance(QStringLiteral("H\nH")) - distance(QStringLiteral("H")), plain + 25);
    EXPECT_NEAR(linesOf(QStringLiteral("H\nH\nH"), style, 500), 3, 0);
    // Taller fonts that fill in do not move the lines.
    style.lineSpacing = 0;
    const double height = TextFrame(QStringLiteral("H\nH"), style).suggestedSize({500, 500}).height();
    for (const QString& other : {QStringLiteral("😀"), QStringLiteral("日本"), QStringLiteral("ش"), QStringLiteral("ྂ")})
        EXPECT_EQ(TextFrame(other + u'\n' + other, style).suggestedSize({500, 500}).height(), height);
    const QRect below = inkBounds(drawBlack(QStringLiteral("😀\nH"), style, {500, 400}));
    const QRect without = inkBounds(drawBlack(QStringLiteral("\nH"), style, {500, 400}));
    EXPECT_EQ(below.bottom(), without.bottom());
}

TEST(TextFrame, placesItsBoxAtTheMarginAndTheOffset)
{
    const TextStyle style = styleFor("SF Mono");
    const TextFrame frame(QStringLiteral("|"), style);
    const Bitmap bitmap = frame.drawn({80.2, 60}, {}, margin, 1, 0, 0, 1);
    EXPECT_EQ(bitmap.size(), (PixelSize{81 + 2 * margin, 60 + 2 * margin}));
    EXPECT_EQ(bitmap.format(), rgba8Premultiplied);
    const auto center = [&](QPointF offset) {
        const Bitmap drawn = frame.drawn({80, 60}, offset, margin, 0, 0, 0, 1);
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
    const TextStyle style = styleFor("Helvetica Neue", 60);
    const Bitmap red = TextFrame(QStringLiteral("█"), style).drawn({60, 70}, {}, margin, 1, 0.5, 0, 0.5);
    EXPECT_EQ(pixel(red, margin + 15, margin + 35), (std::array{128, 64, 0, 128}));

    SKIP_WITHOUT_FAMILY("Noto Color Emoji");
    for (const char* family : {"Helvetica Neue", "SF Mono", "Arial Rounded MT Bold"}) {
        SCOPED_TRACE(family);
        for (const QString& text : {QStringLiteral("❤\uFE0F"), QStringLiteral("👍🏽"),
                                    QStringLiteral("🏳\uFE0F\u200D🌈"), QStringLiteral("1\uFE0F\u20E3")}) {
            const TextFrame frame(text, styleFor(family, 60));
            EXPECT_LT(frame.suggestedSize({500, 500}).width(), 100) << "fell into parts: " << text.toStdString();
            const Bitmap solid = frame.drawn({100, 80}, {}, margin, 0, 0, 0, 1);
            const Bitmap half = frame.drawn({100, 80}, {}, margin, 0, 0, 0, 0.5);
            int colored = 0;
            for (int y = 0; y < solid.size().height; ++y) {
                for (int x = 0; x < solid.size().width; ++x) {
                    const auto [r, g, b, a] = pixel(solid, x, y);
                    colored += std::max({r, g, b}) - std::min({r, g, b}) > 60 ? 1 : 0;
                    ASSERT_NEAR(pixel(half, x, y)[0], r / 2.0, 0.51);
                    ASSERT_NEAR(pixel(half, x, y)[3], a / 2.0, 0.51);
                }
            }
            EXPECT_GT(colored, 200) << text.toStdString();
        }
    }
}

TEST(TextFrame, drawsEveryScriptThatHasAFont)
{
    const std::pair<QFontDatabase::WritingSystem, std::pair<QString, QString>> scripts[] = {
        {QFontDatabase::Japanese, {QStringLiteral("日"), QStringLiteral("語")}},
        {QFontDatabase::Hebrew, {QStringLiteral("ש"), QStringLiteral("ל")}},
        {QFontDatabase::Arabic, {QStringLiteral("ش"), QStringLiteral("م")}},
        {QFontDatabase::Devanagari, {QStringLiteral("क"), QStringLiteral("म")}},
    };
    for (const auto& [script, letters] : scripts) {
        SCOPED_TRACE(letters.first.toStdString());
        if (QFontDatabase::families(script).isEmpty())
            GTEST_SKIP() << "no font for a script is installed: nothing was proved for it";
        // Boxes for missing glyphs look alike.
        const auto drawn = [](const QString& letter) {
            return allBytes(drawBlack(letter, styleFor("Helvetica Neue"), {80, 60}));
        };
        EXPECT_NE(drawn(letters.first), drawn(letters.second));
    }
}

TEST(TextFrame, givesTheSameBytesOnEveryThread)
{
    const QString texts[] = {QStringLiteral("Canon EOS R5 · 1/250 s"),
                             QStringLiteral("שלום مرحبا 日本 👍🏽 🇸🇪"),
                             QStringLiteral("Åsa\nf/1.8")};
    const auto drawAll = [&](std::size_t first) {
        std::vector<QByteArray> drawn(12);
        for (std::size_t i = 0; i < drawn.size(); ++i) {
            const std::size_t which = (first + i) % drawn.size();
            const TextStyle style = styleFor(which % 2 == 0 ? "Helvetica Neue" : "New York", 11 + double(which) * 9.7);
            drawn[which] = allBytes(drawBlack(texts[which % 3], style));
        }
        return drawn;
    };
    const auto expected = drawAll(0);
    std::vector<std::vector<QByteArray>> results(6);
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < results.size(); ++i)
        threads.emplace_back([&, i] { results[i] = drawAll(i * 5); });
    for (std::thread& thread : threads)
        thread.join();
    for (const auto& result : results)
        EXPECT_TRUE(result == expected);
    EXPECT_TRUE(drawAll(7) == expected);
}

} // namespace
} // namespace ferrow::test
