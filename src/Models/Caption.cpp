// SPDX-License-Identifier: GPL-3.0-or-later
#include "Models/Caption.h"

#include <utility>

namespace ferrow {

namespace {

/// Text between two braces' worth of template: a separator when it is exactly one, else literal text.
CaptionSegment::Content literal(const QString& text)
{
    if (const auto separator = fromRawValue<CaptionSeparator>(text))
        return *separator;
    return text;
}

} // namespace

QString displayName(CaptionSeparator separator)
{
    switch (separator) {
    case CaptionSeparator::middleDot:
        return QStringLiteral("Middle dot  \u00B7");
    case CaptionSeparator::verticalBar:
        return QStringLiteral("Vertical bar  |");
    case CaptionSeparator::emDash:
        return QStringLiteral("Em dash  \u2014");
    case CaptionSeparator::lineBreak:
        return QStringLiteral("Line break");
    }
    return {};
}

QString chipLabel(CaptionSeparator separator)
{
    return separator == CaptionSeparator::lineBreak ? QStringLiteral("\u21B5") : rawValue(separator).trimmed();
}

const std::vector<CaptionSegment>& CaptionSegment::defaultCaption()
{
    static const std::vector<CaptionSegment> segments{
        {.content = MetadataToken::camera}, {.content = CaptionSeparator::middleDot}, {.content = MetadataToken::lens}};
    return segments;
}

std::vector<CaptionSegment> CaptionSegment::parse(const QString& captionTemplate)
{
    std::vector<CaptionSegment> segments;
    const auto append = [&](Content content) { segments.push_back({.content = std::move(content)}); };

    qsizetype position = 0;
    while (position < captionTemplate.size()) {
        const qsizetype open = captionTemplate.indexOf(u'{', position);
        const qsizetype literalEnd = open < 0 ? captionTemplate.size() : open;
        if (literalEnd > position)
            append(literal(captionTemplate.mid(position, literalEnd - position)));
        if (open < 0)
            break;

        const qsizetype close = captionTemplate.indexOf(u'}', open);
        if (close < 0) {
            append(captionTemplate.mid(open));
            break;
        }
        if (const auto read = CaptionToken::read(QStringView(captionTemplate).mid(open + 1, close - open - 1));
            read.token)
            append(*read.token);
        else
            append(captionTemplate.mid(open, close - open + 1));
        position = close + 1;
    }
    return segments;
}

QString CaptionSegment::templateValue() const
{
    if (const auto* text = std::get_if<QString>(&content))
        return *text;
    if (const auto* token = std::get_if<CaptionToken>(&content))
        return token->templateValue();
    return rawValue(std::get<CaptionSeparator>(content));
}

QString CaptionSegment::templateOf(const std::vector<CaptionSegment>& segments)
{
    QString text;
    for (const CaptionSegment& segment : segments)
        text += segment.templateValue();
    return text;
}

QString CaptionSegment::faultOf(const QString& captionTemplate)
{
    const QStringView text = captionTemplate;
    for (qsizetype open = text.indexOf(u'{'); open >= 0; open = text.indexOf(u'{', open + 1)) {
        const qsizetype close = text.indexOf(u'}', open);
        const CaptionToken::Reading read =
            CaptionToken::read(text.sliced(open + 1).first((close < 0 ? text.size() : close) - open - 1));
        if (close < 0 && (!read.fault.isEmpty() || (read.token && read.token->hasOptions())))
            return QStringLiteral("A token with options needs a closing brace.");
        if (!read.fault.isEmpty())
            return read.fault;
    }
    return {};
}

bool isInBorder(CaptionPosition position)
{
    return position >= CaptionPosition::borderTopLeft;
}

CaptionAlignment alignmentAt(CaptionPosition position)
{
    // Both enumerations go from left to right, the places row by row.
    return static_cast<CaptionAlignment>(int(position) % 3);
}

QString Caption::captionTemplate() const
{
    return CaptionSegment::templateOf(segments);
}

void Caption::setCaptionTemplate(const QString& captionTemplate)
{
    segments = CaptionSegment::parse(captionTemplate);
}

void Caption::convert(BorderUnit to, PixelSize size)
{
    for (Length* length : {&fontSize, &lineSpacing, &padding, &verticalPadding})
        *length = length->converted(to, size);
}

void feed(ValueHash& hash, const CaptionSegment& segment)
{
    feed(hash, segment.id);
    feed(hash, std::int64_t(segment.content.index()));
    std::visit([&](const auto& content) { feed(hash, content); }, segment.content);
}

void feed(ValueHash& hash, const FontFace& face)
{
    feed(hash, face.family);
    feed(hash, face.style);
}

void feed(ValueHash& hash, const Caption& caption)
{
    feed(hash, caption.isEnabled);
    feed(hash, caption.segments);
    feed(hash, caption.position);
    feed(hash, caption.font);
    feed(hash, caption.face);
    for (const Length& length : {caption.fontSize, caption.lineSpacing, caption.padding, caption.verticalPadding})
        feed(hash, length);
    feed(hash, caption.letterSpacing);
    feed(hash, caption.isUppercase);
    feed(hash, caption.shrinksToFit);
    feed(hash, caption.color);
    feed(hash, caption.alignment);
    feed(hash, caption.opacity);
}

} // namespace ferrow
