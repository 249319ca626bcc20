// SPDX-License-Identifier: GPL-3.0-or-later
#include "Persistence/PresetModels.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <QRegularExpression>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <string_view>
#include <tuple>
#include <type_traits>

namespace ferrow {

namespace {

using Case = PresetCodingError::Case;

std::vector<CaptionSegment> withoutIdentifiers(std::vector<CaptionSegment> segments)
{
    for (CaptionSegment& segment : segments)
        segment.id = QUuid();
    return segments;
}

/// The JSON form of one value: `decode` throws, `encode` gives what decode reads.
template <typename T>
struct Coding;

/// The member `key` of `object`, which must be there.
template <typename T>
T required(const QJsonObject& object, QLatin1StringView key)
{
    const QJsonValue value = object.value(key);
    if (value.isUndefined())
        throw PresetCodingError{Case::missingMember, key};
    return Coding<T>::decode(value, key);
}

template <typename T>
T optionalOr(const QJsonObject& object, QLatin1StringView key, const T& absent)
{
    return object.contains(key) ? required<T>(object, key) : absent;
}

QJsonObject objectOf(const QJsonValue& value, const QString& member)
{
    if (!value.isObject())
        throw PresetCodingError{Case::wrongType, member};
    return value.toObject();
}

template <>
struct Coding<bool> {
    static bool decode(const QJsonValue& value, const QString& member)
    {
        if (!value.isBool())
            throw PresetCodingError{Case::wrongType, member};
        return value.toBool();
    }
    static QJsonValue encode(bool value, const QString&) { return value; }
};

template <>
struct Coding<double> {
    static double decode(const QJsonValue& value, const QString& member)
    {
        if (!value.isDouble())
            throw PresetCodingError{Case::wrongType, member};
        return value.toDouble();
    }
    static QJsonValue encode(double value, const QString& member)
    {
        // It would be written as null, and no later start could read the file.
        if (!std::isfinite(value))
            throw PresetCodingError{Case::numberNotFinite, member};
        return value;
    }
};

template <>
struct Coding<std::int64_t> {
    static std::int64_t decode(const QJsonValue& value, const QString& member)
    {
        // Anything but a whole number within 64 bits answers the default given.
        if (!value.isDouble() || value.toInteger(0) != value.toInteger(1))
            throw PresetCodingError{Case::wrongType, member};
        return value.toInteger();
    }
    static QJsonValue encode(std::int64_t value, const QString&) { return qint64(value); }
};

template <>
struct Coding<QString> {
    static QString decode(const QJsonValue& value, const QString& member)
    {
        if (!value.isString())
            throw PresetCodingError{Case::wrongType, member};
        const QString text = value.toString();
        // An escaped half of a surrogate pair gets this far, and can be neither shown nor be part of a file name.
        return text.isValidUtf16() ? text : QString::fromUtf8(text.toUtf8());
    }
    static QJsonValue encode(const QString& value, const QString&) { return value; }
};

template <>
struct Coding<QUuid> {
    static QUuid decode(const QJsonValue& value, const QString& member)
    {
        const QString text = Coding<QString>::decode(value, member);
        const QUuid id = QUuid::fromString(text);
        // QUuid also reads braces and the start of longer texts.
        if (text.compare(id.toString(QUuid::WithoutBraces), Qt::CaseInsensitive) != 0)
            throw PresetCodingError{Case::unknownValue, member};
        return id;
    }
    static QJsonValue encode(const QUuid& value, const QString&)
    {
        return value.toString(QUuid::WithoutBraces).toUpper();
    }
};

template <>
struct Coding<QDateTime> {
    static QDateTime decode(const QJsonValue& value, const QString& member)
    {
        static const QRegularExpression wholeSecondsWithZone(
            QStringLiteral("\\A\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d(Z|[+-]\\d\\d:\\d\\d)\\z"));
        const QString text = Coding<QString>::decode(value, member);
        const QDateTime date = QDateTime::fromString(text, Qt::ISODate);
        if (!date.isValid() || !wholeSecondsWithZone.match(text).hasMatch())
            throw PresetCodingError{Case::unknownValue, member};
        return date.toUTC();
    }
    static QJsonValue encode(const QDateTime& value, const QString&) { return value.toUTC().toString(Qt::ISODate); }
};

template <typename Enum>
requires std::is_enum_v<Enum>
struct Coding<Enum> {
    static Enum decode(const QJsonValue& value, const QString& member)
    {
        const auto known = fromRawValue<Enum>(Coding<QString>::decode(value, member));
        if (!known)
            throw PresetCodingError{Case::unknownValue, member};
        return *known;
    }
    static QJsonValue encode(Enum value, const QString&) { return rawValue(value); }
};

/// A member of a struct under its JSON key.
template <typename Owner, typename T>
struct Member {
    QLatin1StringView key;
    T Owner::*field;
};
template <typename Owner, typename T>
Member(QLatin1StringView, T Owner::*) -> Member<Owner, T>;

template <typename Owner, typename... T>
void decodeMembers(const QJsonObject& object, Owner& into, const std::tuple<Member<Owner, T>...>& members)
{
    std::apply([&](const auto&... member) { ((into.*member.field = required<T>(object, member.key)), ...); }, members);
}

template <typename Owner, typename... T>
void encodeMembers(QJsonObject& into, const Owner& from, const std::tuple<Member<Owner, T>...>& members)
{
    std::apply(
        [&](const auto&... member) {
            (into.insert(member.key, Coding<T>::encode(from.*member.field, member.key)), ...);
        },
        members);
}

template <typename Owner, typename... T>
QJsonObject encodedMembers(const Owner& from, const std::tuple<Member<Owner, T>...>& members)
{
    QJsonObject object;
    encodeMembers(object, from, members);
    return object;
}

/// Members that files had later: what lacks them reads as the default, and they are written where they differ from it.
template <typename Owner, typename... T>
void decodeLaterMembers(const QJsonObject& object, Owner& into, const std::tuple<Member<Owner, T>...>& members)
{
    std::apply(
        [&](const auto&... member) {
            ((into.*member.field = optionalOr(object, member.key, into.*member.field)), ...);
        },
        members);
}

template <typename Owner, typename... T>
void encodeLaterMembers(QJsonObject& into, const Owner& from, const std::tuple<Member<Owner, T>...>& members)
{
    const Owner fresh;
    const auto encode = [&](const auto& member) {
        const auto& value = from.*member.field;
        if (value != fresh.*member.field)
            into.insert(member.key, Coding<std::decay_t<decltype(value)>>::encode(value, member.key));
    };
    std::apply([&](const auto&... member) { (encode(member), ...); }, members);
}

/// A struct all of whose members are required.
template <typename Owner>
struct StructCoding {
    static Owner decode(const QJsonValue& value, const QString& member)
    {
        Owner owner;
        decodeMembers(objectOf(value, member), owner, Coding<Owner>::members);
        return owner;
    }
    static QJsonValue encode(const Owner& value, const QString&)
    {
        return encodedMembers(value, Coding<Owner>::members);
    }
};

template <>
struct Coding<RGBAColor> : StructCoding<RGBAColor> {
    static constexpr std::tuple members{
        Member{QLatin1StringView("red"), &RGBAColor::red}, Member{QLatin1StringView("green"), &RGBAColor::green},
        Member{QLatin1StringView("blue"), &RGBAColor::blue}, Member{QLatin1StringView("alpha"), &RGBAColor::alpha}};
};

template <>
struct Coding<SideLengths> : StructCoding<SideLengths> {
    static constexpr std::tuple members{Member{QLatin1StringView("top"), &SideLengths::top},
                                        Member{QLatin1StringView("right"), &SideLengths::right},
                                        Member{QLatin1StringView("bottom"), &SideLengths::bottom},
                                        Member{QLatin1StringView("left"), &SideLengths::left}};
};

template <>
struct Coding<Length> : StructCoding<Length> {
    static constexpr std::tuple members{Member{QLatin1StringView("value"), &Length::value},
                                        Member{QLatin1StringView("unit"), &Length::unit}};
};

template <>
struct Coding<FrameShape> : StructCoding<FrameShape> {
    static constexpr std::tuple members{Member{QLatin1StringView("width"), &FrameShape::width},
                                        Member{QLatin1StringView("height"), &FrameShape::height},
                                        Member{QLatin1StringView("turnsWithPhoto"), &FrameShape::turnsWithPhoto},
                                        Member{QLatin1StringView("balance"), &FrameShape::balance}};
};

template <>
struct Coding<BlurredBackground> : StructCoding<BlurredBackground> {
    static constexpr std::tuple members{Member{QLatin1StringView("blur"), &BlurredBackground::blur},
                                        Member{QLatin1StringView("dim"), &BlurredBackground::dim}};
};

template <>
struct Coding<FrameLine> : StructCoding<FrameLine> {
    static constexpr std::tuple members{Member{QLatin1StringView("thickness"), &FrameLine::thickness},
                                        Member{QLatin1StringView("distance"), &FrameLine::distance},
                                        Member{QLatin1StringView("color"), &FrameLine::color}};
};

template <>
struct Coding<LogoAssetReference> : StructCoding<LogoAssetReference> {
    static constexpr std::tuple members{
        Member{QLatin1StringView("id"), &LogoAssetReference::id},
        Member{QLatin1StringView("displayName"), &LogoAssetReference::displayName},
        Member{QLatin1StringView("managedFilename"), &LogoAssetReference::managedFilename}};
};

template <>
struct Coding<LogoConfiguration> {
    static constexpr std::tuple members{
        Member{QLatin1StringView("asset"), &LogoConfiguration::asset},
        Member{QLatin1StringView("isEnabled"), &LogoConfiguration::isEnabled},
        Member{QLatin1StringView("position"), &LogoConfiguration::position},
        Member{QLatin1StringView("widthPercent"), &LogoConfiguration::widthPercent},
        Member{QLatin1StringView("horizontalPadding"), &LogoConfiguration::horizontalPadding},
        Member{QLatin1StringView("verticalPadding"), &LogoConfiguration::verticalPadding},
        Member{QLatin1StringView("opacity"), &LogoConfiguration::opacity}};

