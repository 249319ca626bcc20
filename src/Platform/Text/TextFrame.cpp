// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Text/TextFrame.h"

#include "Platform/Text/EmojiSequences.h"

#include <QFont>
#include <QFontMetricsF>
#include <QImage>
#include <QPainter>
#include <QTextLayout>

#include <algorithm>
#include <cmath>
#include <vector>

namespace ferrow {

namespace {

/// A device of 72 dots per inch: one point is one pixel there. Fonts take fractions only in points.
constexpr int dotsPerMeter = 2835;

/// Measured extents are sums of 1/64 pixels; a box that is short by less was meant to fit.
constexpr double tolerance = 1.0 / 64;

/// The range in which pixel sizes mean something to the font engine.
constexpr double smallestSize = 0.1;
constexpr double largestSize = 20'000;

QImage makeDevice()
{
    QImage image(1, 1, QImage::Format_RGBA8888_Premultiplied);
    image.setDotsPerMeterX(dotsPerMeter);
    image.setDotsPerMeterY(dotsPerMeter);
    return image;
}

QFont makeFont(const TextStyle& style, const QPaintDevice* device)
{
    QFont font;
    if (!style.families.isEmpty())
        font.setFamilies(style.families);
    font.setPointSizeF(std::clamp(style.pixelSize, smallestSize, largestSize));
    font.setBold(style.bold);
    font.setHintingPreference(QFont::PreferNoHinting);
    font.setStyleStrategy(QFont::StyleStrategy(QFont::PreferAntialias | QFont::NoSubpixelAntialias));
    return QFont(font, device);
}

/// One text a paragraph. Other control characters, which some fonts show as little boxes, are left out.
std::vector<EmojiText> paragraphsOf(QString text)
{
    text.replace(QLatin1StringView("\r\n"), QLatin1StringView("\n"));
    QString paragraph;
    std::vector<EmojiText> paragraphs;
    for (const QChar character : text) {
        const bool breaks = character == u'\n' || character == u'\v' || character == u'\f' || character == u'\r' ||
                            character == QChar(0x85) || character == QChar::LineSeparator ||
                            character == QChar::ParagraphSeparator;
        if (breaks) {
            paragraphs.push_back(findEmoji(paragraph));
            paragraph.clear();
        } else if (character == u'\t' || character.category() != QChar::Other_Control) {
            paragraph.append(character);
        }
    }
    paragraphs.push_back(findEmoji(paragraph));
    return paragraphs;
}

Qt::Alignment qtAlignment(TextAlignment alignment)
{
    switch (alignment) {
    case TextAlignment::left:
        return Qt::AlignLeft;
    case TextAlignment::center:
        return Qt::AlignHCenter;
    case TextAlignment::right:
        return Qt::AlignRight;
    }
    return Qt::AlignLeft;
}

/// Without these, a text font's own black sign is taken wherever it has one, and skin tones come apart.
QList<QTextLayout::FormatRange> emojiFormats(const EmojiText& paragraph)
{
    QList<QTextLayout::FormatRange> formats;
    for (const TextRange& range : paragraph.emoji) {
        QTextCharFormat format;
        format.setFontFamilies({QStringLiteral("Noto Color Emoji")});
        format.setFontWeight(QFont::Normal);
        formats.append({range.start, range.length, format});
    }
    return formats;
}

/// Multiplies every channel, so that overlapping glyphs do not show through each other and colour glyphs fade alike.
void fade(Bitmap& bitmap, double alpha)
{
    const auto factor = static_cast<unsigned>(std::lround(std::clamp(alpha, 0.0, 1.0) * 65'536));
    if (factor == 65'536)
        return;
    const auto bytes = static_cast<std::size_t>(bitmap.size().width) * 4;
    for (std::int64_t y = 0; y < bitmap.size().height; ++y) {
        std::byte* row = bitmap.row(y);
        for (std::size_t i = 0; i < bytes; ++i)
            row[i] = static_cast<std::byte>((std::to_integer<unsigned>(row[i]) * factor + 32'768) >> 16);
    }
}

} // namespace

struct TextFrame::Implementation {
    QImage device = makeDevice();
    std::vector<EmojiText> paragraphs;
    QFont font;
    TextAlignment alignment = TextAlignment::left;
    double ascent = 0;
    double inkHeight = 0; ///< Ascent and descent of the font that was asked for, whatever fonts fill its gaps.
    double advance = 0;   ///< From one baseline to the next.

    Implementation(const QString& text, const TextStyle& style)
        : paragraphs(paragraphsOf(text)), font(makeFont(style, &device)), alignment(style.alignment)
    {
        const QFontMetricsF metrics(font, &device);
        ascent = metrics.ascent();
        inkHeight = metrics.ascent() + metrics.descent();
        advance = inkHeight + std::max(metrics.leading(), 0.0) + std::max(style.lineSpacing, 0.0);
    }

    /// How many lines fit into `height`: at least one.
    [[nodiscard]] std::size_t linesWithin(double height) const
    {
        const double more = std::floor((height + tolerance - inkHeight) / advance);
        return more >= 1 ? static_cast<std::size_t>(std::min(more, 1e6)) + 1 : 1;
    }

    /// The first lines, at most `most`, of the text broken at `width`; `use(line, index)` sees each when it is laid
    /// out.
    template <typename Use>
    void layOut(double width, std::size_t most, Use use) const
    {
        QTextOption option(qtAlignment(alignment));
        option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
        option.setTabStopDistance(2 * font.pointSizeF());
        std::size_t index = 0;
        for (const EmojiText& paragraph : paragraphs) {
            if (index >= most)
                return;
            QTextLayout layout(paragraph.text, font, &device);
            layout.setTextOption(option);
            layout.setFormats(emojiFormats(paragraph));
            layout.beginLayout();
            for (std::size_t left = most - index; left > 0; --left) {
                QTextLine line = layout.createLine();
                if (!line.isValid())
                    break;
                line.setLineWidth(std::max(width, 1.0));
                line.setPosition(QPointF(0, 0));
            }
            layout.endLayout();
            for (int i = 0; i < layout.lineCount(); ++i)
                use(layout.lineAt(i), index++);
        }
    }
};

TextFrame::TextFrame(const QString& text, const TextStyle& style)
    : implementation_(std::make_unique<Implementation>(text, style))
{
}

TextFrame::~TextFrame() = default;
TextFrame::TextFrame(TextFrame&&) noexcept = default;
TextFrame& TextFrame::operator=(TextFrame&&) noexcept = default;

QSizeF TextFrame::suggestedSize(const QSizeF& constraint) const
{
    const Implementation& self = *implementation_;
    double width = 0;
    std::size_t count = 0;
    self.layOut(constraint.width(), self.linesWithin(constraint.height()),
                [&](const QTextLine& line, std::size_t index) {
                    width = std::max({width, line.naturalTextWidth(), line.horizontalAdvance()});
                    count = index + 1;
                });
    return {width, self.inkHeight + self.advance * (static_cast<double>(count) - 1)};
}

Bitmap TextFrame::drawn(const QSizeF& box, QPointF offset, int margin, double red, double green, double blue,
                        double alpha) const
{
    const Implementation& self = *implementation_;
    const PixelSize size{static_cast<std::int64_t>(std::ceil(box.width())) + 2 * margin,
                         static_cast<std::int64_t>(std::ceil(box.height())) + 2 * margin};
    Bitmap bitmap(size, rgba8Premultiplied, ColorProfile::sRGB());
    if (bitmap.isNull())
        return bitmap;
    QImage canvas(reinterpret_cast<uchar*>(bitmap.row(0)), static_cast<int>(size.width), static_cast<int>(size.height),
                  static_cast<qsizetype>(bitmap.stride()), QImage::Format_RGBA8888_Premultiplied);
    canvas.setDotsPerMeterX(dotsPerMeter);
    canvas.setDotsPerMeterY(dotsPerMeter);

    QPainter painter(&canvas);
    painter.setPen(QColor::fromRgbF(static_cast<float>(std::clamp(red, 0.0, 1.0)),
                                    static_cast<float>(std::clamp(green, 0.0, 1.0)),
                                    static_cast<float>(std::clamp(blue, 0.0, 1.0))));
    self.layOut(box.width(), self.linesWithin(box.height()), [&](const QTextLine& line, std::size_t index) {
        // A line hangs from the tallest font in it; from our own ascent, baselines lie evenly.
        const double baseline = self.ascent + self.advance * static_cast<double>(index);
        line.draw(&painter, QPointF(margin + offset.x(), margin + offset.y() + baseline - line.ascent()));
    });
    painter.end();
    fade(bitmap, alpha);
    return bitmap;
}

} // namespace ferrow
