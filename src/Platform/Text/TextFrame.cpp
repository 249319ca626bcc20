// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Text/TextFrame.h"

#include "Platform/Text/EmojiSequences.h"

#include <QFont>
#include <QFontDatabase>
#include <QFontInfo>
#include <QFontMetricsF>
#include <QGlyphRun>
#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QRawFont>
#include <QTextLayout>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace ferrow {

namespace {

/// On a device of 72 dots per inch one point is one pixel. Fonts take fractions only in points.
constexpr int pointsPerInch = 72;

/// Lines are broken at this size and drawn at their own. The engine rounds a glyph's overhang to whole pixels and
/// counts it when it breaks lines, so that small texts would break earlier than large ones. Not larger, because widths
/// are counted in 1/64 pixels of 32 bits.
constexpr double breakingSize = 256;
constexpr double widestLine = 16'000'000;

/// Extents are sums of 1/64 pixels; a box that is short by less was meant to fit.
constexpr double tolerance = 1.0 / 64;

/// Below it sizes mean nothing to the font engine.
constexpr double smallestSize = 1;

void setResolution(QImage& image, int dotsPerInch)
{
    const auto dotsPerMeter = int(std::lround(dotsPerInch / 0.0254));
    image.setDotsPerMeterX(dotsPerMeter);
    image.setDotsPerMeterY(dotsPerMeter);
}

QImage makeDevice(int dotsPerInch)
{
    QImage image(1, 1, QImage::Format_RGBA8888_Premultiplied);
    setResolution(image, dotsPerInch);
    return image;
}

/// The engine scales letter spacing by the resolution over that of the screen, as a whole number: at 72 dots per inch
/// there would be none. Text with letter spacing is laid out at the screen's, where that number is one.
int resolutionFor(const TextStyle& style)
{
    if (style.letterSpacing == 0)
        return pointsPerInch;
    QFont font;
    font.setPointSizeF(pointsPerInch);
    return std::max(QFontInfo(font).pixelSize(), 1);
}

struct StyleWord {
    QLatin1StringView word;
    QFont::Weight weight;
};
/// As they stand in names of styles, without blanks and hyphens; longer ones before those they end in.
constexpr std::array<StyleWord, 13> styleWords{{{QLatin1StringView("thin"), QFont::Thin},
                                                {QLatin1StringView("hairline"), QFont::Thin},
                                                {QLatin1StringView("extralight"), QFont::ExtraLight},
                                                {QLatin1StringView("ultralight"), QFont::ExtraLight},
                                                {QLatin1StringView("light"), QFont::Light},
                                                {QLatin1StringView("medium"), QFont::Medium},
                                                {QLatin1StringView("demi"), QFont::DemiBold},
                                                {QLatin1StringView("semi"), QFont::DemiBold},
                                                {QLatin1StringView("extrabold"), QFont::ExtraBold},
                                                {QLatin1StringView("ultrabold"), QFont::ExtraBold},
                                                {QLatin1StringView("bold"), QFont::Bold},
                                                {QLatin1StringView("black"), QFont::Black},
                                                {QLatin1StringView("heavy"), QFont::Black}}};

/// Weight and slant are set beside the name, which families that fill gaps need not know.
void setFace(QFont& font, const QString& face)
{
    const QString family = font.families().value(0);
    if (QFontDatabase::styles(family).contains(face)) {
        font.setWeight(static_cast<QFont::Weight>(QFontDatabase::weight(family, face)));
        font.setItalic(QFontDatabase::italic(family, face));
        font.setStyleName(face);
        return;
    }
    QString words = face.toLower();
    words.remove(u' ').remove(u'-');
    font.setItalic(words.contains(QLatin1StringView("italic")) || words.contains(QLatin1StringView("oblique")));
    const auto known =
        std::ranges::find_if(styleWords, [&](const StyleWord& entry) { return words.contains(entry.word); });
    font.setWeight(known == styleWords.end() ? QFont::Normal : known->weight);
}

QFont makeFont(const TextStyle& style, double pixelSize, const QPaintDevice* device)
{
    QFont font;
    if (!style.families.isEmpty())
        font.setFamilies(style.families);
    font.setPointSizeF(pixelSize * pointsPerInch / device->logicalDpiY());
    font.setBold(style.bold);
    if (!style.face.isEmpty())
        setFace(font, style.face);
    if (style.letterSpacing != 0)
        font.setLetterSpacing(QFont::AbsoluteSpacing, style.letterSpacing * pixelSize);
    font.setHintingPreference(QFont::PreferNoHinting);
    font.setStyleStrategy(QFont::StyleStrategy(QFont::PreferAntialias | QFont::NoSubpixelAntialias));
    return QFont(font, device);
}

/// White space at the end of a line is not seen, but the engine would align right-to-left lines by it.
qsizetype trimmedLength(QStringView line)
{
    qsizetype length = line.size();
    while (length > 0 && line[length - 1].isSpace())
        --length;
    return length;
}

/// One text a paragraph. Other control characters, which some fonts show as little boxes, are left out.
std::vector<EmojiText> paragraphsOf(QString text)
{
    text.replace(QLatin1StringView("\r\n"), QLatin1StringView("\n"));
    QString paragraph;
    std::vector<EmojiText> paragraphs;
    const auto endParagraph = [&] {
        paragraph.truncate(trimmedLength(paragraph));
        paragraphs.push_back(findEmoji(paragraph));
        paragraph.clear();
    };
    for (const QChar character : text) {
        const bool breaks = character == u'\n' || character == u'\v' || character == u'\f' || character == u'\r' ||
                            character == QChar(0x85) || character == QChar::LineSeparator ||
                            character == QChar::ParagraphSeparator;
        if (breaks)
            endParagraph();
        else if (character == u'\t' || character.category() != QChar::Other_Control)
            paragraph.append(character);
    }
    endParagraph();
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

/// A line's place in its paragraph, without white space at its end.
struct LineRange {
    std::size_t paragraph = 0;
    int start = 0;
    int length = 0;
    bool operator==(const LineRange&) const = default;
};
using LineRanges = std::vector<LineRange>;

/// Without these, a text font's own black sign is taken wherever it has one, and skin tones come apart.
QList<QTextLayout::FormatRange> emojiFormats(const QList<TextRange>& emoji)
{
    QTextCharFormat format;
    format.setFontFamilies({QStringLiteral("Noto Color Emoji")});
    format.setFontWeight(QFont::Normal);
    format.setFontItalic(false);
    QList<QTextLayout::FormatRange> formats;
    for (const TextRange& range : emoji)
        formats.append({range.start, range.length, format});
    return formats;
}

/// Whether the font's glyphs are pictures rather than outlines.
bool isColorFont(const QRawFont& font)
{
    return !font.fontTable("CBLC").isEmpty() || !font.fontTable("sbix").isEmpty() || !font.fontTable("COLR").isEmpty();
}

/// The painter would set small glyphs on whole rows: a preview's text would lie up to half a pixel beside the
/// export's. Outlines lie where they should; color glyphs, which have none, are left to the painter.
void drawLine(QPainter& painter, const QTextLine& line, const QPointF& origin)
{
    QPainterPath outlines;
    outlines.setFillRule(Qt::WindingFill); // Strokes of one glyph may overlap.
    for (const QGlyphRun& run : line.glyphRuns()) {
        const QRawFont font = run.rawFont();
        if (isColorFont(font)) {
            painter.drawGlyphRun(origin, run);
            continue;
        }
        const QList<quint32> glyphs = run.glyphIndexes();
        const QList<QPointF> places = run.positions();
        for (qsizetype i = 0; i < glyphs.size(); ++i)
            outlines.addPath(font.pathForGlyph(glyphs[i]).translated(origin + places[i]));
    }
    painter.fillPath(outlines, painter.pen().color());
}

/// Multiplies every channel, so that overlapping glyphs do not show through each other and color glyphs fade alike.
void fade(Bitmap& bitmap, double alpha)
{
    const auto factor = unsigned(std::lround(std::clamp(alpha, 0.0, 1.0) * 65'536));
    if (factor == 65'536)
        return;
    const auto bytes = std::size_t(bitmap.size().width) * 4;
    for (std::int64_t y = 0; y < bitmap.size().height; ++y) {
        std::byte* row = bitmap.row(y);
        for (std::size_t i = 0; i < bytes; ++i)
            row[i] = static_cast<std::byte>((std::to_integer<unsigned>(row[i]) * factor + 32'768) >> 16);
    }
}

/// From the painter's order of bytes to the bitmap's. Its own order for bitmaps has the toolkit fill shapes on several
/// threads of its own, and wait for ever for those that the system does not allow.
void reorder(Bitmap& bitmap)
{
    for (std::int64_t y = 0; y < bitmap.size().height; ++y) {
        std::byte* row = bitmap.row(y);
        for (std::int64_t x = 0; x < bitmap.size().width; ++x) {
            const QRgb pixel = reinterpret_cast<const QRgb*>(row)[x];
            row[x * 4] = std::byte(qRed(pixel));
            row[x * 4 + 1] = std::byte(qGreen(pixel));
            row[x * 4 + 2] = std::byte(qBlue(pixel));
            row[x * 4 + 3] = std::byte(qAlpha(pixel));
        }
    }
}

/// How far beyond what is visible letters are looked for. A stroke that is cut goes on right behind the edge.
constexpr int cutMargin = 48;
/// A pixel of less is the soft edge of one inside.
constexpr unsigned visibleInk = 64;

bool hasInkOutside(const Bitmap& bitmap, const QRect& visible)
{
    for (std::int64_t y = 0; y < bitmap.size().height; ++y) {
        const std::byte* row = bitmap.row(y);
        for (std::int64_t x = 0; x < bitmap.size().width; ++x)
            if (std::to_integer<unsigned>(row[4 * x + 3]) >= visibleInk && !visible.contains(int(x), int(y)))
                return true;
    }
    return false;
}

} // namespace

struct TextFrame::Implementation {
    QImage device;
    std::vector<EmojiText> paragraphs;
    double pixelSize;
    double wholeSize; ///< Fonts made for screens round their size to whole pixels: drawn so, then scaled.
    QFont font;
    QFont breakingFont;
    TextAlignment alignment;
    double spacing; ///< Behind each letter, a line's last included: there it is no part of the line.
    double ascent = 0;
    double inkHeight = 0; ///< Ascent and descent of the font that was asked for, whatever fonts fill its gaps.
    double advance = 0;   ///< From one baseline to the next.

    Implementation(const QString& text, const TextStyle& style)
        : device(makeDevice(resolutionFor(style))), paragraphs(paragraphsOf(text)),
          pixelSize(std::clamp(style.pixelSize, smallestSize, TextStyle::largestSize)),
          wholeSize(std::round(pixelSize)), font(makeFont(style, wholeSize, &device)),
          breakingFont(makeFont(style, breakingSize, &device)), alignment(style.alignment),
          spacing(style.letterSpacing * pixelSize)
    {
        const QFontMetricsF metrics(breakingFont, &device);
        const double scale = pixelSize / breakingSize;
        ascent = metrics.ascent() * scale;
        inkHeight = (metrics.ascent() + metrics.descent()) * scale;
        advance = inkHeight + std::max(metrics.leading(), 0.0) * scale + std::max(style.lineSpacing, 0.0);
    }

    /// How many lines fit into `height`: at least one.
    [[nodiscard]] std::size_t linesWithin(double height) const
    {
        const double more = std::floor((height + tolerance - inkHeight) / advance);
        return more >= 1 ? std::size_t(std::min(more, 1e6)) + 1 : 1;
    }

    /// The first lines, at most `most`, of the text broken at `width`.
    [[nodiscard]] LineRanges breakLines(double width, std::size_t most,
                                        QTextOption::WrapMode mode = QTextOption::WrapAtWordBoundaryOrAnywhere) const
    {
        const double breakingWidth = std::clamp((width + spacing) * breakingSize / pixelSize, 1.0, widestLine);
        LineRanges lines;
        for (std::size_t paragraph = 0; paragraph < paragraphs.size() && lines.size() < most; ++paragraph) {
            const auto& [text, emoji] = paragraphs[paragraph];
            QTextLayout layout(text, breakingFont, &device);
            layout.setTextOption(option(mode, breakingSize));
            layout.setFormats(emojiFormats(emoji));
            layout.beginLayout();
            while (lines.size() < most) {
                QTextLine line = layout.createLine();
                if (!line.isValid())
                    break;
                line.setLineWidth(breakingWidth);
                const QStringView shown = QStringView(text).mid(line.textStart(), line.textLength());
                lines.push_back({paragraph, line.textStart(), int(trimmedLength(shown))});
            }
            layout.endLayout();
        }
        return lines;
    }

    /// What comes behind that line, on one line.
    [[nodiscard]] QString textBehind(const LineRange& line) const
    {
        QString rest = paragraphs[line.paragraph].text.mid(line.start + line.length);
        for (std::size_t next = line.paragraph + 1; next < paragraphs.size(); ++next)
            rest += u' ' + paragraphs[next].text;
        return rest.simplified();
    }

    /// What the lines that layOut() hands out are to be scaled by.
    [[nodiscard]] double lineScale() const { return pixelSize / wholeSize; }

    /// Lays `lines` out in a box `width` wide; `use(line, index)` sees each.
    template <typename Use>
    void layOut(const LineRanges& lines, double width, Use use) const
    {
        std::size_t index = 0;
        for (auto first = lines.begin(); first != lines.end();) {
            const auto end = std::find_if(first, lines.end(),
                                          [&](const LineRange& line) { return line.paragraph != first->paragraph; });
            const auto [text, emoji] = broken(first, end);
            QTextLayout layout(text, font, &device);
            layout.setTextOption(option(QTextOption::NoWrap, wholeSize));
            layout.setFormats(emojiFormats(emoji));
            layout.beginLayout();
            for (auto range = first; range != end; ++range) {
                QTextLine line = layout.createLine();
                if (line.isValid())
                    line.setLineWidth(std::min((width + spacing) / lineScale(), widestLine));
            }
            layout.endLayout();
            for (int i = 0; i < layout.lineCount(); ++i)
                use(layout.lineAt(i), index + std::size_t(i));
            index += std::size_t(end - first);
            first = end;
        }
    }

private:
    [[nodiscard]] QTextOption option(QTextOption::WrapMode mode, double size) const
    {
        QTextOption option(qtAlignment(alignment));
        option.setWrapMode(mode);
        option.setTabStopDistance(2 * size);
        return option;
    }

    /// Lines of one paragraph with a line separator between each two: it stays one paragraph, and so its direction.
    [[nodiscard]] EmojiText broken(LineRanges::const_iterator first, LineRanges::const_iterator end) const
    {
        const EmojiText& paragraph = paragraphs[first->paragraph];
        EmojiText result;
        for (auto line = first; line != end; ++line) {
            if (line != first)
                result.text.append(QChar::LineSeparator);
            const int shift = int(result.text.size()) - line->start;
            for (const TextRange& emoji : paragraph.emoji) {
                const int start = std::max(emoji.start, line->start);
                const int stop = std::min(emoji.start + emoji.length, line->start + line->length);
                if (start < stop)
                    result.emoji.append({start + shift, stop - start});
            }
            result.text.append(QStringView(paragraph.text).mid(line->start, line->length));
        }
        return result;
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
    const std::size_t most = self.linesWithin(constraint.height());
    const LineRanges lines = self.breakLines(constraint.width(), most);
    double width = 0;
    self.layOut(lines, constraint.width(), [&](const QTextLine& line, std::size_t) {
        const double natural = std::max(line.naturalTextWidth(), line.horizontalAdvance()) * self.lineScale();
        width = std::max(width, natural - self.spacing);
    });
    // The engine asks more room for a word's overhang than the line it ends up in has. What breaks alike here and at
    // the constraint breaks alike anywhere between.
    while (width < constraint.width() && self.breakLines(width, most) != lines)
        width += self.pixelSize / 50;
    return {width, self.inkHeight + self.advance * (double(lines.size()) - 1)};
}

bool TextFrame::fits(const QSizeF& box) const
{
    const Implementation& self = *implementation_;
    if (self.inkHeight > box.height() + tolerance)
        return false;
    const std::size_t most = self.linesWithin(box.height());
    const LineRanges lines = self.breakLines(box.width(), most, QTextOption::WordWrap);
    return self.textBehind(lines.back()).isEmpty() && self.breakLines(box.width(), most) == lines;
}

std::vector<QRectF> TextFrame::lineRects(const QSizeF& box) const
{
    const Implementation& self = *implementation_;
    const LineRanges lines = self.breakLines(box.width(), self.linesWithin(box.height()));
    std::vector<QRectF> rects;
    self.layOut(lines, box.width(), [&](const QTextLine& line, std::size_t index) {
        const QRectF natural = line.naturalTextRect();
        rects.emplace_back(natural.x() * self.lineScale(), self.advance * double(index),
                           natural.width() * self.lineScale() - self.spacing, self.inkHeight);
    });
    return rects;
}

TextCut TextFrame::cutIn(const QSizeF& box, const QRectF& visible) const
{
    const Implementation& self = *implementation_;
    const LineRanges lines = self.breakLines(box.width(), self.linesWithin(box.height()));
    TextCut cut;
    cut.leftOut = self.textBehind(lines.back());
    // As the fonts have it, letters may stick out where none does: then they are drawn and looked at.
    bool mayStickOut = false;
    self.layOut(lines, box.width(), [&](const QTextLine& line, std::size_t index) {
        const double baseline = self.ascent + self.advance * double(index);
        mayStickOut = mayStickOut || line.naturalTextWidth() * self.lineScale() - self.spacing > visible.width() + 1 ||
                      baseline - line.ascent() * self.lineScale() < visible.top() - tolerance ||
                      baseline + line.descent() * self.lineScale() > visible.bottom() + tolerance;
    });
    if (mayStickOut)
        cut.cutsLetters = hasInkOutside(drawn(box, {}, cutMargin, 0, 0, 0, 1),
                                        visible.translated(cutMargin, cutMargin).toAlignedRect());
    return cut;
}

Bitmap TextFrame::drawn(const QSizeF& box, QPointF offset, int margin, double red, double green, double blue,
                        double alpha) const
{
    const Implementation& self = *implementation_;
    const PixelSize size{std::int64_t(std::ceil(box.width())) + 2 * margin,
                         std::int64_t(std::ceil(box.height())) + 2 * margin};
    Bitmap bitmap(size, rgba8Premultiplied, ColorProfile::sRGB());
    if (bitmap.isNull())
        return bitmap;
    QImage canvas(reinterpret_cast<uchar*>(bitmap.row(0)), int(size.width), int(size.height),
                  qsizetype(bitmap.stride()), QImage::Format_ARGB32_Premultiplied);
    setResolution(canvas, pointsPerInch);

    QPainter painter(&canvas);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QColor::fromRgbF(float(std::clamp(red, 0.0, 1.0)), float(std::clamp(green, 0.0, 1.0)),
                                    float(std::clamp(blue, 0.0, 1.0))));
    painter.translate(margin + offset.x(), margin + offset.y());
    painter.scale(self.lineScale(), self.lineScale());
    const LineRanges lines = self.breakLines(box.width(), self.linesWithin(box.height()));
    self.layOut(lines, box.width(), [&](const QTextLine& line, std::size_t index) {
        // A line hangs from the tallest font in it; from our own ascent, baselines lie evenly.
        const double baseline = self.ascent + self.advance * double(index);
        drawLine(painter, line, QPointF(0, baseline / self.lineScale() - line.ascent()));
    });
    painter.end();
    reorder(bitmap);
    fade(bitmap, alpha);
    return bitmap;
}

} // namespace ferrow