    static LogoConfiguration decode(const QJsonValue& value, const QString& member)
    {
        const QJsonObject object = objectOf(value, member);
        LogoConfiguration logo;
        // Older documents know one padding for both directions; every member but the asset may be missing.
        const double padding = optionalOr(object, QLatin1StringView("padding"), logo.horizontalPadding);
        logo.horizontalPadding = logo.verticalPadding = padding;
        logo.asset = required<LogoAssetReference>(object, QLatin1StringView("asset"));
        std::apply(
            [&](const auto&, const auto&... optional) {
                ((logo.*optional.field = optionalOr(object, optional.key, logo.*optional.field)), ...);
            },
            members);
        return logo;
    }
    static QJsonValue encode(const LogoConfiguration& value, const QString&) { return encodedMembers(value, members); }
};

template <typename T>
struct Coding<std::optional<T>> {
    static std::optional<T> decode(const QJsonValue& value, const QString& member)
    {
        return value.isNull() ? std::nullopt : std::optional(Coding<T>::decode(value, member));
    }
    static QJsonValue encode(const std::optional<T>& value, const QString& member)
    {
        return value ? Coding<T>::encode(*value, member) : QJsonValue();
    }
};

template <typename T>
struct Coding<std::vector<T>> {
    static std::vector<T> decode(const QJsonValue& value, const QString& member)
    {
        if (!value.isArray())
            throw PresetCodingError{Case::wrongType, member};
        std::vector<T> items;
        for (const QJsonValue item : value.toArray())
            items.push_back(Coding<T>::decode(item, member));
        return items;
    }
    static QJsonValue encode(const std::vector<T>& value, const QString& member)
    {
        QJsonArray array;
        for (const T& item : value)
            array.append(Coding<T>::encode(item, member));
        return array;
    }
};

/// Chips are kept as their template, and have no identifiers then.
template <>
struct Coding<std::vector<CaptionSegment>> {
    static std::vector<CaptionSegment> decode(const QJsonValue& value, const QString& member)
    {
        return withoutIdentifiers(CaptionSegment::parse(Coding<QString>::decode(value, member)));
    }
    static QJsonValue encode(const std::vector<CaptionSegment>& value, const QString&)
    {
        return CaptionSegment::templateOf(value);
    }
};

/// Only what the limit goes by is written.
template <>
struct Coding<OutputSize> {
    static constexpr QLatin1StringView limitKey{"limit"};
    static constexpr QLatin1StringView pixelsKey{"pixels"};
    static constexpr QLatin1StringView widthKey{"width"};
    static constexpr QLatin1StringView heightKey{"height"};
    static constexpr QLatin1StringView megapixelsKey{"megapixels"};

