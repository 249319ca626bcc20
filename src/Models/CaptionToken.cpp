// SPDX-License-Identifier: GPL-3.0-or-later
#include "Models/CaptionToken.h"

#include <algorithm>
#include <utility>

namespace ferrow {

namespace {

constexpr std::pair<char16_t, char16_t> escapes[] = {
    {u'\\', u'\\'}, {u'|', u'|'}, {u'(', u'{'}, {u')', u'}'}, {u'n', u'\n'}};

QString escaped(const QString& text)
{
    QString written;
    for (const QChar character : text) {
        const auto escape = std::ranges::find(escapes, character.unicode(), &std::pair<char16_t, char16_t>::second);
        if (escape == std::end(escapes))
            written += character;
        else
            (written += u'\\') += escape->first;
    }
    return written;
}

/// Goes through an option's text and leaves `rest` at `end`, where there is one, or empty. Absent where the text isn't
/// well formed.
std::optional<QString> takeOption(QStringView& rest, std::optional<QChar> end = {})
{
    QString text;
    for (; !rest.isEmpty() && !(end && rest.front() == *end); rest = rest.sliced(1)) {
        QChar character = rest.front();
        if (character == u'{' || character == u'}')
            return std::nullopt;
        if (character == u'\\') {
            rest = rest.sliced(1);
            const auto escape = std::ranges::find(escapes, rest.isEmpty() ? u'\0' : rest.front().unicode(),
                                                  &std::pair<char16_t, char16_t>::first);
            if (escape == std::end(escapes))
                return std::nullopt;
            character = escape->second;
        }
        text += character;
    }
    return text;
}

CaptionToken::Reading malformed()
{
    return {{}, QStringLiteral("In a token’s options a backslash is written \\\\, and braces \\( and \\).")};
}

} // namespace

QString displayName(MetadataToken token)
{
    switch (token) {
    case MetadataToken::filename:
        return QStringLiteral("Filename");
    case MetadataToken::captureDate:
        return QStringLiteral("Capture Date");
    case MetadataToken::camera:
        return QStringLiteral("Camera");
    case MetadataToken::cameraMake:
        return QStringLiteral("Camera Make");
    case MetadataToken::cameraModel:
        return QStringLiteral("Camera Model");
    case MetadataToken::lens:
        return QStringLiteral("Lens");
    case MetadataToken::focalLength:
        return QStringLiteral("Focal Length");
    case MetadataToken::aperture:
        return QStringLiteral("Aperture");
    case MetadataToken::shutterSpeed:
        return QStringLiteral("Shutter Speed");
    case MetadataToken::iso:
        return QStringLiteral("ISO");
    case MetadataToken::exposureCompensation:
        return QStringLiteral("Exposure Compensation");
    case MetadataToken::artist:
        return QStringLiteral("Artist");
    case MetadataToken::copyright:
        return QStringLiteral("Copyright");
    case MetadataToken::title:
        return QStringLiteral("Title");
    case MetadataToken::caption:
        return QStringLiteral("Caption");
    case MetadataToken::year:
        return QStringLiteral("Year");
    }
    return {};
}

CaptionToken::CaptionToken(MetadataToken plain, DateFormat format, QString text)
    : token(plain), date(std::move(format)), ifMissing(std::move(text))
{
}

CaptionToken::Reading CaptionToken::read(QStringView inBraces)
{
    const auto& names = CodedCases<MetadataToken>::table;
    const auto named = std::ranges::find_if(names, [&](const auto& entry) {
        const QStringView name(entry.rawValue);
        return inBraces.startsWith(name) &&
               (inBraces.size() == name.size() || inBraces[name.size()] == u':' || inBraces[name.size()] == u'|');
    });
    if (named == names.end())
        return {};
    CaptionToken token(named->value);
    QStringView rest = inBraces.sliced(QStringView(named->rawValue).size());
    if (rest.startsWith(u':')) {
        if (token.token != MetadataToken::captureDate)
            return {};
        rest = rest.sliced(1);
        const auto style = takeOption(rest, u'|');
        if (!style)
            return malformed();
        token.date.style = fromRawValue<DateStyle>(*style).value_or(DateStyle::custom);
        if (token.date.style == DateStyle::custom) {
            if (QString fault = DateFormat::patternFault(*style); !fault.isEmpty())
                return {{}, fault};
            token.date.pattern = *style;
        }
    }
    if (rest.startsWith(u'|')) {
        rest = rest.sliced(1);
        const auto text = takeOption(rest);
        if (!text)
            return malformed();
        token.ifMissing = *text;
    }
    return {token, {}};
}

bool CaptionToken::hasOptions() const
{
    return *this != CaptionToken(token);
}

QString CaptionToken::templateValue() const
{
    QString text = rawValue(token);
    if (date.style != DateStyle::medium)
        text += u':' + (date.style == DateStyle::custom ? escaped(date.pattern) : rawValue(date.style));
    if (!ifMissing.isEmpty())
        text += u'|' + escaped(ifMissing);
    return u'{' + text + u'}';
}

void feed(ValueHash& hash, const CaptionToken& token)
{
    feed(hash, token.token);
    feed(hash, token.date);
    feed(hash, token.ifMissing);
}

} // namespace ferrow