    static OutputSize decode(const QJsonValue& value, const QString& member)
    {
        const QJsonObject object = objectOf(value, member);
        switch (required<SizeLimit>(object, limitKey)) {
        case SizeLimit::none:
            break;
        case SizeLimit::longSide:
            return OutputSize::withLongSide(required<std::int64_t>(object, pixelsKey));
        case SizeLimit::box:
            return OutputSize::within(
                {required<std::int64_t>(object, widthKey), required<std::int64_t>(object, heightKey)});
        case SizeLimit::megapixels:
            return OutputSize::ofMegapixels(required<double>(object, megapixelsKey));
        }
        return {};
    }
    static QJsonValue encode(const OutputSize& value, const QString&)
    {
        QJsonObject object{{limitKey, rawValue(value.limit)}};
        if (value.limit == SizeLimit::longSide)
            object.insert(pixelsKey, qint64(value.box.width));
        if (value.limit == SizeLimit::box) {
            object.insert(widthKey, qint64(value.box.width));
            object.insert(heightKey, qint64(value.box.height));
        }
        if (value.limit == SizeLimit::megapixels)
            object.insert(megapixelsKey, Coding<double>::encode(value.megapixels, megapixelsKey));
        return object;
    }
};

template <>
struct Coding<FontFace> {
    static constexpr QLatin1StringView familyKey{"family"};
    static constexpr QLatin1StringView styleKey{"style"};

    static FontFace decode(const QJsonValue& value, const QString& member)
    {
        const QJsonObject object = objectOf(value, member);
        const auto name = [&](QLatin1StringView key) {
            const auto text = required<QString>(object, key);
            if (text.size() > FontFace::longestName)
                throw PresetCodingError{Case::tooLong, key};
            return text;
        };
        const FontFace face{name(familyKey), name(styleKey)};
        if (face.family.isEmpty())
            throw PresetCodingError{Case::unknownValue, familyKey};
        return face;
    }
    static QJsonValue encode(const FontFace& value, const QString&)
    {
        return QJsonObject{{familyKey, value.family}, {styleKey, value.style}};
    }
};

template <>
struct Coding<Caption> {
    static constexpr std::tuple members{Member{QLatin1StringView("captionEnabled"), &Caption::isEnabled},
                                        Member{QLatin1StringView("captionTemplate"), &Caption::segments},
                                        Member{QLatin1StringView("captionPosition"), &Caption::position},
                                        Member{QLatin1StringView("captionFont"), &Caption::font},
                                        Member{QLatin1StringView("captionColor"), &Caption::color},
                                        Member{QLatin1StringView("captionAlignment"), &Caption::alignment},
                                        Member{QLatin1StringView("captionOpacity"), &Caption::opacity}};
    static constexpr std::tuple laterMembers{Member{QLatin1StringView("captionFontFace"), &Caption::face},
                                             Member{QLatin1StringView("captionLetterSpacing"), &Caption::letterSpacing},
                                             Member{QLatin1StringView("captionUppercase"), &Caption::isUppercase},
                                             Member{QLatin1StringView("captionShrinkToFit"), &Caption::shrinksToFit}};
    /// A number in a member of its own, as in the first files, and the unit in another that files had later.
    struct LengthMember {
        QLatin1StringView key;
        QLatin1StringView unitKey;
        Length Caption::*field;
    };
    static constexpr LengthMember lengths[] = {
        {QLatin1StringView("captionFontSize"), QLatin1StringView("captionFontSizeUnit"), &Caption::fontSize},
        {QLatin1StringView("captionLineSpacing"), QLatin1StringView("captionLineSpacingUnit"), &Caption::lineSpacing},
        {QLatin1StringView("captionPadding"), QLatin1StringView("captionPaddingUnit"), &Caption::padding},
        {QLatin1StringView("captionVerticalPadding"), QLatin1StringView("captionVerticalPaddingUnit"),
         &Caption::verticalPadding}};

    static Caption decode(const QJsonValue& value, const QString& member)
    {
        const QJsonObject object = objectOf(value, member);
        Caption caption;
        decodeMembers(object, caption, members);
        decodeLaterMembers(object, caption, laterMembers);
        for (const auto& [key, unitKey, field] : lengths)
            caption.*field = {required<double>(object, key), optionalOr(object, unitKey, BorderUnit::pixels)};
        return caption;
    }
    static void encodeInto(QJsonObject& object, const Caption& value)
    {
        encodeMembers(object, value, members);
        encodeLaterMembers(object, value, laterMembers);
        for (const auto& [key, unitKey, field] : lengths) {
            object.insert(key, Coding<double>::encode((value.*field).value, key));
            if ((value.*field).unit != BorderUnit::pixels)
                object.insert(unitKey, rawValue((value.*field).unit));
        }
    }
    static QJsonValue encode(const Caption& value, const QString&)
    {
        QJsonObject object;
        encodeInto(object, value);
        return object;
    }
};

/// Border and first caption lie flat in the payload, as in the first files.
template <>
struct Coding<PresetPayload> {
    using P = PresetPayload;
    static constexpr QLatin1StringView furtherCaptionsKey{"furtherCaptions"};
    static constexpr std::tuple borderMembers{Member{QLatin1StringView("borderUnit"), &Border::unit},
                                              Member{QLatin1StringView("borderWidth"), &Border::width},
                                              Member{QLatin1StringView("borderColor"), &Border::color}};
    static constexpr std::tuple laterBorderMembers{
        Member{QLatin1StringView("borderSides"), &Border::sides},
        Member{QLatin1StringView("borderShape"), &Border::shape},
        Member{QLatin1StringView("borderBlurredBackground"), &Border::blurredBackground},
        Member{QLatin1StringView("borderLine"), &Border::line}};
    static constexpr std::tuple photoEdgeMembers{
        Member{QLatin1StringView("photoCornerRadius"), &PhotoEdge::cornerRadius},
        Member{QLatin1StringView("photoShadow"), &PhotoEdge::hasShadow}};
    static constexpr std::tuple recipeMembers{
        Member{QLatin1StringView("outputColorProfile"), &RenderRecipe::outputColorProfile}};
    static constexpr std::tuple laterRecipeMembers{Member{QLatin1StringView("logo"), &RenderRecipe::logo}};
    static constexpr std::tuple laterMembers{Member{QLatin1StringView("outputSize"), &P::outputSize},
                                             Member{QLatin1StringView("keepsPhotoData"), &P::keepsPhotoData},
                                             Member{QLatin1StringView("bitDepth"), &P::bitDepth}};
    static constexpr std::tuple members{Member{QLatin1StringView("exportFormat"), &P::exportFormat},
                                        Member{QLatin1StringView("exportQuality"), &P::exportQuality},
                                        Member{QLatin1StringView("destinationMode"), &P::destinationMode},
                                        Member{QLatin1StringView("sourceSubfolderName"), &P::sourceSubfolderName},
                                        Member{QLatin1StringView("filenameTemplate"), &P::filenameTemplate},
                                        Member{QLatin1StringView("collisionRule"), &P::collisionRule}};

    static PresetPayload decode(const QJsonValue& value, const QString& member)
    {
        const QJsonObject object = objectOf(value, member);
        PresetPayload payload;
        decodeMembers(object, payload.framing.border, borderMembers);
        decodeLaterMembers(object, payload.framing.border, laterBorderMembers);
        decodeLaterMembers(object, payload.framing.border.photoEdge, photoEdgeMembers);
        payload.framing.captions = decodeCaptions(object, member);
        decodeMembers(object, payload.framing, recipeMembers);
        decodeLaterMembers(object, payload.framing, laterRecipeMembers);
        decodeMembers(object, payload, members);
        decodeLaterMembers(object, payload, laterMembers);
        return payload;
    }
    static QJsonValue encode(const PresetPayload& value, const QString&)
    {
        QJsonObject object;
        encodeMembers(object, value.framing.border, borderMembers);
        encodeLaterMembers(object, value.framing.border, laterBorderMembers);
        encodeLaterMembers(object, value.framing.border.photoEdge, photoEdgeMembers);
        encodeCaptions(object, value.framing.captions);
        encodeMembers(object, value.framing, recipeMembers);
        encodeLaterMembers(object, value.framing, laterRecipeMembers);
        encodeMembers(object, value, members);
        encodeLaterMembers(object, value, laterMembers);
        return object;
    }

private:
    static std::vector<Caption> decodeCaptions(const QJsonObject& object, const QString& member)
    {
        std::vector<Caption> captions{Coding<Caption>::decode(object, member)};
        if (std::size_t(object.value(furtherCaptionsKey).toArray().size()) >= RenderRecipe::mostCaptions)
            throw PresetCodingError{Case::tooLong, furtherCaptionsKey};
        std::ranges::move(optionalOr(object, furtherCaptionsKey, std::vector<Caption>()), std::back_inserter(captions));
        return captions;
    }
    static void encodeCaptions(QJsonObject& object, const std::vector<Caption>& captions)
    {
        Coding<Caption>::encodeInto(object, captions.front());
        if (captions.size() > 1)
            object.insert(furtherCaptionsKey, Coding<std::vector<Caption>>::encode(
                                                  {captions.begin() + 1, captions.end()}, furtherCaptionsKey));
    }
};

template <>
struct Coding<PhotoPreset> : StructCoding<PhotoPreset> {
    static constexpr std::tuple members{Member{QLatin1StringView("id"), &PhotoPreset::id},
                                        Member{QLatin1StringView("name"), &PhotoPreset::name},
                                        Member{QLatin1StringView("payload"), &PhotoPreset::payload},
                                        Member{QLatin1StringView("createdAt"), &PhotoPreset::createdAt},
                                        Member{QLatin1StringView("modifiedAt"), &PhotoPreset::modifiedAt}};
};

template <>
struct Coding<PresetDocument> : StructCoding<PresetDocument> {
    static constexpr std::tuple members{Member{QLatin1StringView("schemaVersion"), &PresetDocument::schemaVersion},
                                        Member{QLatin1StringView("presets"), &PresetDocument::presets}};
};

} // namespace

PresetPayload PresetPayload::make(const RenderRecipe& recipe, const ExportSettings& settings,
                                  const BatchExportConfiguration& configuration)
{
    PresetPayload payload{
        .framing = recipe,
        .exportFormat = settings.format,
        .exportQuality = settings.quality,
        .outputSize = settings.size,
        .keepsPhotoData = settings.keepsPhotoData,
        .bitDepth = settings.depth,
        .destinationMode = configuration.destinationMode,
        .sourceSubfolderName = configuration.sourceSubfolderName,
        .filenameTemplate = configuration.filenameTemplate,
        .collisionRule = configuration.collisionRule,
    };
    // By way of the template: texts side by side are one, as they are when read from a file.
    for (Caption& caption : payload.framing.captions)
        caption.segments = withoutIdentifiers(CaptionSegment::parse(caption.captionTemplate()));
    return payload;
}

RenderRecipe PresetPayload::recipe() const
{
    RenderRecipe recipe = framing;
    for (Caption& caption : recipe.captions)
        for (CaptionSegment& segment : caption.segments)
            segment.id = QUuid::createUuid();
    return recipe;
}

void PresetPayload::applyTo(ExportSettings& settings, BatchExportConfiguration& configuration) const
{
    settings.format = exportFormat;
    settings.quality = exportQuality;
    settings.size = outputSize;
    settings.keepsPhotoData = keepsPhotoData;
    settings.depth = bitDepth;
    configuration.destinationMode = destinationMode;
    configuration.sourceSubfolderName = sourceSubfolderName;
    configuration.filenameTemplate = filenameTemplate;
    configuration.collisionRule = collisionRule;
}

PresetDocument PresetDocument::decode(const QByteArray& json)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        throw PresetCodingError{Case::notJSON, {}};
    return Coding<PresetDocument>::decode(document.object(), {});
}

std::optional<std::int64_t> PresetDocument::versionOf(const QByteArray& json)
{
    constexpr std::int64_t none = -1;
    const QJsonValue version = QJsonDocument::fromJson(json).object().value(QStringLiteral("schemaVersion"));
    const std::int64_t number = version.toInteger(none);
    return number == none ? std::nullopt : std::optional(number);
}

QByteArray PresetDocument::encode() const
{
    // QJsonObject keeps its keys sorted.
    return QJsonDocument(Coding<PresetDocument>::encode(*this, {}).toObject()).toJson(QJsonDocument::Indented);
}

LocalizedErrorTexts localizedTexts(const PresetCodingError& error)
{
    const auto sentence = [&] {
        switch (error.value) {
        case Case::notJSON:
            return QStringLiteral("The saved presets could not be read because their file is damaged.");
        case Case::missingMember:
            return QStringLiteral("The saved presets could not be read because “%1” is missing in their file.");
        case Case::wrongType:
        case Case::unknownValue:
            return QStringLiteral(
                "The saved presets could not be read because “%1” has an unexpected value in their file.");
        case Case::numberNotFinite:
            return QStringLiteral("The presets could not be saved because “%1” is not a number.");
        case Case::tooLong:
            return QStringLiteral("The saved presets could not be read because “%1” is too long in their file.");
        case Case::tooLarge:
            return QStringLiteral("The saved presets could not be read because their file is too large.");
        }
        return QString();
    };
    return {{}, {}, {}, sentence().replace(QStringLiteral("%1"), error.member)};
}

} // namespace ferrow
